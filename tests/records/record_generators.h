#pragma once

#include "tests/records/field_lists.h"

#include <cstdint>
#include <map>
#include <optional>
#include <rapidcheck.h>
#include <string>
#include <vector>

/// Invented records and texts.
namespace zelkovanta::records::reference {

inline void appendUtf8(std::string& text, std::uint32_t scalar) {
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (scalar < 0x80) {
        put(scalar);
    } else if (scalar < 0x800) {
        put(0xC0U | scalar >> 6U);
        put(0x80U | (scalar & 0x3FU));
    } else if (scalar < 0x10000) {
        put(0xE0U | scalar >> 12U);
        put(0x80U | (scalar >> 6U & 0x3FU));
        put(0x80U | (scalar & 0x3FU));
    } else {
        put(0xF0U | scalar >> 18U);
        put(0x80U | (scalar >> 12U & 0x3FU));
        put(0x80U | (scalar >> 6U & 0x3FU));
        put(0x80U | (scalar & 0x3FU));
    }
}

/// Any Unicode scalar, those that JSON escapes more often than their share.
inline rc::Gen<std::uint32_t> anyScalar() {
    return rc::gen::weightedOneOf<std::uint32_t>(
        {{8, rc::gen::inRange<std::uint32_t>(0x20, 0x7F)},
         {2, rc::gen::inRange<std::uint32_t>(0, 0x20)},
         {2, rc::gen::element<std::uint32_t>('"', '\\', '/', 0x7F, 0x2028, 0xFFFD, 0x301, 0x1F600, 0x10FFFF)},
         {2, rc::gen::inRange<std::uint32_t>(0x80, 0xD800)},
         {1, rc::gen::inRange<std::uint32_t>(0xE000, 0x110000)}});
}

inline rc::Gen<std::string> anyText() {
    return rc::gen::map(rc::gen::container<std::vector<std::uint32_t>>(anyScalar()),
                        [](const std::vector<std::uint32_t>& scalars) {
                            std::string text;
                            for (const std::uint32_t scalar : scalars)
                                appendUtf8(text, scalar);
                            return text;
                        });
}

/// Fills a record; to be used inside of `rc::gen::exec`.
class Inventor {
public:
    template <class Value>
    void required(const char* /*key*/, Value& value) {
        invent(value);
    }
    template <class Value>
    void optional(const char* /*key*/, std::optional<Value>& value) {
        if (*rc::gen::arbitrary<bool>())
            invent(value.emplace());
    }

private:
    void invent(std::string& value) { value = *anyText(); }
    void invent(bool& value) { value = *rc::gen::arbitrary<bool>(); }
    void invent(std::int64_t& value) {
        value = *rc::gen::oneOf(rc::gen::arbitrary<std::int64_t>(),
                                rc::gen::element(std::numeric_limits<std::int64_t>::max(),
                                                 std::numeric_limits<std::int64_t>::min(), std::int64_t{0}));
    }
    void invent(DeviceRole& value) { value = *rc::gen::elementOf(allDeviceRoles); }
    void invent(Url& value) {
        value = *Url::parse(*rc::gen::element<std::string>("https://updates.example/a.dmg", "relative", "?query",
                                                           "http://[::1]:8787/a%20b#c", "mailto:a@b.example"));
    }
    template <class Value>
    void invent(std::vector<Value>& values) {
        const auto count = *rc::gen::inRange<std::size_t>(0, 4);
        for (std::size_t index = 0; index < count; ++index)
            invent(values.emplace_back());
    }
    template <class Value>
    void invent(std::map<std::string, Value>& values) {
        const auto count = *rc::gen::inRange<std::size_t>(0, 4);
        for (std::size_t index = 0; index < count; ++index)
            invent(values[*anyText()]);
    }
    template <class Record>
    void invent(Record& record) {
        list(*this, record);
    }
};

template <class Record>
rc::Gen<Record> anyRecord() {
    return rc::gen::noShrink(rc::gen::exec([] {
        Record record;
        Inventor inventor;
        list(inventor, record);
        return record;
    }));
}

}  // namespace zelkovanta::records::reference
