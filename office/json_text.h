#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::office {

/// Writes one JSON document from front to back.
class JsonText {
public:
    JsonText& object() { return open('{'); }
    JsonText& endObject() { return close('}'); }
    JsonText& array() { return open('['); }
    JsonText& endArray() { return close(']'); }
    /// `name` is one of our own words and needs no escaping.
    JsonText& key(std::string_view name);

    JsonText& value(std::string_view text);
    JsonText& value(const char* text) { return value(std::string_view(text)); }
    JsonText& value(std::int64_t number);
    JsonText& value(bool truth);
    JsonText& value(const std::vector<std::string>& texts);
    /// A finished JSON value.
    JsonText& raw(std::string_view json);

    /// A field of an object; nothing is written for an absent value.
    template <class T>
    JsonText& field(std::string_view name, const T& content) {
        return key(name).value(content);
    }
    template <class T>
    JsonText& field(std::string_view name, const std::optional<T>& content) {
        return content ? field(name, *content) : *this;
    }

    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    JsonText& open(char bracket);
    JsonText& close(char bracket);
    void separate();

    std::string text_;
    bool first_ = true;  ///< nothing stands before the next value in its object or array
};

}  // namespace zelkovanta::office
