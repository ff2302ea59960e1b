#include "platform/linux/network_interfaces.h"
#include "tests/platform/linux/curl_fixture.h"
#include "tests/platform/linux/scripted_server.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace zelkovanta::platform::linux_host {
namespace {

// As gzip writes them.
/// {"ok":true}
constexpr std::string_view packedAnswer{
    "\037\213\010\000\000\000\000\000\002\003\253\126\312\317\126\262\052\051\052\115\255\005\000\220"
    "\137\324\247\013\000\000\000",
    31};
/// The letter x, 20,000 times.
constexpr std::string_view packedLetters{
    "\037\213\010\000\000\000\000\000\002\003\355\301\061\001\000\000\000\302\240\332\213\157\015\017"
    "\240\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\000\170\060\003\107"
    "\145\101\040\116\000\000",
    54};

std::string packed(std::string_view body) {
    return "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           std::string{body};
}

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
        EXPECT_EQ(seen.find("Transfer-Encoding"), std::string::npos) << seen;
        // A POST without a length is refused by servers that take the standard by its word.
        EXPECT_EQ(seen.find("\r\nContent-Length: 0\r\n") != std::string::npos, method == "POST") << seen;
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
    configuration.idleTimeout = 500ms;
    const std::string body(80, 'x');
    const std::string whole = answer(body);
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
    EXPECT_EQ(shown(get("http://" + server.address())), "200 " + body);
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

TEST_F(CurlUrlSessionTest, aPackedAnswerIsUnpacked) {
    ScriptedServer server([](ScriptedConnection& connection) {
        EXPECT_NE(connection.readRequest().find("\r\nAccept-Encoding: gzip, deflate\r\n"), std::string::npos);
        connection.send(packed(packedAnswer));
    });
    EXPECT_EQ(shown(get("http://" + server.address())), "200 {\"ok\":true}");
}

TEST_F(CurlUrlSessionTest, theCapIsForWhatIsUnpacked) {
    ScriptedServer server([](ScriptedConnection& connection) {
        connection.readRequest();
        connection.send(packed(packedLetters));
    });
    configuration.maximumBodySize = 19'999;
    EXPECT_EQ(causeOfGetting("http://" + server.address()), TransportCause::tooLarge);
    session.reset();
    configuration.maximumBodySize = 20'000;
    EXPECT_EQ(shown(get("http://" + server.address())), "200 " + std::string(20'000, 'x'));
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
    const std::string url = "http://" + server.address();
    const Result unsendable = std::unexpected(TransportError{TransportCause::unsendable});
    EXPECT_EQ(perform({.method = "GET", .url = url, .headers = {{"Authorization", "Bearer a\r\nX: y"}}}), unsendable);
    EXPECT_EQ(perform({.method = "GET", .url = url, .headers = {{"X Y", "z"}}}), unsendable);
    EXPECT_EQ(perform({.method = "GET / HTTP/1.1\r\nX: y", .url = url}), unsendable);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlUrlSessionTest, aNameAndPasswordInTheUrlAuthorizeNothing) {
    std::vector<std::string> seen;
    ScriptedServer server([&](ScriptedConnection& connection) {
        for (std::string request = connection.readRequest(); !request.empty(); request = connection.readRequest()) {
            seen.push_back(request);
            connection.send("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"office\"\r\nContent-Length: 0\r\n\r\n");
        }
    });
    const std::string url = "http://user:pass@" + server.address() + "/";
    EXPECT_EQ(shown(get(url)), "401 ");
    EXPECT_EQ(shown(perform({.method = "GET", .url = url, .headers = {{"Authorization", "Bearer t"}}})), "401 ");
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[0].find("uthorization"), std::string::npos) << seen[0];
    EXPECT_NE(seen[1].find("\r\nAuthorization: Bearer t\r\n"), std::string::npos) << seen[1];
    EXPECT_EQ(seen[1].find("Basic"), std::string::npos) << seen[1];
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

}  // namespace
}  // namespace zelkovanta::platform::linux_host
