#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::Member;
using records::Office;
using records::Room;
using records::Signal;
using records::StateSnapshot;
using server::ConnectionState;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceOfRoom;
using support::makeDeviceWithSignIn;
using support::makeInactiveRoom;
using support::makeMember;
using support::makeOffice;
using support::makeOfficeThatRequiresSignIn;
using support::makeRelease;
using support::makeRoom;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSignalWithNote;
using support::makeSnapshot;
using support::makeType;
using testing::ElementsAre;
using testing::IsEmpty;

struct StoreEventsTest : StoreTest {
    void launchInRoom(std::vector<Signal> signals = {}) {
        launchWith("room", makeSnapshot([&](StateSnapshot& snapshot) { snapshot.signals = std::move(signals); }));
    }

    /// On the computer of a provider, so that there is a personal queue.
    void launchAsMember(std::vector<Signal> signals = {}) {
        launchWith("member", makeSnapshot([&](StateSnapshot& snapshot) {
                       snapshot.device = makeDeviceOfMember("member-1");
                       snapshot.signals = std::move(signals);
                   }));
    }
};

// A snapshot.

TEST_F(StoreEventsTest, aSnapshotReplacesEverythingInTheToldOrder) {
    launchInRoom({makeSignalWithNote("old note", "old")});
    const StateSnapshot snapshot = makeSnapshot([](StateSnapshot& adjusted) {
        adjusted.office = makeOffice("office-1", [](Office& office) { office.name = "New name"; });
        adjusted.members = {makeMember("member-9")};
        adjusted.rooms = {makeRoom("room-9")};
        adjusted.signalTypes = {makeType("type-9", 9)};
        adjusted.signals = {makeSignalWithNote("new note", "new"), makeSignal("without")};
        adjusted.device = makeDeviceOfMember("member-9");
        adjusted.desktopRelease = makeRelease("3.0", 30);
    });
    deliverSnapshot(snapshot);

    EXPECT_EQ(state().office, snapshot.office);
    EXPECT_EQ(state().members, snapshot.members);
    EXPECT_EQ(state().rooms, snapshot.rooms);
    EXPECT_EQ(state().signalTypes, snapshot.signalTypes);
    EXPECT_EQ(state().signals, snapshot.signals);
    EXPECT_EQ(state().device, snapshot.device);
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes [old note]",
                            "notes.history active-queue-notes [new note]",  //
                            "beacon.stop",                                  //
                            "notes.history active-queue-notes [new note]", "notes.set active-queue-notes [new note]",
                            "notifications.reconcile member-9 [new, without]",  //
                            "updates.announce 3.0"));
}

TEST_F(StoreEventsTest, aSnapshotKeepsOnlyActiveSignalsInTheServersOrder) {
    launchInRoom();
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) {
        snapshot.signals = {makeSignalThatIs("acknowledged", "z"), makeSignalThatIs("done", "d"),
                            makeSignalThatIs("waiting", "a"),      makeSignalThatIs("canceled", "c"),
                            makeSignalThatIs("expired", "e"),      makeSignalThatIs("a later word", "l"),
                            makeSignalThatIs("waiting", "b")};
    }));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("z", "a", "b"));
}

TEST_F(StoreEventsTest, aSnapshotLeavesTheErrorLineAndASendUnderWayAlone) {
    launchInRoom();
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    fail("PATCH", "/signals/s", platform::TransportCause::refused);
    ASSERT_TRUE(state().lastError);
    run([](AppStore& app) { return app.sendSignal("type-ready", "", {}, {}, {}); });
    ASSERT_TRUE(state().isSending);

    deliverSnapshot(makeSnapshot());
    EXPECT_TRUE(state().lastError);
    EXPECT_TRUE(state().isSending);
}

TEST_F(StoreEventsTest, theRoleStaysWhatThePairingMadeIt) {
    launchInRoom();
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDeviceOfMember("member-1"); }));
    EXPECT_EQ(state().role, records::DeviceRole::room);
}

TEST_F(StoreEventsTest, theFirstSnapshotMayComeFromEitherRoadAndTheLaterOneReplacesIt) {
    launchPaired("room");
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("by socket")}; }));
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("by socket"));
    answerWith("GET", "/state",
               makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("asked")}; }));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("asked"));
}

