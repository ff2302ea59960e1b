#include "platform/linux/curl_url_session.h"

#include "platform/linux/network_interfaces.h"
#include "platform/linux/network_thread.h"
#include "platform/task.h"
#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/temporary_folder.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <vector>

#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;
using Result = std::expected<HttpResponse, TransportError>;

std::string answer(std::string_view body, std::string_view status = "200 OK") {
    return "HTTP/1.1 " + std::string{status} + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           std::string{body};
}

/// The outcome as a failed test shows it best.
std::string shown(const Result& result) {
    return result ? std::to_string(result->status) + " " + result->body
                  : "failed with cause " + std::to_string(static_cast<int>(result.error().cause));
}

struct CurlUrlSessionTest : testing::Test {
    NetworkThread network;
    TransportSettings settings{.acceptLanguage = "de-DE"};
    UrlSessionConfiguration configuration{.idleTimeout = 10s};
    std::unique_ptr<CurlUrlLoading> loading;
    std::unique_ptr<UrlSession> session;

    ~CurlUrlSessionTest() override {
        session.reset();
        if (loading) {
            loading->cancelAll();
        }
        network.runAndWait([]() -> Awaitable<void> { co_return; }, 10s);
    }

    std::future<Result> begin(HttpRequest request) {
        if (!session) {
            loading = std::make_unique<CurlUrlLoading>(network, settings);
            session = loading->makeSession(configuration);
        }
        auto promise = std::make_shared<std::promise<Result>>();
        startTask(network.makeSerialQueue(), [this, promise, request = std::move(request)]() -> Awaitable<void> {
            promise->set_value(co_await session->perform(request));
        });
        return promise->get_future();
    }

    Result perform(HttpRequest request) { return begin(std::move(request)).get(); }
    Result get(const std::string& url) { return perform({.method = "GET", .url = url}); }
    TransportCause causeOfGetting(const std::string& url) {
        const Result result = get(url);
        if (result) {
            ADD_FAILURE() << "answered with " << result->status;
            return {};
        }
        return result.error().cause;
    }
};

TEST_F(CurlUrlSessionTest, aRequestGoesOutWithItsMethodHeadersAndBodyAndNothingAddedOfContent) {
    std::string seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        seen = connection.readRequest();
        connection.send(answer("{\"ok\":true}", "201 Created"));
    });
    const Result result = perform({.method = "PATCH",
                                   .url = "http://" + server.address() + "/api/v1/signals/7?x=1",
                                   .headers = {{"Authorization", "Bearer t"}, {"Content-Type", "application/json"}},
                                   .body = "{\"a\":1}"});
    EXPECT_EQ(shown(result), "201 {\"ok\":true}");
    EXPECT_TRUE(seen.starts_with("PATCH /api/v1/signals/7?x=1 HTTP/1.1\r\n")) << seen;
    EXPECT_NE(seen.find("\r\nAuthorization: Bearer t\r\n"), std::string::npos) << seen;
    EXPECT_NE(seen.find("\r\nContent-Type: application/json\r\n"), std::string::npos) << seen;
    EXPECT_NE(seen.find("\r\nAccept-Language: de-DE\r\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("Expect:"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("Cookie"), std::string::npos) << seen;
    EXPECT_TRUE(seen.ends_with("\r\n\r\n{\"a\":1}")) << seen;
}

TEST_F(CurlUrlSessionTest, aRequestWithoutABodyHasNoContentType) {
    for (const std::string method : {"GET", "POST", "DELETE"}) {
        std::string seen;
        ScriptedServer server([&](ScriptedConnection& connection) {
            seen = connection.readRequest();
            connection.send(answer(""));
        });
        EXPECT_TRUE(perform({.method = method, .url = "http://" + server.address() + "/"}).has_value());
        EXPECT_TRUE(seen.starts_with(method + " / HTTP/1.1\r\n")) << seen;
        EXPECT_EQ(seen.find("Content-Type"), std::string::npos) << seen;
    }
}

TEST_F(CurlUrlSessionTest, aLongBodyIsSentWhole) {
    const std::string body(3'000'000, 'x');
    std::string seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        seen = connection.readRequest();
        connection.send(answer(""));
    });
    EXPECT_TRUE(perform({.method = "POST", .url = "http://" + server.address(), .body = body}).has_value());
    EXPECT_TRUE(seen.ends_with("\r\n\r\n" + body));
}

