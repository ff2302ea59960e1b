#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::Member;
using records::Signal;
using records::StateSnapshot;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSignalTo;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

struct StoreNotificationActionsTest : StoreTest {
    StateSnapshot snapshotWith(std::vector<Signal> signals) const {
        return makeSnapshot([&](StateSnapshot& snapshot) {
            snapshot.device = makeDeviceOfMember("member-1");
            snapshot.signals = std::move(signals);
        });
    }

    void launchAsMember(std::vector<Signal> signals) { launchWith("member", snapshotWith(std::move(signals))); }

    /// A button of a notification is pressed, by way of the handler that the store installed.
    void press(const std::string& signalId, const std::string& action, const std::string& memberId = "member-1") {
        platform::startTask(main.executor(), [this, signalId, action, memberId] {
            return notifications.actionHandler({.signalId = signalId, .memberId = memberId, .action = action});
        });
        settle();
    }

    void pairAgain() {
        run([](AppStore& app) -> platform::Awaitable<void> {
            static_cast<void>(co_await app.redeemPairingCode("CODE"));
        });
        answerWith("POST", "/pair/redeem",
                   records::PairRedeemResponse{.deviceToken = "token-2",
                                               .device = makeDeviceOfMember("member-1"),
                                               .office = support::makeOffice("office-1"),
                                               .role = records::DeviceRole::member,
                                               .room = {},
                                               .member = makeMember("member-1")});
    }

    Lines openActions() const {
        Lines lines;
        for (const Exchange* exchange : urlLoading.pending()) {
            if (exchange->request.method == "PATCH") {
                lines.push_back(exchange->request.url.substr(exchange->request.url.rfind('/') + 1) + " " +
                                exchange->request.body.value_or(""));
            }
        }
        return lines;
    }
};

TEST_F(StoreNotificationActionsTest, aPressActsOnTheSignal) {
    launchAsMember({makeSignal("s")});
    press("s", "acknowledge");
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"acknowledge"})"));
    answerWith("PATCH", "/signals/s", makeSignal("s", [](Signal& signal) {
                   signal.status = "acknowledged", signal.acknowledgedBy = "member-1";
               }));
    EXPECT_EQ(state().signals[0].status, "acknowledged");
    press("s", "done");
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_THAT(state().signals, IsEmpty());
}

TEST_F(StoreNotificationActionsTest, aPressBeforeTheFirstSnapshotActsAfterIt) {
    launchPaired("member");
    press("s", "done");
    press("t", "acknowledge");
    EXPECT_THAT(openActions(), IsEmpty());
    answerWith("GET", "/state", snapshotWith({makeSignal("s"), makeSignal("t")}));
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"done"})"));
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_THAT(openActions(), ElementsAre(R"(t {"action":"acknowledge"})"));
}

TEST_F(StoreNotificationActionsTest, aPressBeforeTheSessionItselfWaitsToo) {
    skipDesktopDefaults();
    savePairing("member");
    keyStore.memory.setLocked(true);
    launch();
    press("s", "done");
    keyStore.memory.setLocked(false);
    settle();
    answerWith("GET", "/state", snapshotWith({makeSignal("s")}));
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, theSamePressTwiceWhileItWaitsIsOneRequest) {
    launchPaired("member");
    press("s", "done");
    press("s", "done");
    answerWith("GET", "/state", snapshotWith({makeSignal("s")}));
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 1U);
}

TEST_F(StoreNotificationActionsTest, aSecondPressWhileTheFirstIsUnderWayFindsTheSignalOver) {
    launchAsMember({makeSignal("s")});
    press("s", "done");
    press("s", "done");
    press("s", "done");
    EXPECT_THAT(openActions(), testing::SizeIs(1));
    journal.take();
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 1U);
    // One refresh for the merge, one for the press that came too late.
    EXPECT_THAT(takeLinesOf("notifications"),
                ElementsAre("notifications.reconcile member-1 []", "notifications.reconcile member-1 []"));
}

