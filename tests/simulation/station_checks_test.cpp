#include "store/queues.h"
#include "tests/simulation/checks.h"
#include "tests/support/office_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// Each thing that must never be seen at a station, made by hand, to see that the check notices it.
namespace zelkovanta::simulation {
namespace {

constexpr Logins sameLogin{.ofSignIn = 3, .now = 3};
constexpr Logins laterLogin{.ofSignIn = 3, .now = 4};

/// Somebody is signed in, has said where, and a signal waits there.
store::StoreState station() {
    store::StoreState state;
    state.isPaired = true;
    state.hasAuthenticatedSnapshot = true;
    state.role = records::DeviceRole::shared;
    state.office = support::makeOffice("office-1");
    state.members = {support::makeMember("member-1"), support::makeMember("member-2")};
    state.rooms = {support::makeRoom("room-1"), support::makeRoom("room-2")};
    state.device = support::makeDeviceWithSignIn("member-1");
    state.flexibleRoomSession = {.signedInMemberId = "member-1", .confirmedRoomId = "room-1"};
    state.signals = {support::makeSignal("signal-1", [](records::Signal& signal) {
        signal.roomId = "room-1";
        signal.requesterId = "member-2";
        signal.providerId = "member-1";
    })};
    return state;
}

Complaint complaintOf(const store::StoreState& state, Logins logins) {
    return brokenStation(state, viewOf(state), logins);
}

TEST(StationChecks, aStationInOrderPasses) {
    EXPECT_EQ(complaintOf(station(), sameLogin), std::nullopt);
    store::StoreState nobody = station();
    nobody.device = support::makeDevice();
    nobody.flexibleRoomSession = {};
    EXPECT_EQ(complaintOf(nobody, laterLogin), std::nullopt);
}

TEST(StationChecks, aSignInOfAnotherLoginIsFound) {
    EXPECT_EQ(complaintOf(station(), laterLogin), "shows a sign-in that was made in another login");
    store::StoreState room = station();
    room.role = records::DeviceRole::room;
    room.flexibleRoomSession = {};
    EXPECT_EQ(complaintOf(room, laterLogin), "shows a sign-in that was made in another login");
}

TEST(StationChecks, theComputerOfAPersonHasNoSignInToLose) {
    store::StoreState personal = station();
    personal.role = records::DeviceRole::member;
    personal.device = support::makeDeviceOfMember("member-1");
    personal.flexibleRoomSession = {};
    EXPECT_EQ(complaintOf(personal, laterLogin), std::nullopt);
}

TEST(StationChecks, aRoomWithoutAMemberIsFound) {
    store::StoreState state = station();
    state.flexibleRoomSession.signedInMemberId.reset();
    EXPECT_EQ(complaintOf(state, sameLogin), "a room is confirmed without a member");
}

TEST(StationChecks, aRoomThatWasWithdrawnIsFound) {
    store::StoreState state = station();
    state.rooms[0].active = false;
    EXPECT_EQ(complaintOf(state, sameLogin), "a confirmed room is kept that does not count");
    state.rooms.erase(state.rooms.begin());
    EXPECT_EQ(complaintOf(state, sameLogin), "a confirmed room is kept that does not count");
}

TEST(StationChecks, theRoomOfSomebodyElseIsFound) {
    store::StoreState state = station();
    state.device->signedInMemberId = "member-2";
    EXPECT_EQ(complaintOf(state, sameLogin), "a confirmed room is kept that does not count");
}

TEST(StationChecks, aRoomThatCountsAndShouldNotIsFound) {
    store::StoreState state = station();
    StationView view = viewOf(state);
    state.rooms[0].active = false;
    EXPECT_EQ(brokenStation(state, view, sameLogin), "the confirmed room is not an active one");
    view.confirmedRoomId = "room-9";
    EXPECT_EQ(brokenStation(station(), view, sameLogin), "the confirmed room is not an active one");
    state = station();
    view = viewOf(state);
    state.device->signedInMemberId = "member-2";
    EXPECT_EQ(brokenStation(state, view, sameLogin), "the confirmed room is not the signed-in member's");
}

TEST(StationChecks, aQueueThatNobodyShouldSeeIsFound) {
    store::StoreState state = station();
    StationView view = viewOf(state);
    ASSERT_EQ(view.received, 1U);
    ASSERT_EQ(view.count, 1U);
    state.device = support::makeDevice();
    state.flexibleRoomSession = {};
    view.confirmedRoomId.reset();
    EXPECT_EQ(brokenStation(state, view, sameLogin), "shows a queue to nobody");
    view.received = 0;
    EXPECT_EQ(brokenStation(state, view, sameLogin), "counts a queue for nobody");
}

TEST(StationChecks, aRoomThatIsKeptDuringAMoveDoesNotCountAndIsNoFault) {
    store::StoreState state = station();
    state.device.reset();
    state.rooms.clear();
    state.signals.clear();
    EXPECT_EQ(store::confirmedFlexibleRoomId(state), std::nullopt);
    EXPECT_EQ(complaintOf(state, sameLogin), std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::simulation
