#include "platform/linux/beast_web_socket.h"
#include "platform/linux/tls_handshakes.h"
#include "platform/linux/url_parts.h"
#include "platform/task.h"
#include "server/api_client.h"
#include "server/app_check_pinning.h"
#include "tests/platform/linux/scripted_web_socket.h"
#include "tests/platform/linux/tls_fixture.h"
#include "tests/platform/linux/tls_server.h"

#include <openssl/ssl.h>

namespace zelkovanta::platform::linux_host {
namespace {

struct TlsSessionsTest : TlsTest {
    const CertificateChain chain = makeChain();
    const std::string otherPin = pinOf(makeAuthority());

    TlsSessionsTest() { trust({chain.root}); }

    std::string answer(const TlsServer& server) { return shown(get(server.url())); }
};

TEST_F(TlsSessionsTest, thePinIsReadAtEachHandshake) {
    TlsServer server({.chain = chain.sent(), .afterAnswer = AfterAnswer::close});
    pin(otherPin);
    openSession();
    EXPECT_EQ(answer(server), "certificate refused");
    pin(pinOf(chain.leaf));
    EXPECT_EQ(answer(server), "answered");
    pin(otherPin);
    EXPECT_EQ(answer(server), "certificate refused");
    unpin();
    EXPECT_EQ(answer(server), "answered");
    EXPECT_EQ(server.end().requests, 2);
}

TEST_F(TlsSessionsTest, aConnectionThatIsKeptCarriesNothingOnceThePinIsAnother) {
    TlsServer server({.chain = chain.sent()});
    pin(pinOf(chain.leaf));
    openSession();
    EXPECT_EQ(answer(server), "answered");
    const auto before = server.account();
    pin(otherPin);
    EXPECT_EQ(answer(server), "certificate refused");
    EXPECT_EQ(witness->answers(), "use, cancel, cancel");
    auto expected = before;
    expected.failed = 1;
    EXPECT_EQ(server.end(), expected) << "more than the first request was seen";
}

TEST_F(TlsSessionsTest, aConnectionIsKeptWhileThePinFitsItsChain) {
    TlsServer server({.chain = chain.sent()});
    openSession();
    for (const auto& place : chain.places()) {
        pin(pinOf(place));
        EXPECT_EQ(answer(server), "answered");
    }
    unpin();
    EXPECT_EQ(answer(server), "answered");
    EXPECT_EQ(witness->answers(), "use, use, use, default");
    const auto account = server.end();
    EXPECT_EQ(account.accepted, 1);
    EXPECT_EQ(account.requests, 4);
}

TEST_F(TlsSessionsTest, aServerAndItsPinMayChangeTogetherWithoutAFailedRequest) {
    const CertificateChain next = makeChain();
    trust({chain.root, next.root});
    TlsServer server({.chain = chain.sent()});
    pin(pinOf(chain.leaf));
    openSession();
    EXPECT_EQ(answer(server), "answered");
    server.show(next.sent());
    pin(pinOf(next.leaf));
    EXPECT_EQ(answer(server), "answered");
    EXPECT_EQ(answer(server), "answered");
    EXPECT_EQ(witness->answers(), "use, cancel, use, use");
    const auto account = server.end();
    EXPECT_EQ(account.accepted, 2);
    EXPECT_EQ(account.requests, 3);
}

TEST_F(TlsSessionsTest, everyHandshakeOfManyAtATimeIsAsked) {
    TlsServer server({.chain = chain.sent()});
    pin(otherPin);
    openSession();
    std::vector<std::future<Result>> pending;
    for (int i = 0; i < 10; ++i) {
        pending.push_back(begin(server.url()));
    }
    for (auto& each : pending) {
        EXPECT_EQ(shown(each.get()), "certificate refused");
    }
    const auto account = server.end();
    EXPECT_EQ(account, (TlsServer::Account{.failed = account.failed}));
    EXPECT_GE(account.failed, 1);
}

/// Fetches twice with one handle, which remembers the sessions of its first connection for the second.
void fetchTwice(TlsHandshakes& handshakes, const std::string& url) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
    curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_NOPROXY, "*");
    curl_easy_setopt(
        easy.get(), CURLOPT_WRITEFUNCTION, +[](const char*, std::size_t, std::size_t size, void*) { return size; });
    EXPECT_TRUE(handshakes.setUp(easy.get(), parseUrl(url).value(), std::nullopt));
    EXPECT_EQ(curl_easy_perform(easy.get()), CURLE_OK);
    EXPECT_EQ(curl_easy_perform(easy.get()), CURLE_OK);
}

