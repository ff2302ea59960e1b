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

TestCertificate make(const std::string& commonName, const TestCertificate* authority, Validity validity) {
    const std::shared_ptr<EVP_PKEY> key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    const std::shared_ptr<X509> certificate(X509_new(), &X509_free);
    X509_set_version(certificate.get(), X509_VERSION_3);
    std::int64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_int64(X509_get_serialNumber(certificate.get()), serial & INT64_MAX);
    constexpr long day = 24L * 60 * 60;
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -30 * day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), validity == Validity::expired ? -day : 30 * day);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
    X509* const issuer = authority != nullptr ? authority->certificate.get() : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    X509_set_pubkey(certificate.get(), key.get());
    if (authority != nullptr) {
        addExtension(certificate.get(), issuer, NID_subject_alt_name, "DNS:" + commonName);
    } else {
        addExtension(certificate.get(), issuer, NID_basic_constraints, "critical,CA:TRUE");
        addExtension(certificate.get(), issuer, NID_key_usage, "critical,keyCertSign");
    }
    X509_sign(certificate.get(), authority != nullptr ? authority->key.get() : key.get(), EVP_sha256());
    return {certificate, key};
}

}  // namespace

TestCertificate makeAuthority() {
    static int count = 0;
    return make("Test authority " + std::to_string(++count), nullptr, Validity::current);
}

TestCertificate makeServerCertificate(const TestCertificate& authority, const std::string& name, Validity validity) {
    return make(name, &authority, validity);
}

void writeCertificate(const TestCertificate& certificate, const std::filesystem::path& file) {
    std::FILE* const out = std::fopen(file.c_str(), "w");
    if (out == nullptr || PEM_write_X509(out, certificate.certificate.get()) != 1 || std::fclose(out) != 0) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace zelkovanta::platform::linux_host
