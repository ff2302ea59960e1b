#include "tests/server/web_socket_client_fixture.h"

namespace zelkovanta::server {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;
using testing::SizeIs;

constexpr auto disconnected = ConnectionState::disconnected;
constexpr auto connecting = ConnectionState::connecting;
constexpr auto connected = ConnectionState::connected;
constexpr auto stopped = ConnectionState::stopped;

struct WebSocketClientFailuresTest : WebSocketClientTest {
    /// Fails attempt after attempt as soon as it begins, and gives the delays between them.
    std::vector<std::chrono::milliseconds> delaysOfSevenFailures() {
        std::vector<std::chrono::milliseconds> begun;
        sockets.setServer([&](platform::simulated::SimulatedWebSocketTask& task) {
            begun.push_back(now());
            task.fail({});
        });
        start();
        loop.advanceUntil([&] { return begun.size() == 8; }, 1h);
        std::vector<std::chrono::milliseconds> delays;
        for (std::size_t index = 1; index < begun.size(); ++index) {
            delays.push_back(begun[index] - begun[index - 1]);
        }
        return delays;
    }

    /// Connects at the second attempt, whose ping then cannot be sent; gives the socket, which lives on.
    platform::simulated::SimulatedWebSocketTask& loseASocketWithItsPing() {
        start();
        failCurrent({});
        loop.advance(1s);
        deliver(pong);
        auto& socket = sockets.current();
        socket.outliveCancellation();
        socket.breakSending();
        loop.advance(30s);
        EXPECT_EQ(states.back(), Told(31s, disconnected));
        told.clear();
        return socket;
    }
};

TEST_F(WebSocketClientFailuresTest, retryDelaysAreTheCurveWithoutLuck) {
    EXPECT_THAT(delaysOfSevenFailures(), ElementsAre(1s, 2s, 4s, 8s, 16s, 30s, 30s));
}

TEST_F(WebSocketClientFailuresTest, retryDelaysAreAtMostAQuarterLongerAndNeverAboveTheCeiling) {
    random.push(1.0);
    EXPECT_THAT(delaysOfSevenFailures(), ElementsAre(1250ms, 2500ms, 5s, 10s, 20s, 30s, 30s));
}

TEST_F(WebSocketClientFailuresTest, aServerThatAcceptsAndStaysSilentIsGivenUpAfterFifteenSeconds) {
    sockets.setServer([](auto& task) { task.accept(); });
    start();
    loop.advance(14'999ms);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
    loop.advance(1ms);
    ASSERT_THAT(sockets.tasks(), SizeIs(2));
    EXPECT_EQ(sockets.tasks()[0]->cancelledWith(), 1001);
    EXPECT_EQ(sockets.tasks()[0]->session, 0U);
    EXPECT_EQ(sockets.tasks()[1]->session, 1U);
    EXPECT_EQ(sockets.sessionsInvalidated(), 1U);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting))) << "from connecting to connecting nothing is told";

    failCurrent({});
    loop.advance(1s);
    EXPECT_THAT(sockets.tasks(), SizeIs(3)) << "that was the first failure, so the first delay follows";
}

TEST_F(WebSocketClientFailuresTest, anOpeningThatIsNeverAnsweredIsAFailureThatCounts) {
    start();
    loop.advance(15s);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting), Pair(15s, disconnected)));
    EXPECT_EQ(sockets.sessionsInvalidated(), 0U);
    loop.advance(1s);
    EXPECT_THAT(sockets.tasks(), SizeIs(2));
    failCurrent({});
    loop.advance(1999ms);
    EXPECT_THAT(sockets.tasks(), SizeIs(2));
    loop.advance(1ms);
    EXPECT_THAT(sockets.tasks(), SizeIs(3));
}

