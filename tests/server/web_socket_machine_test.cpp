#include "server/web_socket_machine.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace zelkovanta::server::web_socket {
namespace {

using namespace std::chrono_literals;
using platform::Duration;
using platform::SteadyTime;
using testing::IsEmpty;

constexpr auto disconnected = ConnectionState::disconnected;
constexpr auto connecting = ConnectionState::connecting;
constexpr auto connected = ConnectionState::connected;
constexpr auto stopped = ConnectionState::stopped;

struct Row {
    Duration at;
    Event event;
    std::vector<Command> commands;
};

struct WebSocketMachineTest : testing::Test {
    Machine machine;

    std::vector<Command> at(Duration time, const Event& event) { return machine.handle(event, SteadyTime{time}); }

    void play(const std::vector<Row>& rows) {
        for (const auto& row : rows) {
            EXPECT_EQ(at(row.at, row.event), row.commands) << "after " << describe(row.event);
        }
    }

    void startAndConnect() {
        at(0s, Start{});
        at(1s, FrameReceived{1});
        ASSERT_EQ(machine.state(), connected);
    }
};

ReceiveFailed closed(Generation generation, std::uint16_t code) {
    return {generation, {.closeCode = code, .httpStatus = {}}};
}
ReceiveFailed refused(Generation generation, int status) {
    return {generation, {.closeCode = {}, .httpStatus = status}};
}
ReceiveFailed broken(Generation generation) {
    return {generation, {}};
}

TEST_F(WebSocketMachineTest, everyEventFromStartToStopHasItsCommands) {
    play({
        {0s, Start{}, {SetWatchdogTimer{5s}, DeliverState{1, connecting}, OpenSocket{1}, SetPingTimer{1, 30s}}},
        {1s, FrameReceived{1}, {DeliverState{2, connected}, AcceptFrame{}}},
        {2s, FrameReceived{1}, {AcceptFrame{}}},
        {5s, WatchdogDue{}, {SetWatchdogTimer{5s}}},
        {30s, PingDue{1}, {SendPing{1}}},
        {30s, PingSent{1}, {SetPingTimer{1, 30s}}},
        {40s, broken(1), {CancelSocket{}, DeliverState{3, disconnected}, SetRetryTimer{1}}},
        {41s, RetryDue{}, {DeliverState{4, connecting}, OpenSocket{2}, SetPingTimer{2, 30s}}},
        {42s, FrameReceived{2}, {DeliverState{5, connected}, AcceptFrame{}}},
        {43s, Stop{}, {CancelWatchdogTimer{}, CancelSocket{}, DeliverState{6, stopped}}},
    });
}

TEST_F(WebSocketMachineTest, aSecondStartKeepsTheOneWatchdogAndTellsNoState) {
    at(0s, Start{});
    play({{1s, Start{}, {CancelSocket{}, OpenSocket{2}, SetPingTimer{2, 30s}}}});
}

TEST_F(WebSocketMachineTest, aSecondStartForgetsTheFailuresBefore) {
    at(0s, Start{});
    at(0s, broken(1));
    at(1s, RetryDue{});
    at(1s, broken(2));
    play({
        {2s, Start{}, {CancelRetryTimer{}, DeliverState{5, connecting}, OpenSocket{3}, SetPingTimer{3, 30s}}},
        {2s, broken(3), {CancelSocket{}, DeliverState{6, disconnected}, SetRetryTimer{1}}},
    });
}

TEST_F(WebSocketMachineTest, failuresCountUpUntilAFrameCounts) {
    play({
        {0s, Start{}, {SetWatchdogTimer{5s}, DeliverState{1, connecting}, OpenSocket{1}, SetPingTimer{1, 30s}}},
        {0s, broken(1), {CancelSocket{}, DeliverState{2, disconnected}, SetRetryTimer{1}}},
        {1s, RetryDue{}, {DeliverState{3, connecting}, OpenSocket{2}, SetPingTimer{2, 30s}}},
        {1s, refused(2, 500), {CancelSocket{}, DeliverState{4, disconnected}, SetRetryTimer{2}}},
        {3s, RetryDue{}, {DeliverState{5, connecting}, OpenSocket{3}, SetPingTimer{3, 30s}}},
        {3s, FrameReceived{3}, {DeliverState{6, connected}, AcceptFrame{}}},
        {4s, closed(3, 1000), {CancelSocket{}, DeliverState{7, disconnected}, SetRetryTimer{1}}},
    });
}

TEST_F(WebSocketMachineTest, everyEndOfASocketButARevocationIsRetried) {
    for (const ReceiveFailed& end :
         {closed(1, 1000), closed(1, 1001), closed(1, 1006), closed(1, 4000), closed(1, 4002), refused(1, 101),
          refused(1, 403), refused(1, 404), refused(1, 500), broken(1)}) {
        machine = Machine{};
        at(0s, Start{});
        play({{0s, end, {CancelSocket{}, DeliverState{2, disconnected}, SetRetryTimer{1}}}});
    }
}

TEST_F(WebSocketMachineTest, aRevocationWhileConnectingStopsForGood) {
    at(0s, Start{});
    play({
        {1s, closed(1, 4001), {CancelWatchdogTimer{}, CancelSocket{}, DeliverState{2, stopped}, ReportRevoked{}}},
        {2s, closed(1, 4001), {}},
        {2s, WatchdogDue{}, {}},
        {2s, RetryDue{}, {}},
    });
    EXPECT_TRUE(machine.isClosed());
}

TEST_F(WebSocketMachineTest, aRevocationWhileConnectedStopsForGood) {
    startAndConnect();
    play({{2s, closed(1, 4001), {CancelWatchdogTimer{}, CancelSocket{}, DeliverState{3, stopped}, ReportRevoked{}}}});
}

TEST_F(WebSocketMachineTest, aRevocationBehindAFailedPingStopsForGoodUntilTheNextAttemptBegins) {
    startAndConnect();
    play({
        {30s, PingSendFailed{1}, {CancelSocket{}, DeliverState{3, disconnected}, SetRetryTimer{1}}},
        {30s, closed(1, 4001), {CancelWatchdogTimer{}, CancelRetryTimer{}, DeliverState{4, stopped}, ReportRevoked{}}},
        {30s, closed(1, 4001), {}},
        {31s, RetryDue{}, {}},
    });
    EXPECT_TRUE(machine.isClosed());

    machine = Machine{};
    startAndConnect();
    at(30s, PingSendFailed{1});
    at(31s, RetryDue{});
    EXPECT_THAT(at(31s, closed(1, 4001)), IsEmpty());
    EXPECT_EQ(machine.state(), connecting);
}

TEST_F(WebSocketMachineTest, aRevocationWinsOverTheStatusOfTheOpening) {
    at(0s, Start{});
    const ReceiveFailed both{1, {.closeCode = 4001, .httpStatus = 401}};
    play({{1s, both, {CancelWatchdogTimer{}, CancelSocket{}, DeliverState{2, stopped}, ReportRevoked{}}}});
}

TEST_F(WebSocketMachineTest, anOpeningRefusedWith401IsReportedAtEachAttemptAndRetried) {
    at(0s, Start{});
    play({
        {0s,
         refused(1, 401),
         {ReportUpgradeUnauthorized{}, CancelSocket{}, DeliverState{2, disconnected}, SetRetryTimer{1}}},
        {1s, RetryDue{}, {DeliverState{3, connecting}, OpenSocket{2}, SetPingTimer{2, 30s}}},
        {1s,
         refused(2, 401),
         {ReportUpgradeUnauthorized{}, CancelSocket{}, DeliverState{4, disconnected}, SetRetryTimer{2}}},
    });
}

TEST_F(WebSocketMachineTest, whatAnAbandonedSocketStillSaysChangesNothing) {
    at(0s, Start{});
    at(0s, broken(1));
    at(1s, RetryDue{});
    ASSERT_EQ(machine.generation(), 2U);
    play({
        {2s, FrameReceived{1}, {DropFrame{}}},
        {2s, broken(1), {}},
        {2s, closed(1, 4001), {}},
        {2s, refused(1, 401), {}},
        {2s, PingDue{1}, {}},
        {2s, PingSent{1}, {}},
        {2s, PingSendFailed{1}, {}},
    });
    EXPECT_EQ(machine.state(), connecting);
    EXPECT_EQ(machine.attempt(), 1);
}

TEST_F(WebSocketMachineTest, aSocketGivenUpIsVoidBeforeItsSuccessorExists) {
    startAndConnect();
    play({
        {30s, PingSendFailed{1}, {CancelSocket{}, DeliverState{3, disconnected}, SetRetryTimer{1}}},
        {30s, broken(1), {}},
        {30s, FrameReceived{1}, {DropFrame{}}},
        {30s, PingSendFailed{1}, {}},
    });
    EXPECT_EQ(machine.state(), disconnected);
    EXPECT_EQ(machine.attempt(), 1);
}

TEST_F(WebSocketMachineTest, aStoppedMachineIsSilent) {
    startAndConnect();
    at(2s, Stop{});
    play({
        {3s, Stop{}, {}},
        {3s, FrameReceived{1}, {DropFrame{}}},
        {3s, broken(1), {}},
        {3s, closed(1, 4001), {}},
        {3s, PingDue{1}, {}},
        {3s, PingSent{1}, {}},
        {3s, PingSendFailed{1}, {}},
        {3s, RetryDue{}, {}},
        {3s, WatchdogDue{}, {}},
    });
    EXPECT_EQ(machine.generation(), 1U);
}

TEST_F(WebSocketMachineTest, stopDuringARetryDelayWithdrawsTheRetry) {
    at(0s, Start{});
    at(0s, broken(1));
    play({
        {500ms, Stop{}, {CancelWatchdogTimer{}, CancelRetryTimer{}, DeliverState{3, stopped}}},
        {1s, RetryDue{}, {}},
    });
}

TEST_F(WebSocketMachineTest, stopBeforeStartDoesNothing) {
    EXPECT_THAT(at(0s, Stop{}), IsEmpty());
    EXPECT_EQ(machine.state(), stopped);
}

TEST_F(WebSocketMachineTest, theWatchdogGivesAnAttemptFifteenSecondsAndCountsNoFailure) {
    at(0s, Start{});
    play({
        {15s - 1ns, WatchdogDue{}, {SetWatchdogTimer{5s}}},
        {15s,
         WatchdogDue{},
         {SetWatchdogTimer{5s}, CancelSocket{}, ReplaceSession{}, OpenSocket{2}, SetPingTimer{2, 30s}}},
    });
    EXPECT_EQ(machine.state(), connecting);
    EXPECT_EQ(machine.attempt(), 0);
}

TEST_F(WebSocketMachineTest, theWatchdogGivesAConnectionSeventyFiveSecondsOfSilence) {
    startAndConnect();
    at(10s, FrameReceived{1});
    play({
        {85s - 1ns, WatchdogDue{}, {SetWatchdogTimer{5s}}},
        {85s,
         WatchdogDue{},
         {SetWatchdogTimer{5s}, CancelSocket{}, ReplaceSession{}, DeliverState{3, connecting}, OpenSocket{2},
          SetPingTimer{2, 30s}}},
    });
}

TEST_F(WebSocketMachineTest, pingsThatWereSentDoNotBreakTheSilence) {
    startAndConnect();
    at(31s, PingDue{1});
    at(31s, PingSent{1});
    EXPECT_THAT(at(76s, WatchdogDue{}), testing::Contains(Command{ReplaceSession{}}));
}

TEST_F(WebSocketMachineTest, theWatchdogStandsInForARetryThatNeverComes) {
    at(0s, Start{});
    at(2s, broken(1));
    play({
        {30s - 1ns, WatchdogDue{}, {SetWatchdogTimer{5s}}},
        {30s,
         WatchdogDue{},
         {SetWatchdogTimer{5s}, ReplaceSession{}, CancelRetryTimer{}, DeliverState{3, connecting}, OpenSocket{2},
          SetPingTimer{2, 30s}}},
    });
    EXPECT_EQ(machine.attempt(), 1);
}

TEST_F(WebSocketMachineTest, whenTheOpeningTimesOutFirstTheWatchdogFindsNothingToDo) {
    at(0s, Start{});
    play({
        {15s, broken(1), {CancelSocket{}, DeliverState{2, disconnected}, SetRetryTimer{1}}},
        {15s, WatchdogDue{}, {SetWatchdogTimer{5s}}},
    });
}

TEST_F(WebSocketMachineTest, whenTheWatchdogComesFirstTheOpeningsTimeOutIsStale) {
    at(0s, Start{});
    at(15s, WatchdogDue{});
    EXPECT_THAT(at(15s, broken(1)), IsEmpty());
    EXPECT_EQ(machine.generation(), 2U);
}

TEST_F(WebSocketMachineTest, commandsAndEventsReadAsSentences) {
    EXPECT_THAT(testing::PrintToString(Command{DeliverState{3, connected}}),
                testing::HasSubstr("deliver state 3: connected"));
    EXPECT_EQ(describe(Event{ReceiveFailed{2, {.closeCode = 4001, .httpStatus = 101}}}),
              "receive failed 2, close code 4001, status 101");
}

TEST(RetryDelayTest, theCurveDoublesUpToItsCeiling) {
    struct Point {
        int attempt;
        Duration lowest;
        Duration highest;
    };
    for (const Point& point :
         {Point{1, 1s, 1250ms}, Point{2, 2s, 2500ms}, Point{3, 4s, 5s}, Point{4, 8s, 10s}, Point{5, 16s, 20s},
          Point{6, 30s, 30s}, Point{7, 30s, 30s}, Point{1000, 30s, 30s}, Point{2'000'000'000, 30s, 30s}}) {
        EXPECT_EQ(retryDelay(point.attempt, 0.0), point.lowest) << point.attempt;
        EXPECT_EQ(retryDelay(point.attempt, 0.25), point.highest) << point.attempt;
    }
}

TEST(RetryDelayTest, anAttemptBelowOneCountsAsOne) {
    EXPECT_EQ(retryDelay(0, 0.0), 1s);
    EXPECT_EQ(retryDelay(-5, 0.0), 1s);
}

}  // namespace
}  // namespace zelkovanta::server::web_socket
