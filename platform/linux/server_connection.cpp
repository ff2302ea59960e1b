#include "platform/linux/server_connection.h"

#include "platform/linux/name_lookup.h"
#include "records/base64.h"

#include <optional>
#include <utility>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;
using tcp = asio::ip::tcp;
using Socket = asio::basic_stream_socket<tcp, Executor>;
using SecureStream = asio::ssl::stream<Socket&>;
using TunnelledStream = asio::ssl::stream<SecureStream&>;
using boost::system::error_code;

namespace {

constexpr auto token = asio::as_tuple(asio::use_awaitable_t<Executor>{});
/// How long one of several addresses may take before the next is tried.
constexpr std::chrono::seconds addressLimit{2};
constexpr std::size_t maximumProxyAnswer = std::size_t{16} * 1024;

std::string bracketed(const std::string& host) {
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

/// "HTTP/1.x 2xx"
bool isSuccess(std::string_view head) {
    return head.starts_with("HTTP/1.") && head.size() > 12 && head[8] == ' ' && head[9] == '2';
}

/// Whether the other end of `stream` proves to be `host`.
template <class Stream>
Awaitable<bool> handshake(Stream& stream, std::string host) {
    error_code isName;
    asio::ip::make_address(host, isName);
    if (isName) {
        // The macro for this casts in C's way.
        SSL_ctrl(stream.native_handle(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, host.data());
    }
    stream.set_verify_callback(asio::ssl::host_name_verification(host));
    const auto [error] = co_await stream.async_handshake(asio::ssl::stream_base::client, token);
    co_return !error;
}

/// Asks a proxy at the other end of `stream` to lead on to a server.
template <class Stream>
Awaitable<bool> askForTunnel(Stream& stream, std::string credentials, UrlParts url) {
    const std::string target = bracketed(url.host) + ":" + std::to_string(url.port);
    std::string request = "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n";
    if (!credentials.empty()) {
        request += "Proxy-Authorization: Basic " + records::encodeBase64(credentials) + "\r\n";
    }
    request += "\r\n";
    for (std::size_t sent = 0; sent < request.size();) {
        const auto [error, size] = co_await stream.async_write_some(asio::buffer(request) + sent, token);
        if (error) {
            co_return false;
        }
        sent += size;
    }
    std::string answer;
    constexpr std::string_view end = "\r\n\r\n";
    while (answer.find(end) == std::string::npos) {
        const std::size_t before = answer.size();
        if (before == maximumProxyAnswer) {
            co_return false;
        }
        answer.resize(maximumProxyAnswer);
        const auto [error, size] = co_await stream.async_read_some(asio::buffer(answer) + before, token);
        answer.resize(before + size);
        if (error) {
            co_return false;
        }
    }
    // The server speaks only when spoken to: bytes behind the head come from somebody else.
    co_return isSuccess(answer) && answer.ends_with(end) && answer.find(end) + end.size() == answer.size();
}

}  // namespace

std::shared_ptr<asio::ssl::context> TlsTrust::context() {
    if (context_) {
        return context_;
    }
    auto made = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
    SSL_CTX_set_min_proto_version(made->native_handle(), TLS1_2_VERSION);
    error_code ignored;
    if (settings_.certificateFile.empty() && settings_.certificateFolder.empty()) {
        made->set_default_verify_paths(ignored);
    }
    // A file that cannot be read leaves nothing to trust, and every server is refused.
    if (!settings_.certificateFile.empty()) {
        made->load_verify_file(settings_.certificateFile, ignored);
    }
    if (!settings_.certificateFolder.empty()) {
        made->add_verify_path(settings_.certificateFolder, ignored);
    }
    made->set_verify_mode(asio::ssl::verify_peer);
    context_ = made;
    return made;
}

struct ServerConnection::Streams {
    explicit Streams(const Executor& executor) : socket(executor), limit(executor) {}

    Socket socket;
    asio::steady_timer limit;
    NameLookup lookup;
    int attempt = 0;
    std::shared_ptr<asio::ssl::context> context;
    // At most two of them: a secure proxy's, and within it or without a secure server's.
    std::optional<SecureStream> secure;
    std::optional<TunnelledStream> tunnelled;
    std::string last;

    /// Calls `use` with the stream that leads to the server.
    template <class Use>
    void withInnermost(Use use) {
        if (tunnelled) {
            use(*tunnelled);
        } else if (secure) {
            use(*secure);
        } else {
            use(socket);
        }
    }
};

ServerConnection::ServerConnection(Executor executor, TransportSettings settings, std::shared_ptr<TlsTrust> trust)
    : executor_(std::move(executor)),
      settings_(std::move(settings)),
      trust_(std::move(trust)),
      streams_(std::make_unique<Streams>(executor_)) {}

ServerConnection::~ServerConnection() {
    close();
}

Awaitable<bool> ServerConnection::open(UrlParts url) {
    const auto self = shared_from_this();
    const auto proxyUrl = settings_.proxies.proxyFor(url.scheme, url.host);
    if (proxyUrl) {
        const auto proxy = parseUrl(*proxyUrl);
        if (!proxy) {
            co_return false;
        }
        const bool isTunnelled = co_await tunnel(*proxy, url);
        if (!isTunnelled) {
            co_return false;
        }
    } else {
        const bool isConnected = co_await connect(url.host, url.port);
        if (!isConnected) {
            co_return false;
        }
    }
    if (url.scheme == "https" || url.scheme == "wss") {
        co_return co_await secure(url.host);
    }
    co_return !isClosed_;
}

Awaitable<bool> ServerConnection::connect(std::string host, std::uint16_t port) {
    auto lookUp = [this, host, port](Completion<Endpoints> done) {
        streams_->lookup = NameLookup(host, port, std::move(done));
    };
    const Endpoints endpoints = co_await awaitCallback<Endpoints>(std::move(lookUp));
    for (std::size_t i = 0; i < endpoints.size() && !isClosed_; ++i) {
        const int attempt = ++streams_->attempt;
        if (i + 1 < endpoints.size()) {
            streams_->limit.expires_after(addressLimit);
            streams_->limit.async_wait([weak = weak_from_this(), attempt](error_code withdrawn) {
                const auto self = weak.lock();
                if (self && !withdrawn && self->streams_->attempt == attempt) {
                    error_code ignored;
                    self->streams_->socket.close(ignored);
                }
            });
        }
        error_code failed;
        streams_->socket.close(failed);
        const auto [error] = co_await streams_->socket.async_connect(endpoints[i], token);
        ++streams_->attempt;
        streams_->limit.cancel();
        if (!error && !isClosed_) {
            Socket& socket = streams_->socket;
            socket.set_option(tcp::no_delay(true), failed);
            socket.set_option(asio::socket_base::keep_alive(true), failed);
            // How long the other side may stay silent is for the watchdog of what is spoken here to say, not for TCP.
            co_return true;
        }
    }
    co_return false;
}

Awaitable<bool> ServerConnection::tunnel(UrlParts proxy, UrlParts url) {
    const bool isConnected = co_await connect(proxy.host, proxy.port);
    if (!isConnected) {
        co_return false;
    }
    if (proxy.scheme != "https") {
        co_return co_await askForTunnel(streams_->socket, proxy.credentials, url);
    }
    streams_->context = trust_->context();
    auto& stream = streams_->secure.emplace(streams_->socket, *streams_->context);
    const bool isProxy = co_await handshake(stream, proxy.host);
    if (!isProxy) {
        co_return false;
    }
    co_return co_await askForTunnel(stream, proxy.credentials, url);
}

Awaitable<bool> ServerConnection::secure(std::string host) {
    streams_->context = trust_->context();
    bool isServer = false;
    if (streams_->secure) {
        isServer =
            co_await handshake(streams_->tunnelled.emplace(*streams_->secure, *streams_->context), std::move(host));
    } else {
        isServer = co_await handshake(streams_->secure.emplace(streams_->socket, *streams_->context), std::move(host));
    }
    co_return isServer && !isClosed_;
}

void ServerConnection::readSome(asio::mutable_buffer into, Done done) {
    if (isClosed_) {
        asio::post(executor_, [done = std::move(done)]() mutable { done(asio::error::operation_aborted, 0); });
    } else {
        streams_->withInnermost([&](auto& stream) { stream.async_read_some(into, std::move(done)); });
    }
}

void ServerConnection::writeSome(asio::const_buffer from, Done done) {
    if (isClosed_ || isClosing_) {
        asio::post(executor_, [done = std::move(done)]() mutable { done(asio::error::operation_aborted, 0); });
        return;
    }
    isWriting_ = true;
    Done finished = [self = shared_from_this(), done = std::move(done)](error_code error, std::size_t size) mutable {
        self->isWriting_ = false;
        done(error, size);
    };
    streams_->withInnermost([&](auto& stream) { stream.async_write_some(from, std::move(finished)); });
}

void ServerConnection::close() {
    if (std::exchange(isClosed_, true)) {
        return;
    }
    streams_->lookup = {};
    streams_->limit.cancel();
    error_code ignored;
    streams_->socket.shutdown(Socket::shutdown_both, ignored);
    streams_->socket.close(ignored);
}

void ServerConnection::closeAfter(std::string last, std::chrono::milliseconds limit) {
    if (isClosed_ || isClosing_) {
        return;
    }
    if (isWriting_) {
        // Nothing may come between the halves of what is being written.
        close();
        return;
    }
    streams_->last = std::move(last);
    streams_->limit.expires_after(limit);
    streams_->limit.async_wait([self = shared_from_this()](error_code) { self->close(); });
    writeSome(asio::buffer(streams_->last), [self = shared_from_this()](error_code, std::size_t) { self->close(); });
    isClosing_ = true;
}

}  // namespace zelkovanta::platform::linux_host
