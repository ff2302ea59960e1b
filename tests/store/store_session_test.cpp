#include "store/settings.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using server::ConnectionState;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct StoreSessionTest : StoreTest {
    void launchInRoom() { launchWith("room", makeSnapshot()); }
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

TEST_F(StoreSessionTest, aStoreThatIsGoneBeforeItsFirstTurnShowsNoWindowAndAsksNothing) {
    skipDesktopDefaults();
    savePairing("room");
    defaults.memory.setBoolean("openAsWindow", true);
    launch();
    journal.take();
    store.reset();
    EXPECT_EQ(powerOff.observerCount(), 0U);
    loop.advance(1min);
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

}  // namespace
}  // namespace zelkovanta::store
