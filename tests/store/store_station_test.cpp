#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::Member;
using records::StateSnapshot;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeInactiveRoom;
using support::makeMember;
using support::makeRoom;
using support::makeSignal;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

struct StoreStationTest : StoreTest {
    StateSnapshot snapshotWithSignIn(std::optional<std::string> memberId) const {
        return makeSnapshot([&](StateSnapshot& snapshot) {
            snapshot.device = makeDevice();
            snapshot.device.signedInMemberId = std::move(memberId);
        });
    }
    void launchShared() { launchWith("shared", snapshotWithSignIn({})); }
    void signIn(const std::string& memberId = "member-1") {
        deliverSessionStarted(makeDeviceWithSignIn(memberId), makeMember(memberId));
    }
    /// A sign-in that an earlier run of the program recorded.
    void storeScope(double bootTime, std::string_view session) {
        defaults.memory.setNumber("stationSignInBootTime", bootTime);
        defaults.memory.setText("stationSignInAuditSessionId", session);
    }
    /// Whether a sign-in that the first snapshot brings is kept.
    bool keepsSignIn(double storedBootTime, std::string_view storedSession, std::string_view role = "shared") {
        storeScope(storedBootTime, storedSession);
        launchPaired(role);
        answerWith("GET", "/state", snapshotWithSignIn("member-1"));
        const bool isKept = state().device->signedInMemberId == "member-1";
        EXPECT_EQ(requestCount("POST", "/devices/me/signout"), isKept ? 0U : 1U);
        EXPECT_EQ(state().settings.stationSignIn != LoginScope{}, isKept);
        EXPECT_EQ(needsSignIn(state()), !isKept && role == "shared");
        return isKept;
    }
};

// Signing in and out.

TEST_F(StoreStationTest, aSignInIsAdoptedRecordedAndShownInTheToldOrder) {
    launchShared();
    deliverSessionStarted(makeDeviceWithSignIn("member-2"),
                          makeMember("member-2", [](Member& member) { member.name = "New name"; }));
    EXPECT_EQ(state().device, makeDeviceWithSignIn("member-2"));
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
    EXPECT_EQ(state().members[1].name, "New name");
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-2", .confirmedRoomId = {}}));
    EXPECT_EQ(state().settings.stationSignIn, (LoginScope{.bootTime = hostInfo.boot, .auditSessionId = "a1"}));
    EXPECT_THAT(journal.take(), ElementsAre("defaults stationSignInBootTime = 1700000000.250000",
                                            "defaults stationSignInAuditSessionId = 'a1'",  //
                                            "notes.history active-queue-notes []",          //
                                            "notes.set active-queue-notes []",              //
                                            "notifications.reconcile member-2 []"));
}

TEST_F(StoreStationTest, aMemberWhoSignsInUnknownIsAppended) {
    launchShared();
    signIn("visitor");
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3", "visitor"));
    EXPECT_EQ(activeMember(state())->id, "visitor");
}

TEST_F(StoreStationTest, aSignInClearsTheErrorLine) {
    launchShared();
    run([](AppStore& app) { return app.sendSignal("type-ready", "", "room-1", {}, {}); });
    ASSERT_TRUE(state().lastError);
    signIn();
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreStationTest, whereTheDeviceDoesNotSayTheMemberOfTheMessageIsAdopted) {
    launchShared();
    deliverSessionStarted(makeDevice(), makeMember("member-2"));
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-2", .confirmedRoomId = {}}));
    EXPECT_EQ(state().device, makeDevice());
    EXPECT_EQ(confirmedFlexibleRoomId(state()), std::nullopt);
}

TEST_F(StoreStationTest, whereDeviceAndMessageNameDifferentMembersTheDevicesIsAdopted) {
    launchShared();
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-2"));
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = {}}));
}

TEST_F(StoreStationTest, onARoomsComputerTheScopeIsRecordedAndNoRoomIsAskedFor) {
    launchWith("room", snapshotWithSignIn({}));
    signIn();
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().settings.stationSignIn.auditSessionId, "a1");
    EXPECT_EQ(state().device->signedInMemberId, "member-1");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreStationTest, aBoundComputerKeepsNoScope) {
    launchWith("member",
               makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDeviceOfMember("member-1"); }));
    auto device = makeDeviceOfMember("member-1");
    device.signedInMemberId = "member-2";
    deliverSessionStarted(device, makeMember("member-2"));
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(state().device, device);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreStationTest, aSecondSignInOfTheSameMemberKeepsTheRoomAndAnotherOnesAsksAnew) {
    launchShared();
    signIn("member-1");
    store->confirmFlexibleRoom("room-2");
    signIn("member-1");
    EXPECT_EQ(confirmedFlexibleRoomId(state()), "room-2");
    signIn("member-2");
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-2", .confirmedRoomId = {}}));
}

