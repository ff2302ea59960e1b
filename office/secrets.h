#pragma once

#include "office/random_bytes.h"

#include <optional>
#include <string>
#include <string_view>

// Identifiers, codes and tokens, and the form in which secrets are kept.
namespace zelkovanta::office {

/// The prefix and twenty hexadecimal digits.
[[nodiscard]] std::string newIdentifier(RandomBytes& random, std::string_view prefix);
/// 256 bits of chance, in the URL-safe base64 alphabet.
[[nodiscard]] std::string newToken(RandomBytes& random, std::string_view prefix);
/// Capitals and digits that nobody confuses when they are read out.
[[nodiscard]] std::string newCode(RandomBytes& random, std::size_t length);

/// A pairing code as a person typed it, in capitals and without dashes and blanks; nothing if it cannot be a code.
[[nodiscard]] std::optional<std::string> normalPairingCode(std::string_view typed);

/// Hexadecimal SHA-256.
[[nodiscard]] std::string secretHash(std::string_view secret);
/// Takes the same time wherever the texts differ.
[[nodiscard]] bool sameSecret(std::string_view left, std::string_view right);

}  // namespace zelkovanta::office
