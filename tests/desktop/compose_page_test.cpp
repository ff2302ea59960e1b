#include "tests/desktop/compose_page.h"

#include <optional>

#include <QtTest/QTest>
#include <gmock/gmock.h>

namespace zelkovanta::desktop_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(ComposePage, aSignalIsMadeWithTheMouse) {
    openRoom();
    EXPECT_TRUE(isChecked(QAccessible::RadioButton, "Patient ready"));
    page.click(page.node(QAccessible::RadioButton, "Urgent"));
    EXPECT_TRUE(isChecked(QAccessible::RadioButton, "Urgent"));
    EXPECT_FALSE(isChecked(QAccessible::RadioButton, "Patient ready"));
    // The form opens with all providers chosen; one stays.
    pick("Dr. Leila Amari");
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "Dr. Henrik Voss"));
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    writeNote("Bring the blue folder");
    page.click(page.node(QAccessible::Button, sendButton));
    EXPECT_EQ(sent(), R"({"roomId":"room-3","providerId":"dr-voss","typeId":"urgent","note":"Bring the blue folder"})");
    EXPECT_FALSE(page.node(QAccessible::Button, sendButton).isEnabled());
    page.computer.answerWith("POST", "/signals", support::makeSignal("call-9"));
    page.settle();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(page.shows(QAccessible::Button, openingButton));
}

TEST_F(ComposePage, theLineBelowSaysWhatWillHappen) {
    openRoom();
    EXPECT_TRUE(page.says("Goes to the next available"));
    pick("Dr. Leila Amari");
    EXPECT_FALSE(page.says("Goes to the next available"));
    pick("June Park");
    EXPECT_TRUE(page.says("Combined call: all 2 get it."));
    pick("June Park");
    pick("Dr. Henrik Voss");
    EXPECT_TRUE(page.says("Pick who should get it."));
    EXPECT_FALSE(page.node(QAccessible::Button, sendButton).isEnabled());
}

TEST_F(ComposePage, aSignalIsMadeWithTheKeyboardAlone) {
    page.computer.launchWith("room", practice());
    page.open();
    QTest::keyClick(page.window, Qt::Key_N, Qt::ControlModifier);
    page.settle();
    ASSERT_TRUE(isOpen());
    ASSERT_TRUE(tabTo(QAccessible::RadioButton, "Urgent"));
    page.key(Qt::Key_Space);
    EXPECT_TRUE(isChecked(QAccessible::RadioButton, "Urgent"));
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any "));
    page.key(Qt::Key_Down);
    EXPECT_TRUE(page.node(QAccessible::CheckBox, "Dr. Leila Amari").state().focused);
    page.key(Qt::Key_Space);
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    page.key(Qt::Key_Return);
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    page.key(Qt::Key_Space);
    ASSERT_TRUE(tabTo(QAccessible::EditableText, "Note"));
    page.type("Now");
    QTest::keyClick(page.window, Qt::Key_Return, Qt::ControlModifier);
    page.settle();
    EXPECT_EQ(sent(), R"({"roomId":"room-3","providerId":"dr-voss","typeId":"urgent","note":"Now"})");
}

