#include "tests/simulation/network.h"

#include "platform/task.h"
#include "server/server_message.h"
#include "tests/simulation/scenario.h"

#include <deque>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::simulation {
namespace {

using namespace std::chrono_literals;
using platform::HttpResponse;
using platform::TransportCause;
using platform::TransportError;
using platform::WebSocketFailure;
using platform::WebSocketFrame;
using ::testing::HasSubstr;
using ::testing::Not;

using Reply = std::expected<HttpResponse, TransportError>;
using Received = std::expected<WebSocketFrame, WebSocketFailure>;

constexpr auto latency = 10ms;

class NetworkTest : public ::testing::Test {
protected:
    NetworkTest() {
        foundPractices(memory, chance);
        simulatedOffice = std::make_unique<SimulatedOffice>(SimulatedOffice::Surroundings{loop, trace, faults, verdict},
                                                            chance.branch(), memory, memory);
        network = std::make_unique<Network>(Network{loop, trace, faults, chance.branch(), *simulatedOffice});
        link.lowestLatency = link.highestLatency = latency;
        port = std::make_unique<NetworkPort>(*network, link, watch, 0, "Computer 0");
        sockets = port->makeSession(mainThread.executor());
        watch.launched(0);
    }
    void TearDown() override {
        mainThread.end();
        port->letGo();
    }

    /// A request under way; its reply and the time at which it came.
    struct Asked {
        std::optional<Reply> reply;
        platform::SteadyTime at{};
    };
    std::shared_ptr<Asked> ask(std::string method, std::string path, std::string body = {}) {
        auto asked = std::make_shared<Asked>();
        auto session = std::shared_ptr<platform::UrlSession>{
            static_cast<platform::UrlLoading&>(*port).makeSession(platform::UrlSessionConfiguration{})};
        platform::HttpRequest request{.method = std::move(method),
                                      .url = "https://office.example/api/v1/" + path,
                                      .headers = {{"Authorization", "Bearer " + token}},
                                      .body = std::move(body)};
        platform::startTask(mainThread.executor(), [this, asked, session, request]() -> platform::Awaitable<void> {
            asked->reply = co_await session->perform(request);
            asked->at = loop.now();
        });
        return asked;
    }

    /// Pairs with the office; from here on requests and sockets carry the token.
    void pair() {
        office::Placement placement;
        placement.practice = practiceId(0);
        placement.role = office::DeviceRole::room;
        placement.room = "practice0-room0";
        ASSERT_TRUE(simulatedOffice->order(
            "code", [&](office::Office& office, auto now) { return office.makePairingCode(placement, now); }));
        const std::string code{jsonText(simulatedOffice->lastBody(), "code")};
        const auto asked = ask(
            "POST", "pair/redeem",
            R"({"code":")" + code + R"(","device":{"kind":"desktop_mac","name":"a","model":"b","appVersion":"1"}})");
        loop.advance(1s);
        ASSERT_TRUE(asked->reply && asked->reply->has_value());
        token = jsonText((*asked->reply)->body, "deviceToken");
        ASSERT_FALSE(token.empty());
        deviceId = simulatedOffice->deviceOf(token).value();
    }

    /// A socket that is read until it ends.
    struct Line {
        std::shared_ptr<platform::WebSocketTask> task;
        std::vector<std::string> frames;
        std::optional<WebSocketFailure> end;
        platform::SteadyTime endedAt{};
    };
    std::shared_ptr<Line> open() {
        auto line = std::make_shared<Line>();
        watch.sessionBegan();
        line->task = sockets->makeTask(
            {.url = "wss://office.example/api/v1/ws", .headers = {{"Authorization", "Bearer " + token}}});
        line->task->resume();
        platform::startTask(mainThread.executor(), [this, line]() -> platform::Awaitable<void> {
            while (!line->end) {
                auto received = co_await line->task->receive();
                if (received) {
                    line->frames.push_back(received->payload);
                } else {
                    line->end = received.error();
                    line->endedAt = loop.now();
                }
            }
        });
        return line;
    }

    void renameRoom(const std::string& name) {
        simulatedOffice->order("rename", [&](office::Office& office, auto now) {
            return office.changeRoom(practiceId(0), "practice0-room0",
                                     {.name = name, .active = std::nullopt, .beaconUuid = std::nullopt}, now);
        });
    }

    Trace trace;
    FaultCounts faults;
    Verdict verdict;
    OvertakenReplies overtaken;
    Chance chance{7};
    office::MemoryStorage memory;
    Link link;
    std::unique_ptr<Network> network;
    std::unique_ptr<NetworkPort> port;
    platform::simulated::EventLoop loop;
    platform::simulated::EventLoop::Thread& mainThread = loop.makeThread();
    Watch watch{0, loop, verdict, overtaken};
    std::unique_ptr<SimulatedOffice> simulatedOffice;
    std::unique_ptr<platform::WebSocketSession> sockets;
    std::string token = "none";
    std::string deviceId;
};

TEST_F(NetworkTest, aReplyTakesTheLinksLatencyBothWays) {
    const auto asked = ask("GET", "state");
    loop.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ((*asked->reply)->status, 401);
    EXPECT_EQ(asked->at.time_since_epoch(), 2 * latency);
}

TEST_F(NetworkTest, aSilentLinkEndsARequestAtItsIdleLimit) {
    link.path = Link::Path::silent;
    const auto asked = ask("GET", "state");
    loop.advance(14'999ms);
    EXPECT_FALSE(asked->reply);
    loop.advance(1ms);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::timedOut}}});
}

