#include "store/settings.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::StateSnapshot;
using server::ConnectionState;
using support::makeDevice;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSignalThatIs;
using support::makeSignalWithNote;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view revokedNotice = "This computer is no longer linked. Scan the code to set it up again.";
constexpr const char* invalidToken = R"({"error":"invalid_token"})";

struct StoreUnlinkingTest : StoreTest {
    std::optional<std::string> storedToken() const { return keyStore.memory.peek(deviceTokenItem()); }

    void launchInRoom() { launchWith("room", makeSnapshot()); }

    void expectUnpaired() const {
        EXPECT_FALSE(state().isPaired);
        EXPECT_EQ(state().office, std::nullopt);
        EXPECT_THAT(state().members, IsEmpty());
        EXPECT_THAT(state().rooms, IsEmpty());
        EXPECT_THAT(state().signalTypes, IsEmpty());
        EXPECT_THAT(state().signals, IsEmpty());
        EXPECT_EQ(state().device, std::nullopt);
        EXPECT_EQ(state().connectionState, ConnectionState::stopped);
        EXPECT_FALSE(state().hasAuthenticatedSnapshot);
        EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
        EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
        EXPECT_EQ(state().settings.storedRole, "");
        EXPECT_FALSE(state().settings.beaconEnabled);
        EXPECT_EQ(storedToken(), std::nullopt);
    }
};

// The end of a pairing.

TEST_F(StoreUnlinkingTest, unlinkingEndsThePairingInTheToldOrder) {
    defaults.memory.setBoolean("beaconEnabled", true);
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.device = makeDevice();
                   snapshot.signals = {makeSignalWithNote("note", "s")};
               }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    store->confirmFlexibleRoom("room-1");
    journal.take();

    run([](AppStore& app) { return app.unlinkComputer(); });
    EXPECT_THAT(journal.take(), ElementsAre("http DELETE /devices/me"));
    answer("DELETE", "/devices/me", 200);
    EXPECT_THAT(journal.take(), ElementsAre("crash.clearSender",                          //
                                            "crash.context unpaired",                     //
                                            "beacon.stop",                                //
                                            "defaults beaconEnabled = false",             //
                                            "keyStore.remove deviceToken",                //
                                            "defaults stationSignInBootTime = 0.000000",  //
                                            "defaults stationSignInAuditSessionId = ''",  //
                                            "defaults deviceRole = ''",                   //
                                            "notes.history active-queue-notes [note]",    //
                                            "notes.history active-queue-notes []",        //
                                            "notes.retire active-queue-notes",            //
                                            "notifications.reconcile nobody []",          //
                                            "http POST /pair/request"));
    expectUnpaired();
    EXPECT_EQ(webSocketLoading.liveTasks(), 0U);
    EXPECT_EQ(state().settings.serverURLString, serverURL);
    EXPECT_EQ(defaults.text("serverURL"), serverURL);
    EXPECT_EQ(defaults.text("lastUsedRoomId"), "room-1");
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
}

TEST_F(StoreUnlinkingTest, unlinkingAComputerThatTheServerNoLongerKnowsEndsThePairingToo) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 401, R"({"error":"unknown_device"})");
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreUnlinkingTest, theEndOfAPairingLeavesTheLastErrorAsItStands) {
    launchInRoom();
    run([](AppStore& app) { return app.actOnSignal(makeSignalThatIs("waiting", "s"), "done"); });
    answer("PATCH", "/signals/s", 409, R"({"error":"already_cleared"})");
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    expectUnpaired();
    EXPECT_EQ(state().lastError, "That signal was already cleared.");
}

TEST_F(StoreUnlinkingTest, unlinkingWithADeadTokenIsARevocation) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StoreUnlinkingTest, unlinkingThatFailsKeepsThePairingAndSaysWhy) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 500, "<html>");
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, "Server error (500): http_500");
    EXPECT_EQ(storedToken(), "token-1");

    run([](AppStore& app) { return app.unlinkComputer(); });
    fail("DELETE", "/devices/me", platform::TransportCause::noNetwork);
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, "This computer has no network connection.");
}

TEST_F(StoreUnlinkingTest, withoutASessionThereIsNothingToUnlink) {
    launchUnpaired();
    run([](AppStore& app) { return app.unlinkComputer(); });
    EXPECT_EQ(requestCount("DELETE", "/devices/me"), 0U);
}