TEST_F(StoreStationTest, theEndOfASessionClearsItAndAsksForTheState) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-1");
    deliverCreated(makeSignal("s"));
    journal.take();
    deliver("session.ended", "{}");
    EXPECT_EQ(state().device, makeDevice());
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(activeQueueCount(state()), 0U);
    EXPECT_THAT(journal.take(), ElementsAre("defaults stationSignInBootTime = 0.000000",
                                            "defaults stationSignInAuditSessionId = ''",  //
                                            "notes.retire active-queue-notes",            //
                                            "notifications.reconcile nobody []",          //
                                            "http GET /state"));
    answerWith("GET", "/state", snapshotWithSignIn({}));
    EXPECT_THAT(state().signals, IsEmpty());
}

TEST_F(StoreStationTest, theEndOfASessionBeforeAnyDeviceIsHarmless) {
    launchPaired("shared");
    deliver("session.ended", "{}");
    EXPECT_EQ(state().device, std::nullopt);
    EXPECT_EQ(requestCount("GET", "/state"), 2U);
}

TEST_F(StoreStationTest, signingOutWaitsForTheServersWord) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-1");
    run([](AppStore& app) { return app.signOutStation(); });
    EXPECT_EQ(state().device->signedInMemberId, "member-1");
    journal.take();
    answer("POST", "/devices/me/signout", 200, "");
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_THAT(journal.take(),
                ElementsAre("defaults stationSignInBootTime = 0.000000", "defaults stationSignInAuditSessionId = ''",
                            "notes.retire active-queue-notes", "notifications.reconcile nobody []"));
}

TEST_F(StoreStationTest, aSignOutThatFailsKeepsTheSignInAndSaysWhy) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-1");
    run([](AppStore& app) { return app.signOutStation(); });
    answer("POST", "/devices/me/signout", 409, R"({"error":"not_a_station"})");
    EXPECT_EQ(state().lastError, "This device can't be signed into.");
    EXPECT_EQ(state().device->signedInMemberId, "member-1");
    EXPECT_EQ(confirmedFlexibleRoomId(state()), "room-1");
    EXPECT_NE(state().settings.stationSignIn, LoginScope{});

    run([](AppStore& app) { return app.signOutStation(); });
    answer("POST", "/devices/me/signout", 204, "");
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
}

TEST_F(StoreStationTest, withoutASessionThereIsNothingToSignOut) {
    launchUnpaired();
    run([](AppStore& app) { return app.signOutStation(); });
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

// The confirmed room.

TEST_F(StoreStationTest, aRoomIsConfirmedForTheMemberAndRemembered) {
    launchShared();
    signIn();
    run([](AppStore& app) { return app.sendSignal("type-ready", "", "room-1", {}, {}); });
    ASSERT_TRUE(state().lastError);
    journal.take();
    store->confirmFlexibleRoom("room-2");
    settle();
    EXPECT_THAT(journal.take(), ElementsAre("defaults lastUsedRoomId = 'room-2'"));
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = "room-2"}));
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(defaults.text("lastUsedRoomId"), "room-2");
    ASSERT_NE(store->lastUsedFlexibleRoom(), nullptr);
    EXPECT_EQ(store->lastUsedFlexibleRoom()->id, "room-2");
}

TEST_F(StoreStationTest, whatCannotBeConfirmedChangesNothingInSilence) {
    launchShared();
    const auto expectNothing = [this](const std::string& roomId) {
        const FlexibleRoomSession before = state().flexibleRoomSession;
        store->confirmFlexibleRoom(roomId);
        EXPECT_EQ(state().flexibleRoomSession, before);
        EXPECT_FALSE(defaults.hasValue("lastUsedRoomId"));
        EXPECT_TRUE(state().lastError);
    };
    run([](AppStore& app) { return app.sendSignal("type-ready", "", "room-1", {}, {}); });
    ASSERT_TRUE(state().lastError);
    expectNothing("room-1");  // Nobody is signed in.

    deliverRecord("rooms.updated",
                  server::server_message::RoomsUpdated{{makeRoom("room-1"), makeInactiveRoom("room-2")}});
    deliverSnapshot(snapshotWithSignIn({}));
    signIn();
    run([](AppStore& app) { return app.sendSignal("type-ready", "", "room-1", {}, {}); });
    deliverRecord("rooms.updated",
                  server::server_message::RoomsUpdated{{makeRoom("room-1"), makeInactiveRoom("room-2")}});
    expectNothing("room-2");
    expectNothing("room-3");
    expectNothing("");
}

