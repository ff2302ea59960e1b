#include "office/secrets.h"

#include <array>
#include <cstdint>

#include <openssl/crypto.h>
#include <openssl/sha.h>

namespace zelkovanta::office {
namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::string_view codeAlphabet = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789";
static_assert(codeAlphabet.size() == 32);
constexpr std::string_view base64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::size_t pairingCodeLength = 8;

}  // namespace

std::string newIdentifier(RandomBytes& random, std::string_view prefix) {
    std::array<std::byte, 10> bytes{};
    random.fill(bytes);
    std::string text(prefix);
    for (const std::byte byte : bytes) {
        text += hexDigits[std::to_integer<std::size_t>(byte >> 4)];
        text += hexDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return text;
}

std::string newToken(RandomBytes& random, std::string_view prefix) {
    std::array<std::byte, 32> bytes{};
    random.fill(bytes);
    std::string text(prefix);
    std::uint32_t bits = 0;
    int held = 0;
    for (const std::byte byte : bytes) {
        bits = (bits << 8) | std::to_integer<std::uint32_t>(byte);
        for (held += 8; held >= 6; held -= 6) {
            text += base64Alphabet[(bits >> (held - 6)) & 63U];
        }
    }
    text += base64Alphabet[(bits << (6 - held)) & 63U];
    return text;
}

std::string newCode(RandomBytes& random, std::size_t length) {
    std::string text;
    while (text.size() < length) {
        std::array<std::byte, 1> byte{};
        random.fill(byte);
        text += codeAlphabet[std::to_integer<std::size_t>(byte[0] & std::byte{31})];
    }
    return text;
}

std::optional<std::string> normalPairingCode(std::string_view typed) {
    std::string code;
    for (char letter : typed) {
        if (letter == '-' || letter == ' ') {
            continue;
        }
        if (letter >= 'a' && letter <= 'z') {
            letter = static_cast<char>(letter - 'a' + 'A');
        }
        if (!codeAlphabet.contains(letter) || code.size() == pairingCodeLength) {
            return std::nullopt;
        }
        code += letter;
    }
    return code.size() == pairingCodeLength ? std::optional(code) : std::nullopt;
}

std::string secretHash(std::string_view secret) {
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    // The text's bytes as they are.
    SHA256(reinterpret_cast<const unsigned char*>(secret.data()), secret.size(), digest.data());
    std::string text;
    text.reserve(2 * digest.size());
    for (const unsigned char byte : digest) {
        text += hexDigits[byte >> 4];
        text += hexDigits[byte & 15];
    }
    return text;
}

bool sameSecret(std::string_view left, std::string_view right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace zelkovanta::office
