#include "tests/store/pairing_test.h"

namespace zelkovanta::store {
namespace {

using records::StateSnapshot;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

/// The computer is about to go down.
struct StorePowerOffTest : StoreTest {};

TEST_F(StorePowerOffTest, aSignedInWorkstationIsSignedOut) {
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

TEST_F(StorePowerOffTest, aSilentServerIsWaitedForTwoSecondsExactly) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now() - begin, 2s);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StorePowerOffTest, anAnswerOfAnyKindWillDo) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    urlLoading.setResponder([](Exchange& exchange) { exchange.fail(platform::TransportCause::refused); });
    const auto begin = loop.now();
    powerOff.announce();
    EXPECT_EQ(loop.now(), begin);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StorePowerOffTest, aRoomsComputerIsSignedOutLikewise) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    ASSERT_EQ(state().settings.stationSignIn.auditSessionId, hostInfo.session);
    powerOff.announce();
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(defaults.number("stationSignInBootTime"), 0.0);
    EXPECT_EQ(defaults.text("stationSignInAuditSessionId"), "");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StorePowerOffTest, aBoundComputerAsksNothing) {
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

TEST_F(StorePowerOffTest, anUnoccupiedComputerAsksNothing) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    powerOff.announce();
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StorePowerOffTest, withoutAPairingTheScopeEndsAllTheSame) {
    defaults.memory.setNumber("stationSignInBootTime", hostInfo.boot);
    defaults.memory.setText("stationSignInAuditSessionId", hostInfo.session);
    launchUnpaired();
    powerOff.announce();
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(defaults.text("stationSignInAuditSessionId"), "");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

/// The computer is about to go down, and then does not.
struct StorePowerOffThatFailedTest : PairingTest {
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