TEST_F(StoreUnlinkingTest, aRevocationBySocketResetsFirstAndTellsThen) {
    launchInRoom();
    Lines notices;
    const auto observer =
        store->observe([&](const StoreChanges&) { notices.push_back(state().setupQrNotice.value_or("none")); });
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
    EXPECT_EQ(notices.back(), revokedNotice);
    EXPECT_TRUE(openRequest("POST", "/pair/request"));
    EXPECT_THAT(takeLinesOf("crash"), ElementsAre("crash.clearSender", "crash.context unpaired"));
    loop.advance(10min);
    EXPECT_EQ(webSocketLoading.tasks().size(), 1U);
}

TEST_F(StoreUnlinkingTest, aDeadTokenOnAnyRequestIsARevocation) {
    launchInRoom();
    run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
    answer("POST", "/members/me/status", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreUnlinkingTest, anUnauthorizedReplyThatDoesNotNameTheTokenUnlinksNothing) {
    launchInRoom();
    run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
    answer("POST", "/members/me/status", 401, R"({"error":"signin_required"})");
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, "Sign in to use this computer first.");
}

TEST_F(StoreUnlinkingTest, aSecondRevocationFindsNothingToEnd) {
    launchInRoom();
    run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
    run([](AppStore& app) { return app.actOnSignal(support::makeSignal("s"), "done"); });
    openRequest("POST", "/members/me/status")->answer(401, invalidToken);
    openRequest("PATCH", "/signals/s")->answer(401, invalidToken);
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    EXPECT_THAT(takeLinesOf("keyStore"), ElementsAre("keyStore.remove deviceToken"));
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
}

TEST_F(StoreUnlinkingTest, anotherSetupCodeAfterwardsTakesTheNoticeAway) {
    launchInRoom();
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    store->restartSetupQr();
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
}

// A refused upgrade.

TEST_F(StoreUnlinkingTest, aRefusedUpgradeAsksForTheStateAndEndsNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().connectionState, ConnectionState::disconnected);
    answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) { snapshot.members = {}; }));
    EXPECT_THAT(state().members, IsEmpty());
}

TEST_F(StoreUnlinkingTest, aRefusedUpgradeThatRestConfirmsIsARevocation) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    answer("GET", "/state", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
}

TEST_F(StoreUnlinkingTest, aRefusedUpgradeWhoseQuestionFailsShowsNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    answer("GET", "/state", 502, "bad gateway");
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreUnlinkingTest, anUpgradeRefusedForAnotherReasonAsksNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 500});
    loop.advance(1s);
    EXPECT_EQ(requestCount("GET", "/state"), 1U);
}

TEST_F(StoreUnlinkingTest, refusalsWithinTenSecondsAskOnce) {
    launchInRoom();
    // Refusals come at 0 s, 1 s, 3 s, 7 s and 15 s.
    webSocketLoading.setServer([](SocketTask& task) { task.fail({.closeCode = {}, .httpStatus = 401}); });
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    EXPECT_EQ(requestCount("GET", "/state"), 2U);
    loop.advance(7s);
    EXPECT_EQ(webSocketLoading.tasks().size(), 4U);
    EXPECT_EQ(requestCount("GET", "/state"), 2U);
    loop.advance(8s);
    EXPECT_EQ(webSocketLoading.tasks().size(), 5U);
    EXPECT_EQ(requestCount("GET", "/state"), 3U);
}

struct RefusalCase {
    platform::Duration pause;
    std::size_t requests;
};

struct RefusalThrottleTest : StoreUnlinkingTest, testing::WithParamInterface<RefusalCase> {};

TEST_P(RefusalThrottleTest, aSecondRefusalAsksOnlyAfterMoreThanTenSeconds) {
    launchInRoom();
    const std::size_t before = requestCount("GET", "/state");
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    answer("GET", "/state", 500);
    // The connection comes back, so that the moment of the second refusal is the test's.
    loop.advance(1s);
    deliver("pong", "{}");
    loop.advance(GetParam().pause - 1s);
    deliver("pong", "{}");
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    EXPECT_EQ(requestCount("GET", "/state") - before, GetParam().requests);
}

INSTANTIATE_TEST_SUITE_P(Pauses, RefusalThrottleTest,
                         testing::Values(RefusalCase{3s, 1}, RefusalCase{10s, 1}, RefusalCase{10s + 1ms, 2},
                                         RefusalCase{10s + 500ms, 2}));

}  // namespace
}  // namespace zelkovanta::store
