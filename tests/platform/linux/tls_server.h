#pragma once

#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/test_certificates.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::platform::linux_host {

enum class AskForCertificate : std::uint8_t { no, politely, insistently };
enum class AfterAnswer : std::uint8_t { keep, close };

struct TlsServerSettings {
    /// What is sent, leaf first; the server has the leaf's key. Nothing is left out, whatever the order.
    std::vector<TestCertificate> chain;
    int highestVersion = 0;  ///< of OpenSSL's constants, 0 for the highest there is
    AskForCertificate askForCertificate = AskForCertificate::no;
    AfterAnswer afterAnswer = AfterAnswer::keep;
    /// Makes it a proxy that speaks TLS with this certificate, and behind which every tunnel leads to the server.
    std::optional<TestCertificate> proxy{};
    int proxysHighestVersion = 0;  ///< as `highestVersion`
};

/// A TLS server on loopback that answers every request with "secret", and counts what its clients let it see.
class TlsServer {
public:
    /// What the clients' connections came to.
    struct Account {
        int accepted = 0;                  ///< handshakes that the server saw through
        int failed = 0;                    ///< those that it did not
        int resumed = 0;                   ///< of the accepted ones
        std::size_t applicationBytes = 0;  ///< that came out of the connections, those after a failed handshake too
        int requests = 0;
        bool operator==(const Account&) const = default;
    };

    explicit TlsServer(TlsServerSettings settings);
    ~TlsServer();
    TlsServer(const TlsServer&) = delete;
    TlsServer& operator=(const TlsServer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return server_->port(); }
    [[nodiscard]] std::string url() const { return "https://localhost:" + std::to_string(port()) + "/"; }
    /// Connections from now on are shown this chain.
    void show(std::vector<TestCertificate> chain);
    /// What came to be so far. Exact once the server has ended.
    [[nodiscard]] Account account() const;
    /// Cuts what is open, reads what is left on it, and gives the final account.
    Account end();

private:
    void serve(ScriptedConnection& connection);
    void serveTls(SSL& tls);

    mutable std::mutex mutex_;
    TlsServerSettings settings_;
    std::shared_ptr<SSL_CTX> context_;
    Account account_;
    std::unique_ptr<ScriptedServer> server_;
};

}  // namespace zelkovanta::platform::linux_host