TEST_F(CurlUrlSessionTest, aFailingStatusIsAnAnswerAndARedirectIsNotFollowed) {
    ScriptedServer server([](ScriptedConnection& connection) {
        const std::string request = connection.readRequest();
        connection.send(request.starts_with("GET /moved")
                            ? "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n"
                            : answer("<html>", "500 Oh"));
    });
    EXPECT_EQ(shown(get("http://" + server.address() + "/moved")), "302 ");
    EXPECT_EQ(shown(get("http://" + server.address() + "/")), "500 <html>");
}

TEST_F(CurlUrlSessionTest, aCookieIsNeverSentBack) {
    std::string second;
    ScriptedServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 0\r\n\r\n");
        second = connection.readRequest();
        connection.send(answer(""));
    });
    EXPECT_TRUE(get("http://" + server.address()).has_value());
    EXPECT_TRUE(get("http://" + server.address()).has_value());
    EXPECT_EQ(server.connections(), 1);
    EXPECT_TRUE(second.starts_with("GET / ")) << second;
    EXPECT_EQ(second.find("Cookie"), std::string::npos) << second;
}

TEST_F(CurlUrlSessionTest, sessionsDoNotShareConnections) {
    ScriptedServer server([](ScriptedConnection& connection) {
        while (connection.readRequest().ends_with("\r\n\r\n")) {
            connection.send(answer(""));
        }
    });
    EXPECT_TRUE(get("http://" + server.address()).has_value());
    EXPECT_TRUE(get("http://" + server.address()).has_value());
    EXPECT_EQ(server.connections(), 1);
    session = loading->makeSession(configuration);
    EXPECT_TRUE(get("http://" + server.address()).has_value());
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(CurlUrlSessionTest, aServerThatStaysSilentTimesOut) {
    configuration.idleTimeout = 100ms;
    ScriptedServer server([](ScriptedConnection& connection) { connection.waitForClose(); });
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::timedOut);
}

TEST_F(CurlUrlSessionTest, anAnswerThatStopsHalfwayTimesOut) {
    configuration.idleTimeout = 100ms;
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        connection.waitForClose();
    });
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::timedOut);
}

TEST_F(CurlUrlSessionTest, aSlowAnswerThatKeepsMovingIsAlive) {
    configuration.idleTimeout = 200ms;
    const std::string whole = answer("0123456789");
    ScriptedServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        for (const char byte : whole) {
            connection.send({&byte, 1});
            if (connection.stirsWithin(15ms)) {
                return;
            }
        }
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(shown(get("http://" + server.address())), "200 0123456789");
    EXPECT_GT(std::chrono::steady_clock::now() - start, 3 * configuration.idleTimeout);
}

TEST_F(CurlUrlSessionTest, aBodyThatNeverEndsMeetsItsCap) {
    configuration.maximumBodySize = 1'000'000;
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
        while (connection.send(std::string(65536, 'x'))) {
        }
    });
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::tooLarge);
}

TEST_F(CurlUrlSessionTest, aBodyExactlyAtItsCapIsTaken) {
    configuration.maximumBodySize = 1000;
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\n\r\n" + std::string(1000, 'x'));
    });
    const Result result = get("http://" + server.address());
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->body.size(), 1000U);
}

TEST_F(CurlUrlSessionTest, headersThatNeverEndAreABadResponse) {
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\n");
        while (connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n")) {
        }
    });
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::badServerResponse);
}

TEST_F(CurlUrlSessionTest, whatIsNoHttpIsABadResponse) {
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("220 mail.example ready\r\n");
    });
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::badServerResponse);
}

TEST_F(CurlUrlSessionTest, aConnectionThatBreaksOffIsInterrupted) {
    ScriptedServer beforeTheAnswer([](ScriptedConnection& connection) { connection.readRequest(); });
    EXPECT_EQ(causeOfGetting("http://" + beforeTheAnswer.address()), TransportCause::interrupted);
    ScriptedServer halfway([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
    });
    EXPECT_EQ(causeOfGetting("http://" + halfway.address()), TransportCause::interrupted);
}

