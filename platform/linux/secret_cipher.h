#pragma once

#include <memory>
#include <optional>
#include <string>

namespace zelkovanta::platform::linux_host {

/// How secrets travel over the bus: "dh-ietf1024-sha256-aes128-cbc-pkcs7" of the Secret Service API. Keys are agreed on
/// for one conversation, so that whoever listens in on the bus learns nothing. Where the host has no randomness to
/// give, or the library no memory, no keys are agreed on and nothing is sealed.
class SecretCipher {
public:
    static constexpr const char* algorithm = "dh-ietf1024-sha256-aes128-cbc-pkcs7";

    SecretCipher();
    ~SecretCipher();
    SecretCipher(const SecretCipher&) = delete;
    SecretCipher& operator=(const SecretCipher&) = delete;

    /// This side's public key; empty if none could be made.
    [[nodiscard]] std::string publicKey() const;
    /// False if the other side's key is none, or this side's could not be made.
    bool agree(const std::string& otherPublicKey);

    struct Sealed {
        std::string parameters;
        std::string value;
    };
    /// After `agree`. None if it cannot be sealed.
    [[nodiscard]] std::optional<Sealed> seal(const std::string& secret) const;
    /// None if it was not sealed for this conversation.
    [[nodiscard]] std::optional<std::string> open(const Sealed& sealed) const;

private:
    struct Keys;
    std::unique_ptr<Keys> keys_;
};

}  // namespace zelkovanta::platform::linux_host
