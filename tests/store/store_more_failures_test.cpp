#include "server/server_message.h"
#include "tests/store/pairing_test.h"

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::Signal;
using records::StateSnapshot;
using server::ConnectionState;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeOffice;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

/// Things that go wrong, or come at an awkward time.
struct StoreMoreFailuresTest : PairingTest {
    /// A paired computer whose key store does not answer yet.
    void launchLocked() {
        skipDesktopDefaults();
        savePairing("room");
        keyStore.memory.setLocked(true);
        launch();
        settle();
        ASSERT_FALSE(state().isPaired);
    }
    void unlock() {
        keyStore.memory.setLocked(false);
        settle();
    }
    void unlink() {
        run([](AppStore& app) { return app.unlinkComputer(); });
        answer("DELETE", "/devices/me", 200);
        ASSERT_FALSE(state().isPaired);
    }
    void expectSavedSession() const {
        EXPECT_TRUE(state().isPaired);
        EXPECT_EQ(state().settings.serverURLString, serverURL);
        EXPECT_EQ(storedToken(), "token-1");
        EXPECT_EQ(requestCount("GET", "/state"), 1U);
        ASSERT_EQ(webSocketLoading.tasks().size(), 1U);
        EXPECT_EQ(socket().header("Authorization"), "Bearer token-1");
    }
};

// The key store.

TEST_F(StoreMoreFailuresTest, aCodeAskedForByHandGivesWayToTheSessionThatTheKeyStoreOpens) {
    launchLocked();
    store->restartSetupQr();
    settle();
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    ASSERT_TRUE(state().setupQrImage);
    unlock();
    expectSavedSession();
    loop.advance(5min);
    EXPECT_EQ(requestCount("GET", pollPath), 0U);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StoreMoreFailuresTest, aScanApprovedAfterTheKeyStoreHasOpenedChangesNothing) {
    launchLocked();
    store->restartSetupQr();
    settle();
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    loop.advance(2s);
    ASSERT_TRUE(openRequest("GET", pollPath));
    unlock();
    answerWith("GET", pollPath, makeApproved());
    expectSavedSession();
    loop.advance(5min);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
}

TEST_F(StoreMoreFailuresTest, aCodeRedeemedAfterTheKeyStoreHasOpenedIsCancelled) {
    launchLocked();
    redeem();
    unlock();
    journal.take();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::member));
    EXPECT_TRUE(wasCancelled());
    expectSavedSession();
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(state().office, std::nullopt);
    EXPECT_EQ(state().device, std::nullopt);
    EXPECT_EQ(defaults.text("deviceRole"), "room");
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StoreMoreFailuresTest, aKeyStoreThatNeverAnswersDoesNotKeepTheWindowShut) {
    defaults.memory.setBoolean("openAsWindow", true);
    launchLocked();
    EXPECT_THAT(takeLinesOf("window"), ElementsAre("window.show"));
    loop.advance(10min);
    EXPECT_FALSE(state().isPaired);
    EXPECT_THAT(takeLinesOf("window"), IsEmpty());
}

TEST_F(StoreMoreFailuresTest, theNextPairingOverwritesATokenWhoseServerCouldNotBeUsed) {
    skipDesktopDefaults();
    savePairing("member");
    defaults.memory.setText("serverURL", "not a url");
    launch();
    settle();
    ASSERT_FALSE(state().isPaired);
    ASSERT_EQ(storedToken(), "token-1");
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(storedToken(), "token-by-code");
    EXPECT_EQ(defaults.text("serverURL"), defaultServerURL);
    EXPECT_EQ(defaults.text("deviceRole"), "room");

    store.reset();
    settle();
    launch();
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(socket().request.url, "wss://default.example/api/v1/ws");
    EXPECT_EQ(socket().header("Authorization"), "Bearer token-by-code");
}

TEST_F(StoreMoreFailuresTest, unlinkingRunsToItsEndThoughTheKeyStoreKeepsTheToken) {
    launchWith("member", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.device = makeDeviceOfMember("member-1");
                   snapshot.signals = {makeSignal("s")};
               }));
    keyStore.memory.setBroken(true);
    unlink();
    EXPECT_EQ(state().office, std::nullopt);
    EXPECT_THAT(state().members, IsEmpty());
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().device, std::nullopt);
    EXPECT_EQ(state().settings.storedRole, "");
    EXPECT_EQ(defaults.text("deviceRole"), "");
    EXPECT_EQ(state().connectionState, ConnectionState::stopped);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(webSocketLoading.liveTasks(), 0U);
    EXPECT_TRUE(openRequest("POST", "/pair/request"));
    keyStore.memory.setBroken(false);
    EXPECT_EQ(storedToken(), "token-1");
}

// The error line.

