#include "server/server_message.h"
#include "tests/store/pairing_test.h"

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::Signal;
using records::StateSnapshot;
using support::makeDeviceOfMember;
using support::makeOffice;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

/// Presses in notifications behind an action that outlasts its session or its office.
struct StoreLatePressesTest : PairingTest {
    void unlink() {
        run([](AppStore& app) { return app.unlinkComputer(); });
        answer("DELETE", "/devices/me", 200);
        ASSERT_FALSE(state().isPaired);
    }
    static StateSnapshot snapshotWith(std::vector<Signal> signals, const std::string& officeId = "office-1") {
        return makeSnapshot([&](StateSnapshot& snapshot) {
            snapshot.office = makeOffice(officeId);
            snapshot.device = makeDeviceOfMember("member-1");
            snapshot.signals = std::move(signals);
        });
    }
    void pressDone(const std::string& signalId) {
        platform::startTask(main.executor(), [this, signalId] {
            return notifications.actionHandler({.signalId = signalId, .memberId = "member-1", .action = "done"});
        });
        settle();
    }
    void pairAgain() {
        redeem();
        answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::member));
        ASSERT_TRUE(state().isPaired);
    }
    /// Signals "a" and "b"; "a" was pressed and is under way.
    Exchange* launchWithActionUnderWay() {
        launchWith("member", snapshotWith({makeSignal("a"), makeSignal("b")}));
        pressDone("a");
        return openRequest("PATCH", "/signals/a");
    }
    void moveToSecondOffice() {
        deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-2")});
        ASSERT_FALSE(state().hasAuthenticatedSnapshot);
    }
};

TEST_F(StoreLatePressesTest, aPressInTheNextSessionActsOnceTheOldActionHasEnded) {
    Exchange* const old = launchWithActionUnderWay();
    ASSERT_TRUE(old);
    unlink();
    pairAgain();
    deliverSnapshot(snapshotWith({makeSignal("c")}));
    pressDone("c");
    EXPECT_EQ(requestCount("PATCH", "/signals/c"), 0U);
    old->answer(200, support::toJson(makeSignalThatIs("done", "a")));
    settle();
    ASSERT_TRUE(openRequest("PATCH", "/signals/c"));
    EXPECT_EQ(openRequest("PATCH", "/signals/c")->header("Authorization"), "Bearer token-by-code");
    answerWith("PATCH", "/signals/c", makeSignalThatIs("done", "c"));
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().lastError, std::nullopt);
}

// A drain that runs is not stopped by a reset or a move: what stands behind its action is tried against the state that
// it finds, even if that is none.

TEST_F(StoreLatePressesTest, aPressBeforeTheNextSnapshotBehindAnOldActionIsDropped) {
    Exchange* const old = launchWithActionUnderWay();
    ASSERT_TRUE(old);
    unlink();
    pairAgain();
    pressDone("c");
    old->answer(409, R"({"error":"already_cleared"})");
    settle();
    EXPECT_EQ(state().lastError, std::nullopt);
    deliverSnapshot(snapshotWith({makeSignal("c")}));
    EXPECT_EQ(requestCount("PATCH", "/signals/c"), 0U);
}

TEST_F(StoreLatePressesTest, aPressBehindAnActionIsDroppedWhileTheComputerMovesAndALaterOneWaits) {
    Exchange* const old = launchWithActionUnderWay();
    ASSERT_TRUE(old);
    pressDone("b");
    moveToSecondOffice();
    journal.take();
    old->answer(200, support::toJson(makeSignalThatIs("done", "a")));
    settle();
    EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile nobody []"));
    pressDone("c");
    EXPECT_THAT(journal.take(), IsEmpty());
    answerWith("GET", "/state", snapshotWith({makeSignal("b"), makeSignal("c")}, "office-2"));
    EXPECT_EQ(requestCount("PATCH", "/signals/b"), 0U);
    EXPECT_EQ(requestCount("PATCH", "/signals/c"), 1U);
}

TEST_F(StoreLatePressesTest, anActionThatOutlastsAMoveHandsOverToThePressesBehindIt) {
    Exchange* const old = launchWithActionUnderWay();
    ASSERT_TRUE(old);
    pressDone("b");
    moveToSecondOffice();
    answerWith("GET", "/state", snapshotWith({makeSignal("b")}, "office-2"));
    EXPECT_EQ(requestCount("PATCH", "/signals/b"), 0U);
    old->answer(200, support::toJson(makeSignalThatIs("done", "a")));
    settle();
    EXPECT_EQ(requestCount("PATCH", "/signals/b"), 1U);
}

}  // namespace
}  // namespace zelkovanta::store