TEST_F(StoreStationTest, onlyASharedWorkstationConfirmsOrRemembersARoom) {
    defaults.memory.setText("lastUsedRoomId", "room-1");
    launchWith("room", snapshotWithSignIn({}));
    signIn();
    store->confirmFlexibleRoom("room-2");
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(defaults.text("lastUsedRoomId"), "room-1");
    EXPECT_EQ(store->lastUsedFlexibleRoom(), nullptr);
}

TEST_F(StoreStationTest, theRoomUsedLastIsOfferedOnlyWhileItExistsAndIsActive) {
    defaults.memory.setText("lastUsedRoomId", "room-2");
    launchShared();
    ASSERT_NE(store->lastUsedFlexibleRoom(), nullptr);
    deliverRecord("rooms.updated",
                  server::server_message::RoomsUpdated{{makeRoom("room-1"), makeInactiveRoom("room-2")}});
    EXPECT_EQ(store->lastUsedFlexibleRoom(), nullptr);
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{makeRoom("room-1")}});
    EXPECT_EQ(store->lastUsedFlexibleRoom(), nullptr);
    EXPECT_EQ(defaults.text("lastUsedRoomId"), "room-2");
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{makeRoom("room-2")}});
    EXPECT_NE(store->lastUsedFlexibleRoom(), nullptr);
}

TEST_F(StoreStationTest, withoutAnEarlierRoomNoneIsOffered) {
    launchShared();
    EXPECT_EQ(store->lastUsedFlexibleRoom(), nullptr);
}

TEST_F(StoreStationTest, aSnapshotWithoutTheRoomAsksForItAnew) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-1");
    StateSnapshot snapshot = snapshotWithSignIn("member-1");
    snapshot.rooms = {makeRoom("room-2")};
    deliverSnapshot(snapshot);
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = {}}));
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreStationTest, aConfirmedRoomOutlastsSnapshotsAndRoomListsThatStillHaveIt) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-2");
    const FlexibleRoomSession confirmed = state().flexibleRoomSession;
    const LoginScope scope = state().settings.stationSignIn;
    ASSERT_EQ(confirmed.confirmedRoomId, "room-2");
    const auto expectKept = [&](const char* when) {
        EXPECT_EQ(state().flexibleRoomSession, confirmed) << when;
        EXPECT_EQ(state().settings.stationSignIn, scope) << when;
    };
    deliverSnapshot(snapshotWithSignIn("member-1"));
    expectKept("after a snapshot");
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{makeRoom("room-2"), makeRoom("room-9")}});
    expectKept("after a list of rooms");
    socket().fail({});
    loop.advance(3s);
    deliverSnapshot(snapshotWithSignIn("member-1"));
    expectKept("after a lost link");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

// The login in which a sign-in was made.

TEST_F(StoreStationTest, aSignInOutlivesARelaunchInTheSameLogin) {
    EXPECT_TRUE(keepsSignIn(hostInfo.boot, "a1"));
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = {}}));
}

TEST_F(StoreStationTest, aBootTimeThatMovedALittleKeepsTheSignIn) {
    EXPECT_TRUE(keepsSignIn(hostInfo.boot - 4.9, "a1"));
}

TEST_F(StoreStationTest, aBootTimeThatMovedMoreMeansARestartAndTheServerIsTold) {
    EXPECT_FALSE(keepsSignIn(hostInfo.boot - 5.1, "a1"));
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreStationTest, anotherLoginWithoutARestartDropsTheSignInToo) {
    EXPECT_FALSE(keepsSignIn(hostInfo.boot, "a2"));
}

TEST_F(StoreStationTest, anEmptyStoredSessionNeverHolds) {
    EXPECT_FALSE(keepsSignIn(hostInfo.boot, ""));
}

TEST_F(StoreStationTest, anEmptyCurrentSessionNeverHolds) {
    hostInfo.session = "";
    EXPECT_FALSE(keepsSignIn(hostInfo.boot, ""));
}

TEST_F(StoreStationTest, aSignInFirstSeenInASnapshotHasNoScopeAndIsDropped) {
    EXPECT_FALSE(keepsSignIn(0, ""));
}

TEST_F(StoreStationTest, onARoomsComputerTheScopeHoldsOrFallsLikewise) {
    EXPECT_FALSE(keepsSignIn(hostInfo.boot - 100, "a1", "room"));
}

TEST_F(StoreStationTest, onARoomsComputerASignInOfThisLoginIsKept) {
    EXPECT_TRUE(keepsSignIn(hostInfo.boot, "a1", "room"));
}

