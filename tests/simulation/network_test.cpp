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
        foundPractices(memory_, chance_);
        office_ = std::make_unique<SimulatedOffice>(SimulatedOffice::Surroundings{loop_, trace_, faults_, verdict_},
                                                    chance_.branch(), memory_, memory_);
        network_ = std::make_unique<Network>(Network{loop_, trace_, faults_, chance_.branch(), *office_});
        link_.lowestLatency = link_.highestLatency = latency;
        port_ = std::make_unique<NetworkPort>(*network_, link_, watch_, 0, "Computer 0");
        sockets_ = port_->makeSession(main_.executor());
        watch_.launched(0);
    }
    ~NetworkTest() override {
        main_.end();
        port_->letGo();
    }

    /// A request under way; its reply and the time at which it came.
    struct Asked {
        std::optional<Reply> reply;
        platform::SteadyTime at{};
    };
    std::shared_ptr<Asked> ask(std::string method, std::string path, std::string body = {}) {
        auto asked = std::make_shared<Asked>();
        auto session = std::shared_ptr<platform::UrlSession>{
            static_cast<platform::UrlLoading&>(*port_).makeSession(platform::UrlSessionConfiguration{})};
        platform::HttpRequest request{.method = std::move(method),
                                      .url = "https://office.example/api/v1/" + path,
                                      .headers = {{"Authorization", "Bearer " + token_}},
                                      .body = std::move(body)};
        platform::startTask(main_.executor(), [this, asked, session, request]() -> platform::Awaitable<void> {
            asked->reply = co_await session->perform(request);
            asked->at = loop_.now();
        });
        return asked;
    }

    /// Pairs with the office; from here on requests and sockets carry the token.
    void pair() {
        office::Placement placement;
        placement.practice = practiceId(0);
        placement.role = office::DeviceRole::room;
        placement.room = "practice0-room0";
        ASSERT_TRUE(office_->order(
            "code", [&](office::Office& office, auto now) { return office.makePairingCode(placement, now); }));
        const std::string code{jsonText(office_->lastBody(), "code")};
        const auto asked = ask(
            "POST", "pair/redeem",
            R"({"code":")" + code + R"(","device":{"kind":"desktop_mac","name":"a","model":"b","appVersion":"1"}})");
        loop_.advance(1s);
        ASSERT_TRUE(asked->reply && asked->reply->has_value());
        token_ = jsonText((*asked->reply)->body, "deviceToken");
        ASSERT_FALSE(token_.empty());
        deviceId_ = office_->deviceOf(token_).value();
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
        watch_.sessionBegan();
        line->task = sockets_->makeTask(
            {.url = "wss://office.example/api/v1/ws", .headers = {{"Authorization", "Bearer " + token_}}});
        line->task->resume();
        platform::startTask(main_.executor(), [this, line]() -> platform::Awaitable<void> {
            while (!line->end) {
                auto received = co_await line->task->receive();
                if (received) {
                    line->frames.push_back(received->payload);
                } else {
                    line->end = received.error();
                    line->endedAt = loop_.now();
                }
            }
        });
        return line;
    }

    void renameRoom(const std::string& name) {
        office_->order("rename", [&](office::Office& office, auto now) {
            return office.changeRoom(practiceId(0), "practice0-room0",
                                     {.name = name, .active = std::nullopt, .beaconUuid = std::nullopt}, now);
        });
    }

    Trace trace_;
    FaultCounts faults_;
    Verdict verdict_;
    OvertakenReplies overtaken_;
    Chance chance_{7};
    office::MemoryStorage memory_;
    Link link_;
    std::unique_ptr<Network> network_;
    std::unique_ptr<NetworkPort> port_;
    platform::simulated::EventLoop loop_;
    platform::simulated::EventLoop::Thread& main_ = loop_.makeThread();
    Watch watch_{0, loop_, verdict_, overtaken_};
    std::unique_ptr<SimulatedOffice> office_;
    std::unique_ptr<platform::WebSocketSession> sockets_;
    std::string token_ = "none";
    std::string deviceId_;
};

