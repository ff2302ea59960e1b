#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <openssl/ossl_typ.h>

namespace zelkovanta::platform::linux_host {

/// A certificate with its key, made for one test.
struct TestCertificate {
    std::shared_ptr<X509> certificate;
    std::shared_ptr<EVP_PKEY> key;
};

enum class Validity : std::uint8_t { current, expired };
/// The RSA keys and the kept ones are the same in every test; all others are made afresh.
enum class KeyKind : std::uint8_t {
    p256,
    p384,
    ed25519,
    rsa2048,
    rsa3072,
    rsa4096,
    keptP256,
    keptP384,
    keptEd25519,
};

/// An authority, which signs itself.
[[nodiscard]] TestCertificate makeAuthority(KeyKind kind = KeyKind::p256);
/// An authority in the name of another.
[[nodiscard]] TestCertificate makeIntermediate(const TestCertificate& authority, KeyKind kind = KeyKind::p256);
/// A server's certificate for a DNS name or an IPv4 address.
[[nodiscard]] TestCertificate makeServerCertificate(const TestCertificate& authority, const std::string& name,
                                                    Validity validity = Validity::current,
                                                    KeyKind kind = KeyKind::p256);
/// A server's certificate that nobody else vouches for.
[[nodiscard]] TestCertificate makeSelfSignedServerCertificate(const std::string& name);

/// SHA-256 over the key's SubjectPublicKeyInfo.
[[nodiscard]] std::vector<unsigned char> publicKeyDigestOf(const TestCertificate& certificate);
/// The same in base64, as a pin is written.
[[nodiscard]] std::string pinOf(const TestCertificate& certificate);

/// Writes the certificates, without their keys, where a program may be told to trust them.
void writeCertificates(const std::vector<TestCertificate>& certificates, const std::filesystem::path& file);
void writeCertificate(const TestCertificate& certificate, const std::filesystem::path& file);

}  // namespace zelkovanta::platform::linux_host
