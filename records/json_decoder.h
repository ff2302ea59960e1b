#pragma once

#include "records/device_role.h"
#include "records/url.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/describe/members.hpp>
#include <boost/mp11/list.hpp>
#include <simdjson.h>

/// The machinery behind `records/json_codec.h`, which states the rules: a parsed document, and described records filled
/// from it. Only for sources that decode; nothing else should see the parser.
namespace zelkovanta::records::json {

/// The parsed form of one text, held in memory that the thread keeps for its next document. So at most one lives on a
/// thread at a time, and its elements are gone with it. Takes a valid UTF-8 document of at most 256 MiB and 1,024
/// levels. Where a key stands twice in an object, the last one counts.
class Document {
public:
    explicit Document(std::string_view text);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    [[nodiscard]] bool isValid() const { return error_ == simdjson::SUCCESS; }
    [[nodiscard]] const char* error() const { return simdjson::error_message(error_); }
    /// Only of a valid document.
    [[nodiscard]] simdjson::dom::element root() const { return root_; }

private:
    simdjson::error_code error_ = simdjson::EMPTY;
    simdjson::dom::element root_;
};

/// Where decoding stopped: names of fields and what was expected, never a value or a key of the document.
class Failure {
public:
    bool expected(std::string_view what) {
        reason_ = what;
        return false;
    }
    void within(std::string_view field) { reason_.insert(0, ": ").insert(0, field); }
    [[nodiscard]] const std::string& reason() const { return reason_; }

private:
    std::string reason_;
};

template <class>
inline constexpr bool isOptional = false;
template <class Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

template <class Record>
bool decode(simdjson::dom::element element, Record& record, Failure& failure);

inline bool decode(simdjson::dom::element element, std::string& value, Failure& failure) {
    std::string_view text;
    if (element.get_string().get(text) != simdjson::SUCCESS)
        return failure.expected("not a string");
    // Made anew, for assigning would set more memory aside than the text needs.
    value = std::string(text);
    return true;
}

inline bool decode(simdjson::dom::element element, std::optional<std::string>& value, Failure& failure) {
    std::string_view text;
    if (element.get_string().get(text) == simdjson::SUCCESS) [[likely]]
        value.emplace(text);
    else if (element.is_null())
        value.reset();
    else
        return failure.expected("not a string");
    return true;
}

inline bool decode(simdjson::dom::element element, bool& value, Failure& failure) {
    return element.get_bool().get(value) == simdjson::SUCCESS || failure.expected("not a Boolean");
}

inline bool decode(simdjson::dom::element element, std::int64_t& value, Failure& failure) {
    return element.get_int64().get(value) == simdjson::SUCCESS || failure.expected("not a 64-bit integer");
}

inline bool decode(simdjson::dom::element element, DeviceRole& value, Failure& failure) {
    std::string_view word;
    if (element.get_string().get(word) != simdjson::SUCCESS)
        return failure.expected("not a string");
    const auto role = deviceRoleFromRawValue(word);
    if (!role)
        return failure.expected("not a known word");
    value = *role;
    return true;
}

inline bool decode(simdjson::dom::element element, Url& value, Failure& failure) {
    std::string_view text;
    if (element.get_string().get(text) != simdjson::SUCCESS)
        return failure.expected("not a string");
    auto url = Url::parse(text);
    if (!url)
        return failure.expected("not a URL");
    value = *std::move(url);
    return true;
}

template <class Value>
bool decode(simdjson::dom::element element, std::optional<Value>& value, Failure& failure) {
    if (element.is_null()) {
        value.reset();
        return true;
    }
    return decode(element, value.emplace(), failure);
}

/// Elements of a list that room is made for before any of them was looked at. An office's lists fit in; beyond it the
/// length of a list that may hold anything would ask for hundreds of times the memory of its text.
inline constexpr std::size_t roomInAdvance = 8192;

template <class Value>
bool decode(simdjson::dom::element element, std::vector<Value>& values, Failure& failure) {
    simdjson::dom::array array;
    if (element.get_array().get(array) != simdjson::SUCCESS)
        return failure.expected("not an array");
    values.reserve(std::min(array.size(), roomInAdvance));
    for (const simdjson::dom::element item : array) {
        if (!decode(item, values.emplace_back(), failure))
            return false;
    }
    return true;
}

template <class Value>
bool decode(simdjson::dom::element element, std::map<std::string, Value>& values, Failure& failure) {
    simdjson::dom::object object;
    if (element.get_object().get(object) != simdjson::SUCCESS)
        return failure.expected("not an object");
    // In two steps, so that a key that stands twice counts by its last value alone.
    std::map<std::string_view, simdjson::dom::element> last;
    for (const simdjson::dom::key_value_pair pair : object)
        last.insert_or_assign(pair.key, pair.value);
    for (const auto& [key, item] : last) {
        if (!decode(item, values[std::string(key)], failure))
            return false;
    }
    return true;
}

/// Fills one record from the members of an object.
template <class Record>
class RecordDecoder {
    using Fields = boost::describe::describe_members<Record, boost::describe::mod_public>;
    static constexpr std::size_t count = boost::mp11::mp_size<Fields>::value;
    static_assert(count < 64);