TEST_F(StoreEventsTest, aFailedRequestForTheStateLeavesAllAsItStandsAndShowsNothing) {
    launchPaired("room");
    answer("GET", "/state", 500, "<html>");
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, std::nullopt);
}

// Another office.

TEST_F(StoreEventsTest, aSnapshotOfAnotherOfficeRetiresNotesAndReplacesTheSocket) {
    launchInRoom({makeSignalWithNote("old note", "old")});
    SocketTask& oldSocket = socket();
    oldSocket.outliveCancellation();
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) {
        snapshot.office = makeOffice("office-2");
        snapshot.desktopRelease = makeRelease("3.0", 30);
    }));

    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes [old note]",  //
                            "notes.history active-queue-notes []",          //
                            "notes.retire active-queue-notes",              //
                            "beacon.stop",                                  //
                            "notes.history active-queue-notes []",          //
                            "notes.set active-queue-notes []",              //
                            "notifications.reconcile nobody []",            //
                            "updates.announce 3.0",                         //
                            "crash.setSender https://office.example",       //
                            "socket.open"));
    ASSERT_NE(&socket(), &oldSocket);
    EXPECT_EQ(oldSocket.cancelledWith(), 1001);
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);

    deliverOver(oldSocket, "signal.created",
                support::toJson(server::server_message::SignalCreated{makeSignal("late")}));
    settle();
    EXPECT_THAT(idsOf(state().signals), IsEmpty());
    deliverCreated(makeSignal("current"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("current"));
}

TEST_F(StoreEventsTest, theFirstSnapshotOfASessionIsNoChangeOfOffice) {
    launchPaired("room");
    journal.take();
    deliverSnapshot(makeSnapshot());
    EXPECT_EQ(webSocketLoading.tasks().size(), 1U);
    EXPECT_THAT(takeLinesOf("notes.retire"), IsEmpty());
}

TEST_F(StoreEventsTest, anOfficeUpdateWithTheSameIdKeepsAllLists) {
    launchInRoom({makeSignalWithNote("note", "s")});
    const StateSnapshot before = makeSnapshot();
    deliverRecord("office.updated", server::server_message::OfficeUpdated{
                                        makeOffice("office-1", [](Office& office) { office.name = "Renamed"; })});
    EXPECT_EQ(state().office->name, "Renamed");
    EXPECT_EQ(state().members, before.members);
    EXPECT_EQ(state().rooms, before.rooms);
    EXPECT_EQ(state().signalTypes, before.signalTypes);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(state().device, before.device);
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes [note]", "notes.set active-queue-notes [note]",
                            "notifications.reconcile nobody []"));
}

TEST_F(StoreEventsTest, anOfficeUpdateBeforeAnyOfficeIsSimplyTaken) {
    launchPaired("room");
    journal.take();
    deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-7")});
    EXPECT_EQ(state().office, makeOffice("office-7"));
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    EXPECT_EQ(webSocketLoading.tasks().size(), 1U);
    EXPECT_THAT(journal.take(), ElementsAre("notes.retire active-queue-notes", "notifications.reconcile nobody []"));
}

TEST_F(StoreEventsTest, anOfficeUpdateWithAnotherIdEmptiesEverythingInTheToldOrder) {
    launchInRoom({makeSignalWithNote("old note", "old")});
    deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-2")});

    EXPECT_EQ(state().office, makeOffice("office-2"));
    EXPECT_THAT(state().members, IsEmpty());
    EXPECT_THAT(state().rooms, IsEmpty());
    EXPECT_THAT(state().signalTypes, IsEmpty());
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().device, std::nullopt);
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    EXPECT_TRUE(state().isPaired);
    const Lines lines = journal.take();
    ASSERT_GE(lines.size(), 6U);
    EXPECT_THAT(Lines(lines.begin(), lines.begin() + 6),
                ElementsAre("notes.history active-queue-notes [old note]",  //
                            "notes.history active-queue-notes []",          //
                            "notes.retire active-queue-notes",              // the list, with the office
                            "notes.retire active-queue-notes",              // and once more in the refresh
                            "notifications.reconcile nobody []",            //
                            "crash.setSender https://office.example"));
    EXPECT_THAT(Lines(lines.begin() + 6, lines.end()), testing::UnorderedElementsAre("socket.open", "http GET /state"));
}