TEST_F(TlsSessionsTest, nothingIsResumedWhereADelegateIsAsked) {
    pin(pinOf(chain.leaf));
    const auto delegate =
        std::make_shared<WitnessDelegate>(std::make_shared<server::AppCheckPinningDelegate>(information));
    TlsHandshakes pinned(settings, delegate);
    TlsHandshakes unpinned(settings, nullptr);
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        TlsServer server({.chain = chain.sent(), .highestVersion = version, .afterAnswer = AfterAnswer::close});
        fetchTwice(pinned, server.url());
        EXPECT_EQ(server.account().resumed, 0);
        fetchTwice(unpinned, server.url());
        const auto account = server.end();
        EXPECT_EQ(account.resumed, 1) << "this server resumes nothing, so the pinned one proves nothing";
        EXPECT_EQ(account.accepted, 4);
    }
    EXPECT_EQ(delegate->answers(), "use, use, use, use");
}

TEST_F(TlsSessionsTest, aDelegateCannotMakeAStrangerTrusted) {
    struct Credulous final : UrlSessionDelegate {
        [[nodiscard]] ChallengeDisposition answer(const AuthenticationChallenge&) const override {
            return ChallengeDisposition::useCredential;
        }
    };
    TlsServer server({.chain = makeChain().sent()});
    openSession(std::make_shared<Credulous>());
    EXPECT_EQ(answer(server), "certificate refused");
    EXPECT_EQ(witness->answers(), "use");
    EXPECT_EQ(server.end(), (TlsServer::Account{.failed = 1}));
}

TEST_F(TlsSessionsTest, aServerWithoutTlsIsNobodysChallenge) {
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecret");
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nsecret");
    });
    pin(otherPin);
    openSession();
    EXPECT_EQ(shown(get("http://" + server.address())), "answered");
    EXPECT_EQ(shown(get("http://" + server.address())), "answered");
    EXPECT_EQ(witness->answers(), "");
    EXPECT_EQ(server.connections(), 1);
}

/// A proxy that speaks TLS has a certificate of the practice's own; the pin is the server's.
struct TlsProxyTest : TlsSessionsTest {
    struct Spelling {
        std::string server;
        std::string proxy;
    };

    /// The library loses the reason of a failure where TLS runs inside TLS.
    const std::string refusedInTheTunnel = shown(std::unexpected(TransportError{TransportCause::interrupted}));
    const TestCertificate proxyAuthority = makeAuthority();
    const TestCertificate proxy = makeServerCertificate(proxyAuthority, "localhost");
    const CertificateChain office = makeChain("office.test");

    std::string answerThroughProxy(const TlsServer& server, const Spelling& spelling = {"office.test", "localhost"}) {
        settings.proxies.https = "https://" + spelling.proxy + ":" + std::to_string(server.port());
        trust({proxyAuthority, office.root});
        loading.reset();
        openSession();
        return shown(get("https://" + spelling.server + "/"));
    }
};

