#include "tests/store/pairing_test.h"

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::StateSnapshot;
using server::ConnectionState;
using support::makeDeviceOfMember;
using support::makeSignal;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

/// A key store that is slow, broken, or at odds with the rest.
struct StoreKeyStoreTest : PairingTest {
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

TEST_F(StoreKeyStoreTest, aCodeAskedForByHandGivesWayToTheSessionThatTheKeyStoreOpens) {
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

TEST_F(StoreKeyStoreTest, aScanApprovedAfterTheKeyStoreHasOpenedChangesNothing) {
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

TEST_F(StoreKeyStoreTest, aCodeRedeemedAfterTheKeyStoreHasOpenedIsCancelled) {
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

TEST_F(StoreKeyStoreTest, aKeyStoreThatNeverAnswersDoesNotKeepTheWindowShut) {
    defaults.memory.setBoolean("openAsWindow", true);
    launchLocked();
    EXPECT_THAT(takeLinesOf("window"), ElementsAre("window.show"));
    loop.advance(10min);
    EXPECT_FALSE(state().isPaired);
    EXPECT_THAT(takeLinesOf("window"), IsEmpty());
}

TEST_F(StoreKeyStoreTest, aStoreThatIsGoneWhileTheKeyStoreIsReadBeginsNothingWhenItOpens) {
    launchLocked();
    ASSERT_EQ(powerOff.observerCount(), 1U);
    store.reset();
    settle();
    EXPECT_EQ(powerOff.observerCount(), 0U);
    journal.take();
    unlock();
    loop.advance(1min);
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StoreKeyStoreTest, theNextPairingOverwritesATokenWhoseServerCouldNotBeUsed) {
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

TEST_F(StoreKeyStoreTest, unlinkingRunsToItsEndThoughTheKeyStoreKeepsTheToken) {
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

}  // namespace
}  // namespace zelkovanta::store