/// The server may have acted on what it read, so that a second delivery could do a second harm.
TEST_F(CurlUrlSessionTest, aRequestIsNotSentAgainWhenAUsedConnectionEndsWithoutAnAnswer) {
    for (const std::string method : {"GET", "POST", "PATCH", "DELETE"}) {
        std::atomic<int> delivered = 0;
        ScriptedServer server([&](ScriptedConnection& connection) {
            connection.readRequest();
            connection.send(answer("first"));
            delivered += connection.readRequest().empty() ? 0 : 1;
        });
        const std::string url = "http://" + server.address();
        ASSERT_EQ(shown(get(url)), "200 first");
        const Result result = perform({.method = method, .url = url + "/second"});
        EXPECT_EQ(result, Result(std::unexpected(TransportError{TransportCause::interrupted}))) << method;
        EXPECT_EQ(delivered, 1) << method;
        EXPECT_EQ(server.connections(), 1) << method;
    }
}

TEST_F(CurlUrlSessionTest, aRequestIsNotSentAgainOnAnotherConnectionThatIsOpen) {
    std::mutex mutex;
    std::vector<std::string> seen;
    std::promise<void> bothPromised;
    const std::shared_future<void> bothAreThere = bothPromised.get_future().share();
    int first = 0;
    ScriptedServer server([&](ScriptedConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty(); request = connection.readRequest()) {
            {
                const std::scoped_lock lock(mutex);
                seen.push_back(request.substr(0, request.find(" HTTP")));
                if (seen.back() != "GET /first") {
                    return;
                }
                if (++first == 2) {
                    bothPromised.set_value();
                }
            }
            bothAreThere.wait();
            connection.send(answer("first"));
        }
    });
    const std::string url = "http://" + server.address();
    auto one = begin({.method = "GET", .url = url + "/first"});
    auto other = begin({.method = "GET", .url = url + "/first"});
    EXPECT_EQ(shown(one.get()), "200 first");
    EXPECT_EQ(shown(other.get()), "200 first");
    const Result result = perform({.method = "POST", .url = url + "/second", .body = "once"});
    EXPECT_EQ(result, Result(std::unexpected(TransportError{TransportCause::interrupted})));
    const std::scoped_lock lock(mutex);
    EXPECT_EQ(std::ranges::count(seen, "POST /second"), 1);
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(CurlUrlSessionTest, aConnectionThatEndedMeanwhileIsReplacedForARequestThatWasNotSent) {
    std::atomic<int> requests = 0;
    std::promise<void> isClosed;
    ScriptedServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send(answer(std::to_string(++requests)));
        if (requests == 1) {
            connection.closeNow();
            isClosed.set_value();
        }
    });
    EXPECT_EQ(shown(get("http://" + server.address())), "200 1");
    isClosed.get_future().wait();
    EXPECT_EQ(shown(get("http://" + server.address())), "200 2");
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(CurlUrlSessionTest, aPathGoesOutAsItIsWrittenInTheVersionThatAnswersOneRequestAtATime) {
    std::string seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        seen = connection.readRequest();
        connection.send(answer(""));
    });
    EXPECT_TRUE(
        perform({.method = "PATCH", .url = "http://" + server.address() + "/api/v1/signals/../a/./b"}).has_value());
    EXPECT_TRUE(seen.starts_with("PATCH /api/v1/signals/../a/./b HTTP/1.1\r\n")) << seen;
    EXPECT_EQ(seen.find("Upgrade"), std::string::npos) << seen;
}

TEST_F(CurlUrlSessionTest, aPortWhereNobodyListensRefuses) {
    EXPECT_EQ(causeOfGetting("http://127.0.0.1:" + std::to_string(unusedPort())), TransportCause::refused);
}