/// Fetches once, where this name is that of this computer; gives the library's code.
CURLcode fetchFromHere(TlsHandshakes& handshakes, const std::string& name, const std::string& url,
                       const std::string& proxy) {
    const auto proxyParts = parseUrl(proxy).value();
    const std::string place = name + ":" + std::to_string(proxyParts.port) + ":127.0.0.1";
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> places(curl_slist_append(nullptr, place.c_str()),
                                                                             &curl_slist_free_all);
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
    curl_easy_setopt(easy.get(), CURLOPT_RESOLVE, places.get());
    curl_easy_setopt(easy.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_PROXY, proxy.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_NOPROXY, "");
    curl_easy_setopt(
        easy.get(), CURLOPT_WRITEFUNCTION, +[](const char*, std::size_t, std::size_t size, void*) { return size; });
    EXPECT_TRUE(handshakes.setUp(easy.get(), parseUrl(url).value(), proxy));
    return curl_easy_perform(easy.get());
}

TEST_F(TlsProxyTest, theServerBehindASecureProxyIsPinnedAndTheProxyIsNot) {
    TlsServer server({.chain = office.sent(), .proxy = proxy});
    pin(pinOf(office.intermediate));
    EXPECT_EQ(answerThroughProxy(server), "answered");
    EXPECT_EQ(shown(get("https://office.test/")), "answered");
    EXPECT_EQ(witness->answers(), "use, use");
    pin(otherPin);
    EXPECT_EQ(shown(get("https://office.test/")), refusedInTheTunnel);
    EXPECT_EQ(witness->answers(), "use, use, cancel, cancel");
    const auto account = server.end();
    EXPECT_EQ(account.accepted, 1);
    EXPECT_EQ(account.requests, 2);
}

TEST_F(TlsProxyTest, theProxysOwnKeyIsNoPinOfTheServer) {
    TlsServer server({.chain = office.sent(), .proxy = proxy});
    pin(pinOf(proxy));
    EXPECT_EQ(answerThroughProxy(server), refusedInTheTunnel);
    EXPECT_EQ(witness->answers(), "cancel");
    EXPECT_EQ(server.end(), (TlsServer::Account{.failed = 1}));
}

TEST_F(TlsProxyTest, aProxyIsKnownInCapitalsAndByItsAddress) {
    for (const auto& [spelling, name] : {std::pair{Spelling{"office.test", "LocalHost"}, "localhost"},
                                         std::pair{Spelling{"Office.TEST", "localhost"}, "localhost"},
                                         std::pair{Spelling{"office.test.", "localhost"}, "localhost"},
                                         std::pair{Spelling{"office.test", "127.0.0.1"}, "127.0.0.1"}}) {
        TlsServer server({.chain = office.sent(), .proxy = makeServerCertificate(proxyAuthority, name)});
        pin(pinOf(office.leaf));
        EXPECT_EQ(answerThroughProxy(server, spelling), "answered") << spelling.server << " " << spelling.proxy;
        EXPECT_EQ(witness->answers(), "use") << spelling.server << " " << spelling.proxy;
        EXPECT_EQ(server.end().requests, 1);
    }
}

TEST_F(TlsProxyTest, aServerWithoutANameIsPinnedHoweverItsAddressIsWritten) {
    for (const auto& spelling :
         {Spelling{"10.0.0.1", "localhost"}, Spelling{"10.0.0.1", "127.0.0.1"}, Spelling{"10.1", "127.0.0.1"},
          Spelling{"0xa000001", "127.0.0.1"}, Spelling{"[::2]", "127.0.0.1"}}) {
        TlsServer server(
            {.chain = makeChain("10.0.0.1").sent(), .proxy = makeServerCertificate(proxyAuthority, spelling.proxy)});
        pin(otherPin);
        EXPECT_NE(answerThroughProxy(server, spelling), "answered") << spelling.server;
        EXPECT_EQ(witness->answers(), "cancel") << spelling.server;
        EXPECT_EQ(server.end().accepted, 0) << spelling.server;
    }
}