TEST_F(ComposePage, aSignalIsMadeByAScreenReader) {
    openRoom();
    const auto act = [&](const Node& node, const QString& action) {
        ASSERT_TRUE(node.interface->actionInterface()->actionNames().contains(action)) << node.name;
        node.interface->actionInterface()->doAction(action);
        page.settle();
    };
    const QString toggle = QAccessibleActionInterface::toggleAction();
    act(page.node(QAccessible::CheckBox, "Dr. Leila Amari"), toggle);
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    const Node urgent = page.node(QAccessible::RadioButton, "Urgent");
    act(urgent, urgent.interface->actionInterface()->actionNames().contains(toggle)
                    ? toggle
                    : QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(isChecked(QAccessible::RadioButton, "Urgent"));
    page.press(sendButton);
    EXPECT_EQ(sent(), R"({"roomId":"room-3","providerId":"dr-voss","typeId":"urgent","note":""})");
}

TEST_F(ComposePage, aNoteStopsGrowingAtTwoHundredScalars) {
    openRoom();
    std::string long199;
    for (int count = 0; count < 199; ++count) {
        long199 += "a";
    }
    writeNote(long199);
    // Typed as two units of UTF-16 at once, as a keyboard for such signs does.
    QTest::sendKeyEvent(QTest::Click, page.window, Qt::Key_unknown, QString::fromUtf8("🦷"), Qt::NoModifier);
    page.settle();
    EXPECT_EQ(note(), long199 + "🦷");
    page.type("b");
    EXPECT_EQ(note(), long199 + "🦷");
    // In the middle too: what is beyond the end goes.
    page.key(Qt::Key_Home);
    page.type("c");
    EXPECT_EQ(note(), "c" + long199);
    page.type("d");
    EXPECT_EQ(note(), "cd" + long199.substr(1)) << "the cursor stays where it was typed";
}

TEST_F(ComposePage, theFirstLetterTooManyLeavesTheCursorWhereItWasTyped) {
    openRoom();
    const std::string whole(200, 'a');
    writeNote(whole);
    page.key(Qt::Key_Home);
    page.key(Qt::Key_Right);
    page.type("c");
    EXPECT_EQ(note(), "ac" + whole.substr(2));
    page.type("d");
    EXPECT_EQ(note(), "acd" + whole.substr(3));
}

TEST_F(ComposePage, aFailureKeepsEverythingAndASecondTryMaySucceed) {
    openRoom();
    pick("Dr. Leila Amari");
    writeNote("Seated");
    page.key(Qt::Key_Return);
    page.computer.answer("POST", "/signals", 409, R"({"error":"busy","message":"The office is closed."})");
    page.settle();
    EXPECT_TRUE(page.says("The office is closed."));
    EXPECT_EQ(note(), "Seated");
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    page.press(sendButton);
    page.computer.answerWith("POST", "/signals", support::makeSignal("call-9"));
    page.settle();
    EXPECT_FALSE(isOpen());
    EXPECT_FALSE(page.says("The office is closed."));
}

TEST_F(ComposePage, escapeTheBackButtonAndCancelLeaveTheForm) {
    openRoom();
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    page.press(openingButton);
    page.press("Back");
    EXPECT_FALSE(isOpen());
    page.press(openingButton);
    writeNote("Never sent");
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    page.press(openingButton);
    EXPECT_EQ(note(), "");
    page.press("Cancel");
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(sent(), "no request");
    EXPECT_TRUE(page.node(QAccessible::Button, openingButton).state().focused) << "the keyboard is back where it was";
}

TEST_F(ComposePage, theKeyboardShowsWhereItIsOnceAKeyWasUsed) {
    page.computer.launchWith("room", practice());
    page.open();
    const auto isRinged = [&](const char* name) {
        return page.node(QAccessible::Button, name).interface->object()->property("visualFocus").toBool();
    };
    page.click(page.node(QAccessible::Button, openingButton));
    EXPECT_FALSE(isRinged("Back"));
    page.click(page.node(QAccessible::Button, "Cancel"));
    EXPECT_TRUE(isFocused(QAccessible::Button, openingButton));
    EXPECT_FALSE(isRinged(openingButton));
    keyWithControl(Qt::Key_N);
    EXPECT_TRUE(isRinged("Back"));
    page.key(Qt::Key_Escape);
    EXPECT_TRUE(isRinged(openingButton));
    page.key(Qt::Key_Return);
    EXPECT_TRUE(isRinged("Back"));
    page.key(Qt::Key_Space);
    EXPECT_TRUE(isRinged(openingButton));
    keyWithControl(Qt::Key_N);
    keyWithControl(Qt::Key_Return);
    page.computer.answerWith("POST", "/signals", support::makeSignal("call-9"));
    page.settle();
    EXPECT_TRUE(isRinged(openingButton));
}

TEST_F(ComposePage, aPersonsComputerAsksForTheRoom) {
    openProvider();
    EXPECT_FALSE(page.node(QAccessible::Button, sendButton).isEnabled());
    page.choose("Room", "Room 1");
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room: Room 1"));
    page.press(sendButton);
    EXPECT_NE(sent().find(R"("roomId":"room-1")"), std::string::npos);
}

TEST_F(ComposePage, escapeInAnOpenListClosesTheListAlone) {
    openProvider();
    page.click(page.node(QAccessible::ComboBox, "Room"));
    ASSERT_TRUE(page.shows(QAccessible::ListItem, "Room 1"));
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(page.shows(QAccessible::ListItem, "Room 1"));
    EXPECT_TRUE(isOpen());
}

TEST_F(ComposePage, somebodyWhoLeavesTheShiftIsDroppedWhileTheFormIsOpen) {
    openRoom();
    pick("Dr. Leila Amari");
    writeNote("Seated");
    auto voss = practice().members[1];
    voss.onShift = false;
    page.computer.deliverRecord("member.updated", server::server_message::MemberUpdated{voss});
    page.settle();
    EXPECT_FALSE(page.shows(QAccessible::CheckBox, "Dr. Henrik Voss"));
    EXPECT_TRUE(page.says("Pick who should get it."));
    EXPECT_EQ(note(), "Seated");
    EXPECT_FALSE(maySend());
}

TEST_F(ComposePage, anotherPersonGetsAnotherForm) {
    openRoom();
    writeNote("Not for others");
    signInAt("room-3");
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(note(), "");
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room")) << "somebody signed in chooses the room";
}

TEST_F(ComposePage, aFormIsOverBeforeTheNextOneReportsItself) {
    openRoom();
    writeNote("Not for others");
    takeReports();
    signInAt("room-3");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    page.settle();
    EXPECT_THAT(takeReports(),
                ElementsAre("notes.retire compose-note", "crash.setScreen queue", "notes.history compose-note []",
                            "notes.set compose-note []", "crash.setScreen send"));
}

TEST_F(ComposePage, whereTheSamePersonIsNowKeepsWhatWasTyped) {
    openSignedIn();
    writeNote("Seated");
    EXPECT_TRUE(page.says("This computer belongs to Room 3."));
    takeReports();
    signInAt("room-1");
    EXPECT_TRUE(page.says("This computer belongs to Room 1."));
    EXPECT_EQ(note(), "Seated");
    EXPECT_THAT(takeReports(), IsEmpty());
}

TEST_F(ComposePage, aRoomsComputerNamesItsOwnRoomToWhoeverIsSignedIn) {
    openSignedIn();
    EXPECT_TRUE(page.says("This computer belongs to Room 3. While signed in, you can send from another room too."));
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room: Choose a room…"));
    EXPECT_FALSE(maySend());
    page.choose("Room", "Room 3 (this computer's room)");
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room: Room 3 (this computer's room)"));
    page.press(sendButton);
    EXPECT_THAT(sent(), HasSubstr(R"("roomId":"room-3")"));
}

TEST_F(ComposePage, aChosenRoomThatIsClosedMeanwhileIsStillNamed) {
    openProvider();
    page.choose("Room", "Room 1");
    auto rooms = practice().rooms;
    rooms[0].active = false;
    page.computer.deliverRecord("rooms.updated", server::server_message::RoomsUpdated{rooms});
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room: Room 1"));
    EXPECT_TRUE(maySend());
    rooms.erase(rooms.begin());
    page.computer.deliverRecord("rooms.updated", server::server_message::RoomsUpdated{rooms});
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Room: Room 1"));
    page.press(sendButton);
    EXPECT_THAT(sent(), HasSubstr(R"("roomId":"room-1")"));
}

TEST_F(ComposePage, aSharedWorkstationSendsForTheRoomThatWasConfirmed) {
    page.computer.defaults.memory.setNumber("stationSignInBootTime", page.computer.hostInfo.bootTime());
    page.computer.defaults.memory.setText("stationSignInAuditSessionId", page.computer.hostInfo.auditSessionId());
    page.computer.launchWith("shared", practice([](records::StateSnapshot& snapshot) {
                                 snapshot.device = support::makeDeviceWithSignIn("dr-amari");
                             }));
    page.computer.store->confirmFlexibleRoom("room-1");
    page.open();
    page.press(openingButton);
    EXPECT_TRUE(page.says("Room 1"));
    EXPECT_FALSE(page.shows(QAccessible::ComboBox, "Room"));
    page.press(sendButton);
    EXPECT_EQ(sent(), R"({"roomId":"room-1","providerId":"dr-voss","typeId":"ready","note":""})");
    page.computer.answerWith("POST", "/signals", support::makeSignal("call-9"));
    page.settle();
    EXPECT_FALSE(isOpen());
    const auto& remembered = page.computer.defaults.memory;
    EXPECT_EQ(remembered.text("roomSendDefaults.member.dr-amari.typeId"), "ready");
    EXPECT_EQ(remembered.text("roomSendDefaults.member.dr-amari.recipient"), "ids:dr-voss");
    EXPECT_EQ(remembered.text("lastSendTypeId"), std::nullopt);
    EXPECT_EQ(remembered.text("lastSendRecipient"), std::nullopt);
}

TEST_F(ComposePage, aSendingIsSeenAndSaidWhileItLasts) {
    openRoom();
    EXPECT_FALSE(page.shows(QAccessible::Indicator, "Sending…"));
    page.press(sendButton);
    EXPECT_TRUE(page.shows(QAccessible::Indicator, "Sending…"));
    page.computer.answer("POST", "/signals", 500, "{}");
    page.settle();
    EXPECT_FALSE(page.shows(QAccessible::Indicator, "Sending…"));
}

TEST_F(ComposePage, aThousandPeopleMakeOnlyTheRowsThatAreSeen) {
    openRoom([](records::StateSnapshot& snapshot) {
        for (int number = 0; number < 1000; ++number) {
            snapshot.members.push_back(support::makeMember("member-" + std::to_string(number)));
        }
    });
    EXPECT_LT(page.nodes(QAccessible::CheckBox).size(), 40U);
    page.key(Qt::Key_Tab);
    for (int presses = 0; presses < 30 && !page.node(QAccessible::EditableText, "Note").state().focused; ++presses) {
        page.key(Qt::Key_Tab);
    }
    EXPECT_TRUE(page.node(QAccessible::EditableText, "Note").state().focused) << "not past a thousand rows first";
}

}  // namespace
}  // namespace zelkovanta::desktop_test