TEST_F(StoreEventsTest, afterAMoveTheStateOfTheNewOfficeIsAskedForAndShown) {
    launchInRoom();
    deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-2")});
    answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.office = makeOffice("office-2");
                   snapshot.signals = {makeSignal("there")};
               }));
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("there"));
    EXPECT_EQ(webSocketLoading.tasks().size(), 2U);
}

TEST_F(StoreEventsTest, aMoveToAnotherOfficeClearsNeitherTheFlexibleSessionNorTheLoginScope) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    store->confirmFlexibleRoom("room-1");
    const FlexibleRoomSession session = state().flexibleRoomSession;
    const LoginScope scope = state().settings.stationSignIn;
    ASSERT_EQ(session.confirmedRoomId, "room-1");

    deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-2")});
    EXPECT_EQ(state().flexibleRoomSession, session);
    EXPECT_EQ(state().settings.stationSignIn, scope);
    EXPECT_EQ(confirmedFlexibleRoomId(state()), std::nullopt);
}

// One signal.

TEST_F(StoreEventsTest, aNewSignalIsAppendedAndThenTold) {
    launchAsMember({makeSignal("first")});
    deliverCreated(makeSignalWithNote("please", "second"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("first", "second"));
    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes []", "notes.history active-queue-notes [please]",
                            "notes.history active-queue-notes [please]", "notes.set active-queue-notes [please]",
                            "notifications.reconcile member-1 [first, second]", "notifications.new second waiting"));
}

TEST_F(StoreEventsTest, aNewSignalThatIsAlreadyDoneAddsNothingYetIsTold) {
    launchInRoom();
    deliverCreated(makeSignalThatIs("done", "s"));
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_THAT(journal.take(), ElementsAre("notifications.new s done"));
}

TEST_F(StoreEventsTest, theToldStateAlreadyHoldsTheSignal) {
    launchInRoom();
    Lines held;
    notifications.onNotify = [&](const StoreState& told) { held = idsOf(told.signals); };
    deliverCreated(makeSignal("s"));
    EXPECT_THAT(held, ElementsAre("s"));
    deliverUpdated(makeSignalThatIs("done", "s"));
    EXPECT_THAT(held, IsEmpty());
}

