#include "tests/server/web_socket_client_fixture.h"

#include <deque>

#include <boost/asio/post.hpp>

namespace zelkovanta::server {
namespace {

using namespace std::chrono_literals;
using platform::WebSocketFrame;
using platform::simulated::SimulatedWebSocketTask;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr auto disconnected = ConnectionState::disconnected;
constexpr auto connecting = ConnectionState::connecting;
constexpr auto connected = ConnectionState::connected;
constexpr auto stopped = ConnectionState::stopped;

constexpr const char* sessionEnded = R"({"type":"session.ended"})";

TEST_F(WebSocketClientTest, theOpeningRequestCarriesTheTokenAndNothingElse) {
    start();
    ASSERT_THAT(sockets.tasks(), SizeIs(1));
    const platform::WebSocketRequest expected{.url = "wss://office.example/base/api/v1/ws",
                                              .headers = {{"Authorization", "Bearer secret"}},
                                              .openingTimeout = 15s};
    EXPECT_EQ(sockets.current().request, expected);
    EXPECT_TRUE(sockets.current().isResumed());
}

TEST_F(WebSocketClientTest, theSocketUrlFollowsTheBaseUrl) {
    const std::vector<std::pair<std::string, std::string>> urls{
        {"https://office.example", "wss://office.example/api/v1/ws"},
        {"https://office.example/", "wss://office.example/api/v1/ws"},
        {"http://127.0.0.1:8787", "ws://127.0.0.1:8787/api/v1/ws"},
        {"HTTPS://office.example", "wss://office.example/api/v1/ws"},
        {"ftp://office.example", "ftp://office.example/api/v1/ws"},
        {"office.example", "office.example/api/v1/ws"},
    };
    for (const auto& [base, expected] : urls) {
        client = makeClient(base);
        start();
        EXPECT_EQ(sockets.current().request.url, expected);
        client->stop();
        loop.runReady();
    }
}

using WebSocketClientDeathTest = WebSocketClientTest;

TEST_F(WebSocketClientDeathTest, aBaseUrlWithoutAHostEndsTheProcess) {
    EXPECT_DEATH(static_cast<void>(makeClient("https:/office")), "no socket URL can be formed");
}

TEST_F(WebSocketClientTest, nothingHappensBeforeStart) {
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), IsEmpty());
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(WebSocketClientTest, theServersFirstWordMakesTheConnectionAndNotTheHandshake) {
    start();
    sockets.current().accept();
    loop.advance(1s);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting)));
    deliver(pong);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting), Pair(1000ms, connected)));
    EXPECT_THAT(messages, ElementsAre(ServerMessage{server_message::Pong{}}));
}

TEST_F(WebSocketClientTest, aBinaryFrameReadsLikeATextFrame) {
    start();
    sockets.current().deliver(WebSocketFrame{WebSocketFrame::Kind::binary, sessionEnded});
    loop.runReady();
    EXPECT_THAT(messages, ElementsAre(ServerMessage{server_message::SessionEnded{}}));
}

TEST_F(WebSocketClientTest, aFrameThatDecodesToNothingStillConnectsAndForgetsTheFailures) {
    start();
    failCurrent({});
    loop.advance(1s);
    failCurrent({});
    loop.advance(2s);
    deliver("no JSON at all");
    EXPECT_EQ(lastState(), connected);
    EXPECT_THAT(messages, IsEmpty());

    const auto before = sockets.tasks().size();
    failCurrent({});
    loop.advance(1s);
    EXPECT_THAT(sockets.tasks(), SizeIs(before + 1)) << "the first delay of the curve is one second";
}

TEST_F(WebSocketClientTest, aFrameOfAnUnknownTypeLeavesTheConnectionUp) {
    connect();
    deliver(R"({"type":"signal.painted","data":{}})");
    deliver(sessionEnded);
    EXPECT_THAT(messages, SizeIs(2));
    EXPECT_EQ(lastState(), connected);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
}

