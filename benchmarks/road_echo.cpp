#include "benchmarks/road_echo.h"

#include "benchmarks/child_process.h"
#include "benchmarks/monotonic.h"

#include <cstdio>
#include <iostream>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <curl/curl.h>

namespace zelkovanta::benchmarks {

namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;

// As long as a "signal.created" frame.
const std::string frame(450, 'x');

}  // namespace

std::vector<double> measureEcho(std::size_t rounds) {
    asio::io_context context;
    tcp::acceptor acceptor(context, {asio::ip::address_v4::loopback(), 0});
    const std::string port = std::to_string(acceptor.local_endpoint().port());

    ChildProcess listener({"--echo-listener", port});
    websocket::stream<tcp::socket> outbound(acceptor.accept());
    outbound.next_layer().set_option(tcp::no_delay(true));
    outbound.accept();
    outbound.text(true);

    ChildProcess poster({"--echo-poster", port});
    // It connects with its first request.
    poster.writeLine("post");
    tcp::socket inbound = acceptor.accept();
    inbound.set_option(tcp::no_delay(true));
    boost::beast::flat_buffer buffer;

    std::vector<double> milliseconds;
    for (std::size_t round = 0; round < rounds; ++round) {
        http::request<http::string_body> request;
        http::read(inbound, buffer, request);
        const std::int64_t accepted = monotonicNow();
        http::response<http::string_body> response(http::status::created, request.version(), "{}");
        response.prepare_payload();
        http::write(inbound, response);
        outbound.write(asio::buffer(request.body()));
        const std::int64_t seen = std::stoll(listener.readLine());
        milliseconds.push_back(static_cast<double>(seen - accepted) / 1e6);
        poster.writeLine("post");
    }
    return milliseconds;
}

int runEchoPoster(const std::string& port) {
    CURL* handle = curl_easy_init();
    const std::string url = "http://127.0.0.1:" + port + "/";
    curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, frame.c_str());
    curl_easy_setopt(
        handle, CURLOPT_WRITEFUNCTION, +[](char*, size_t size, size_t count, void*) { return size * count; });
    std::string line;
    while (std::getline(std::cin, line)) {
        curl_easy_perform(handle);
    }
    curl_easy_cleanup(handle);
    return 0;
}

int runEchoListener(const std::string& port) {
    asio::io_context context;
    websocket::stream<tcp::socket> socket(context);
    socket.next_layer().connect({asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(std::stoi(port))});
    socket.next_layer().set_option(tcp::no_delay(true));
    socket.handshake("127.0.0.1", "/");
    boost::beast::flat_buffer buffer;
    for (;;) {
        boost::system::error_code error;
        socket.read(buffer, error);
        if (error) {
            return 0;
        }
        std::printf("%lld\n", static_cast<long long>(monotonicNow()));
        std::fflush(stdout);
        buffer.clear();
    }
}

}  // namespace zelkovanta::benchmarks