TEST_F(CurlUrlSessionTest, urlsThatLeadNowhereAreNamesNotFound) {
    for (const std::string url :
         {"", "nonsense", "ftp://127.0.0.1/", "file:///etc/hostname", "http://", "http://a b/"}) {
        const TransportCause cause = causeOfGetting(url);
        EXPECT_EQ(cause, TransportCause::nameNotFound) << url;
    }
}

TEST_F(CurlUrlSessionTest, aNameOfNobodyIsNotFoundUnlessThereIsNoNetworkAtAll) {
    const auto expected = hasNetwork() ? TransportCause::nameNotFound : TransportCause::noNetwork;
    EXPECT_EQ(causeOfGetting("http://nobody.invalid/"), expected);
}

TEST_F(CurlUrlSessionTest, aHeaderThatWouldBreakOutOfItsLineIsNotSent) {
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send(answer(""));
    });
    const Result result = perform(
        {.method = "GET", .url = "http://" + server.address(), .headers = {{"Authorization", "Bearer a\r\nX: y"}}});
    EXPECT_FALSE(result.has_value());
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlUrlSessionTest, anExchangeGoesOnWhenItsSessionIsGone) {
    std::promise<void> arrived;
    std::promise<void> mayAnswer;
    ScriptedServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        arrived.set_value();
        mayAnswer.get_future().wait();
        connection.send(answer("late"));
    });
    auto pending = begin({.method = "GET", .url = "http://" + server.address()});
    arrived.get_future().wait();
    session.reset();
    mayAnswer.set_value();
    EXPECT_EQ(shown(pending.get()), "200 late");
}

TEST_F(CurlUrlSessionTest, everyExchangeEndsWhenAllAreCancelled) {
    std::promise<void> arrived;
    ScriptedServer server([&](ScriptedConnection& connection) {
        connection.readRequest();
        arrived.set_value();
        connection.waitForClose();
    });
    auto pending = begin({.method = "GET", .url = "http://" + server.address()});
    arrived.get_future().wait();
    loading->cancelAll();
    EXPECT_EQ(pending.get(), Result(std::unexpected(TransportError{TransportCause::cancelled})));
}

TEST_F(CurlUrlSessionTest, manyExchangesRunAtTheSameTime) {
    constexpr int count = 40;
    std::mutex mutex;
    std::condition_variable changed;
    int waiting = 0;
    ScriptedServer server([&](ScriptedConnection& connection) {
        const std::string request = connection.readRequest();
        {
            std::unique_lock lock(mutex);
            ++waiting;
            changed.notify_all();
            changed.wait(lock, [&] { return waiting == count; });
        }
        connection.send(answer(request.substr(5, request.find(' ', 5) - 5)));
    });
    std::vector<std::future<Result>> pending;
    for (int i = 0; i < count; ++i) {
        pending.push_back(begin({.method = "GET", .url = "http://" + server.address() + "/" + std::to_string(i)}));
    }
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(pending[static_cast<std::size_t>(i)].get(), (HttpResponse{.status = 200, .body = std::to_string(i)}));
    }
}

struct CurlTlsTest : CurlUrlSessionTest {
    TemporaryFolder folder;
    TestCertificate authority = makeAuthority();

    CurlTlsTest() {
        settings.certificateFile = folder.path() / "authority.pem";
        writeCertificate(authority, settings.certificateFile);
    }
    static void answerAll(ScriptedConnection& connection) {
        connection.readRequest();
        connection.send(answer("secret"));
    }
    static std::string secureUrl(const ScriptedServer& server) {
        return "https://localhost:" + std::to_string(server.port());
    }
};

TEST_F(CurlTlsTest, aCertificateOfATrustedAuthorityForTheRightNameIsAccepted) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "localhost"));
    EXPECT_EQ(shown(get(secureUrl(server))), "200 secret");
}

TEST_F(CurlTlsTest, aSelfSignedCertificateIsRefusedBeforeAnyByteOfTheRequest) {
    bool sawRequest = false;
    {
        ScriptedServer server([&](ScriptedConnection& connection) { sawRequest = !connection.readRequest().empty(); },
                              makeServerCertificate(makeAuthority(), "localhost"));
        EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
    }
    EXPECT_FALSE(sawRequest);
}

