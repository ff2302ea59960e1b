#pragma once

#include "tests/platform/linux/test_certificates.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace zelkovanta::platform::linux_host {

/// One connection that a test's script has in its hands. Everything blocks, and ends when the server ends.
class ScriptedConnection {
public:
    explicit ScriptedConnection(int descriptor) : descriptor_(descriptor) {}
    ~ScriptedConnection();
    ScriptedConnection(const ScriptedConnection&) = delete;
    ScriptedConnection& operator=(const ScriptedConnection&) = delete;

    /// Reads up to and with `end`; what came before the peer closed, if it never comes.
    std::string readUntil(std::string_view end);
    std::string read(std::size_t size);
    /// The head of a request and its body.
    std::string readRequest();
    /// False once the peer is gone.
    bool send(std::string_view data);
    /// Reads until the peer closes.
    void waitForClose();
    /// Whether the peer closed, or sent something, within this time.
    bool stirsWithin(std::chrono::milliseconds time);
    /// Speaks TLS from here on, as a server; the second time within the first.
    bool startTls(const TestCertificate& certificate);
    void closeNow();
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    bool readMore();

    int descriptor_;
    std::shared_ptr<SSL> outerTls_;
    std::shared_ptr<SSL> tls_;
    std::string buffer_;
};

/// A listener on loopback that plays a script with each connection, on a thread of its own.
class ScriptedServer {
public:
    using Script = std::function<void(ScriptedConnection&)>;

    explicit ScriptedServer(Script script, std::optional<TestCertificate> certificate = std::nullopt);
    /// Cuts every connection and waits for the scripts to end.
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    [[nodiscard]] int connections() const { return connections_; }

private:
    void accept();

    Script script_;
    std::optional<TestCertificate> certificate_;
    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::atomic<int> connections_ = 0;
    std::mutex mutex_;
    bool isEnding_ = false;
    std::vector<std::weak_ptr<ScriptedConnection>> open_;
    std::vector<std::thread> threads_;
    std::thread accepting_;
};

/// A port on loopback at which nobody listens.
[[nodiscard]] std::uint16_t unusedPort();

}  // namespace zelkovanta::platform::linux_host
