#include "office/network_stream.h"

#include <array>
#include <chrono>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::office {
namespace {

namespace asio = boost::asio;
namespace ssl = boost::asio::ssl;

constexpr auto awaited = asio::as_tuple(asio::use_awaitable);
constexpr std::chrono::seconds handshakeLimit{15};
constexpr std::chrono::seconds farewellLimit{2};
constexpr std::size_t largestRefusedBody = 16U << 20U;

}  // namespace

std::expected<std::unique_ptr<ssl::context>, std::string> tlsContext(const Certificate& certificate) {
    auto context = std::make_unique<ssl::context>(ssl::context::tls_server);
    context->set_options(ssl::context::default_workarounds | ssl::context::no_tlsv1 | ssl::context::no_tlsv1_1);
    boost::system::error_code error;
    context->use_certificate_chain_file(certificate.chain.string(), error);
    if (error) {
        return std::unexpected("The certificate " + certificate.chain.string() + " cannot be used: " + error.message() +
                               ".");
    }
    context->use_private_key_file(certificate.key.string(), ssl::context::pem, error);
    if (error) {
        return std::unexpected("The key " + certificate.key.string() +
                               " cannot be used with the certificate: " + error.message() + ".");
    }
    return context;
}

asio::awaitable<bool> handshake(NetworkStream& stream) {
    NetworkStream::Encrypted* encrypted = stream.encrypted();
    if (encrypted == nullptr) {
        co_return true;
    }
    stream.next_layer().expires_after(handshakeLimit);
    const auto [error] = co_await encrypted->async_handshake(ssl::stream_base::server, awaited);
    co_return !error;
}

asio::awaitable<void> drain(NetworkStream& stream) {
    boost::system::error_code error;
    NetworkStream::Plain& plain = stream.next_layer();
    plain.socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    plain.expires_after(farewellLimit);
    std::array<char, 16 * 1024> bytes{};
    for (std::size_t read = 0; read < largestRefusedBody && !error;) {
        std::size_t count = 0;
        std::tie(error, count) = co_await plain.async_read_some(asio::buffer(bytes), awaited);
        read += count;
    }
}

asio::awaitable<void> sayGoodbye(NetworkStream& stream) {
    NetworkStream::Plain& plain = stream.next_layer();
    if (!plain.socket().is_open()) {
        co_return;
    }
    if (NetworkStream::Encrypted* encrypted = stream.encrypted()) {
        plain.expires_after(farewellLimit);
        co_await encrypted->async_shutdown(awaited);
    }
    boost::system::error_code ignored;
    plain.socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
}

}  // namespace zelkovanta::office