TEST_F(CurlTlsTest, anExpiredCertificateIsRefused) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "localhost", Validity::expired));
    EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
}

TEST_F(CurlTlsTest, aCertificateForAnotherNameIsRefused) {
    ScriptedServer server(answerAll, makeServerCertificate(authority, "elsewhere.example"));
    EXPECT_EQ(causeOfGetting(secureUrl(server)), TransportCause::certificateRefused);
}

TEST_F(CurlTlsTest, aServerWithoutTlsIsNotTalkedTo) {
    std::string seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        seen = connection.read(1);
        connection.send("HTTP/1.1 200 OK\r\n\r\n");
    });
    const TransportCause cause = causeOfGetting(secureUrl(server));
    EXPECT_EQ(cause, TransportCause::interrupted);
    EXPECT_EQ(seen, "\x16");
}

struct CurlProxyTest : CurlTlsTest {
    /// A proxy that leads every tunnel to the end of the script itself, as the server that was asked for.
    static ScriptedServer::Script tunnelTo(const TestCertificate& certificate, std::string& seen) {
        return [certificate, &seen](ScriptedConnection& connection) {
            seen = connection.readRequest();
            connection.send("HTTP/1.1 200 Connection established\r\n\r\n");
            if (connection.startTls(certificate)) {
                answerAll(connection);
            }
        };
    }
};

TEST_F(CurlProxyTest, aSecureRequestGoesThroughTheProxysTunnel) {
    std::string seen;
    ScriptedServer proxy(tunnelTo(makeServerCertificate(authority, "office.test"), seen));
    settings.proxies.https = "http://user:pass@" + proxy.address();
    const Result result =
        perform({.method = "GET", .url = "https://office.test/", .headers = {{"Authorization", "Bearer t"}}});
    EXPECT_EQ(shown(result), "200 secret");
    EXPECT_TRUE(seen.starts_with("CONNECT office.test:443 HTTP/1.1\r\n")) << seen;
    EXPECT_NE(seen.find("Proxy-Authorization: Basic dXNlcjpwYXNz\r\n"), std::string::npos) << seen;
    EXPECT_EQ(seen.find("Bearer"), std::string::npos) << "the proxy is shown the token";
}

TEST_F(CurlProxyTest, theCertificateBehindTheProxyIsChecked) {
    std::string seen;
    ScriptedServer proxy(tunnelTo(makeServerCertificate(makeAuthority(), "office.test"), seen));
    settings.proxies.https = proxy.address();
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::certificateRefused);
}

TEST_F(CurlProxyTest, aProxyThatWantsALoginOrIsNotThereIsTheProxysFailure) {
    ScriptedServer proxy([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 407 Proxy Authentication Required\r\nContent-Length: 0\r\n\r\n");
    });
    settings.proxies = {.http = proxy.address(), .https = proxy.address()};
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed);
    EXPECT_EQ(causeOfGetting("http://office.test/"), TransportCause::proxyFailed);
}

TEST_F(CurlProxyTest, aProxyThatIsNotThereIsTheProxysFailure) {
    settings.proxies.https = "http://127.0.0.1:" + std::to_string(unusedPort());
    EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed);
}

TEST_F(CurlProxyTest, aProxyOfAKindThatCannotBeAskedIsTheProxysFailureAndNothingGoesPastIt) {
    ScriptedServer proxy(answerAll);
    for (const std::string scheme : {"socks5://", "socks5h://", "socks4a://"}) {
        session.reset();
        settings.proxies = {.all = scheme + proxy.address()};
        EXPECT_EQ(causeOfGetting("http://office.test/"), TransportCause::proxyFailed) << scheme;
        EXPECT_EQ(causeOfGetting("https://office.test/"), TransportCause::proxyFailed) << scheme;
    }
    EXPECT_EQ(proxy.connections(), 0);
}

TEST_F(CurlProxyTest, thisComputerItselfIsReachedWithoutTheProxy) {
    settings.proxies = {.http = "http://127.0.0.1:" + std::to_string(unusedPort())};
    ScriptedServer server(answerAll);
    EXPECT_EQ(shown(get("http://" + server.address())), "200 secret");
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
