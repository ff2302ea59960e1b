#include "office/certificate.h"

#include "office/secrets.h"

#include <memory>
#include <string_view>

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

namespace zelkovanta::office {
namespace {

using File = std::unique_ptr<BIO, decltype(&BIO_free)>;
using Shown = std::unique_ptr<X509, decltype(&X509_free)>;

std::string digest(X509* certificate) {
    unsigned char* bytes = nullptr;
    const int length = i2d_X509(certificate, &bytes);
    if (length <= 0) {
        return {};
    }
    const std::string encoded(bytes, bytes + length);
    OPENSSL_free(bytes);
    return secretHash(encoded);
}

}  // namespace

std::expected<std::string, std::string> digestOf(const Certificate& certificate) {
    const File file(BIO_new_file(certificate.chain.c_str(), "r"), &BIO_free);
    const Shown first(file ? PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr) : nullptr, &X509_free);
    if (!first) {
        return std::unexpected("The certificate " + certificate.chain.string() + " cannot be read.");
    }
    return digest(first.get());
}

std::string digestOfPeer(const ssl_st* connection) {
    const Shown shown(SSL_get1_peer_certificate(connection), &X509_free);
    return shown ? digest(shown.get()) : std::string();
}

}  // namespace zelkovanta::office
