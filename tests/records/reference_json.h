#pragma once

#include "tests/records/field_lists.h"

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

/// A second opinion on the wire form, through another JSON library.
namespace zelkovanta::records::reference {

using Json = nlohmann::json;

/// What a text is, as far as both opinions must agree on it.
struct Parsed {
    enum class Verdict {
        json,       ///< a document
        notJson,    ///< none
        undecided,  ///< the libraries differ for good reason: doubled keys, NUL or a mark at the start, deep nesting,
                    ///< numbers beyond a double
    };
    Verdict verdict = Verdict::notJson;
    Json document;
};
[[nodiscard]] Parsed parse(std::string_view text);

class Writer {
public:
    explicit Writer(Json& json) : json_(json) { json_ = Json::object(); }

    template <class Value>
    void required(const char* key, Value& value) {
        put(json_[key], value);
    }
    template <class Value>
    void optional(const char* key, std::optional<Value>& value) {
        if (value)
            put(json_[key], *value);
    }

private:
    static void put(Json& json, std::string& value) { json = value; }
    static void put(Json& json, bool value) { json = value; }
    static void put(Json& json, std::int64_t value) { json = value; }
    static void put(Json& json, DeviceRole value) {
        json = value == DeviceRole::room ? "room" : value == DeviceRole::member ? "member" : "shared";
    }
    static void put(Json& json, Url& value) { json = value.text(); }
    template <class Value>
    static void put(Json& json, std::vector<Value>& values) {
        json = Json::array();
        for (Value& value : values)
            put(json.emplace_back(), value);
    }
    template <class Value>
    static void put(Json& json, std::map<std::string, Value>& values) {
        json = Json::object();
        for (auto& [key, value] : values)
            put(json[key], value);
    }
    template <class Record>
    static void put(Json& json, Record& record) {
        Writer writer(json);
        list(writer, record);
    }

    Json& json_;
};

class Reader {
public:
    explicit Reader(const Json& json) : json_(json), fits_(json.is_object()) {}

    [[nodiscard]] bool fits() const { return fits_; }

    template <class Value>
    void required(const char* key, Value& value) {
        fits_ = fits_ && json_.contains(key) && get(json_.at(key), value);
    }
    template <class Value>
    void optional(const char* key, std::optional<Value>& value) {
        if (fits_ && json_.contains(key) && !json_.at(key).is_null())
            fits_ = get(json_.at(key), value.emplace());
    }

private:
    static bool get(const Json& json, std::string& value) {
        if (json.is_string())
            value = json.get<std::string>();
        return json.is_string();
    }
    static bool get(const Json& json, bool& value) {
        if (json.is_boolean())
            value = json.get<bool>();
        return json.is_boolean();
    }
    static bool get(const Json& json, std::int64_t& value) {
        if (!json.is_number_integer())
            return false;
        if (json.is_number_unsigned() &&
            json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return false;
        value = json.get<std::int64_t>();
        return true;
    }
    static bool get(const Json& json, DeviceRole& value) {
        if (json == "room")
            value = DeviceRole::room;
        else if (json == "member")
            value = DeviceRole::member;
        else if (json == "shared")
            value = DeviceRole::shared;
        else
            return false;
        return true;
    }
    static bool get(const Json& json, Url& value) {
        const auto url = json.is_string() ? Url::parse(json.get<std::string>()) : std::nullopt;
        if (url)
            value = *url;
        return url.has_value();
    }
    template <class Value>
    static bool get(const Json& json, std::vector<Value>& values) {
        if (!json.is_array())
            return false;
        for (const Json& item : json) {
            if (!get(item, values.emplace_back()))
                return false;
        }
        return true;
    }
    template <class Value>
    static bool get(const Json& json, std::map<std::string, Value>& values) {
        if (!json.is_object())
            return false;
        for (const auto& [key, item] : json.items()) {
            if (!get(item, values[key]))
                return false;
        }
        return true;
    }
    template <class Record>
    static bool get(const Json& json, Record& record) {
        Reader reader(json);
        list(reader, record);
        return reader.fits();
    }

    const Json& json_;
    bool fits_;
};

template <class Record>
[[nodiscard]] Json write(Record record) {
    Json json;
    Writer writer(json);
    list(writer, record);
    return json;
}

template <class Record>
[[nodiscard]] std::optional<Record> read(const Json& json) {
    std::optional<Record> record(std::in_place);
    Reader reader(json);
    list(reader, *record);
    if (!reader.fits())
        record.reset();
    return record;
}

}  // namespace zelkovanta::records::reference