TEST_F(StoreEventsTest, aSecondCreationOfOneSignalReplacesItInPlace) {
    launchInRoom({makeSignal("a"), makeSignal("b")});
    deliverCreated(makeSignalWithNote("again", "a"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("a", "b"));
    EXPECT_EQ(state().signals[0].note, "again");
}

TEST_F(StoreEventsTest, anUpdateKeepsThePlaceAndTellsWhatTheSignalWas) {
    launchInRoom({makeSignal("a"), makeSignal("b"), makeSignal("c")});
    deliverUpdated(makeSignalThatIs("acknowledged", "b"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("a", "b", "c"));
    EXPECT_EQ(state().signals[1].status, "acknowledged");
    EXPECT_EQ(journal.take().back(), "notifications.update b acknowledged, was waiting");
}

TEST_F(StoreEventsTest, anUpdateOfAnUnknownActiveSignalInsertsIt) {
    launchInRoom();
    deliverUpdated(makeSignalThatIs("acknowledged", "s"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(journal.take().back(), "notifications.update s acknowledged, was not there");
}

TEST_F(StoreEventsTest, aSignalThatIsOverLeavesAtOnceAndTheSecondWordOfItFindsNothing) {
    launchInRoom({makeSignalWithNote("note", "a"), makeSignal("b")});
    deliverUpdated(makeSignalThatIs("done", "a"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("b"));
    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes [note]", "notes.history active-queue-notes []",
                            "notes.history active-queue-notes []", "notes.set active-queue-notes []",
                            "notifications.reconcile nobody []", "notifications.update a done, was waiting"));
    deliverUpdated(makeSignalThatIs("done", "a"));
    EXPECT_THAT(journal.take(), ElementsAre("notifications.update a done, was not there"));
}

TEST_F(StoreEventsTest, aSignalOfAnUnknownStatusLeavesOrNeverCame) {
    launchInRoom({makeSignal("a"), makeSignal("b")});
    deliverUpdated(makeSignalThatIs("snoozed", "a"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("b"));
    EXPECT_EQ(takeLinesOf("notifications.update"), Lines{"notifications.update a snoozed, was waiting"});
    deliverUpdated(makeSignalThatIs("Waiting", "unheard of"));
    EXPECT_EQ(takeLinesOf("notifications.update"), Lines{"notifications.update unheard of Waiting, was not there"});
    deliverCreated(makeSignalThatIs("", "c"));
    EXPECT_EQ(takeLinesOf("notifications.new").size(), 1U);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("b"));
}

TEST_F(StoreEventsTest, theNewestEventWinsWhateverItsTimesSay) {
    launchInRoom({makeSignal(
        "s", [](Signal& signal) { signal.status = "acknowledged", signal.acknowledgedAt = "2026-01-02T09:00:00Z"; })});
    deliverUpdated(makeSignal("s"));
    EXPECT_EQ(state().signals[0].status, "waiting");
    EXPECT_EQ(state().signals[0].acknowledgedAt, std::nullopt);
}

TEST_F(StoreEventsTest, onlyNotesThatHoldTextAreOpenNotes) {
    launchInRoom();
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) {
        snapshot.signals = {makeSignalWithNote("", "empty"), makeSignal("none"), makeSignalWithNote("text", "text"),
                            makeSignal("over", [](Signal& signal) { signal.status = "done", signal.note = "gone"; })};
    }));
    EXPECT_THAT(takeLinesOf("notes.set"), ElementsAre("notes.set active-queue-notes [text]"));
}

TEST_F(StoreEventsTest, aWorkstationAtItsSignInPromptHasNoOpenNotes) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverCreated(makeSignalWithNote("note", "s"));
    EXPECT_THAT(takeLinesOf("notes."),
                ElementsAre("notes.history active-queue-notes []", "notes.history active-queue-notes [note]",
                            "notes.retire active-queue-notes"));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    EXPECT_THAT(takeLinesOf("notes."),
                ElementsAre("notes.history active-queue-notes [note]", "notes.set active-queue-notes [note]"));
}

TEST_F(StoreEventsTest, aRoomsComputerInAnOfficeThatRequiresASignInHasNoOpenNotesEither) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) {
                   snapshot.office = makeOfficeThatRequiresSignIn("office-1");
               }));
    deliverCreated(makeSignalWithNote("note", "s"));
    EXPECT_EQ(takeLinesOf("notes.").back(), "notes.retire active-queue-notes");
}

// The lists.

TEST_F(StoreEventsTest, aMemberUpdateReplacesInPlaceOrAppendsAndRefreshes) {
    launchInRoom();
    deliverRecord("member.updated", server::server_message::MemberUpdated{
                                        makeMember("member-2", [](Member& member) { member.status = "busy"; })});
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
    EXPECT_EQ(state().members[1].status, "busy");
    EXPECT_EQ(takeLinesOf("notifications."), Lines{"notifications.reconcile nobody []"});

    deliverRecord("member.updated", server::server_message::MemberUpdated{makeMember("member-0")});
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3", "member-0"));
    EXPECT_EQ(takeLinesOf("notifications."), Lines{"notifications.reconcile nobody []"});
}

TEST_F(StoreEventsTest, goingOffShiftTakesOpenCallsOutOfTheOwnQueue) {
    launchAsMember({makeSignal("open")});
    deliverRecord("member.updated", server::server_message::MemberUpdated{
                                        makeMember("member-1", [](Member& member) { member.onShift = false; })});
    EXPECT_EQ(takeLinesOf("notifications."), Lines{"notifications.reconcile member-1 []"});
}