TEST_F(WebSocketClientFailuresTest, aConnectionThatFellSilentIsReplacedAfterSeventyFiveSeconds) {
    connect();
    loop.advance(74'999ms);
    EXPECT_EQ(lastState(), connected);
    EXPECT_THAT(sockets.current().sent(), SizeIs(2));
    loop.advance(1ms);
    EXPECT_THAT(states, ElementsAre(Pair(0ms, connecting), Pair(0ms, connected), Pair(75s, connecting)));
    EXPECT_EQ(sockets.sessionsMade(), 2U);
    EXPECT_EQ(sockets.liveTasks(), 1U);
}

TEST_F(WebSocketClientFailuresTest, anyFrameKeepsAConnectionAlive) {
    connect();
    for (int minute = 1; minute <= 60; ++minute) {
        loop.advance(60s);
        deliver(minute % 2 == 0 ? pong : "anything");
    }
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
    EXPECT_EQ(lastState(), connected);
}

TEST_F(WebSocketClientFailuresTest, aPingThatCannotBeSentEndsTheConnectionOnce) {
    start();
    failCurrent({});
    loop.advance(1s);
    deliver(pong);
    sockets.current().breakSending();
    loop.advance(30s);
    // Giving the socket up made its own reading fail, too: that is no second failure.
    EXPECT_EQ(states.back(), Told(31s, disconnected));
    EXPECT_EQ(sockets.current().cancelledWith(), 1001);
    loop.advance(1s);
    EXPECT_THAT(sockets.tasks(), SizeIs(3));
    loop.advance(14s);
    EXPECT_THAT(sockets.tasks(), SizeIs(3)) << "one failure, one retry";
    loop.advance(1s);
    EXPECT_EQ(states.back(), Told(47s, disconnected));
    loop.advance(2s);
    EXPECT_THAT(sockets.tasks(), SizeIs(4)) << "the second failure in a row waits two seconds";
}

TEST_F(WebSocketClientFailuresTest, closeCode4001BehindAFailedPingStopsForGood) {
    auto& socket = loseASocketWithItsPing();
    socket.fail({.closeCode = 4001, .httpStatus = 101});
    loop.runReady();
    EXPECT_THAT(told, ElementsAre("state 3", "revoked"));
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(2)) << "the retry that the failed ping began";
}

/// Once another attempt has begun, what the server says to that one decides.
TEST_F(WebSocketClientFailuresTest, closeCode4001OfASocketThatWasSucceededIsStaleAndTheNextRefusalDecides) {
    auto& old = loseASocketWithItsPing();
    loop.advance(1s);
    ASSERT_THAT(sockets.tasks(), SizeIs(3)) << "the retry that the failed ping began";
    old.fail({.closeCode = 4001, .httpStatus = 101});
    loop.runReady();
    EXPECT_THAT(told, ElementsAre("state 1"));
    failCurrent({.httpStatus = 401});
    EXPECT_THAT(told, ElementsAre("state 1", "unauthorized", "state 0"));
    loop.advance(2s);
    ASSERT_THAT(sockets.tasks(), SizeIs(4)) << "a refusal alone does not end the trying";
    failCurrent({.closeCode = 4001, .httpStatus = 101});
    EXPECT_THAT(told, ElementsAre("state 1", "unauthorized", "state 0", "state 1", "state 3", "revoked"));
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(4));
}

