#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <openssl/ossl_typ.h>

namespace zelkovanta::platform::linux_host {

/// A certificate with its key, made for one test.
struct TestCertificate {
    std::shared_ptr<X509> certificate;
    std::shared_ptr<EVP_PKEY> key;
};

enum class Validity { current, expired };

/// An authority, which signs itself.
[[nodiscard]] TestCertificate makeAuthority();
/// A server's certificate for a DNS name.
[[nodiscard]] TestCertificate makeServerCertificate(const TestCertificate& authority, const std::string& name,
                                                    Validity validity = Validity::current);
/// Writes the certificate, without its key, where a program may be told to trust it.
void writeCertificate(const TestCertificate& certificate, const std::filesystem::path& file);

}  // namespace zelkovanta::platform::linux_host
