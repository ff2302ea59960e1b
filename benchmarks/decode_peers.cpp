#include "benchmarks/decode_peers.h"

#include <limits>
#include <map>
#include <vector>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <nlohmann/json.hpp>

namespace zelkovanta::benchmarks {
namespace {

using Json = nlohmann::json;

template <class Record>
using Fields = boost::describe::describe_members<Record, boost::describe::mod_public>;

template <class>
inline constexpr bool isOptional = false;
template <class Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

namespace nlohmann_peer {

template <class Record>
bool decode(const Json& json, Record& record);
template <class Value>
bool decode(const Json& json, std::vector<Value>& values);
template <class Value>
bool decode(const Json& json, std::map<std::string, Value>& values);

bool decode(const Json& json, std::string& value) {
    const auto* text = json.get_ptr<const std::string*>();
    if (text != nullptr)
        value = *text;
    return text != nullptr;
}

bool decode(const Json& json, bool& value) {
    const auto* boolean = json.get_ptr<const bool*>();
    if (boolean != nullptr)
        value = *boolean;
    return boolean != nullptr;
}

bool decode(const Json& json, std::int64_t& value) {
    if (!json.is_number_integer() ||
        (json.is_number_unsigned() && json.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max()))
        return false;
    value = json.get<std::int64_t>();
    return true;
}

bool decode(const Json& json, records::Url& value) {
    const auto* text = json.get_ptr<const std::string*>();
    auto url = text != nullptr ? records::Url::parse(*text) : std::nullopt;
    if (!url)
        return false;
    value = *std::move(url);
    return true;
}

template <class Value>
bool decode(const Json& json, std::optional<Value>& value) {
    return json.is_null() || decode(json, value.emplace());
}

template <class Value>
bool decode(const Json& json, std::vector<Value>& values) {
    if (!json.is_array())
        return false;
    values.reserve(json.size());
    for (const Json& item : json) {
        if (!decode(item, values.emplace_back()))
            return false;
    }
    return true;
}

template <class Value>
bool decode(const Json& json, std::map<std::string, Value>& values) {
    if (!json.is_object())
        return false;
    for (const auto& [key, item] : json.items()) {
        if (!decode(item, values[key]))
            return false;
    }
    return true;
}

template <class Record>
bool decode(const Json& json, Record& record) {
    if (!json.is_object())
        return false;
    bool fits = true;
    boost::mp11::mp_for_each<Fields<Record>>([&](auto field) {
        auto& value = record.*field.pointer;
        const auto found = fits ? json.find(field.name) : json.end();
        fits = fits && (found == json.end() ? isOptional<std::remove_cvref_t<decltype(value)>> : decode(*found, value));
    });
    return fits;
}

}  // namespace nlohmann_peer

namespace qt_peer {

template <class Record>
bool decode(const QJsonValue& json, Record& record);
template <class Value>
bool decode(const QJsonValue& json, std::vector<Value>& values);
template <class Value>
bool decode(const QJsonValue& json, std::map<std::string, Value>& values);

bool decode(const QJsonValue& json, std::string& value) {
    if (json.isString())
        value = json.toString().toStdString();
    return json.isString();
}

bool decode(const QJsonValue& json, bool& value) {
    value = json.toBool();
    return json.isBool();
}

bool decode(const QJsonValue& json, std::int64_t& value) {
    value = json.toInteger(0);
    return value == json.toInteger(1);
}

bool decode(const QJsonValue& json, records::Url& value) {
    auto url = json.isString() ? records::Url::parse(json.toString().toStdString()) : std::nullopt;
    if (!url)
        return false;
    value = *std::move(url);
    return true;
}

template <class Value>
bool decode(const QJsonValue& json, std::optional<Value>& value) {
    return json.isNull() || decode(json, value.emplace());
}

template <class Value>
bool decode(const QJsonValue& json, std::vector<Value>& values) {
    if (!json.isArray())
        return false;
    const QJsonArray array = json.toArray();
    values.reserve(static_cast<std::size_t>(array.size()));
    for (const auto& item : array) {
        if (!decode(item, values.emplace_back()))
            return false;
    }
    return true;
}

template <class Value>
bool decode(const QJsonValue& json, std::map<std::string, Value>& values) {
    if (!json.isObject())
        return false;
    const QJsonObject object = json.toObject();
    for (auto item = object.begin(); item != object.end(); ++item) {
        if (!decode(item.value(), values[item.key().toStdString()]))
            return false;
    }
    return true;
}

template <class Record>
bool decode(const QJsonValue& json, Record& record) {
    if (!json.isObject())
        return false;
    const QJsonObject object = json.toObject();
    bool fits = true;
    boost::mp11::mp_for_each<Fields<Record>>([&](auto field) {
        if (!fits)
            return;
        auto& value = record.*field.pointer;
        const auto found = object.constFind(QLatin1StringView(field.name));
        fits = found == object.constEnd() ? isOptional<std::remove_cvref_t<decltype(value)>> : decode(*found, value);
    });
    return fits;
}

}  // namespace qt_peer

}  // namespace

std::optional<records::StateSnapshot> decodeWithNlohmann(const std::string& json) {
    const Json document = Json::parse(json, nullptr, false);
    std::optional<records::StateSnapshot> snapshot(std::in_place);
    if (document.is_discarded() || !nlohmann_peer::decode(document, *snapshot))
        snapshot.reset();
    return snapshot;
}

std::optional<records::StateSnapshot> decodeWithQt(const std::string& json) {
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size())));
    std::optional<records::StateSnapshot> snapshot(std::in_place);
    if (!document.isObject() || !qt_peer::decode(QJsonValue(document.object()), *snapshot))
        snapshot.reset();
    return snapshot;
}

}  // namespace zelkovanta::benchmarks