    template <std::size_t index>
    using Field = boost::mp11::mp_at_c<Fields, index>;
    template <std::size_t index>
    using FieldValue = std::remove_cvref_t<decltype(std::declval<Record&>().*Field<index>::pointer)>;
    template <std::size_t index>
    static constexpr std::uint64_t bit = std::uint64_t{1} << index;
    template <std::size_t index>
    static constexpr std::string_view name = Field<index>::name;

    using Indexes = std::make_index_sequence<count>;

public:
    RecordDecoder(Record& record, Failure& failure) : record_(record), failure_(failure) {}

    bool run(simdjson::dom::object object) {
        auto position = object.begin();
        const auto end = object.end();
        // Keys mostly come in the order of the fields, so that one round over the fields takes them all.
        while (position != end) {
            if (!round(position, end, Indexes()))
                ++position;
        }
        return finish(Indexes());
    }

private:
    using Position = simdjson::dom::object::iterator;

    template <std::size_t... index>
    bool round(Position& position, const Position& end, std::index_sequence<index...>) {
        std::string_view key = position.key();
        bool any = false;
        [[maybe_unused]] const auto take = [&]<std::size_t field>(std::integral_constant<std::size_t, field>) {
            if (key.size() != name<field>.size() || std::memcmp(key.data(), name<field>.data(), key.size()) != 0)
                return true;
            fill<field>(position.value());
            any = true;
            if (!(++position != end))
                return false;
            key = position.key();
            return true;
        };
        static_cast<void>((take(std::integral_constant<std::size_t, index>()) && ...));
        return any;
    }

    template <std::size_t index>
    void fill(simdjson::dom::element element) {
        auto& value = record_.*Field<index>::pointer;
        if ((seen_ & bit<index>) != 0) [[unlikely]] {
            value = FieldValue<index>();
            failed_ &= ~bit<index>;
        }
        seen_ |= bit<index>;
        if (!decode(element, value, failure_)) [[unlikely]] {
            failed_ |= bit<index>;
            failure_.within(name<index>);
        }
    }

    template <std::size_t... index>
    bool finish(std::index_sequence<index...>) {
        constexpr std::uint64_t required = (std::uint64_t{0} | ... | (isOptional<FieldValue<index>> ? 0 : bit<index>));
        if (failed_ != 0) [[unlikely]]
            return false;
        if ((seen_ & required) == required) [[likely]]
            return true;
        constexpr std::array<std::string_view, count> names{name<index>...};
        failure_.expected("missing");
        failure_.within(names[static_cast<std::size_t>(std::countr_zero(required & ~seen_))]);
        return false;
    }

    Record& record_;
    Failure& failure_;
    std::uint64_t seen_ = 0;
    std::uint64_t failed_ = 0;
};

/// Fills a record that is in its initial state. On failure it is left half filled.
template <class Record>
bool decode(simdjson::dom::element element, Record& record, Failure& failure) {
    simdjson::dom::object object;
    if (element.get_object().get(object) != simdjson::SUCCESS)
        return failure.expected("not an object");
    return RecordDecoder<Record>(record, failure).run(object);
}

}  // namespace zelkovanta::records::json
