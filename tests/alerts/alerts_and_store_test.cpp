#include "alerts/notification_service.h"
#include "alerts/signal_notification.h"
#include "platform/simulated/simulated_notification_center.h"
#include "tests/support/counting_random.h"
#include "tests/support/store_fixture.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// One computer, from the frame of the wire to what stands on the desktop and back.
namespace zelkovanta::alerts {
namespace {

using namespace std::chrono_literals;
using records::Signal;
using records::StateSnapshot;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

struct AlertsAndStoreTest : testing::Test, support::Computer {
    support::CountingRandom alertRandom;
    platform::simulated::SimulatedNotificationCenter center{loop};
    std::shared_ptr<NotificationService> service = NotificationService::start(
        {.main = main.executor(), .center = center, .random = alertRandom, .strings = strings});

    AlertsAndStoreTest() { alerts = service.get(); }
    ~AlertsAndStoreTest() override { store.reset(); }

    static StateSnapshot snapshotWith(std::vector<Signal> signals) {
        return makeSnapshot([&](StateSnapshot& snapshot) {
            snapshot.device = makeDeviceOfMember("member-1");
            snapshot.signals = std::move(signals);
        });
    }
    static Signal takenBy(std::string memberId, std::string id) {
        return makeSignal(std::move(id), [&](Signal& signal) {
            signal.status = "acknowledged";
            signal.acknowledgedBy = std::move(memberId);
        });
    }
    /// What an earlier run left in the centre.
    void leave(const std::string& signalId, const std::string& memberId) {
        platform::NotificationContent content;
        content.categoryIdentifier = readySignalCategory;
        content.userInfo = signalUserInfo(signalId, memberId);
        center.add({.identifier = signalIdentifier(signalId), .content = std::move(content)}, [] {});
        settle();
    }
    void press(const std::string& signalId, std::string_view button) {
        ASSERT_TRUE(center.press(signalIdentifier(signalId), button)) << signalId;
        settle();
    }
    std::vector<std::string> shown() const {
        std::vector<std::string> titles;
        for (const auto& [identifier, request] : center.delivered()) {
            titles.push_back(identifier);
        }
        return titles;
    }
    std::string bodyOf(std::string_view method, std::string_view path) const {
        const Exchange* exchange = openRequest(method, path);
        return exchange ? exchange->request.body.value_or("") : "no such request";
    }
};

TEST_F(AlertsAndStoreTest, aCallIsAlertedAndAnsweredWithoutAWindow) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    ASSERT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    press("s", "ONMYWAY");
    EXPECT_EQ(bodyOf("PATCH", "/signals/s"), R"({"action":"acknowledge"})");
    EXPECT_EQ(center.completedResponses(), 0U);
    answerWith("PATCH", "/signals/s", takenBy("member-1", "s"));
    EXPECT_EQ(center.completedResponses(), 1U);
    EXPECT_EQ(state().signals.front().status, "acknowledged");
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(AlertsAndStoreTest, whatAColleagueTakesIsGone) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    deliverCreated(makeSignal("t"));
    deliverUpdated(takenBy("member-2", "s"));
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.t"));
    deliverUpdated(makeSignalThatIs("expired", "t"));
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(AlertsAndStoreTest, whatOneselfTakesInTheWindowStays) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    deliverUpdated(takenBy("member-1", "s"));
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    deliverUpdated(makeSignalThatIs("canceled", "s"));
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(AlertsAndStoreTest, whatEndedDuringTheNightIsGoneInTheMorning) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    deliverCreated(makeSignal("t"));
    main.setHeld(true);
    center.setHeld(true);
    loop.advance(10h);
    main.setHeld(false);
    center.setHeld(false);
    settle();
    deliverSnapshot(snapshotWith({makeSignal("t"), makeSignal("of the night")}));
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.t"));
}

TEST_F(AlertsAndStoreTest, whatIsLearntFromASnapshotOrAnUpdateIsNotAlerted) {
    launchWith("member", snapshotWith({makeSignal("a")}));
    deliverSnapshot(snapshotWith({makeSignal("a"), makeSignal("b")}));
    deliverUpdated(makeSignal("c"));
    EXPECT_EQ(state().signals.size(), 3U);
    EXPECT_EQ(center.added(), 0U);
}

TEST_F(AlertsAndStoreTest, aSignalThatIsDoneWhenItIsCreatedComesAndGoes) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignalThatIs("done", "s"));
    EXPECT_EQ(center.added(), 1U);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(AlertsAndStoreTest, aPressRightAfterTheStartActsWithTheFirstSnapshot) {
    leave("s", "member-1");
    launchPaired("member");
    press("s", "DONE");
    EXPECT_EQ(openRequest("PATCH", "/signals/s"), nullptr);
    answerWith("GET", "/state", snapshotWith({makeSignal("s")}));
    EXPECT_EQ(bodyOf("PATCH", "/signals/s"), R"({"action":"done"})");
}