TEST_F(NetworkTest, aLinkThatIsDownFailsAtOnce) {
    link.path = Link::Path::down;
    const auto asked = ask("GET", "state");
    loop.advance(1ms);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::noNetwork}}});
}

TEST_F(NetworkTest, aStalledLinkHandsItsReplyOverLater) {
    const auto asked = ask("GET", "state");
    loop.advance(latency + 1ms);
    link.stalledUntil = loop.now() + 5s;
    loop.advance(4s);
    EXPECT_FALSE(asked->reply);
    loop.advance(2s);
    ASSERT_TRUE(asked->reply);
    EXPECT_TRUE(asked->reply->has_value());
}

TEST_F(NetworkTest, anOfficeThatIsDownRefuses) {
    simulatedOffice->goDown();
    const auto asked = ask("GET", "state");
    loop.advance(1s);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::refused}}});
}

TEST_F(NetworkTest, everyKindOfMishapHappensOnARoughLink) {
    link.roughness = 1;
    for (int round = 0; round < 200; ++round) {
        static_cast<void>(ask("GET", "state"));
    }
    loop.advance(2min);
    for (const Fault fault :
         {Fault::requestLost, Fault::replyLost, Fault::exchangeReset, Fault::refused401, Fault::refused429,
          Fault::refused500, Fault::garbageReply, Fault::cutReply, Fault::slowReply}) {
        EXPECT_GT(faults.of(fault), 0U) << name(fault);
    }
    EXPECT_EQ(port->exchangesInFlight(), 0U);
}

TEST_F(NetworkTest, aProcessThatIsGoneGetsNoReplyButTheOfficeStillActs) {
    pair();
    const auto asked = ask("DELETE", "devices/me");
    loop.advance(1ms);
    port->letGo();
    loop.advance(1s);
    EXPECT_FALSE(asked->reply);
    EXPECT_EQ(simulatedOffice->state().find<office::Device>(deviceId), nullptr);
}

TEST_F(NetworkTest, aReplyOfADeadSessionIsPoisoned) {
    pair();
    const auto asked = ask("GET", "state");
    loop.advance(latency);
    watch.sessionBegan();
    loop.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_THAT((*asked->reply)->body, HasSubstr(poison::word));
    EXPECT_EQ(faults.of(Fault::poisonedReply), 1U);
}

TEST_F(NetworkTest, anOpenedSocketGetsASnapshotFirst) {
    pair();
    const auto line = open();
    loop.advance(3 * latency - 1ms);
    EXPECT_TRUE(line->frames.empty());
    loop.advance(1ms);
    ASSERT_EQ(line->frames.size(), 1U);
    EXPECT_THAT(line->frames.front(), HasSubstr(R"("type":"snapshot")"));
    EXPECT_TRUE(port->isQuiet());
}

TEST_F(NetworkTest, aRefusedOpeningCarriesItsStatus) {
    const auto line = open();
    loop.advance(1s);
    ASSERT_TRUE(line->end);
    EXPECT_EQ(line->end->httpStatus, 401);
}

TEST_F(NetworkTest, anOpeningIntoSilenceEndsAtItsTimeLimit) {
    pair();
    link.path = Link::Path::silent;
    const auto began = loop.now();
    const auto line = open();
    loop.advance(20s);
    ASSERT_TRUE(line->end);
    EXPECT_EQ(*line->end, WebSocketFailure{});
    EXPECT_EQ(line->endedAt - began, 15s);
}

TEST_F(NetworkTest, theFramesOfOneSocketKeepTheirOrder) {
    pair();
    const auto line = open();
    loop.advance(1s);
    link.highestLatency = 3s;
    constexpr int count = 30;
    for (int number = 0; number < count; ++number) {
        renameRoom("renamed " + std::to_string(number));
        loop.advance(50ms);
    }
    loop.advance(5s);
    ASSERT_EQ(line->frames.size(), 1U + count);
    for (int number = 0; number < count; ++number) {
        EXPECT_THAT(line->frames[static_cast<std::size_t>(number) + 1],
                    HasSubstr("renamed " + std::to_string(number) + '"'));
    }
}