TEST_F(WebSocketClientTest, messagesComeOneByOneInTheOrderOfTheSocket) {
    connect();
    for (int round = 0; round < 3; ++round) {
        sockets.current().deliver(sessionEnded);
        sockets.current().deliver(pong);
    }
    loop.runReady();
    const ServerMessage first = server_message::Pong{};
    const ServerMessage ended = server_message::SessionEnded{};
    EXPECT_THAT(messages, ElementsAre(first, ended, first, ended, first, ended, first));
}

TEST_F(WebSocketClientTest, identicalFramesAreAllDelivered) {
    connect();
    deliver(sessionEnded);
    deliver(sessionEnded);
    EXPECT_THAT(messages, SizeIs(3));
}

TEST_F(WebSocketClientTest, theNextFrameIsNotReadBeforeTheOwnerIsDoneWithThisOne) {
    connect();
    main.setHeld(true);
    deliver(sessionEnded);
    deliver(pong);
    EXPECT_FALSE(sockets.current().isReceiving());
    EXPECT_THAT(messages, SizeIs(1));
    main.setHeld(false);
    loop.runReady();
    EXPECT_TRUE(sockets.current().isReceiving());
    EXPECT_THAT(messages, SizeIs(3));
}

TEST_F(WebSocketClientTest, aFrameThatIsNotHandedOnNeedsNoMainThread) {
    connect();
    main.setHeld(true);
    deliver("not for the owner");
    EXPECT_TRUE(sockets.current().isReceiving());
}

TEST_F(WebSocketClientTest, callbacksThatAreNotSetAreNotMissed) {
    client->onMessage = nullptr;
    client->onStateChange = nullptr;
    client->onRevoked = nullptr;
    client->onUpgradeUnauthorized = nullptr;
    start();
    failCurrent({.closeCode = {}, .httpStatus = 401});
    loop.advance(1s);
    deliver(pong);
    failCurrent({.closeCode = 4001, .httpStatus = 101});
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(2));
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(WebSocketClientTest, aPingGoesOutEveryThirtySecondsOfALivingConnection) {
    connect();
    const std::string ping = R"({"type":"ping"})";
    loop.advance(29'999ms);
    EXPECT_THAT(sockets.current().sent(), IsEmpty());
    loop.advance(1ms);
    EXPECT_THAT(sockets.current().sent(), ElementsAre(ping));
    deliver(pong);
    loop.advance(30s);
    EXPECT_THAT(sockets.current().sent(), ElementsAre(ping, ping));
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
}

TEST_F(WebSocketClientTest, theFirstPingIsCountedFromTheBeginningOfTheAttempt) {
    start();
    loop.advance(10s);
    deliver(pong);
    loop.advance(20s);
    EXPECT_THAT(sockets.current().sent(), SizeIs(1));
}

TEST_F(WebSocketClientTest, anAbandonedSocketGetsNoPing) {
    connect();
    failCurrent({});
    loop.advance(1s);
    deliver(pong);
    loop.advance(45s);
    EXPECT_THAT(sockets.tasks()[0]->sent(), IsEmpty());
    EXPECT_THAT(sockets.tasks()[1]->sent(), SizeIs(1));
}

TEST_F(WebSocketClientTest, stopGivesTheSocketUpAndTellsIt) {
    connect();
    client->stop();
    loop.runReady();
    EXPECT_EQ(sockets.current().cancelledWith(), 1001);
    EXPECT_EQ(lastState(), stopped);
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
    EXPECT_EQ(lastState(), stopped);
}

TEST_F(WebSocketClientTest, stopDuringARetryDelayMakesNoFurtherAttempt) {
    start();
    failCurrent({});
    EXPECT_EQ(lastState(), disconnected);
    client->stop();
    loop.advance(1h);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting), Pair(0ms, disconnected), Pair(0ms, stopped)));
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
}

