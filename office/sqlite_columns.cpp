#include "office/sqlite_columns.h"

#include "office/json_text.h"

#include <boost/json.hpp>

namespace zelkovanta::office::columns {
namespace {

namespace json = boost::json;

std::optional<json::array> parsedArray(const std::string& text) {
    boost::system::error_code error;
    json::value value = json::parse(text, error);
    return error || !value.is_array() ? std::nullopt : std::optional(std::move(value.get_array()));
}

std::optional<std::string> textOf(const json::object& object, const char* name) {
    const json::value* found = object.if_contains(name);
    return found != nullptr && found->is_string() ? std::optional<std::string>(found->get_string()) : std::nullopt;
}

}  // namespace

std::string packed(const std::vector<std::string>& texts) {
    return JsonText().value(texts).take();
}

std::string packed(const std::vector<Department>& departments) {
    JsonText text;
    text.array();
    for (const Department& department : departments) {
        text.object()
            .field("key", department.key)
            .field("label", department.label)
            .field("labelPlural", department.labelPlural)
            .endObject();
    }
    text.endArray();
    return text.take();
}

bool unpack(const std::string& text, std::vector<std::string>& texts) {
    const auto array = parsedArray(text);
    if (!array) {
        return false;
    }
    texts.clear();
    for (const json::value& element : *array) {
        if (!element.is_string()) {
            return false;
        }
        texts.emplace_back(element.get_string());
    }
    return true;
}

bool unpack(const std::string& text, std::vector<Department>& departments) {
    const auto array = parsedArray(text);
    if (!array) {
        return false;
    }
    departments.clear();
    for (const json::value& element : *array) {
        const json::object* object = element.if_object();
        const auto key = object == nullptr ? std::nullopt : textOf(*object, "key");
        const auto label = object == nullptr ? std::nullopt : textOf(*object, "label");
        if (!key || !label) {
            return false;
        }
        departments.push_back({*key, *label, textOf(*object, "labelPlural")});
    }
    return true;
}

std::string textAt(sqlite3_stmt* row, int column) {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(row, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
    return bytes == nullptr ? std::string() : std::string(bytes, size);
}

}  // namespace zelkovanta::office::columns
