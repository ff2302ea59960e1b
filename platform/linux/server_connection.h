#pragma once

#include "platform/async.h"
#include "platform/linux/transport_settings.h"
#include "platform/linux/url_parts.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/system/error_code.hpp>

namespace boost::asio::ssl {
class context;  // NOLINT(readability-identifier-naming): the library's name
}  // namespace boost::asio::ssl

namespace zelkovanta::platform::linux_host {

/// Where connections get their trust from. Loads the authorities at its first use.
class TlsTrust {
public:
    explicit TlsTrust(TransportSettings settings) : settings_(std::move(settings)) {}
    [[nodiscard]] std::shared_ptr<boost::asio::ssl::context> context();

private:
    TransportSettings settings_;
    std::shared_ptr<boost::asio::ssl::context> context_;
};

/// A stream of bytes to a server, plain or over TLS, direct or through a proxy's tunnel. To be used on one executor,
/// which is a strand of the network thread. One read and one write may be under way at a time.
class ServerConnection : public std::enable_shared_from_this<ServerConnection> {
public:
    using Done = std::move_only_function<void(boost::system::error_code, std::size_t)>;

    ServerConnection(Executor executor, TransportSettings settings, std::shared_ptr<TlsTrust> trust);
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    /// Finds the server, connects, and for https and wss proves that it is the one named. Once. It has no limit of its
    /// own: `close` ends it.
    Awaitable<bool> open(UrlParts url);

    void readSome(boost::asio::mutable_buffer into, Done done);
    void writeSome(boost::asio::const_buffer from, Done done);

    /// Ends whatever is under way.
    void close();
    /// Tries to write `last`, then closes, within `limit` in any case. Does not wait for the peer.
    void closeAfter(std::string last, std::chrono::milliseconds limit);

    [[nodiscard]] const Executor& executor() const { return executor_; }

private:
    struct Streams;
    Awaitable<bool> connect(std::string host, std::uint16_t port);
    Awaitable<bool> tunnel(UrlParts proxy, UrlParts url);
    Awaitable<bool> secure(std::string host);

    Executor executor_;
    TransportSettings settings_;
    std::shared_ptr<TlsTrust> trust_;
    std::unique_ptr<Streams> streams_;
    bool isClosed_ = false;
    bool isClosing_ = false;
    bool isWriting_ = false;
};

}  // namespace zelkovanta::platform::linux_host
