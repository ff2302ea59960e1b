#pragma once

#include "records/device_role.h"
#include "records/url.h"
#include "records/utf8.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>

/// Writes described records as JSON, with the rules of `records/json_codec.h`. Only for sources that encode.
namespace zelkovanta::records::json {

template <class Value>
concept Described = boost::describe::has_describe_members<Value>::value;

template <Described Record>
void encode(const Record& record, std::string& json);

/// A text that is no UTF-8 in places gets U+FFFD there, so that what is written is always a valid document.
inline void encode(std::string_view text, std::string& json) {
    json += '"';
    while (!text.empty()) {
        const Utf8Step step = firstScalar(text);
        const char first = text.front();
        if (!step.wellFormed) {
            json += "\xEF\xBF\xBD";
        } else if (first == '"' || first == '\\') {
            json += '\\';
            json += first;
        } else if (static_cast<unsigned char>(first) < 0x20) {
            constexpr std::string_view digits = "0123456789abcdef";
            json += "\\u00";
            json += digits[static_cast<unsigned char>(first) >> 4U];
            json += digits[static_cast<unsigned char>(first) & 0xFU];
        } else {
            json += text.substr(0, step.length);
        }
        text.remove_prefix(step.length);
    }
    json += '"';
}

inline void encode(const std::string& text, std::string& json) {
    encode(std::string_view(text), json);
}
inline void encode(bool value, std::string& json) {
    json += value ? "true" : "false";
}
inline void encode(std::int64_t value, std::string& json) {
    json += std::to_string(value);
}
inline void encode(DeviceRole value, std::string& json) {
    encode(rawValue(value), json);
}
inline void encode(const Url& value, std::string& json) {
    encode(std::string_view(value.text()), json);
}

template <class Value>
void encode(const std::vector<Value>& values, std::string& json) {
    json += '[';
    bool first = true;
    for (const Value& value : values) {
        if (!first)
            json += ',';
        first = false;
        encode(value, json);
    }
    json += ']';
}

template <class Value>
void encode(const std::map<std::string, Value>& values, std::string& json) {
    json += '{';
    bool first = true;
    for (const auto& [key, value] : values) {
        if (!first)
            json += ',';
        first = false;
        encode(key, json);
        json += ':';
        encode(value, json);
    }
    json += '}';
}

template <class Value>
bool encodeField(const char* separator, std::string_view name, const Value& value, std::string& json) {
    json += separator;
    encode(name, json);
    json += ':';
    encode(value, json);
    return true;
}

template <class Value>
bool encodeField(const char* separator, std::string_view name, const std::optional<Value>& value, std::string& json) {
    return value && encodeField(separator, name, *value, json);
}

template <Described Record>
void encode(const Record& record, std::string& json) {
    using Fields = boost::describe::describe_members<Record, boost::describe::mod_public>;
    json += '{';
    bool any = false;
    boost::mp11::mp_for_each<Fields>([&](auto field) {
        any |= encodeField(any ? "," : "", std::string_view(field.name), record.*field.pointer, json);
    });
    json += '}';
}

}  // namespace zelkovanta::records::json
