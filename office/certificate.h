#pragma once

#include <expected>
#include <filesystem>
#include <string>

struct ssl_st;

namespace zelkovanta::office {

/// Files in PEM form: the certificate with those of the authorities between it and the root, and its key.
struct Certificate {
    std::filesystem::path chain;
    std::filesystem::path key;
    bool operator==(const Certificate&) const = default;
};

/// Hexadecimal SHA-256 of the certificate itself, the first one in its file. Fails with a sentence.
[[nodiscard]] std::expected<std::string, std::string> digestOf(const Certificate& certificate);

/// The same of the certificate that the other end of a TLS connection has shown; empty if it has shown none.
[[nodiscard]] std::string digestOfPeer(const ssl_st* connection);

}  // namespace zelkovanta::office