TEST_F(TlsProxyTest, aServerWithItsProxysNameIsPinnedHoweverTheyAreSpelled) {
    const TestCertificate both = makeServerCertificate(office.root, "office.test");
    trust({office.root});
    for (const auto& spelling : {Spelling{"office.test", "office.test"}, Spelling{"Office.test", "office.test"},
                                 Spelling{"office.test", "OFFICE.test"}, Spelling{"office.test.", "office.test"}}) {
        const auto delegate =
            std::make_shared<WitnessDelegate>(std::make_shared<server::AppCheckPinningDelegate>(information));
        TlsHandshakes handshakes(settings, delegate);
        TlsServer server({.chain = office.sent(), .afterAnswer = AfterAnswer::close, .proxy = both});
        const auto fetch = [&] {
            return fetchFromHere(handshakes, "office.test", "https://" + spelling.server + "/",
                                 "https://" + spelling.proxy + ":" + std::to_string(server.port()));
        };
        pin(pinOf(both));
        EXPECT_NE(fetch(), CURLE_OK) << spelling.server << " " << spelling.proxy;
        EXPECT_EQ(delegate->answers(), "use, cancel") << spelling.server << " " << spelling.proxy;
        pin(pinOf(office.root));
        EXPECT_EQ(fetch(), CURLE_OK) << spelling.server << " " << spelling.proxy;
        EXPECT_EQ(delegate->answers(), "use, cancel, use, use") << spelling.server << " " << spelling.proxy;
        const auto account = server.end();
        EXPECT_EQ(account.accepted, 1);
        EXPECT_EQ(account.requests, 1);
    }
}

/// The pin is for REST clients, and for nothing else.
struct TlsScopeTest : TlsSessionsTest {
    TlsScopeTest() {
        pin(otherPin);
        loading = std::make_unique<CurlUrlLoading>(network, settings);
    }
};

TEST_F(TlsScopeTest, restClientsArePinned) {
    using Outcome = std::expected<records::EmptyResponse, server::APIError>;
    const auto outcomeAt = [&](const TlsServer& server) {
        const auto client = server::APIClient::make(
            records::Url::parse(server.url()).value(), "token",
            {.urlLoading = *loading, .information = information, .background = network.executor()});
        auto promise = std::make_shared<std::promise<Outcome>>();
        startTask(network.makeSerialQueue(),
                  [client, promise]() -> Awaitable<void> { promise->set_value(co_await client->signOutDevice()); });
        return promise->get_future().get();
    };
    TlsServer refused({.chain = chain.sent()});
    EXPECT_EQ(outcomeAt(refused), Outcome(std::unexpected(server::APIError{server::api_error::Transport{
                                      TransportError{TransportCause::certificateRefused}}})));
    EXPECT_EQ(refused.end(), (TlsServer::Account{.failed = 1}));
    pin(pinOf(chain.root));
    TlsServer accepted({.chain = chain.sent()});
    EXPECT_FALSE(outcomeAt(accepted).has_value()) << "\"secret\" is no JSON";
    EXPECT_EQ(accepted.end().requests, 1);
}

TEST_F(TlsScopeTest, plainDownloadsAreNotPinned) {
    TlsServer server({.chain = chain.sent()});
    session = loading->makeSession({});
    EXPECT_EQ(answer(server), "answered");
}

TEST_F(TlsScopeTest, theWebSocketIsNotPinned) {
    const TestCertificate direct = makeServerCertificate(chain.root, "localhost");
    ScriptedServer server(
        [](ScriptedConnection& connection) {
            acceptUpgrade(connection);
            connection.send(serverFrame(text, "hello"));
            connection.waitForClose();
        },
        direct);
    const Executor queue = network.makeSerialQueue();
    BeastWebSocketLoading sockets(settings);
    auto received = std::make_shared<std::promise<std::string>>();
    startTask(queue, [&, received]() -> Awaitable<void> {
        const auto socketSession = sockets.makeSession(queue);
        const auto task = socketSession->makeTask({.url = "wss://localhost:" + std::to_string(server.port())});
        task->resume();
        const auto frame = co_await task->receive();
        received->set_value(frame ? frame->payload : "failed");
    });
    EXPECT_EQ(received->get_future().get(), "hello");
    sockets.cancelAll();
    network.runAndWait([]() -> Awaitable<void> { co_return; }, std::chrono::seconds{10});
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
