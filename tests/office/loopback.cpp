#include "tests/office/loopback.h"

#include <charconv>
#include <stdexcept>

#include <boost/asio/buffer.hpp>
#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>

namespace zelkovanta::office {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;

constexpr std::chrono::seconds patience{20};

tcp::endpoint here(unsigned short port) {
    return {asio::ip::address_v4::loopback(), port};
}

/// Runs what was begun until `done`.
template <class Done>
void runUntil(asio::io_context& context, Done done) {
    context.restart();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!done()) {
        if (context.run_one_until(deadline) == 0) {
            throw std::runtime_error("nothing comes over the connection");
        }
    }
}

}  // namespace

struct RawConnection::Socket {
    asio::io_context context;
    tcp::socket socket{context};
};

RawConnection::RawConnection(unsigned short port) : socket_(std::make_unique<Socket>()) {
    socket_->socket.connect(here(port));
}
RawConnection::~RawConnection() = default;
RawConnection::RawConnection(RawConnection&&) noexcept = default;

void RawConnection::send(std::string_view bytes) {
    bool done = false;
    asio::async_write(socket_->socket, asio::buffer(bytes), [&done](boost::system::error_code, std::size_t) {
        done = true;  // an end that closed on us shows when reading
    });
    runUntil(socket_->context, [&done] { return done; });
}

std::string RawConnection::readAll() {
    std::string text;
    bool done = false;
    asio::async_read(socket_->socket, asio::dynamic_buffer(text),
                     [&done](boost::system::error_code, std::size_t) { done = true; });
    runUntil(socket_->context, [&done] { return done; });
    return text;
}

std::string RawConnection::readUntil(std::string_view wanted) {
    std::string text;
    bool done = false;
    asio::async_read_until(socket_->socket, asio::dynamic_buffer(text), std::string(wanted),
                           [&done](boost::system::error_code, std::size_t) { done = true; });
    runUntil(socket_->context, [&done] { return done; });
    return text;
}

void RawConnection::close() {
    socket_->socket.close();
}

HttpReply ask(unsigned short port, std::string_view method, std::string_view path, std::string_view token,
              std::string_view body) {
    RawConnection connection(port);
    std::string request(method);
    request += " " + std::string(path) + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n";
    if (!token.empty()) {
        request += "Authorization: Bearer " + std::string(token) + "\r\n";
    }
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
    connection.send(request);
    const std::string answer = connection.readAll();

    constexpr std::string_view version = "HTTP/1.1 ";
    HttpReply reply;
    const auto end = answer.find("\r\n\r\n");
    if (answer.starts_with(version) && end != std::string::npos) {
        std::from_chars(answer.data() + version.size(), answer.data() + answer.size(), reply.status);
        reply.body = answer.substr(end + 4);
    }
    return reply;
}

struct RealTimeConnection::Stream {
    asio::io_context context;
    beast::websocket::stream<tcp::socket> socket{context};
};

RealTimeConnection::RealTimeConnection(unsigned short port) : stream_(std::make_unique<Stream>()) {
    stream_->socket.next_layer().connect(here(port));
}
RealTimeConnection::~RealTimeConnection() = default;

int RealTimeConnection::open(std::string_view token) {
    return shakeHands("localhost", "/api/v1/ws", "Authorization", "Bearer " + std::string(token));
}

int RealTimeConnection::openConsole(const std::string& host, const std::string& origin) {
    return shakeHands(host, "/console/v1/live", "Origin", origin);
}

int RealTimeConnection::shakeHands(const std::string& host, std::string_view path, std::string_view header,
                                   const std::string& value) {
    stream_->socket.set_option(beast::websocket::stream_base::decorator(
        [header = std::string(header), value](beast::websocket::request_type& request) {
            request.set(header, value);
        }));
    beast::websocket::response_type response;
    bool done = false;
    stream_->socket.async_handshake(response, host, std::string(path),
                                    [&done](boost::system::error_code) { done = true; });
    runUntil(stream_->context, [&done] { return done; });
    return static_cast<int>(response.result_int());
}

void RealTimeConnection::send(std::string_view frame) {
    bool done = false;
    stream_->socket.text(true);
    stream_->socket.async_write(asio::buffer(frame), [&done](boost::system::error_code, std::size_t) { done = true; });
    runUntil(stream_->context, [&done] { return done; });
}

std::optional<std::string> RealTimeConnection::next() {
    beast::flat_buffer frame;
    std::optional<boost::system::error_code> result;
    stream_->socket.async_read(frame, [&result](boost::system::error_code error, std::size_t) { result = error; });
    runUntil(stream_->context, [&result] { return result.has_value(); });
    if (*result) {
        return std::nullopt;
    }
    return beast::buffers_to_string(frame.cdata());
}

int RealTimeConnection::closeCode() const {
    return stream_->socket.reason().code;
}

}  // namespace zelkovanta::office
