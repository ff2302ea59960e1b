#include "tests/platform/linux/test_certificates.h"

#include <cstdio>
#include <stdexcept>

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

namespace zelkovanta::platform::linux_host {

namespace {

enum class Role : std::uint8_t { authority, server };

struct Wanted {
    std::string commonName;
    Role role;
    Validity validity = Validity::current;
    KeyKind kind = KeyKind::p256;
};

using Key = std::shared_ptr<EVP_PKEY>;

Key readKey(const std::string& name) {
    const std::string file = std::string{ZELKOVANTA_TEST_KEYS} + "/" + name + ".pem";
    std::FILE* const in = std::fopen(file.c_str(), "r");
    if (in == nullptr) {
        throw std::runtime_error("cannot read " + file);
    }
    Key key(PEM_read_PrivateKey(in, nullptr, nullptr, nullptr), &EVP_PKEY_free);
    std::fclose(in);
    return key;
}

Key makeKey(KeyKind kind) {
    switch (kind) {
        case KeyKind::p256:
            return {EVP_EC_gen("P-256"), &EVP_PKEY_free};
        case KeyKind::p384:
            return {EVP_EC_gen("P-384"), &EVP_PKEY_free};
        case KeyKind::ed25519:
            return {EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), &EVP_PKEY_free};
        case KeyKind::rsa2048:
            return readKey("rsa_2048");
        case KeyKind::rsa3072:
            return readKey("rsa_3072");
        case KeyKind::rsa4096:
            return readKey("rsa_4096");
        case KeyKind::keptP256:
            return readKey("ec_256");
        case KeyKind::keptP384:
            return readKey("ec_384");
        case KeyKind::keptEd25519:
            return readKey("ed25519");
    }
    throw std::runtime_error("no such kind of key");
}

void addExtension(X509* certificate, X509* issuer, int id, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str());
    if (extension == nullptr) {
        throw std::runtime_error("no extension of " + value);
    }
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

bool isAddress(const std::string& name) {
    return name.find_first_not_of("0123456789.") == std::string::npos;
}

/// Signed by itself where there is no authority.
TestCertificate make(const Wanted& wanted, const TestCertificate* authority) {
    const Key key = makeKey(wanted.kind);
    const std::shared_ptr<X509> certificate(X509_new(), &X509_free);
    X509_set_version(certificate.get(), X509_VERSION_3);
    std::int64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_int64(X509_get_serialNumber(certificate.get()), serial & INT64_MAX);
    constexpr long day = 24L * 60 * 60;
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -30 * day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), wanted.validity == Validity::expired ? -day : 30 * day);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(wanted.commonName.c_str()), -1, -1, 0);
    X509* const issuer = authority != nullptr ? authority->certificate.get() : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    X509_set_pubkey(certificate.get(), key.get());
    if (wanted.role == Role::server) {
        addExtension(certificate.get(), issuer, NID_subject_alt_name,
                     (isAddress(wanted.commonName) ? "IP:" : "DNS:") + wanted.commonName);
    } else {
        addExtension(certificate.get(), issuer, NID_basic_constraints, "critical,CA:TRUE");
        addExtension(certificate.get(), issuer, NID_key_usage, "critical,keyCertSign");
    }
    EVP_PKEY* const signer = authority != nullptr ? authority->key.get() : key.get();
    const EVP_MD* const digest = EVP_PKEY_get_id(signer) == EVP_PKEY_ED25519 ? nullptr : EVP_sha256();
    if (X509_sign(certificate.get(), signer, digest) == 0) {
        throw std::runtime_error("cannot sign " + wanted.commonName);
    }
    return {certificate, key};
}

std::string nextAuthorityName() {
    static int count = 0;
    return "Test authority " + std::to_string(++count);
}

}  // namespace

TestCertificate makeAuthority(KeyKind kind) {
    return make({.commonName = nextAuthorityName(), .role = Role::authority, .kind = kind}, nullptr);
}

TestCertificate makeIntermediate(const TestCertificate& authority, KeyKind kind) {
    return make({.commonName = nextAuthorityName(), .role = Role::authority, .kind = kind}, &authority);
}

TestCertificate makeServerCertificate(const TestCertificate& authority, const std::string& name, Validity validity,
                                      KeyKind kind) {
    return make({.commonName = name, .role = Role::server, .validity = validity, .kind = kind}, &authority);
}

TestCertificate makeSelfSignedServerCertificate(const std::string& name) {
    return make({.commonName = name, .role = Role::server}, nullptr);
}

std::vector<unsigned char> publicKeyDigestOf(const TestCertificate& certificate) {
    unsigned char* encoded = nullptr;
    const int size = i2d_PUBKEY(certificate.key.get(), &encoded);
    std::vector<unsigned char> digest(32);
    if (size <= 0 ||
        EVP_Digest(encoded, static_cast<std::size_t>(size), digest.data(), nullptr, EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("no digest of a key");
    }
    OPENSSL_free(encoded);
    return digest;
}

std::string pinOf(const TestCertificate& certificate) {
    const auto digest = publicKeyDigestOf(certificate);
    std::string text(45, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), digest.data(), static_cast<int>(digest.size()));
    text.pop_back();
    return text;
}

void writeCertificates(const std::vector<TestCertificate>& certificates, const std::filesystem::path& file) {
    std::FILE* const out = std::fopen(file.c_str(), "w");
    bool isWritten = out != nullptr;
    for (const auto& each : certificates) {
        isWritten = isWritten && PEM_write_X509(out, each.certificate.get()) == 1;
    }
    if (out == nullptr || std::fclose(out) != 0 || !isWritten) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

void writeCertificate(const TestCertificate& certificate, const std::filesystem::path& file) {
    writeCertificates({certificate}, file);
}

}  // namespace zelkovanta::platform::linux_host
