#include "benchmarks/road_echo.h"

#include "benchmarks/child_process.h"
#include "benchmarks/monotonic.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <semaphore>
#include <thread>
#include <utility>

#include <QCoreApplication>
#include <QMetaObject>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <curl/curl.h>

namespace zelkovanta::benchmarks {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;
using Acceptor = asio::use_awaitable_t<>::as_default_on_t<tcp::acceptor>;
using Requests = asio::use_awaitable_t<>::as_default_on_t<beast::tcp_stream>;
using Frames = websocket::stream<Requests>;

// As long as a "signal.created" frame.
const std::string frame(450, 'x');

/// Answers a request, then forwards its body to both processes: asynchronously, on a thread of its own, as any server
/// does.
class Forwarder {
public:
    explicit Forwarder(asio::io_context& context) : acceptor_(context, {asio::ip::address_v4::loopback(), 0}) {
        asio::co_spawn(context, run(), asio::detached);
    }

    [[nodiscard]] std::string port() const { return std::to_string(acceptor_.local_endpoint().port()); }
    /// The poster's socket connects first, then the listener's, then the poster's requests.
    void waitForSocket() { sockets_.acquire(); }
    /// When the latest request had been read.
    [[nodiscard]] std::int64_t acceptedAt() const { return acceptedAt_; }

private:
    asio::awaitable<Requests> accept() {
        tcp::socket socket = co_await acceptor_.async_accept();
        socket.set_option(tcp::no_delay(true));
        co_return Requests(std::move(socket));
    }

    asio::awaitable<Frames> acceptSocket() {
        Requests stream = co_await accept();
        Frames socket(std::move(stream));
        co_await socket.async_accept();
        socket.text(true);
        sockets_.release();
        co_return socket;
    }

    asio::awaitable<void> run() {
        Frames poster = co_await acceptSocket();
        Frames listener = co_await acceptSocket();
        Requests inbound = co_await accept();
        beast::flat_buffer buffer;
        for (;;) {
            http::request<http::string_body> request;
            co_await http::async_read(inbound, buffer, request);
            acceptedAt_ = monotonicNow();
            http::response<http::string_body> response(http::status::created, request.version(), "{}");
            response.prepare_payload();
            co_await http::async_write(inbound, response);
            co_await poster.async_write(asio::buffer(request.body()));
            co_await listener.async_write(asio::buffer(request.body()));
        }
    }

    Acceptor acceptor_;
    std::counting_semaphore<2> sockets_{0};
    std::atomic<std::int64_t> acceptedAt_ = 0;
};

/// Holds a web socket, and tells of each frame as it is read.
asio::awaitable<void> listen(asio::io_context& context, std::uint16_t port, std::function<void()> arrived) {
    Requests stream(context);
    co_await stream.async_connect(tcp::endpoint(asio::ip::address_v4::loopback(), port));
    stream.socket().set_option(tcp::no_delay(true));
    Frames socket(std::move(stream));
    co_await socket.async_handshake("127.0.0.1", "/");
    for (;;) {
        beast::flat_buffer buffer;
        co_await socket.async_read(buffer);
        arrived();
    }
}

void sayTime() {
    std::printf("%lld\n", static_cast<long long>(monotonicNow()));
    std::fflush(stdout);
}

void runListener(const std::string& port, std::function<void()> arrived) {
    asio::io_context context;
    // Ends with the connection, by the exception that says so.
    asio::co_spawn(context, listen(context, static_cast<std::uint16_t>(std::stoi(port)), std::move(arrived)),
                   asio::detached);
    context.run();
}

}  // namespace

std::vector<double> measureEcho(std::size_t rounds, EchoEnd end) {
    asio::io_context context;
    Forwarder forwarder(context);
    std::thread thread([&] { context.run(); });
    std::vector<double> milliseconds;
    {
        ChildProcess poster({"--echo-poster", forwarder.port()});
        forwarder.waitForSocket();
        ChildProcess listener({"--echo-listener", forwarder.port(), nameOf(end)});
        forwarder.waitForSocket();
        for (std::size_t round = 0; round < rounds; ++round) {
            poster.writeLine("post");
            const std::int64_t seen = std::stoll(listener.readLine());
            static_cast<void>(poster.readLine());
            milliseconds.push_back(static_cast<double>(seen - forwarder.acceptedAt()) / 1e6);
        }
        context.stop();
        thread.join();
    }
    return milliseconds;
}

int runEchoPoster(const std::string& port) {
    std::thread([port] { runListener(port, sayTime); }).detach();
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

int runEchoListener(int argc, char** argv, const std::string& port, EchoEnd end) {
    if (end == EchoEnd::socketThread) {
        runListener(port, sayTime);
        return 0;
    }
    QCoreApplication application(argc, argv);
    std::thread([port, &application] {
        runListener(port, [&application] { QMetaObject::invokeMethod(&application, sayTime, Qt::QueuedConnection); });
    }).detach();
    // The parent ends this process.
    std::_Exit(QCoreApplication::exec());
}

const char* nameOf(EchoEnd end) {
    return end == EchoEnd::mainLoop ? "main-loop" : "socket-thread";
}

}  // namespace zelkovanta::benchmarks
