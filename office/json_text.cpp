#include "office/json_text.h"

#include <charconv>

namespace zelkovanta::office {

void JsonText::separate() {
    if (!first_) {
        text_ += ',';
    }
    first_ = false;
}

JsonText& JsonText::open(char bracket) {
    separate();
    text_ += bracket;
    first_ = true;
    return *this;
}

JsonText& JsonText::close(char bracket) {
    text_ += bracket;
    first_ = false;
    return *this;
}

JsonText& JsonText::key(std::string_view name) {
    separate();
    text_ += '"';
    text_ += name;
    text_ += "\":";
    first_ = true;
    return *this;
}

JsonText& JsonText::value(std::string_view text) {
    separate();
    text_ += '"';
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') {
            text_ += '\\';
            text_ += letter;
        } else if (static_cast<unsigned char>(letter) < 0x20) {
            static constexpr std::string_view digits = "0123456789abcdef";
            const auto code = static_cast<unsigned char>(letter);
            text_ += "\\u00";
            text_ += digits[code >> 4];
            text_ += digits[code & 15];
        } else {
            text_ += letter;
        }
    }
    text_ += '"';
    return *this;
}

JsonText& JsonText::value(std::int64_t number) {
    separate();
    char digits[24];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    text_.append(digits, end);
    return *this;
}

JsonText& JsonText::value(bool truth) {
    separate();
    text_ += truth ? "true" : "false";
    return *this;
}

JsonText& JsonText::value(const std::vector<std::string>& texts) {
    array();
    for (const std::string& text : texts) {
        value(text);
    }
    return endArray();
}

JsonText& JsonText::raw(std::string_view json) {
    separate();
    text_ += json;
    return *this;
}

}  // namespace zelkovanta::office