TEST_F(NetworkTest, aReplyTakesTheLinksLatencyBothWays) {
    const auto asked = ask("GET", "state");
    loop_.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ((*asked->reply)->status, 401);
    EXPECT_EQ(asked->at.time_since_epoch(), 2 * latency);
}

TEST_F(NetworkTest, aSilentLinkEndsARequestAtItsIdleLimit) {
    link_.path = Link::Path::silent;
    const auto asked = ask("GET", "state");
    loop_.advance(14'999ms);
    EXPECT_FALSE(asked->reply);
    loop_.advance(1ms);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::timedOut}}});
}

TEST_F(NetworkTest, aLinkThatIsDownFailsAtOnce) {
    link_.path = Link::Path::down;
    const auto asked = ask("GET", "state");
    loop_.advance(1ms);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::noNetwork}}});
}

TEST_F(NetworkTest, aStalledLinkHandsItsReplyOverLater) {
    const auto asked = ask("GET", "state");
    loop_.advance(latency + 1ms);
    link_.stalledUntil = loop_.now() + 5s;
    loop_.advance(4s);
    EXPECT_FALSE(asked->reply);
    loop_.advance(2s);
    ASSERT_TRUE(asked->reply);
    EXPECT_TRUE(asked->reply->has_value());
}

TEST_F(NetworkTest, anOfficeThatIsDownRefuses) {
    office_->goDown();
    const auto asked = ask("GET", "state");
    loop_.advance(1s);
    ASSERT_TRUE(asked->reply);
    EXPECT_EQ(*asked->reply, Reply{std::unexpected{TransportError{TransportCause::refused}}});
}

TEST_F(NetworkTest, everyKindOfMishapHappensOnARoughLink) {
    link_.roughness = 1;
    for (int round = 0; round < 200; ++round) {
        static_cast<void>(ask("GET", "state"));
    }
    loop_.advance(2min);
    for (const Fault fault :
         {Fault::requestLost, Fault::replyLost, Fault::exchangeReset, Fault::refused401, Fault::refused429,
          Fault::refused500, Fault::garbageReply, Fault::cutReply, Fault::slowReply}) {
        EXPECT_GT(faults_.of(fault), 0U) << name(fault);
    }
    EXPECT_EQ(port_->exchangesInFlight(), 0U);
}

TEST_F(NetworkTest, aProcessThatIsGoneGetsNoReplyButTheOfficeStillActs) {
    pair();
    const auto asked = ask("DELETE", "devices/me");
    loop_.advance(1ms);
    port_->letGo();
    loop_.advance(1s);
    EXPECT_FALSE(asked->reply);
    EXPECT_EQ(office_->state().find<office::Device>(deviceId_), nullptr);
}

TEST_F(NetworkTest, aReplyOfADeadSessionIsPoisoned) {
    pair();
    const auto asked = ask("GET", "state");
    loop_.advance(latency);
    watch_.sessionBegan();
    loop_.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_THAT((*asked->reply)->body, HasSubstr(poison::word));
    EXPECT_EQ(faults_.of(Fault::poisonedReply), 1U);
}

TEST_F(NetworkTest, anOpenedSocketGetsASnapshotFirst) {
    pair();
    const auto line = open();
    loop_.advance(3 * latency - 1ms);
    EXPECT_TRUE(line->frames.empty());
    loop_.advance(1ms);
    ASSERT_EQ(line->frames.size(), 1U);
    EXPECT_THAT(line->frames.front(), HasSubstr(R"("type":"snapshot")"));
    EXPECT_TRUE(port_->isQuiet());
}

TEST_F(NetworkTest, aRefusedOpeningCarriesItsStatus) {
    const auto line = open();
    loop_.advance(1s);
    ASSERT_TRUE(line->end);
    EXPECT_EQ(line->end->httpStatus, 401);
}

TEST_F(NetworkTest, anOpeningIntoSilenceEndsAtItsTimeLimit) {
    pair();
    link_.path = Link::Path::silent;
    const auto began = loop_.now();
    const auto line = open();
    loop_.advance(20s);
    ASSERT_TRUE(line->end);
    EXPECT_EQ(*line->end, WebSocketFailure{});
    EXPECT_EQ(line->endedAt - began, 15s);
}

