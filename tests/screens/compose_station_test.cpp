#include "screens/plain_page.h"
#include "tests/screens/compose_fixture.h"

#include <gmock/gmock.h>

/// A form at a shared workstation, and where a form stands at each kind of computer.
namespace zelkovanta::screens {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct ComposeStation : ComposeTest {
    static ComposePlace confirmedRoom() { return {.fixedRoomId = "room-1", .homeRoomId = {}}; }
};

TEST_F(ComposeStation, aSendingIsRememberedForThePersonAlone) {
    launchStationWith("member-1");
    open(confirmedRoom());
    pressSend();
    EXPECT_THAT(sentBody(), HasSubstr(R"("roomId":"room-1")"));
    journal.take();
    answerCreated();
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(takeLinesOf({"defaults"}),
                ElementsAre("defaults roomSendDefaults.member.member-1.typeId = 'type-ready'",
                            "defaults roomSendDefaults.member.member-1.recipient = "
                            "'ids:member-2'"));
}

TEST_F(ComposeStation, aFormOpensWithWhatThePersonSentLast) {
    defaults.memory.setText("lastSendTypeId", "type-xray");
    defaults.memory.setText("lastSendRecipient", "ids:member-2");
    defaults.memory.setText("roomSendDefaults.autonomous.typeId", "type-xray");
    defaults.memory.setText("roomSendDefaults.member.member-1.typeId", "type-lab");
    defaults.memory.setText("roomSendDefaults.member.member-1.recipient", "ids:member-2,member-3");
    launchStationWith("member-1");
    ASSERT_EQ(defaults.memory.text("lastUsedRoomId"), "room-1") << "the confirmed room is remembered under this key";
    open(confirmedRoom());
    EXPECT_EQ(form->choice().selectedRoomId, std::nullopt);
    EXPECT_EQ(form->choice().selectedTypeId, "type-lab");
    EXPECT_THAT(form->choice().who.selectedProviderIds, ElementsAre("member-2", "member-3"));
    EXPECT_FALSE(form->screen().choosesRoom);
    EXPECT_EQ(form->screen().fixedRoom, "Name of room-1");
}

PlainFormPlace placeAt(records::DeviceRole role, records::Device device, std::string confirmedRoomId = "") {
    store::StoreState state;
    state.role = role;
    state.rooms = {support::makeRoom("room-1"), support::makeRoom("room-2")};
    if (!confirmedRoomId.empty()) {
        state.flexibleRoomSession = {.signedInMemberId = device.signedInMemberId,
                                     .confirmedRoomId = std::move(confirmedRoomId)};
    }
    state.device = std::move(device);
    return formPlace(state);
}

records::Device roomWith(std::string memberId) {
    records::Device device = support::makeDeviceOfRoom("room-1");
    device.signedInMemberId = std::move(memberId);
    return device;
}

TEST(FormPlace, onAPersonsComputerNoRoomIsGiven) {
    EXPECT_EQ(placeAt(records::DeviceRole::member, support::makeDeviceOfMember("member-1")), PlainFormPlace{});
}

TEST(FormPlace, aRoomWhereNobodyIsSignedInSendsForItself) {
    EXPECT_EQ(placeAt(records::DeviceRole::room, support::makeDeviceOfRoom("room-1")),
              (PlainFormPlace{.place = {.fixedRoomId = "room-1", .homeRoomId = "room-1"}, .key = "autonomous-room"}));
}

TEST(FormPlace, whoIsSignedInAtARoomChoosesAmongTheRooms) {
    EXPECT_EQ(placeAt(records::DeviceRole::room, roomWith("member-1")),
              (PlainFormPlace{.place = {.fixedRoomId = {}, .homeRoomId = "room-1"}, .key = "member-1"}));
    EXPECT_EQ(placeAt(records::DeviceRole::room, roomWith("member-2")).key, "member-2");
}

TEST(FormPlace, aSharedWorkstationSendsForTheRoomThatWasConfirmed) {
    EXPECT_EQ(placeAt(records::DeviceRole::shared, support::makeDeviceWithSignIn("member-1"), "room-2"),
              (PlainFormPlace{.place = {.fixedRoomId = "room-2", .homeRoomId = {}}, .key = "member-1"}));
    EXPECT_EQ(placeAt(records::DeviceRole::shared, support::makeDeviceWithSignIn("member-1")),
              (PlainFormPlace{.place = {}, .key = "member-1"}));
    EXPECT_EQ(placeAt(records::DeviceRole::shared, support::makeDevice()),
              (PlainFormPlace{.place = {}, .key = "workstation"}));
}

TEST(FormPlace, withoutADeviceTheKeyIsThatOfTheKindOfComputer) {
    store::StoreState state;
    state.role = records::DeviceRole::room;
    EXPECT_EQ(formPlace(state), (PlainFormPlace{.place = {}, .key = "autonomous-room"}));
    state.role = records::DeviceRole::shared;
    EXPECT_EQ(formPlace(state), (PlainFormPlace{.place = {}, .key = "workstation"}));
}

}  // namespace
}  // namespace zelkovanta::screens
