#include "store/settings.h"
#include "tests/store/store_test.h"

#include <algorithm>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::StateSnapshot;
using server::ConnectionState;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceOfRoom;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSignalWithNote;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::string_view revokedNotice = "This computer is no longer linked. Scan the code to set it up again.";
constexpr const char* invalidToken = R"({"error":"invalid_token"})";

struct StoreSessionTest : StoreTest {
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

// Coming up.

TEST_F(StoreSessionTest, aStoreBeginsEmptyAndStopped) {
    launch();
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(state().connectionState, ConnectionState::stopped);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_FALSE(state().isSending);
    EXPECT_EQ(state().shiftCooldown, std::nullopt);
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().settings.serverURLString, "");
    EXPECT_FALSE(state().settings.beaconEnabled);
}

TEST_F(StoreSessionTest, withoutAPairingTheSetupBegins) {
    launchUnpaired();
    EXPECT_THAT(journal.take(), ElementsAre("notifications.setActionHandler", "notifications.registerCategories",
                                            "crash.start", "keyStore.read deviceToken", "http POST /pair/request"));
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(powerOff.observerCount(), 1U);
}

TEST_F(StoreSessionTest, aSavedPairingBecomesASessionInTheToldOrder) {
    launchPaired("member");
    const Lines lines = journal.take();
    ASSERT_EQ(lines.size(), 11U);
    EXPECT_THAT(Lines(lines.begin(), lines.begin() + 8),
                ElementsAre("notifications.setActionHandler", "notifications.registerCategories", "crash.start",
                            "keyStore.read deviceToken",        //
                            "crash.context paired",             //
                            "crash.clearSender",                //
                            "notes.retire active-queue-notes",  //
                            "crash.setSender https://office.example"));
    EXPECT_THAT(Lines(lines.begin() + 8, lines.end()),
                UnorderedElementsAre("crash.flush", "http GET /state", "socket.open"));
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::member);
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    EXPECT_EQ(openRequest("GET", "/state")->request.url, "https://office.example/api/v1/state");
    EXPECT_EQ(openRequest("GET", "/state")->header("Authorization"), "Bearer token-1");
    EXPECT_EQ(socket().request.url, "wss://office.example/api/v1/ws");
    EXPECT_EQ(socket().header("Authorization"), "Bearer token-1");
}

TEST_F(StoreSessionTest, eachStoredRoleIsTakenByNameAndAnythingElseIsARoom) {
    const std::vector<std::pair<std::string, DeviceRole>> rows{
        {"room", DeviceRole::room}, {"member", DeviceRole::member}, {"shared", DeviceRole::shared},
        {"", DeviceRole::room},     {"Shared", DeviceRole::room},   {"kiosk", DeviceRole::room}};
    for (const auto& [word, role] : rows) {
        support::Computer other;
        other.launchPaired(word);
        EXPECT_EQ(other.state().role, role) << word;
        EXPECT_TRUE(other.state().isPaired) << word;
    }
}

TEST_F(StoreSessionTest, aTokenWithoutAUsableServerCountsAsUnpairedAndStaysInTheKeyStore) {
    for (const std::string url :
         {"", "  \n", "not a url", "office.example", "ftp://office.example", "https://", "http:"}) {
        support::Computer other;
        other.skipDesktopDefaults();
        other.savePairing("room");
        other.defaults.memory.setText("serverURL", url);
        other.launch();
        other.settle();
        EXPECT_FALSE(other.state().isPaired) << url;
        EXPECT_NE(other.openRequest("POST", "/pair/request"), nullptr) << url;
        EXPECT_EQ(other.keyStore.memory.peek(deviceTokenItem()), "token-1") << url;
    }
}

TEST_F(StoreSessionTest, theStoredServerIsTrimmed) {
    savePairing("room");
    defaults.memory.setText("serverURL", " \n https://office.example \t\n");
    launch();
    settle();
    ASSERT_TRUE(openRequest("GET", "/state"));
    EXPECT_EQ(openRequest("GET", "/state")->request.url, "https://office.example/api/v1/state");
}

TEST_F(StoreSessionTest, aKeyStoreThatFailsOrHoldsNothingIsNoToken) {
    savePairing("room");
    keyStore.memory.setBroken(true);
    launch();
    settle();
    EXPECT_FALSE(state().isPaired);
    EXPECT_TRUE(openRequest("POST", "/pair/request"));
}