TEST_F(WebSocketClientTest, nothingIsReadAfterAStopWhileAMessageIsBeingHandled) {
    connect();
    client->onMessage = [this](ServerMessage) {
        told.emplace_back("last message");
        client->stop();
    };
    sockets.current().outliveCancellation();
    sockets.current().deliver(sessionEnded);
    sockets.current().deliver(pong);
    loop.advance(1min);
    EXPECT_EQ(std::ranges::count(told, "last message"), 1);
    EXPECT_EQ(lastState(), stopped);
}

TEST_F(WebSocketClientTest, aStopWhileAMessageIsBeingHandledEndsTheReading) {
    connect();
    client->onMessage = [this](ServerMessage) { client->stop(); };
    sockets.current().outliveCancellation();
    deliver(sessionEnded);
    EXPECT_EQ(lastState(), stopped);
    EXPECT_FALSE(sockets.current().isReceiving());
}

TEST_F(WebSocketClientTest, aStoppedClientLeavesNothingBehindThatWouldStillRun) {
    for (const bool isConnected : {true, false}) {
        client = makeClient("https://office.example");
        connect();
        if (!isConnected) {
            failCurrent({});
        }
        client->stop();
        loop.runReady();
        const auto workDone = loop.workDone();
        loop.advance(1h);
        EXPECT_EQ(loop.workDone(), workDone);
    }
}

TEST_F(WebSocketClientTest, aClientHoldsItselfWhileItHoldsASocketAndIsReleasedByAStop) {
    start();
    const std::weak_ptr<WebSocketClient> weak = client;
    client.reset();
    deliver(pong);
    EXPECT_EQ(lastState(), connected);
    EXPECT_FALSE(weak.expired());

    weak.lock()->stop();
    loop.runReady();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(sockets.liveTasks(), 0U);
}

TEST_F(WebSocketClientTest, aClientGoneDuringARetryDelayMakesNoFurtherAttempt) {
    start();
    failCurrent({});
    const std::weak_ptr<WebSocketClient> weak = client;
    client.reset();
    loop.runReady();
    EXPECT_TRUE(weak.expired());
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
}

TEST_F(WebSocketClientTest, aStateOnItsWayToTheMainThreadDiesWithTheClient) {
    start();
    main.setHeld(true);
    failCurrent({});
    client.reset();
    loop.runReady();
    main.setHeld(false);
    loop.runReady();
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting)));
}

/// A main thread on which what was posted last comes first.
class LatestFirst final : public platform::PostingContext {
public:
    ~LatestFirst() override { shutdown(); }
    void post(Work work) override { waiting_.push_front(std::move(work)); }
    void runWaiting() {
        for (auto waiting = std::exchange(waiting_, {}); !waiting.empty(); waiting.pop_front()) {
            waiting.front()();
        }
    }

private:
    std::deque<Work> waiting_;
};

TEST_F(WebSocketClientTest, aStateThatWasOvertakenIsNeverTold) {
    LatestFirst crossedMain;
    client = makeClient("http://office.example", crossedMain.executor());
    start();
    deliver("connects");
    failCurrent({});
    crossedMain.runWaiting();
    EXPECT_THAT(states, ElementsAre(Pair(0ms, disconnected)));

    loop.advance(1s);
    crossedMain.runWaiting();
    EXPECT_EQ(lastState(), connecting);
    client->stop();
    loop.runReady();
    crossedMain.runWaiting();
    EXPECT_EQ(lastState(), stopped);
    client.reset();
    loop.runReady();
}

TEST_F(WebSocketClientTest, aComputerThatSleptThroughItsConnectionMakesANewOne) {
    connect();
    queue.setHeld(true);
    loop.advance(10min);
    queue.setHeld(false);
    loop.runReady();
    EXPECT_THAT(sockets.tasks(), SizeIs(2));
    EXPECT_EQ(lastState(), connecting);
    deliver(pong);
    EXPECT_EQ(lastState(), connected);
}

}  // namespace
}  // namespace zelkovanta::server
