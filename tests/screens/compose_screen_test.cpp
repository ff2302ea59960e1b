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
                ElementsAre(Choice{"room-1", "label-home-room-option"}, Choice{"room-2", "Name of room-2"}));
    EXPECT_EQ(screen.roomHint, "hint-home-room-signed-in");
    EXPECT_EQ(screen.selectedRoomId, std::nullopt);
    EXPECT_EQ(screen.roomPrompt, "Choose a room…");
}

TEST_F(ComposeScreenTest, aHomeRoomThatIsClosedIsNamedAndNotOffered) {
    launchRoomWith("member-1");
    open(homeRoom());
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{
                                       {support::makeInactiveRoom("room-1"), support::makeRoom("room-2")}});
    const ComposeScreen screen = form->screen();
    EXPECT_THAT(screen.rooms, ElementsAre(Choice{"room-2", "Name of room-2"}));
    EXPECT_EQ(screen.roomHint, "hint-home-room-signed-in");
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{support::makeRoom("room-2")}});
    EXPECT_EQ(form->screen().roomHint, "") << "a room that is gone has no name";
}

TEST_F(ComposeScreenTest, elsewhereTheActiveRoomsAreOffered) {
    launchMember("member-1");
    open();
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{
                                       {support::makeRoom("room-1"), support::makeInactiveRoom("room-2")}});
    form->chooseRoom("room-1");
    const ComposeScreen screen = form->screen();
    EXPECT_TRUE(screen.choosesRoom);
    EXPECT_THAT(screen.rooms, ElementsAre(Choice{"room-1", "Name of room-1"}));
    EXPECT_EQ(screen.roomPrompt, "Choose a room…");
    EXPECT_EQ(screen.selectedRoomId, "room-1");
    EXPECT_EQ(screen.roomHint, "");
}

/// The rooms of the office from now on.
server::server_message::RoomsUpdated rooms(std::vector<records::Room> rooms) {
    return {std::move(rooms)};
}

TEST_F(ComposeScreenTest, aChosenRoomThatIsNoLongerOfferedIsStillNamed) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    EXPECT_EQ(form->screen().roomPrompt, "Choose a room…");

    deliverRecord("rooms.updated", rooms({support::makeRoom("room-1"), support::makeInactiveRoom("room-2")}));
    EXPECT_THAT(form->screen().rooms, ElementsAre(Choice{"room-1", "Name of room-1"}));
    EXPECT_EQ(form->screen().roomPrompt, "Name of room-2");
    EXPECT_EQ(form->screen().selectedRoomId, "room-2");
    EXPECT_TRUE(form->screen().canSend);

    deliverRecord("rooms.updated", rooms({support::makeRoom("room-1")}));
    EXPECT_EQ(form->screen().roomPrompt, "Name of room-2") << "as it was called when it was chosen";
    EXPECT_TRUE(form->screen().canSend);

    form->chooseRoom("room-1");
    EXPECT_EQ(form->screen().roomPrompt, "Choose a room…");
    form->chooseRoom(std::nullopt);
    EXPECT_EQ(form->screen().roomPrompt, "Choose a room…");
}

TEST_F(ComposeScreenTest, theRoomSentFromLastIsStillNamedOnceItIsGone) {
    defaults.memory.setText("lastUsedRoomId", "room-2");
    launchMember("member-1");
    open();
    deliverRecord("rooms.updated", rooms({support::makeRoom("room-1")}));
    EXPECT_EQ(form->screen().roomPrompt, "Name of room-2");
}

TEST_F(ComposeScreenTest, whereTheFormStandsMayChangeWhileWhatWasTypedStays) {
    launchRoomWith("member-1");
    open(homeRoom());
    form->editNote("Seated");
    form->pressPerson("member-3");
    const ComposeChoice before = form->choice();
    int changes = 0;
    form->setChangeHandler([&] { ++changes; });
    form->setPlace({.fixedRoomId = {}, .homeRoomId = "room-2"});
    form->setPlace({.fixedRoomId = {}, .homeRoomId = "room-2"});
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(form->choice(), before);
    EXPECT_THAT(form->screen().rooms,
                ElementsAre(Choice{"room-1", "Name of room-1"}, Choice{"room-2", "label-home-room-option"}));
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
