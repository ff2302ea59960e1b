#include "platform/linux/secret_cipher.h"

#include <array>
#include <cstdint>

#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/rand.h>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr int groupSize = 128;
constexpr std::size_t keySize = 16;
constexpr std::size_t blockSize = 16;

template <auto release>
struct Release {
    template <class T>
    void operator()(T* object) const {
        release(object);
    }
};
using Number = std::unique_ptr<BIGNUM, Release<BN_clear_free>>;
using NumberContext = std::unique_ptr<BN_CTX, Release<BN_CTX_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Release<EVP_PKEY_CTX_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Release<EVP_CIPHER_CTX_free>>;

// NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast): bytes are what the library takes.
std::uint8_t* bytes(std::string& text) {
    return reinterpret_cast<std::uint8_t*>(text.data());
}
const std::uint8_t* bytes(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}
// NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)

/// The power modulo the prime, as bytes of the group's size; empty if it cannot be told.
std::string power(const BIGNUM* base, const BIGNUM* exponent, const BIGNUM* modulus) {
    const Number result(BN_new());
    const NumberContext context(BN_CTX_new());
    std::string text(groupSize, '\0');
    const bool isTold = result && context && BN_mod_exp(result.get(), base, exponent, modulus, context.get()) == 1 &&
                        BN_bn2binpad(result.get(), bytes(text), groupSize) == groupSize;
    return isTold ? text : std::string{};
}

}  // namespace

struct SecretCipher::Keys {
    Number prime{BN_get_rfc2409_prime_1024(nullptr)};
    Number own{BN_new()};
    std::array<std::uint8_t, keySize> shared{};
    // The exponent's sign bit is set, so that it is never small by chance.
    bool isMade = prime && own && BN_priv_rand(own.get(), groupSize * 8 - 1, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) == 1;

    Keys() {
        if (own) {
            BN_set_flags(own.get(), BN_FLG_CONSTTIME);
        }
    }
    ~Keys() { OPENSSL_cleanse(shared.data(), shared.size()); }
    Keys(const Keys&) = delete;
    Keys& operator=(const Keys&) = delete;
};

SecretCipher::SecretCipher() : keys_(std::make_unique<Keys>()) {}

SecretCipher::~SecretCipher() = default;

std::string SecretCipher::publicKey() const {
    const Number generator(BN_new());
    const bool isUsable = keys_->isMade && generator && BN_set_word(generator.get(), 2) == 1;
    return isUsable ? power(generator.get(), keys_->own.get(), keys_->prime.get()) : std::string{};
}

bool SecretCipher::agree(const std::string& otherPublicKey) {
    if (!keys_->isMade) {
        return false;
    }
    const Number other(BN_bin2bn(bytes(otherPublicKey), static_cast<int>(otherPublicKey.size()), nullptr));
    const Number largest(BN_dup(keys_->prime.get()));
    // 0, 1 and p - 1 would make the shared key a known one.
    if (!other || !largest || BN_sub_word(largest.get(), 1) != 1 || BN_is_zero(other.get()) || BN_is_one(other.get()) ||
        BN_cmp(other.get(), largest.get()) >= 0) {
        return false;
    }
    std::string agreed = power(other.get(), keys_->own.get(), keys_->prime.get());
    const KeyContext derivation(EVP_PKEY_CTX_new_id(EVP_PKEY_HKDF, nullptr));
    std::size_t size = keys_->shared.size();
    const bool isDerived = !agreed.empty() && derivation && EVP_PKEY_derive_init(derivation.get()) == 1 &&
                           EVP_PKEY_CTX_set_hkdf_md(derivation.get(), EVP_sha256()) == 1 &&
                           EVP_PKEY_CTX_set1_hkdf_key(derivation.get(), bytes(agreed), groupSize) == 1 &&
                           EVP_PKEY_derive(derivation.get(), keys_->shared.data(), &size) == 1;
    OPENSSL_cleanse(agreed.data(), agreed.size());
    return isDerived;
}

std::optional<SecretCipher::Sealed> SecretCipher::seal(const std::string& secret) const {
    Sealed sealed{.parameters = std::string(blockSize, '\0'), .value = std::string(secret.size() + blockSize, '\0')};
    const CipherContext context(EVP_CIPHER_CTX_new());
    int first = 0;
    int last = 0;
    const bool isSealed = context && RAND_bytes(bytes(sealed.parameters), blockSize) == 1 &&
                          EVP_EncryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, keys_->shared.data(),
                                             bytes(sealed.parameters)) == 1 &&
                          EVP_EncryptUpdate(context.get(), bytes(sealed.value), &first, bytes(secret),
                                            static_cast<int>(secret.size())) == 1 &&
                          EVP_EncryptFinal_ex(context.get(), bytes(sealed.value) + first, &last) == 1;
    if (!isSealed) {
        return std::nullopt;
    }
    sealed.value.resize(static_cast<std::size_t>(first) + static_cast<std::size_t>(last));
    return sealed;
}

std::optional<std::string> SecretCipher::open(const Sealed& sealed) const {
    if (sealed.parameters.size() != blockSize) {
        return std::nullopt;
    }
    std::string secret(sealed.value.size() + blockSize, '\0');
    const CipherContext context(EVP_CIPHER_CTX_new());
    int first = 0;
    int last = 0;
    const bool isOpened = context &&
                          EVP_DecryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, keys_->shared.data(),
                                             bytes(sealed.parameters)) == 1 &&
                          EVP_DecryptUpdate(context.get(), bytes(secret), &first, bytes(sealed.value),
                                            static_cast<int>(sealed.value.size())) == 1 &&
                          EVP_DecryptFinal_ex(context.get(), bytes(secret) + first, &last) == 1;
    if (!isOpened) {
        return std::nullopt;
    }
    secret.resize(static_cast<std::size_t>(first) + static_cast<std::size_t>(last));
    return secret;
}

}  // namespace zelkovanta::platform::linux_host
