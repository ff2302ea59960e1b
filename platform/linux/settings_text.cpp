#include "platform/linux/settings_text.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

std::string escaped(std::string_view text, std::string_view special) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (c == '\n') {
            result += "\\n";
        } else if (c == '\r') {
            result += "\\r";
        } else if (c == '\t') {
            result += "\\t";
        } else if (byte < 0x20) {
            result += "\\x";
            result += hexDigits[byte >> 4U];
            result += hexDigits[byte & 15U];
        } else {
            if (special.find(c) != std::string_view::npos) {
                result += '\\';
            }
            result += c;
        }
    }
    return result;
}

std::optional<char> hexByte(std::string_view digits) {
    if (digits.size() < 2 || hexDigits.find(digits[0]) == std::string_view::npos ||
        hexDigits.find(digits[1]) == std::string_view::npos) {
        return std::nullopt;
    }
    return static_cast<char>(hexDigits.find(digits[0]) * 16 + hexDigits.find(digits[1]));
}

/// Reads up to the first `end` that is not escaped and takes it away too; none if it never comes.
std::optional<std::string> takeUntil(std::string_view& text, char end) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == end) {
            text.remove_prefix(i + 1);
            return result;
        }
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        if (++i == text.size()) {
            return std::nullopt;
        }
        switch (text[i]) {
            case 'n':
                result += '\n';
                break;
            case 'r':
                result += '\r';
                break;
            case 't':
                result += '\t';
                break;
            case 'x': {
                const auto byte = hexByte(text.substr(i + 1));
                if (!byte) {
                    return std::nullopt;
                }
                result += *byte;
                i += 2;
                break;
            }
            default:
                result += text[i];
        }
    }
    return std::nullopt;
}

std::optional<SettingValue> parseValue(std::string_view text) {
    if (text == "true" || text == "false") {
        return text == "true";
    }
    if (text.starts_with('"')) {
        text.remove_prefix(1);
        auto value = takeUntil(text, '"');
        return value && text.empty() ? std::optional<SettingValue>{std::move(*value)} : std::nullopt;
    }
    double number = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failed == std::errc{} && end == text.data() + text.size() ? std::optional<SettingValue>{number}
                                                                     : std::nullopt;
}

std::string formatNumber(double number) {
    std::array<char, 32> digits{};
    const auto [end, failed] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), end};
}

}  // namespace

std::string formatSettings(const SettingValues& values) {
    std::string text = "[Settings]\n";
    for (const auto& [key, value] : values) {
        text += escaped(key, "\\=[;#\" ") + "=";
        if (const auto* boolean = std::get_if<bool>(&value)) {
            text += *boolean ? "true" : "false";
        } else if (const auto* number = std::get_if<double>(&value)) {
            text += formatNumber(*number);
        } else {
            text += '"' + escaped(std::get<std::string>(value), "\\\"") + '"';
        }
        text += '\n';
    }
    return text;
}

SettingValues parseSettings(std::string_view text) {
    SettingValues values;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.starts_with('[') || line.starts_with(';') || line.starts_with('#')) {
            continue;
        }
        auto key = takeUntil(line, '=');
        auto value = key ? parseValue(line) : std::nullopt;
        if (value) {
            values.insert_or_assign(std::move(*key), std::move(*value));
        }
    }
    return values;
}

}  // namespace zelkovanta::platform::linux_host