TEST_F(WebSocketClientFailuresTest, theWatchdogDoesNotWaitForTheRetryOfAnOldConnection) {
    connect();
    loop.advance(44'500ms);
    failCurrent({});
    EXPECT_EQ(lastState(), disconnected);
    loop.advance(500ms);
    EXPECT_EQ(states.back(), Told(45s, connecting)) << "thirty seconds after its attempt began nothing is waited for";
    EXPECT_EQ(sockets.sessionsMade(), 2U);
    loop.advance(10s);
    EXPECT_THAT(sockets.tasks(), SizeIs(2)) << "the retry was withdrawn";
}

TEST_F(WebSocketClientFailuresTest, aPingThatIsNeverTakenLeavesTheWatchdogToFindOut) {
    connect();
    sockets.current().stallSending();
    loop.advance(74s);
    EXPECT_EQ(lastState(), connected);
    loop.advance(1s);
    EXPECT_EQ(lastState(), connecting);
    EXPECT_EQ(sockets.liveTasks(), 1U);
}

TEST_F(WebSocketClientFailuresTest, aLateFrameOfTheOldSocketReachesNobody) {
    connect();
    auto& old = sockets.current();
    old.outliveCancellation();
    old.breakSending();
    loop.advance(31s);
    ASSERT_THAT(sockets.tasks(), SizeIs(2));
    ASSERT_TRUE(old.isReceiving());

    old.deliver(pong);
    loop.runReady();
    EXPECT_THAT(messages, SizeIs(1));
    EXPECT_EQ(lastState(), connecting);
    EXPECT_FALSE(old.isReceiving()) << "its reading has ended";
}

TEST_F(WebSocketClientFailuresTest, aLateFrameOfAStoppedClientReachesNobody) {
    connect();
    sockets.current().outliveCancellation();
    client->stop();
    loop.runReady();
    deliver(pong);
    EXPECT_THAT(messages, SizeIs(1));
    EXPECT_EQ(lastState(), stopped);
}

TEST_F(WebSocketClientFailuresTest, aFrameThatCrossesAStopOnTheQueueReachesNobody) {
    connect();
    client->stop();
    sockets.current().deliver(pong);
    loop.runReady();
    EXPECT_THAT(told, ElementsAre("state 1", "state 2", "message", "state 3"));
}

TEST_F(WebSocketClientFailuresTest, anUpgradeRefusedWith401IsToldEachTimeAndTriedAgain) {
    sockets.setServer([](auto& task) { task.fail({.closeCode = {}, .httpStatus = 401}); });
    start();
    EXPECT_EQ(unauthorized, 1);
    EXPECT_EQ(lastState(), disconnected);
    loop.advance(1s);
    EXPECT_EQ(unauthorized, 2);
    loop.advance(2s);
    EXPECT_EQ(unauthorized, 3);
    EXPECT_EQ(revocations, 0);
    client->stop();
    loop.advance(1h);
    EXPECT_EQ(unauthorized, 3);
}

TEST_F(WebSocketClientFailuresTest, anyOtherEndIsTriedAgainWithoutACall) {
    const std::vector<platform::WebSocketFailure> ends{
        {.closeCode = {}, .httpStatus = 500},   {.closeCode = {}, .httpStatus = 403},
        {.closeCode = {}, .httpStatus = {}},    {.closeCode = 1000, .httpStatus = 101},
        {.closeCode = 1011, .httpStatus = 101}, {.closeCode = 4002, .httpStatus = 101}};
    start();
    for (const auto& end : ends) {
        deliver(pong);
        const auto before = sockets.tasks().size();
        failCurrent(end);
        EXPECT_EQ(lastState(), disconnected);
        loop.advance(1s);
        EXPECT_EQ(sockets.tasks().size(), before + 1);
    }
    EXPECT_EQ(unauthorized, 0);
    EXPECT_EQ(revocations, 0);
}

TEST_F(WebSocketClientFailuresTest, framesBeforeACloseAreStillRead) {
    start();
    sockets.current().deliver(pong);
    sockets.current().deliver(R"({"type":"session.ended"})");
    sockets.current().fail({.closeCode = 1001, .httpStatus = 101});
    loop.runReady();
    EXPECT_THAT(messages, SizeIs(2));
    EXPECT_EQ(lastState(), disconnected);
}

TEST_F(WebSocketClientFailuresTest, closeCode4001WhileConnectingStopsForGood) {
    start();
    failCurrent({.closeCode = 4001, .httpStatus = 101});
    EXPECT_THAT(told, ElementsAre("state 1", "state 3", "revoked"));
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
    EXPECT_EQ(revocations, 1);
}

TEST_F(WebSocketClientFailuresTest, closeCode4001WhileConnectedStopsForGood) {
    connect();
    failCurrent({.closeCode = 4001, .httpStatus = 101});
    EXPECT_THAT(told, ElementsAre("state 1", "state 2", "message", "state 3", "revoked"));
    loop.advance(1h);
    EXPECT_THAT(sockets.tasks(), SizeIs(1));
}

TEST_F(WebSocketClientFailuresTest, aRevokedClientIsReleased) {
    connect();
    const std::weak_ptr<WebSocketClient> weak = client;
    client.reset();
    failCurrent({.closeCode = 4001, .httpStatus = 101});
    EXPECT_EQ(revocations, 1);
    EXPECT_TRUE(weak.expired());
}

TEST_F(WebSocketClientFailuresTest, aServerThatIsAwayForADayIsFoundAgain) {
    sockets.setServer([](auto& task) { task.fail({}); });
    start();
    loop.advance(24h);
    const auto attempts = sockets.tasks().size();
    EXPECT_GE(attempts, 24U * 60 * 2 - 5);
    EXPECT_LE(attempts, 24U * 60 * 2 + 5);
    sockets.setServer([](auto& task) { task.deliver(pong); });
    loop.advance(30s);
    EXPECT_EQ(lastState(), connected);
    EXPECT_EQ(sockets.liveTasks(), 1U);
}

}  // namespace
}  // namespace zelkovanta::server