TEST_F(StoreSessionTest, whileTheKeyStoreIsLockedNothingIsAskedAndUnlockingResumes) {
    skipDesktopDefaults();
    savePairing("room");
    keyStore.memory.setLocked(true);
    launch();
    loop.advance(10min);
    EXPECT_FALSE(state().isPaired);
    EXPECT_THAT(urlLoading.requestLines(), IsEmpty());
    keyStore.memory.setLocked(false);
    settle();
    EXPECT_TRUE(state().isPaired);
}

TEST_F(StoreSessionTest, theSettingsAreReadFromTheirKeys) {
    defaults.memory.setText("serverURL", "https://a.example");
    defaults.memory.setText("deviceRole", "shared");
    defaults.memory.setBoolean("beaconEnabled", true);
    defaults.memory.setBoolean("launchAtLogin", true);
    defaults.memory.setBoolean("openAsWindow", true);
    defaults.memory.setNumber("stationSignInBootTime", 12.5);
    defaults.memory.setText("stationSignInAuditSessionId", "a7");
    launch();
    EXPECT_EQ(state().settings, (StoreSettings{.serverURLString = "https://a.example",
                                               .storedRole = "shared",
                                               .beaconEnabled = true,
                                               .launchAtLogin = true,
                                               .openAsWindow = true,
                                               .stationSignIn = {.bootTime = 12.5, .auditSessionId = "a7"}}));
}

TEST_F(StoreSessionTest, theTokenItemHasItsFixedNames) {
    EXPECT_EQ(deviceTokenItem(), (platform::KeyStoreItem{.service = "com.zelkovanta.macos", .account = "deviceToken"}));
}

TEST_F(StoreSessionTest, theWindowOpensOnlyWhereThePersonHasItSo) {
    skipDesktopDefaults();
    defaults.memory.setBoolean("openAsWindow", true);
    launch();
    EXPECT_THAT(takeLinesOf("window"), IsEmpty());  // In a later turn.
    settle();
    EXPECT_THAT(takeLinesOf("window"), ElementsAre("window.show"));

    support::Computer other;
    other.launchUnpaired();
    EXPECT_THAT(other.journal.lines(), testing::Not(testing::Contains("window.show")));
}

TEST_F(StoreSessionTest, aStoreThatIsGoneHearsNothingAndLeavesNothingBehind) {
    launchInRoom();
    store.reset();
    settle();
    EXPECT_EQ(powerOff.observerCount(), 0U);
    EXPECT_EQ(webSocketLoading.liveTasks(), 0U);
    powerOff.announce();
    loop.advance(10min);
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StoreSessionTest, aStoreThatIsGoneDuringItsSetupEndsTheSetup) {
    launchUnpaired();
    store.reset();
    answer("POST", "/pair/request", 500);
    loop.advance(10min);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

// Reports of crashes.

TEST_F(StoreSessionTest, theCrashSenderSendsOverTheSession) {
    launchInRoom();
    sendReports(crash.sender, {R"({"id":1})", R"({"id":2})"});
    EXPECT_EQ(openRequest("POST", "/crash-reports")->request.body, R"({"reports":[{"id":1},{"id":2}]})");
    answer("POST", "/crash-reports", 200, R"({"accepted":2})");
    ASSERT_TRUE(sentReports);
    EXPECT_EQ(sentReports->value_or(-1), 2);
}

TEST_F(StoreSessionTest, aCrashSenderOfAnEarlierSessionSendsNothing) {
    launchInRoom();
    const CrashSession::Sender old = crash.sender;
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    sendReports(old, {"{}"});
    ASSERT_TRUE(sentReports);
    EXPECT_FALSE(sentReports->has_value());
    EXPECT_EQ(requestCount("POST", "/crash-reports"), 0U);
}

// The end of a pairing.

TEST_F(StoreSessionTest, unlinkingEndsThePairingInTheToldOrder) {
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

TEST_F(StoreSessionTest, unlinkingAComputerThatTheServerNoLongerKnowsEndsThePairingToo) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 401, R"({"error":"unknown_device"})");
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSessionTest, unlinkingWithADeadTokenIsARevocation) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StoreSessionTest, unlinkingThatFailsKeepsThePairingAndSaysWhy) {
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

TEST_F(StoreSessionTest, withoutASessionThereIsNothingToUnlink) {
    launchUnpaired();
    run([](AppStore& app) { return app.unlinkComputer(); });
    EXPECT_EQ(requestCount("DELETE", "/devices/me"), 0U);
}

TEST_F(StoreSessionTest, aRevocationBySocketResetsFirstAndTellsThen) {
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

TEST_F(StoreSessionTest, aDeadTokenOnAnyRequestIsARevocation) {
    launchInRoom();
    run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
    answer("POST", "/members/me/status", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSessionTest, anUnauthorizedReplyThatDoesNotNameTheTokenUnlinksNothing) {
    launchInRoom();
    run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
    answer("POST", "/members/me/status", 401, R"({"error":"signin_required"})");
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, "Sign in to use this computer first.");
}

TEST_F(StoreSessionTest, aSecondRevocationFindsNothingToEnd) {
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

TEST_F(StoreSessionTest, anotherSetupCodeAfterwardsTakesTheNoticeAway) {
    launchInRoom();
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    store->restartSetupQr();
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
}

// A refused upgrade.

TEST_F(StoreSessionTest, aRefusedUpgradeAsksForTheStateAndEndsNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().connectionState, ConnectionState::disconnected);
    answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) { snapshot.members = {}; }));
    EXPECT_THAT(state().members, IsEmpty());
}