TEST_F(AlertsAndStoreTest, whatTheLastRunLeftIsTakenBackWithTheFirstSnapshot) {
    leave("over", "member-1");
    leave("open", "member-1");
    leave("open for another", "member-2");
    launchPaired("member");
    EXPECT_EQ(shown().size(), 3U);
    answerWith("GET", "/state", snapshotWith({makeSignal("open"), makeSignal("open for another")}));
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.open"));
}

TEST_F(AlertsAndStoreTest, aPressThatComesTooLateActsOnNothing) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    center.deliveredAnswerDelay = 1s;
    deliverUpdated(takenBy("member-2", "s"));
    press("s", "DONE");
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 0U);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(AlertsAndStoreTest, aHandOverAtAWorkstationTakesTheEarlierPersonsNotifications) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = support::makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    deliverCreated(makeSignal("before a room"));
    EXPECT_THAT(shown(), IsEmpty());
    store->confirmFlexibleRoom("room-1");
    deliverCreated(makeSignal("s"));
    ASSERT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    deliverSessionStarted(makeDeviceWithSignIn("member-2"), makeMember("member-2"));
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(AlertsAndStoreTest, theEndOfThePairingTakesEverySignalsNotification) {
    launchWith("member", snapshotWith({}));
    deliverCreated(makeSignal("s"));
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    ASSERT_FALSE(state().isPaired);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(AlertsAndStoreTest, permissionIsAskedOnceWhenTheComputerIsPairedAndNeverAtALaterStart) {
    launchWith("member", snapshotWith({}));
    EXPECT_THAT(center.authorizationRequests(), IsEmpty());
    for (int pairing = 0; pairing < 2; ++pairing) {
        socket().fail({.closeCode = 4001, .httpStatus = {}});
        settle();
        run([](store::AppStore& app) -> platform::Awaitable<void> {
            static_cast<void>(co_await app.redeemPairingCode("CODE"));
        });
        answerWith("POST", "/pair/redeem",
                   records::PairRedeemResponse{.deviceToken = "token-2",
                                               .device = makeDeviceOfMember("member-1"),
                                               .office = support::makeOffice("office-1"),
                                               .role = records::DeviceRole::member,
                                               .room = {},
                                               .member = makeMember("member-1")});
        ASSERT_TRUE(state().isPaired);
        EXPECT_EQ(center.authorizationRequests().size(), 1U);
        deliverSnapshot(snapshotWith({}));
    }
}

TEST_F(AlertsAndStoreTest, aRoomIsToldWhoIsOnTheWayAndThatItIsAllSet) {
    launchWith("room", makeSnapshot());
    deliverCreated(makeSignal("s"));
    EXPECT_THAT(shown(), IsEmpty());
    deliverUpdated(takenBy("member-2", "s"));
    ASSERT_EQ(center.delivered().size(), 1U);
    EXPECT_EQ(center.delivered().begin()->second->content.title, "Name of member-2 is on the way");
    deliverUpdated(makeSignalThatIs("done", "s"));
    deliverUpdated(makeSignalThatIs("done", "s"));
    EXPECT_EQ(center.delivered().size(), 3U);
}

}  // namespace
}  // namespace zelkovanta::alerts