TEST_F(NetworkTest, theFramesOfOneSocketKeepTheirOrder) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    link_.highestLatency = 3s;
    constexpr int count = 30;
    for (int number = 0; number < count; ++number) {
        renameRoom("renamed " + std::to_string(number));
        loop_.advance(50ms);
    }
    loop_.advance(5s);
    ASSERT_EQ(line->frames.size(), 1U + count);
    for (int number = 0; number < count; ++number) {
        EXPECT_THAT(line->frames[static_cast<std::size_t>(number) + 1],
                    HasSubstr("renamed " + std::to_string(number) + '"'));
    }
}

TEST_F(NetworkTest, aHalfOpenSocketTakesPingsAndGivesNothing) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    port_->halfOpenSockets();
    std::optional<bool> sent;
    platform::startTask(main_.executor(), [line, &sent]() -> platform::Awaitable<void> {
        sent = co_await line->task->send(R"({"type":"ping"})");
    });
    renameRoom("unheard");
    loop_.advance(10min);
    EXPECT_EQ(sent, true);
    EXPECT_EQ(line->frames.size(), 1U);
    EXPECT_FALSE(line->end);
    EXPECT_FALSE(port_->isQuiet());
}

TEST_F(NetworkTest, aPingIsAnsweredWithAPong) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    platform::startTask(main_.executor(), [line]() -> platform::Awaitable<void> {
        static_cast<void>(co_await line->task->send(R"({"type":"ping"})"));
    });
    loop_.advance(1s);
    ASSERT_EQ(line->frames.size(), 2U);
    EXPECT_EQ(line->frames.back(), R"({"type":"pong"})");
}

TEST_F(NetworkTest, aRevocationClosesTheSocketBehindItsFrames) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    renameRoom("last words");
    office_->order("revoke", [&](office::Office& office, auto now) { return office.revoke(deviceId_, now); });
    loop_.advance(1s);
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
        loop_.advance(1s);
        office_->goDown();
        office_->comeUp();
        loop_.advance(1s);
        (line->end ? ended : left) += 1;
        line->task->cancel(1001);
        loop_.advance(1s);
    }
    EXPECT_GT(ended, left);
    EXPECT_GT(left, 0);
    EXPECT_TRUE(verdict_.holds());
}

TEST_F(NetworkTest, aCutFrameIsNoMessageAndItsSocketEndsSoonAfter) {
    pair();
    int cut = 0;
    for (int round = 0; round < 60; ++round) {
        link_.roughness = 0;
        const auto line = open();
        loop_.advance(1s);
        link_.roughness = 1;
        const auto before = faults_.of(Fault::frameCut);
        renameRoom("name " + std::to_string(round));
        loop_.advance(2s);
        if (faults_.of(Fault::frameCut) > before) {
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
        loop_.advance(1s);
        ASSERT_EQ(line->frames.size(), 1U);
        EXPECT_THAT(line->frames.front(), Not(HasSubstr(poison::word)));
        line->task->cancel(1001);
        renameRoom("unheard " + std::to_string(round));
        loop_.advance(1s);
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
        const std::string frame = poison::frame(chance_);
        EXPECT_TRUE(server::decodeServerMessage(frame)) << frame;
    }
}

TEST_F(NetworkTest, aReplyBehindANewerEventCountsAsOvertaken) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    const auto asked = ask("GET", "state");
    loop_.advance(latency + 1ms);
    link_.lowestLatency = link_.highestLatency = 1ms;
    renameRoom("newer");
    loop_.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ(overtaken_.states, 1U);
    EXPECT_TRUE(watch_.mayDiffer());
}

TEST_F(NetworkTest, aReplyInTimeDoesNotCountAsOvertaken) {
    pair();
    const auto line = open();
    loop_.advance(1s);
    renameRoom("older");
    loop_.advance(1s);
    const auto asked = ask("GET", "state");
    loop_.advance(1s);
    ASSERT_TRUE(asked->reply && asked->reply->has_value());
    EXPECT_EQ(overtaken_.merged, 1U);
    EXPECT_EQ(overtaken_.total(), 0U);
    EXPECT_FALSE(watch_.mayDiffer());
}

}  // namespace
}  // namespace zelkovanta::simulation