TEST_F(StoreMoreFailuresTest, noEventButASignInTouchesTheErrorLine) {
    using namespace server::server_message;
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    answer("PATCH", "/signals/s", 500);
    const auto error = state().lastError;
    ASSERT_TRUE(error);

    deliverCreated(makeSignal("t"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s", "t"));
    EXPECT_EQ(state().lastError, error) << "a new signal";
    deliverUpdated(makeSignalThatIs("acknowledged", "t"));
    EXPECT_EQ(state().signals[1].status, "acknowledged");
    EXPECT_EQ(state().lastError, error) << "a changed signal";
    deliverUpdated(makeSignalThatIs("done", "t"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(state().lastError, error) << "a signal that is over";
    deliverRecord("member.updated", MemberUpdated{makeMember("member-9")});
    EXPECT_THAT(state().members, testing::SizeIs(4));
    EXPECT_EQ(state().lastError, error) << "a member";
    deliverRecord("office.updated", OfficeUpdated{makeOffice("office-1", [](auto& office) { office.name = "New"; })});
    EXPECT_EQ(state().office->name, "New");
    EXPECT_EQ(state().lastError, error) << "the office";
    deliverRecord("rooms.updated", RoomsUpdated{{support::makeRoom("room-1")}});
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-1"));
    EXPECT_EQ(state().lastError, error) << "the rooms";
    deliverRecord("types.updated", TypesUpdated{{support::makeType("type-new", 1)}});
    EXPECT_THAT(idsOf(state().signalTypes), ElementsAre("type-new"));
    EXPECT_EQ(state().lastError, error) << "the types";
    deliver("desktop.release", R"({"desktopRelease":)" + support::toJson(support::makeRelease("9", 9)) + "}");
    EXPECT_THAT(takeLinesOf("updates"), ElementsAre("updates.announce 9"));
    EXPECT_EQ(state().lastError, error) << "a release";
    deliver("session.ended", "{}");
    EXPECT_EQ(state().lastError, error) << "the end of a sign-in";
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().lastError, error) << "the state asked for";
    deliverRecord("office.updated", OfficeUpdated{makeOffice("office-2")});
    EXPECT_EQ(state().office->id, "office-2");
    EXPECT_EQ(state().lastError, error) << "a move";
    fail("GET", "/state", platform::TransportCause::noNetwork);
    EXPECT_EQ(state().lastError, error) << "a state that could not be had";
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

// A move that the reply to a request brings.

TEST_F(StoreMoreFailuresTest, aReplyFromAnotherOfficeMovesTheComputerWithoutASecondRequest) {
    for (const int status : {200, 409}) {
        support::Computer other;
        other.launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
        SocketTask& oldSocket = other.socket();
        other.run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "acknowledge"); });
        Exchange* const oldAction = other.openRequest("PATCH", "/signals/s");
        other.deliver("session.ended", "{}");
        ASSERT_EQ(other.requestCount("GET", "/state"), 2U);
        other.answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) {
                             snapshot.office = makeOffice("office-2");
                             snapshot.signals = {makeSignal("s")};
                         }));

        EXPECT_EQ(other.state().office->id, "office-2");
        EXPECT_TRUE(other.state().hasAuthenticatedSnapshot);
        EXPECT_EQ(other.requestCount("GET", "/state"), 2U);
        EXPECT_EQ(other.webSocketLoading.tasks().size(), 2U);
        EXPECT_FALSE(oldSocket.isLive());
        EXPECT_TRUE(other.socket().isLive());

        other.journal.take();
        oldAction->answer(status, status == 200 ? support::toJson(makeSignalThatIs("acknowledged", "s"))
                                                : R"({"error":"already_cleared"})");
        other.settle();
        EXPECT_EQ(other.state().signals[0].status, "waiting");
        EXPECT_EQ(other.state().lastError, std::nullopt);
        EXPECT_THAT(other.journal.take(), IsEmpty());
        other.deliverCreated(makeSignal("t"));
        EXPECT_THAT(idsOf(other.state().signals), ElementsAre("s", "t"));
    }
}

// Presses in notifications.

struct StoreLatePressesTest : StoreMoreFailuresTest {
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

// The computer is about to go down, and then does not.

struct StorePowerOffThatFailedTest : StoreMoreFailuresTest {
    void signIn() { deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1")); }
    /// A signed-in workstation whose sign-out was not answered within the time there was.
    Exchange* launchPastPowerOff() {
        launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
        signIn();
        const auto begin = loop.now();
        powerOff.announce();
        EXPECT_EQ(loop.now() - begin, 2s);
        settle();
        journal.take();
        return openRequest("POST", "/devices/me/signout");
    }
};

TEST_F(StorePowerOffThatFailedTest, aSignOutAnsweredTooLateChangesNothing) {
    for (const int status : {200, 500}) {
        support::Computer other;
        other.launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
        other.deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
        other.powerOff.announce();
        other.settle();
        Exchange* const late = other.openRequest("POST", "/devices/me/signout");
        ASSERT_TRUE(late);
        // Somebody has sat down again meanwhile.
        other.deliverSessionStarted(makeDeviceWithSignIn("member-2"), makeMember("member-2"));
        other.journal.take();
        late->answer(status, "{}");
        other.settle();
        EXPECT_TRUE(other.state().isPaired);
        EXPECT_EQ(other.state().device->signedInMemberId, "member-2");
        EXPECT_EQ(other.state().lastError, std::nullopt);
        EXPECT_THAT(other.journal.take(), IsEmpty());
    }
}

TEST_F(StorePowerOffThatFailedTest, aDeadTokenReportedTooLateStillEndsThePairing) {
    Exchange* const late = launchPastPowerOff();
    ASSERT_TRUE(late);
    EXPECT_TRUE(state().isPaired);
    late->answer(401, R"({"error":"invalid_token"})");
    settle();
    EXPECT_FALSE(state().isPaired);
    EXPECT_TRUE(state().setupQrNotice);
    EXPECT_EQ(storedToken(), std::nullopt);
}

TEST_F(StorePowerOffThatFailedTest, aSecondOneSignsOutOnlyWhoSignedInSince) {
    ASSERT_TRUE(launchPastPowerOff());
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now(), begin);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);

    signIn();
    ASSERT_EQ(state().device->signedInMemberId, "member-1");
    powerOff.announce();
    EXPECT_EQ(loop.now() - begin, 2s);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 2U);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
}

}  // namespace
}  // namespace zelkovanta::store
