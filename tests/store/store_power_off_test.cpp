#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::StateSnapshot;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSnapshot;
using testing::ElementsAre;

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

}  // namespace
}  // namespace zelkovanta::store