TEST_F(StoreStationTest, aHostThatCannotTellLoginsApartSignsOutAtOnce) {
    hostInfo.session = "";
    launchShared();
    signIn();
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StoreStationTest, aHostWhoseBootTimeCannotBeReadSignsOutAtOnce) {
    hostInfo.boot = 0;
    launchShared();
    signIn();
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
}

TEST_F(StoreStationTest, aLostScopeIsDroppedWithinTheSnapshotInTheToldOrder) {
    storeScope(hostInfo.boot - 100, "a1");
    launchPaired("shared");
    journal.take();
    answerWith("GET", "/state", snapshotWithSignIn("member-1"));
    EXPECT_THAT(journal.take(), ElementsAre("notes.history active-queue-notes []",        //
                                            "notes.history active-queue-notes []",        //
                                            "beacon.stop",                                //
                                            "defaults stationSignInBootTime = 0.000000",  //
                                            "defaults stationSignInAuditSessionId = ''",  //
                                            "notes.retire active-queue-notes",            //
                                            "notifications.reconcile nobody []",          //
                                            "notes.retire active-queue-notes",            //
                                            "notifications.reconcile nobody []",          //
                                            "http POST /devices/me/signout"));
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
}

/// A room's computer needs no sign-in, so that only the snapshot's not counting yet keeps the notes back.
TEST_F(StoreStationTest, aLostScopeIsDroppedBeforeTheSnapshotCounts) {
    storeScope(hostInfo.boot - 100, "a1");
    launchPaired("room");
    journal.take();
    StateSnapshot snapshot = snapshotWithSignIn("member-1");
    snapshot.signals = {support::makeSignalWithNote("note", "s")};
    answerWith("GET", "/state", snapshot);
    EXPECT_THAT(takeLinesOf("not"), ElementsAre("notes.history active-queue-notes []",      //
                                                "notes.history active-queue-notes [note]",  //
                                                "notes.retire active-queue-notes",          //
                                                "notifications.reconcile nobody []",        //
                                                "notes.history active-queue-notes [note]",  //
                                                "notes.set active-queue-notes [note]",      //
                                                "notifications.reconcile nobody []"));
}

TEST_F(StoreStationTest, aBurstOfSnapshotsMakesOneSignOutWhileItIsUnderWay) {
    launchPaired("shared");
    for (int count = 0; count < 10; ++count) {
        deliverSnapshot(snapshotWithSignIn("member-1"));
        EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    }
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
    answer("POST", "/devices/me/signout", 200, "");
    deliverSnapshot(snapshotWithSignIn("member-1"));
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 2U);
    deliverSnapshot(snapshotWithSignIn({}));
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 2U);
}

TEST_F(StoreStationTest, aFailedSignOutAfterALostScopeIsIgnoredAndTheNextSnapshotTriesAgain) {
    launchPaired("shared");
    deliverSnapshot(snapshotWithSignIn("member-1"));
    fail("POST", "/devices/me/signout", platform::TransportCause::noNetwork);
    EXPECT_EQ(state().lastError, std::nullopt);
    deliverSnapshot(snapshotWithSignIn("member-1"));
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 2U);
    loop.advance(15s);  // This one is never answered.
    EXPECT_EQ(state().lastError, std::nullopt);
    deliverSnapshot(snapshotWithSignIn("member-1"));
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 3U);
}

TEST_F(StoreStationTest, aScopeLeftOnAComputerThatIsNowBoundIsForgotten) {
    storeScope(hostInfo.boot, "a1");
    launchPaired("member");
    answerWith("GET", "/state",
               makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDeviceOfMember("member-1"); }));
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(defaults.text("stationSignInAuditSessionId"), "");
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreStationTest, aWorkstationThatIsBoundToAMemberForgetsScopeAndRoom) {
    launchShared();
    signIn();
    store->confirmFlexibleRoom("room-1");
    StateSnapshot snapshot = snapshotWithSignIn("member-1");
    snapshot.device.memberId = "member-1";
    deliverSnapshot(snapshot);
    EXPECT_EQ(state().flexibleRoomSession, FlexibleRoomSession{});
    EXPECT_EQ(state().settings.stationSignIn, LoginScope{});
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

TEST_F(StoreStationTest, aScopeWithoutASignInIsLeftAsItIs) {
    storeScope(hostInfo.boot - 100, "a1");
    launchPaired("shared");
    answerWith("GET", "/state", snapshotWithSignIn({}));
    EXPECT_EQ(state().settings.stationSignIn.bootTime, hostInfo.boot - 100);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 0U);
}

}  // namespace
}  // namespace zelkovanta::store
