#include "tests/screens/compose_fixture.h"

#include <gmock/gmock.h>

namespace zelkovanta::screens {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ComposeScreenTest = ComposeTest;

TEST_F(ComposeScreenTest, hasItsWords) {
    launchMember("member-1");
    open();
    const ComposeScreen screen = form->screen();
    EXPECT_EQ(screen.title, "Send a request");
    EXPECT_EQ(screen.roomTitle, "Room");
    EXPECT_EQ(screen.typeTitle, "Signal");
    EXPECT_EQ(screen.notePlaceholder, "Short note (optional)");
    EXPECT_EQ(screen.noteWarning,
              "Say what needs doing, never who it is for. No patient names or info. This is not a medical record.");
    EXPECT_EQ(screen.sendLabel, "Send signal");
    EXPECT_EQ(screen.cancelLabel, "Cancel");
    EXPECT_EQ(screen.error, "");
    EXPECT_FALSE(screen.isSending);
}

TEST_F(ComposeScreenTest, withAFixedRoomThereIsNothingToChoose) {
    launchRoom();
    open(fixedRoom());
    const ComposeScreen screen = form->screen();
    EXPECT_FALSE(screen.choosesRoom);
    EXPECT_EQ(screen.fixedRoom, "Name of room-1");
    EXPECT_THAT(screen.rooms, IsEmpty());
    EXPECT_EQ(screen.roomHint, "");
}

TEST_F(ComposeScreenTest, withAHomeRoomTheRoomsAreOfferedAndItIsMarked) {
    launchRoomWith("member-1");
    open(homeRoom());
    const ComposeScreen screen = form->screen();
    EXPECT_TRUE(screen.choosesRoom);
    EXPECT_THAT(screen.rooms,
                ElementsAre(ComposeRoom{"room-1", "label-home-room-option"}, ComposeRoom{"room-2", "Name of room-2"}));
    EXPECT_EQ(screen.roomHint, "hint-home-room-signed-in");
    EXPECT_EQ(screen.selectedRoomId, std::nullopt);
    EXPECT_EQ(screen.roomPrompt, "Choose a room…");
}

TEST_F(ComposeScreenTest, elsewhereTheActiveRoomsAreOffered) {
    launchMember("member-1");
    open();
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{
                                       {support::makeRoom("room-1"), support::makeInactiveRoom("room-2")}});
    form->chooseRoom("room-1");
    const ComposeScreen screen = form->screen();
    EXPECT_TRUE(screen.choosesRoom);
    EXPECT_THAT(screen.rooms, ElementsAre(ComposeRoom{"room-1", "Name of room-1"}));
    EXPECT_EQ(screen.roomPrompt, "Choose a room…");
    EXPECT_EQ(screen.selectedRoomId, "room-1");
    EXPECT_EQ(screen.roomHint, "");
}

TEST_F(ComposeScreenTest, theTypesHaveTheirWordsAndColours) {
    records::StateSnapshot snapshot = officeSnapshot();
    snapshot.office.vertical = "medical";
    snapshot.signalTypes[0].color = "none";
    snapshot.device = support::makeDeviceOfMember("member-1");
    launchWith("member", snapshot);
    open();
    const ComposeScreen screen = form->screen();
    EXPECT_THAT(
        screen.types,
        ElementsAre(
            ComposeType{.id = "type-xray", .label = "Label of type-xray", .color = theme::rgb(0xFF8C28)},
            ComposeType{
                .id = "type-ready", .label = "signal-ready-medical", .color = theme::rgb(0x336699), .selected = true},
            ComposeType{.id = "type-lab", .label = "Label of type-lab", .color = theme::rgb(0x336699)}));
}

TEST_F(ComposeScreenTest, thePickerIsToldTheTypesDepartment) {
    launchRoom();
    open(fixedRoom());
    form->pressGroup("provider");
    form->chooseType("type-lab");
    EXPECT_EQ(form->screen().who.hint, "Goes to everyone in dept-assistant on shift. First to respond takes it.");
    form->chooseType("type-xray");
    EXPECT_EQ(form->screen().who.hint, "Pick who should get it.");
}

}  // namespace
}  // namespace zelkovanta::screens