TEST_F(StoreEventsTest, newRoomsStopTheBeaconAndRefreshNothing) {
    launchInRoom();
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{makeRoom("z"), makeRoom("a")}});
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("z", "a"));
    EXPECT_THAT(journal.take(), ElementsAre("beacon.stop"));
}

TEST_F(StoreEventsTest, aRoomThatWasSwitchedOffIsConfirmedNoLongerAndTheMemberStays) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    store->confirmFlexibleRoom("room-1");
    deliverRecord("rooms.updated",
                  server::server_message::RoomsUpdated{{makeInactiveRoom("room-1"), makeRoom("room-2")}});
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = {}}));
    EXPECT_EQ(state().device->signedInMemberId, "member-1");
}

TEST_F(StoreEventsTest, newTypesChangeNothingElseAndTheNextEventUsesThem) {
    launchAsMember({makeSignal("s")});
    deliverRecord("types.updated", server::server_message::TypesUpdated{{makeType("type-9", 9)}});
    EXPECT_THAT(idsOf(state().signalTypes), ElementsAre("type-9"));
    EXPECT_THAT(journal.take(), IsEmpty());
    deliverRecord("member.updated", server::server_message::MemberUpdated{makeMember("member-1")});
    EXPECT_EQ(takeLinesOf("notifications."), Lines{"notifications.reconcile member-1 [s]"});
}

TEST_F(StoreEventsTest, aReleaseIsHandedOnAndAPongDoesNothing) {
    launchInRoom();
    deliver("desktop.release", R"({"desktopRelease":)" + support::toJson(makeRelease("4.0", 40)) + "}");
    EXPECT_THAT(journal.take(), ElementsAre("updates.announce 4.0"));
    deliver("pong", "{}");
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StoreEventsTest, aFrameThatSaysNothingChangesNothingAndTheNextOneIsHeard) {
    launchInRoom({makeSignal("s")});
    // That something arrives is a sign of life, whatever it says.
    deliver("pong", "{}");
    journal.take();
    const StoreState before = state();
    int turnsTold = 0;
    const auto observation = store->observe([&](const StoreChanges&) { ++turnsTold; });
    for (const char* frame :
         {"", "not json", "null", "[]", "{}", "7", R"({"type":7})", R"({"type":"signal.created"})",
          R"({"type":"signal.created","data":null})", R"({"type":"signal.created","data":{"signal":{"id":"x"}}})",
          R"({"type":"signal.updated","data":{"signal":{"id":"s","status":"done"}}})",
          R"({"type":"rooms.updated","data":{"rooms":[{"id":"r"}]}})", R"({"type":"rooms.updated","data":{}})",
          R"({"type":"snapshot","data":{}})", R"({"type":"of.tomorrow","data":{}})", R"({"type":"Session.ended"})",
          R"({"type":"session.ended"} )"
          "x",
          R"({"type":"session.ended")", "{\"type\":\"session.ended\",\"x\":\"\xff\"}"}) {
        socket().deliver(frame);
        settle();
        EXPECT_TRUE(state() == before) << frame;
        EXPECT_EQ(turnsTold, 0) << frame;
        EXPECT_THAT(journal.take(), IsEmpty()) << frame;
    }
    deliverCreated(makeSignal("next"));
    EXPECT_THAT(idsOf(state().signals), testing::UnorderedElementsAre("s", "next"));
    EXPECT_EQ(turnsTold, 1);
}

// The connection.

TEST_F(StoreEventsTest, theConnectionLineFollowsTheSocket) {
    launchPaired("room");
    EXPECT_EQ(state().connectionState, ConnectionState::connecting);
    deliver("pong", "{}");
    EXPECT_EQ(state().connectionState, ConnectionState::connected);
    socket().fail({});
    settle();
    EXPECT_EQ(state().connectionState, ConnectionState::disconnected);
    loop.advance(2s);
    EXPECT_EQ(state().connectionState, ConnectionState::connecting);
}

TEST_F(StoreEventsTest, aLostLinkKeepsTheLastKnownOffice) {
    launchInRoom({makeSignal("s")});
    deliver("pong", "{}");
    socket().fail({});
    loop.advance(60s);
    EXPECT_TRUE(state().isPaired);
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::store