TEST_F(StoreSessionTest, aRefusedUpgradeThatRestConfirmsIsARevocation) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    answer("GET", "/state", 401, invalidToken);
    expectUnpaired();
    EXPECT_EQ(state().setupQrNotice, revokedNotice);
}

TEST_F(StoreSessionTest, aRefusedUpgradeWhoseQuestionFailsShowsNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 401});
    settle();
    answer("GET", "/state", 502, "bad gateway");
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSessionTest, anUpgradeRefusedForAnotherReasonAsksNothing) {
    launchInRoom();
    socket().fail({.closeCode = {}, .httpStatus = 500});
    loop.advance(1s);
    EXPECT_EQ(requestCount("GET", "/state"), 1U);
}

TEST_F(StoreSessionTest, refusalsWithinTenSecondsAskOnce) {
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

struct RefusalThrottleTest : StoreSessionTest, testing::WithParamInterface<RefusalCase> {};

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

// The computer is about to go down.

TEST_F(StoreSessionTest, atPowerOffASignedInWorkstationIsSignedOut) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    journal.take();
    urlLoading.setResponder([&](Exchange& exchange) {
        journal.add("http " + exchange.request.method);
        exchange.answerAfter(300ms, 200, "{}");
    });
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now() - begin, 300ms);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_THAT(journal.take(),
                ElementsAre("defaults stationSignInBootTime = 0.000000", "defaults stationSignInAuditSessionId = ''",
                            "http POST", "notes.retire active-queue-notes", "notifications.reconcile nobody []"));
}

TEST_F(StoreSessionTest, atPowerOffASilentServerIsWaitedForTwoSecondsExactly) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now() - begin, 2s);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StoreSessionTest, atPowerOffAnAnswerOfAnyKindWillDo) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    urlLoading.setResponder([](Exchange& exchange) { exchange.fail(platform::TransportCause::refused); });
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now(), begin);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSessionTest, atPowerOffARoomsComputerIsSignedOutLikewise) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    ASSERT_EQ(state().settings.stationSignIn.auditSessionId, hostInfo.session);
    powerOff.announce();
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(defaults.number("stationSignInBootTime"), 0.0);
    EXPECT_EQ(defaults.text("stationSignInAuditSessionId"), "");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StoreSessionTest, atPowerOffABoundComputerAsksNothing) {
    launchWith("member", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.device = makeDeviceOfMember("member-1");
                   snapshot.device.signedInMemberId = "member-1";
               }));
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now(), begin);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
    EXPECT_EQ(state().device->signedInMemberId, "member-1");
}

TEST_F(StoreSessionTest, atPowerOffAnUnoccupiedComputerAsksNothing) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    powerOff.announce();
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreSessionTest, atPowerOffWithoutAPairingTheScopeEndsAllTheSame) {
    defaults.memory.setNumber("stationSignInBootTime", hostInfo.boot);
    defaults.memory.setText("stationSignInAuditSessionId", hostInfo.session);
    launchUnpaired();
    powerOff.announce();
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(defaults.text("stationSignInAuditSessionId"), "");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

}  // namespace
}  // namespace zelkovanta::store
