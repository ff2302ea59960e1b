#include "store/flexible_room.h"

#include "store/queues.h"
#include "tests/support/office_records.h"

#include <array>

#include <gtest/gtest.h>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;

constexpr std::array<std::string_view, 2> rooms{"room-1", "room-2"};

FlexibleRoomSession reconciled(FlexibleRoomSession session, const std::optional<std::string>& member) {
    session.reconcile(member, rooms);
    return session;
}

TEST(FlexibleRoomSessionTest, theSameMemberInAValidRoomStays) {
    const FlexibleRoomSession session{.signedInMemberId = "m", .confirmedRoomId = "room-2"};
    EXPECT_EQ(reconciled(session, "m"), session);
}

TEST(FlexibleRoomSessionTest, anotherMemberStartsWithoutARoom) {
    EXPECT_EQ(reconciled({.signedInMemberId = "m", .confirmedRoomId = "room-2"}, "n"),
              (FlexibleRoomSession{.signedInMemberId = "n", .confirmedRoomId = {}}));
    EXPECT_EQ(reconciled({}, "n"), (FlexibleRoomSession{.signedInMemberId = "n", .confirmedRoomId = {}}));
}

TEST(FlexibleRoomSessionTest, nobodyHasNoRoom) {
    EXPECT_EQ(reconciled({.signedInMemberId = "m", .confirmedRoomId = "room-2"}, {}), FlexibleRoomSession{});
    EXPECT_EQ(reconciled({.signedInMemberId = {}, .confirmedRoomId = "room-2"}, {}), FlexibleRoomSession{});
}

TEST(FlexibleRoomSessionTest, aRoomThatIsGoneIsConfirmedNoLongerAndTheMemberStays) {
    EXPECT_EQ(reconciled({.signedInMemberId = "m", .confirmedRoomId = "room-3"}, "m"),
              (FlexibleRoomSession{.signedInMemberId = "m", .confirmedRoomId = {}}));
}

TEST(FlexibleRoomSessionTest, anEmptyIdIsAnIdAndNotNobody) {
    EXPECT_EQ(reconciled({}, ""), (FlexibleRoomSession{.signedInMemberId = "", .confirmedRoomId = {}}));
}

struct ConfirmedRoomTest : testing::Test {
    StoreState state;
    ConfirmedRoomTest() {
        state.role = DeviceRole::shared;
        state.rooms = {support::makeRoom("room-1"), support::makeRoom("room-2")};
        state.device = support::makeDeviceWithSignIn("m");
        state.flexibleRoomSession = {.signedInMemberId = "m", .confirmedRoomId = "room-2"};
    }
};

TEST_F(ConfirmedRoomTest, isTheOneThatTheSignedInMemberConfirmed) {
    EXPECT_EQ(confirmedFlexibleRoomId(state), "room-2");
}

TEST_F(ConfirmedRoomTest, existsOnlyOnASharedWorkstation) {
    state.role = DeviceRole::room;
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
    state.role = DeviceRole::member;
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
}

TEST_F(ConfirmedRoomTest, needsSomebodySignedIn) {
    state.device->signedInMemberId.reset();
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
    state.device.reset();
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
}

TEST_F(ConfirmedRoomTest, isNotInheritedByAnotherMember) {
    state.device->signedInMemberId = "n";
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
}

TEST_F(ConfirmedRoomTest, mustBeAnActiveRoom) {
    state.rooms[1].active = false;
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
    state.rooms.pop_back();
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
}

TEST_F(ConfirmedRoomTest, isReadWithoutChangingTheSession) {
    state.rooms.pop_back();
    const FlexibleRoomSession before = state.flexibleRoomSession;
    EXPECT_EQ(confirmedFlexibleRoomId(state), std::nullopt);
    EXPECT_EQ(state.flexibleRoomSession, before);
}

}  // namespace
}  // namespace zelkovanta::store
