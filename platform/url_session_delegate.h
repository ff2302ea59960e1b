#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace zelkovanta::platform {

/// SHA-256 over the DER form of a certificate's SubjectPublicKeyInfo, as it stands in the certificate.
using PublicKeyDigest = std::array<std::uint8_t, 32>;

/// What the host's own verification made of a server's certificates: chain, dates and name.
struct ServerTrust {
    bool isTrusted = false;
    /// Of the chain that verification built up to a trusted root, leaf first. Never of what the server merely sent
    /// along. Empty where there is no such chain.
    std::vector<PublicKeyDigest> publicKeys{};
    bool operator==(const ServerTrust&) const = default;
};

enum class AuthenticationMethod : std::uint8_t {
    serverTrust,        ///< the server shows its certificates
    clientCertificate,  ///< the server asks for one of ours
};

struct AuthenticationChallenge {
    AuthenticationMethod method = AuthenticationMethod::serverTrust;
    std::optional<ServerTrust> serverTrust{};  ///< none with other methods
    bool operator==(const AuthenticationChallenge&) const = default;
};

enum class ChallengeDisposition : std::uint8_t {
    performDefaultHandling,  ///< as without a delegate
    useCredential,           ///< the trust that was shown is accepted; one that is not trusted stays refused
    cancel,                  ///< the exchange fails before anything of the request is sent
};

/// Has a say in the handshakes of a URL session.
class UrlSessionDelegate {
public:
    virtual ~UrlSessionDelegate() = default;
    /// Called inside each handshake, on the session's own thread: it must neither block for long nor throw. Called
    /// again, with the trust of that handshake, before another request goes out on the same connection.
    [[nodiscard]] virtual ChallengeDisposition answer(const AuthenticationChallenge& challenge) const = 0;
};

}  // namespace zelkovanta::platform