TEST_F(StoreNotificationActionsTest, pressesOfDifferentKindsOnOneSignalAreKeptApart) {
    launchPaired("member");
    press("s", "acknowledge");
    press("s", "done");
    answerWith("GET", "/state", snapshotWith({makeSignal("s")}));
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"acknowledge"})"));
    answerWith("PATCH", "/signals/s", makeSignalThatIs("acknowledged", "s"));
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, pressesForDifferentMembersOrSignalsAreKeptApart) {
    launchPaired("member");
    press("s", "done", "member-2");
    press("s", "done", "member-1");
    press("t", "done", "member-1");
    answerWith("GET", "/state", snapshotWith({makeSignal("s"), makeSignal("t")}));
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"done"})"));
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_THAT(openActions(), ElementsAre(R"(t {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, aPressThatIsDroppedIsFollowedByTheNextInTheSameRun) {
    launchAsMember({makeSignal("a"), makeSignal("b")});
    press("a", "done");
    press("unknown", "done");
    press("b", "done");
    answerWith("PATCH", "/signals/a", makeSignalThatIs("done", "a"));
    EXPECT_THAT(openActions(), ElementsAre(R"(b {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, aPressDuringTheDrainIsTakenInTheSameRun) {
    launchAsMember({makeSignal("a"), makeSignal("b")});
    press("a", "done");
    press("b", "done");
    EXPECT_THAT(openActions(), testing::SizeIs(1));
    answerWith("PATCH", "/signals/a", makeSignalThatIs("done", "a"));
    EXPECT_THAT(openActions(), ElementsAre(R"(b {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, aSnapshotDuringTheDrainStartsNoSecondOne) {
    launchAsMember({makeSignal("a"), makeSignal("b")});
    press("a", "done");
    press("b", "done");
    deliverSnapshot(snapshotWith({makeSignal("a"), makeSignal("b")}));
    EXPECT_THAT(openActions(), ElementsAre(R"(a {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, aFailedPressIsShownAndNotTriedAgain) {
    launchAsMember({makeSignal("a"), makeSignal("b")});
    press("a", "done");
    press("b", "done");
    fail("PATCH", "/signals/a", platform::TransportCause::noNetwork);
    EXPECT_EQ(state().lastError, "This computer has no network connection.");
    EXPECT_THAT(idsOf(state().signals), ElementsAre("a", "b"));
    answerWith("PATCH", "/signals/b", makeSignalThatIs("done", "b"));
    EXPECT_EQ(state().lastError, std::nullopt);
    loop.advance(10s);
    EXPECT_EQ(requestCount("PATCH", "/signals/a"), 1U);
}

TEST_F(StoreNotificationActionsTest, aPressThatNoLongerHoldsIsDroppedAndItsNotificationTakenAway) {
    launchAsMember(
        {makeSignal("mine"), makeSignalTo("member-2", "not mine"),
         makeSignal("taken",
                    [](Signal& signal) { signal.status = "acknowledged", signal.acknowledgedBy = "member-2"; }),
         makeSignal("accepted",
                    [](Signal& signal) { signal.status = "acknowledged", signal.acknowledgedBy = "member-1"; })});
    const auto expectDropped = [this](const std::string& id, const std::string& action, const std::string& member) {
        journal.take();
        press(id, action, member);
        EXPECT_THAT(openActions(), IsEmpty()) << id << " " << action << " " << member;
        EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile member-1 [mine, accepted]"));
    };
    expectDropped("unknown", "done", "member-1");
    expectDropped("mine", "done", "member-2");
    expectDropped("not mine", "done", "member-1");
    expectDropped("not mine", "done", "member-2");
    expectDropped("taken", "done", "member-1");
    expectDropped("accepted", "acknowledge", "member-1");
    expectDropped("mine", "cancel", "member-1");
    expectDropped("mine", "", "member-1");
    EXPECT_EQ(state().lastError, std::nullopt);
    press("accepted", "done");
    EXPECT_THAT(openActions(), testing::SizeIs(1));
}

TEST_F(StoreNotificationActionsTest, withNobodyActiveAPressIsDropped) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    press("s", "done");
    EXPECT_THAT(openActions(), IsEmpty());
    EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile nobody []"));
}

TEST_F(StoreNotificationActionsTest, aPressMeantForAnEarlierMemberActsForNobody) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.device = support::makeDevice();
                   snapshot.signals = {makeSignal("s")};
               }));
    deliverSessionStarted(makeDeviceWithSignIn("member-2"), makeMember("member-2"));
    press("s", "done", "member-1");
    EXPECT_THAT(openActions(), IsEmpty());
    press("s", "done", "member-2");
    EXPECT_THAT(openActions(), testing::SizeIs(1));
}

TEST_F(StoreNotificationActionsTest, whatWaitsIsForgottenWithThePairing) {
    launchPaired("member");
    press("s", "done");
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    pairAgain();
    deliverSnapshot(snapshotWith({makeSignal("s")}));
    ASSERT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(openActions(), IsEmpty());
}

TEST_F(StoreNotificationActionsTest, whatWaitsIsForgottenWithTheRun) {
    launchPaired("member");
    press("s", "done");
    store.reset();
    settle();
    launchPaired("member");
    deliverSnapshot(snapshotWith({makeSignal("s")}));
    ASSERT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(openActions(), IsEmpty());
    press("s", "done");
    EXPECT_THAT(openActions(), ElementsAre(R"(s {"action":"done"})"));
}

TEST_F(StoreNotificationActionsTest, aRunningDrainIsNotStoppedByAReset) {
    launchAsMember({makeSignal("s")});
    press("s", "done");
    Exchange* const old = openRequest("PATCH", "/signals/s");
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    press("t", "done");
    journal.take();
    old->answer(200, support::toJson(makeSignalThatIs("done", "s")));
    settle();
    // The press came to nobody: it is dropped and does not wait for the next pairing.
    EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile nobody []"));
    pairAgain();
    deliverSnapshot(snapshotWith({makeSignal("t")}));
    ASSERT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(openActions(), IsEmpty());
}

TEST_F(StoreNotificationActionsTest, aPressAfterTheStoreIsGoneDoesNothing) {
    launchAsMember({makeSignal("s")});
    store.reset();
    press("s", "done");
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 0U);
}

struct CanApplyActionTest : testing::Test {
    Signal signal = makeSignal("s");
    Member member = makeMember("me");

    bool can(const std::string& action) const {
        return canApplyAction({.signalId = "s", .memberId = "me", .action = action}, signal, member);
    }
};

TEST_F(CanApplyActionTest, aWaitingSignalCanBeAcknowledgedAndDone) {
    EXPECT_TRUE(can("acknowledge"));
    EXPECT_TRUE(can("done"));
    EXPECT_FALSE(can("cancel"));
    EXPECT_FALSE(can("Done"));
    EXPECT_FALSE(can(""));
}

TEST_F(CanApplyActionTest, anAcknowledgedSignalCanOnlyBeDone) {
    signal.status = "acknowledged";
    EXPECT_FALSE(can("acknowledge"));
    EXPECT_TRUE(can("done"));
    signal.acknowledgedBy = "me";
    EXPECT_TRUE(can("done"));
    signal.acknowledgedBy = "a colleague";
    EXPECT_FALSE(can("done"));
}

TEST_F(CanApplyActionTest, signalAndMemberMustBeTheOnesNamed) {
    EXPECT_FALSE(canApplyAction({.signalId = "t", .memberId = "me", .action = "done"}, signal, member));
    EXPECT_FALSE(canApplyAction({.signalId = "s", .memberId = "you", .action = "done"}, signal, member));
}

TEST_F(CanApplyActionTest, theSignalMustBeOneThatTheMemberReceives) {
    member.onShift = false;
    EXPECT_FALSE(can("done"));
    member.onShift.reset();
    EXPECT_TRUE(can("done"));
    member.department = "assistant";
    EXPECT_FALSE(can("done"));
    signal.providerId = "me";
    EXPECT_TRUE(can("done"));
    signal.requesterId = "me";
    EXPECT_FALSE(can("done"));
}

}  // namespace
}  // namespace zelkovanta::store
