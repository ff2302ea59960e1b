#include "records/base64.h"

#include <array>
#include <cstdint>

namespace zelkovanta::records {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int8_t notInAlphabet = -1;

constexpr std::array<std::int8_t, 256> valueByCharacter = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(notInAlphabet);
    for (std::size_t index = 0; index < alphabet.size(); ++index) {
        values[static_cast<unsigned char>(alphabet[index])] = static_cast<std::int8_t>(index);
    }
    return values;
}();

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    text.remove_suffix(padding);

    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (const char character : text) {
        const std::int8_t value = valueByCharacter[static_cast<unsigned char>(character)];
        if (value == notInAlphabet) {
            return std::nullopt;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<char>((bits >> bitCount) & 0xFFU));
        }
    }
    return bytes;
}

std::string encodeBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (const char byte : bytes) {
        bits = (bits << 8U) | static_cast<unsigned char>(byte);
        bitCount += 8;
        while (bitCount >= 6) {
            bitCount -= 6;
            text.push_back(alphabet[(bits >> bitCount) & 0x3FU]);
        }
    }
    if (bitCount > 0) {
        text.push_back(alphabet[(bits << (6 - bitCount)) & 0x3FU]);
    }
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

}  // namespace zelkovanta::records
