#include "platform/linux/beast_web_socket.h"
#include "platform/task.h"
#include "tests/platform/linux/tls_fixture.h"
#include "tests/platform/linux/tls_server.h"

#include <future>

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <openssl/ssl.h>

namespace zelkovanta::platform::linux_host {
namespace {

namespace asio = boost::asio;

/// On a host whose OpenSSL would still speak TLS 1.0 and 1.1: whoever refuses them here does it by a setting of its
/// own.
struct TlsVersionsTest : TlsTest {
    const CertificateChain chain = makeChain("localhost");

    TlsVersionsTest() { trust({chain.root}); }

    [[nodiscard]] TlsServerSettings speaking(int version) const {
        return {.chain = chain.sent(), .highestVersion = version};
    }

    /// Whether somebody without such a setting gets through to the server.
    static bool isReachedByAnybody(const TlsServer& server) {
        asio::io_context context;
        asio::ssl::context anything(asio::ssl::context::tls_client);
        asio::ssl::stream<asio::ip::tcp::socket> stream(context, anything);
        stream.next_layer().connect({asio::ip::address_v4::loopback(), server.port()});
        boost::system::error_code error;
        stream.handshake(asio::ssl::stream_base::client, error);
        return !error;
    }

    /// Opens a web socket, which this server answers with something else, and waits for its failure.
    void openWebSocket(const TlsServer& server) {
        const Executor queue = network.makeSerialQueue();
        BeastWebSocketLoading sockets(settings);
        std::promise<bool> received;
        startTask(queue, [&]() -> Awaitable<void> {
            const auto socketSession = sockets.makeSession(queue);
            const auto task = socketSession->makeTask({.url = "wss://localhost:" + std::to_string(server.port())});
            task->resume();
            const auto frame = co_await task->receive();
            received.set_value(frame.has_value());
        });
        EXPECT_FALSE(received.get_future().get());
        sockets.cancelAll();
        network.runAndWait([]() -> Awaitable<void> { co_return; }, std::chrono::seconds{10});
    }
};

TEST_F(TlsVersionsTest, aRequestIsMadeOverTls12ButOverNothingOlder) {
    openSession();
    TlsServer current(speaking(TLS1_2_VERSION));
    EXPECT_EQ(shown(get(current.url())), "answered");
    for (const int version : {TLS1_1_VERSION, TLS1_VERSION}) {
        TlsServer old(speaking(version));
        ASSERT_TRUE(isReachedByAnybody(old));
        EXPECT_NE(shown(get(old.url())), "answered");
        EXPECT_EQ(old.end(), (TlsServer::Account{.accepted = 1, .failed = 1}));
    }
}

TEST_F(TlsVersionsTest, aRequestGoesThroughNoProxyThatSpeaksSomethingOlder) {
    const CertificateChain office = makeChain("office.test");
    trust({chain.root, office.root});
    const auto answerThrough = [&](int version) {
        TlsServer proxy({.chain = office.sent(),
                         .proxy = makeServerCertificate(chain.root, "localhost"),
                         .proxysHighestVersion = version});
        if (version < TLS1_2_VERSION) {
            EXPECT_TRUE(isReachedByAnybody(proxy));
        }
        settings.proxies.https = "https://localhost:" + std::to_string(proxy.port());
        loading.reset();
        openSession();
        const auto result = shown(get("https://office.test/"));
        session.reset();
        loading->cancelAll();
        EXPECT_EQ(proxy.end().requests, result == "answered" ? 1 : 0);
        return result;
    };
    EXPECT_EQ(answerThrough(TLS1_2_VERSION), "answered");
    EXPECT_NE(answerThrough(TLS1_1_VERSION), "answered");
}

TEST_F(TlsVersionsTest, aWebSocketIsOpenedOverTls12ButOverNothingOlder) {
    TlsServer current(speaking(TLS1_2_VERSION));
    openWebSocket(current);
    EXPECT_EQ(current.end().requests, 1) << "its opening arrives";
    for (const int version : {TLS1_1_VERSION, TLS1_VERSION}) {
        TlsServer old(speaking(version));
        ASSERT_TRUE(isReachedByAnybody(old));
        openWebSocket(old);
        EXPECT_EQ(old.end(), (TlsServer::Account{.accepted = 1, .failed = 1}));
    }
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