TEST_F(NetworkTest, aHalfOpenSocketTakesPingsAndGivesNothing) {
    pair();
    const auto line = open();
    loop.advance(1s);
    port->halfOpenSockets();
    std::optional<bool> sent;
    platform::startTask(mainThread.executor(), [line, &sent]() -> platform::Awaitable<void> {
        sent = co_await line->task->send(R"({"type":"ping"})");
    });
    renameRoom("unheard");
    loop.advance(10min);
    EXPECT_EQ(sent, true);
    EXPECT_EQ(line->frames.size(), 1U);
    EXPECT_FALSE(line->end);
    EXPECT_FALSE(port->isQuiet());
}

TEST_F(NetworkTest, aPingIsAnsweredWithAPong) {
    pair();
    const auto line = open();
    loop.advance(1s);
    platform::startTask(mainThread.executor(), [line]() -> platform::Awaitable<void> {
        static_cast<void>(co_await line->task->send(R"({"type":"ping"})"));
    });
    loop.advance(1s);
    ASSERT_EQ(line->frames.size(), 2U);
    EXPECT_EQ(line->frames.back(), R"({"type":"pong"})");
}

TEST_F(NetworkTest, aRevocationClosesTheSocketBehindItsFrames) {
    pair();
    const auto line = open();
    loop.advance(1s);
    renameRoom("last words");
    simulatedOffice->order("revoke", [&](office::Office& office, auto now) { return office.revoke(deviceId, now); });
    loop.advance(1s);
    ASSERT_EQ(line->frames.size(), 2U);
    EXPECT_THAT(line->frames.back(), HasSubstr("last words"));
    ASSERT_TRUE(line->end);
    EXPECT_EQ(line->end->closeCode, office::revokedCloseCode);
}

TEST_F(NetworkTest, aRestartOfTheOfficeEndsEverySocketOrLeavesItHalfOpen) {
    pair();
    int ended = 0;
    int left = 0;
    for (int round = 0; round < 60; ++round) {
        const auto line = open();
        loop.advance(1s);
        simulatedOffice->goDown();
        simulatedOffice->comeUp();
        loop.advance(1s);
        (line->end ? ended : left) += 1;
        line->task->cancel(1001);
        loop.advance(1s);
    }
    EXPECT_GT(ended, left);
    EXPECT_GT(left, 0);
    EXPECT_TRUE(verdict.holds());
}

TEST_F(NetworkTest, aCutFrameIsNoMessageAndItsSocketEndsSoonAfter) {
    pair();
    int cut = 0;
    for (int round = 0; round < 60; ++round) {
        link.roughness = 0;
        const auto line = open();
        loop.advance(1s);
        link.roughness = 1;
        const auto before = faults.of(Fault::frameCut);
        renameRoom("name " + std::to_string(round));
        loop.advance(2s);
        if (faults.of(Fault::frameCut) > before) {
            ++cut;
            ASSERT_EQ(line->frames.size(), 2U);
            EXPECT_FALSE(server::decodeServerMessage(line->frames.back()));
            EXPECT_TRUE(line->end);
        } else {
            EXPECT_EQ(line->frames.size(), 1U);
        }
        line->task->cancel(1001);
    }
    EXPECT_GT(cut, 0);
}

TEST_F(NetworkTest, aSocketThatWasGivenUpSpeaksPoisonAtMost) {
    pair();
    int spoke = 0;
    for (int round = 0; round < 60; ++round) {
        const auto line = open();
        loop.advance(1s);
        ASSERT_EQ(line->frames.size(), 1U);
        EXPECT_THAT(line->frames.front(), Not(HasSubstr(poison::word)));
        line->task->cancel(1001);
        renameRoom("unheard " + std::to_string(round));
        loop.advance(1s);
        EXPECT_TRUE(line->end);
        for (std::size_t index = 1; index < line->frames.size(); ++index) {
            EXPECT_THAT(line->frames[index], HasSubstr(poison::word));
            ++spoke;
        }
    }
    EXPECT_GT(spoke, 0);
}

TEST_F(NetworkTest, everyPoisonIsAWholeMessage) {
    for (int round = 0; round < 100; ++round) {
        const std::string frame = poison::frame(chance);
        EXPECT_TRUE(server::decodeServerMessage(frame)) << frame;
    }
}

TEST_F(NetworkTest, aReplyBehindANewerEventCountsAsOvertaken) {
    pair();
    const auto line = open();
    loop.advance(1s);
    const auto asked = ask("GET", "state");
    loop.advance(latency + 1ms);
    link.lowestLatency = link.highestLatency = 1ms;
    renameRoom("newer");
    loop.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ(overtaken.states, 1U);
    EXPECT_TRUE(watch.mayDiffer());
}

TEST_F(NetworkTest, aReplyInTimeDoesNotCountAsOvertaken) {
    pair();
    const auto line = open();
    loop.advance(1s);
    renameRoom("older");
    loop.advance(1s);
    const auto asked = ask("GET", "state");
    loop.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ(overtaken.merged, 1U);
    EXPECT_EQ(overtaken.total(), 0U);
    EXPECT_FALSE(watch.mayDiffer());
}

}  // namespace
}  // namespace zelkovanta::simulation
