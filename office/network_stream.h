#pragma once

#include "office/certificate.h"

#include <cstddef>
#include <expected>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

#include <boost/asio/async_result.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/beast/core/role.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/teardown.hpp>
#include <boost/system/error_code.hpp>

// Included by the server alone: Beast is heavy.
namespace zelkovanta::office {

/// A visitor's connection, encrypted where the office has a certificate. Time limits are set on `next_layer`.
class NetworkStream {
public:
    using Plain = boost::beast::tcp_stream;
    using Encrypted = boost::beast::ssl_stream<Plain>;
    using executor_type = Plain::executor_type;
    template <class Token>
    using Result = typename boost::asio::async_result<std::decay_t<Token>,
                                                      void(boost::system::error_code, std::size_t)>::return_type;

    /// Without `context` nothing is encrypted; else it must outlive the stream, and `handshake` comes first.
    NetworkStream(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* context)
        : layer_(context == nullptr ? Layer(std::in_place_type<Plain>, std::move(socket))
                                    : Layer(std::in_place_type<Encrypted>, Plain(std::move(socket)), *context)) {}

    [[nodiscard]] executor_type get_executor() { return next_layer().get_executor(); }
    [[nodiscard]] Plain& next_layer() {
        Encrypted* encrypted = std::get_if<Encrypted>(&layer_);
        return encrypted == nullptr ? std::get<Plain>(layer_) : encrypted->next_layer();
    }
    [[nodiscard]] const Plain& next_layer() const {
        const Encrypted* encrypted = std::get_if<Encrypted>(&layer_);
        return encrypted == nullptr ? std::get<Plain>(layer_) : encrypted->next_layer();
    }
    /// Null where nothing is encrypted.
    [[nodiscard]] Encrypted* encrypted() { return std::get_if<Encrypted>(&layer_); }

    template <class Buffers, class Token>
    Result<Token> async_read_some(const Buffers& buffers, Token&& token) {
        return std::visit(
            [&](auto& layer) -> Result<Token> { return layer.async_read_some(buffers, std::forward<Token>(token)); },
            layer_);
    }
    template <class Buffers, class Token>
    Result<Token> async_write_some(const Buffers& buffers, Token&& token) {
        return std::visit(
            [&](auto& layer) -> Result<Token> { return layer.async_write_some(buffers, std::forward<Token>(token)); },
            layer_);
    }

    /// How a web socket ends the connection below it.
    template <class Handler>
    // NOLINTNEXTLINE(readability-identifier-naming): the name that the library calls
    friend void async_teardown(boost::beast::role_type role, NetworkStream& stream, Handler&& handler) {
        using boost::beast::websocket::async_teardown;
        std::visit([&](auto& layer) { async_teardown(role, layer, std::forward<Handler>(handler)); }, stream.layer_);
    }

private:
    using Layer = std::variant<Plain, Encrypted>;
    Layer layer_;
};

/// What encrypts with this certificate. Fails with a sentence.
[[nodiscard]] std::expected<std::unique_ptr<boost::asio::ssl::context>, std::string> tlsContext(
    const Certificate& certificate);

// Each of them has a time limit of its own, and leaves that limit set.

/// False if there is no understanding with the visitor. Without encryption there is nothing to be done.
[[nodiscard]] boost::asio::awaitable<bool> handshake(NetworkStream& stream);
/// Reads away what a refused visitor still sends: closing at once would take the answer back from him.
[[nodiscard]] boost::asio::awaitable<void> drain(NetworkStream& stream);
/// Ends the connection, if the stream still has one.
[[nodiscard]] boost::asio::awaitable<void> sayGoodbye(NetworkStream& stream);

}  // namespace zelkovanta::office
