#include "tests/desktop/page_fixture.h"

#include <set>
#include <string>

#include <QtTest/QTest>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

using namespace std::chrono_literals;

records::Signal call(std::string id, std::string room = "room-3", std::string note = "") {
    return support::makeSignal(std::move(id), [&](records::Signal& signal) {
        signal.roomId = std::move(room);
        signal.typeId = "ready";
        signal.note = std::move(note);
    });
}

records::StateSnapshot practiceOf(const std::string& memberId) {
    return practice([&](records::StateSnapshot& snapshot) {
        snapshot.device = support::makeDeviceOfMember(memberId);
        snapshot.signals = {call("call-1", "room-3", "Bring the blue folder")};
    });
}

class DeskPage : public testing::Test {
protected:
    void openRoom() {
        page.computer.launchWith("room", practice());
        page.open();
    }
    void openProvider() {
        page.computer.launchWith("member", practiceOf("dr-amari"));
        page.open();
    }
    void openStation(const std::function<void(records::StateSnapshot&)>& adjust = [](auto&) {}) {
        const auto login = page.computer.hostInfo;
        page.computer.defaults.memory.setNumber("stationSignInBootTime", login.bootTime());
        page.computer.defaults.memory.setText("stationSignInAuditSessionId", login.auditSessionId());
        page.computer.launchWith("shared", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDeviceWithSignIn("dr-amari");
                                     snapshot.device.name = "Front desk";
                                     adjust(snapshot);
                                 }));
        page.open();
    }
    void advance(platform::Duration time) {
        page.computer.loop.advance(time);
        page.settle();
    }
    std::string openBody(std::string_view method, std::string_view path) {
        auto* request = page.computer.openRequest(method, path);
        return request != nullptr ? request->request.body.value_or("") : "no request";
    }

    Page page;
};

TEST_F(DeskPage, aRoomComputerShowsWhatItSent) {
    openRoom();
    EXPECT_TRUE(page.says("Room 3"));
    EXPECT_TRUE(page.says("Room computer"));
    EXPECT_TRUE(page.says("Nothing sent yet."));
    EXPECT_FALSE(page.shows(QAccessible::Button, "Received"));
    page.computer.deliverCreated(call("call-1", "room-3", "Bring the blue folder"));
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::ListItem, "Room 3, Patient ready, Waiting"));
    EXPECT_TRUE(page.says("Bring the blue folder"));
    EXPECT_FALSE(page.says("Nothing sent yet."));
    EXPECT_TRUE(page.shows(QAccessible::Button, "Cancel"));
    EXPECT_FALSE(page.shows(QAccessible::Button, "On my way"));
}

/// What a window is made of that not every computer shows, by type.
std::set<std::string> specialPartsOf(const QQuickWindow& window) {
    std::set<std::string> found;
    for (const QObject* object : window.findChildren<QObject*>()) {
        const std::string type = object->metaObject()->className();
        for (const char* part : {"SetupView", "SignInView", "RoomChoice", "MemberStatusControl"}) {
            if (type.starts_with(part)) {
                found.insert(part);
            }
        }
        if (object->inherits("QQuickControl") || object->inherits("QQuickPopup")) {
            found.insert("a control of the toolkit");
        }
    }
    return found;
}

TEST_F(DeskPage, whatARoomComputerDoesNotShowIsNotMade) {
    openRoom();
    page.computer.deliverCreated(call("call-1"));
    page.settle();
    EXPECT_EQ(specialPartsOf(*page.window), std::set<std::string>{});
}

TEST_F(DeskPage, aWorkstationHasItsChoices) {
    openStation();
    EXPECT_EQ(specialPartsOf(*page.window),
              (std::set<std::string>{"RoomChoice", "MemberStatusControl", "a control of the toolkit"}));
}

TEST_F(DeskPage, aConnectionIsToldWhileItIsNotThere) {
    openRoom();
    EXPECT_TRUE(page.says("Connecting…"));
    page.computer.socket().accept();
    page.computer.deliverSnapshot(practice());
    page.settle();
    EXPECT_FALSE(page.says("Connecting…"));
    EXPECT_TRUE(page.nodes(QAccessible::AlertMessage).empty());
    page.computer.socket().fail({});
    page.settle();
    EXPECT_TRUE(page.says("Offline, retrying…"));
    EXPECT_TRUE(page.says("Room 3")) << "what is known stays";
}

TEST_F(DeskPage, everyButtonOfARowActsWhenAScreenReaderPressesIt) {
    openProvider();
    page.press("On my way");
    EXPECT_EQ(openBody("PATCH", "/signals/call-1"), R"({"action":"acknowledge"})");
    auto taken = call("call-1");
    taken.status = "acknowledged";
    taken.acknowledgedBy = "dr-amari";
    page.computer.answerWith("PATCH", "/signals/call-1", taken);
    page.settle();
    EXPECT_TRUE(page.says("On the way"));
    EXPECT_FALSE(page.shows(QAccessible::Button, "On my way"));
    page.press("Done");
    EXPECT_EQ(openBody("PATCH", "/signals/call-1"), R"({"action":"done"})");
    taken.status = "done";
    page.computer.answerWith("PATCH", "/signals/call-1", taken);
    page.settle();
    EXPECT_TRUE(page.says("No one is waiting for you."));
}

TEST_F(DeskPage, everyButtonOfARowActsUnderTheMouse) {
    openProvider();
    page.click(page.node(QAccessible::Button, "On my way"));
    EXPECT_EQ(openBody("PATCH", "/signals/call-1"), R"({"action":"acknowledge"})");
    page.click(page.node(QAccessible::Button, "Done"));
    EXPECT_EQ(page.computer.requestCount("PATCH", "/signals/call-1"), 2U);
}

TEST_F(DeskPage, aSentSignalCanBeCancelledWithTheKeyboard) {
    openRoom();
    page.computer.deliverCreated(call("call-1"));
    page.settle();
    ASSERT_NE(page.rowItem("call-1"), nullptr);
    for (int presses = 0; presses < 12 && page.node(QAccessible::Button, "Cancel").state().focused == 0; ++presses) {
        page.key(Qt::Key_Tab);
    }
    ASSERT_TRUE(page.node(QAccessible::Button, "Cancel").state().focused);
    page.key(Qt::Key_Return);
    EXPECT_EQ(openBody("PATCH", "/signals/call-1"), R"({"action":"cancel"})");
}

TEST_F(DeskPage, theStatusShownIsTheOneThatTheOfficeHolds) {
    openProvider();
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Available"));
    page.choose("Your status", "Busy");
    EXPECT_EQ(openBody("POST", "/members/me/status"), R"({"status":"busy"})");
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Available"));
    auto busy = practice().members[0];
    busy.status = "busy";
    page.computer.answerWith("POST", "/members/me/status", busy);
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Busy"));
}

TEST_F(DeskPage, aSharedWorkstationAsksForTheRoomFirst) {
    openStation(
        [](records::StateSnapshot& snapshot) { snapshot.signals = {call("call-1"), call("call-2", "room-1")}; });
    EXPECT_TRUE(page.says("Front desk"));
    EXPECT_TRUE(page.says("Signed in · Dr. Leila Amari"));
    EXPECT_TRUE(page.says("Choose a room for this sign-in before sending."));
    EXPECT_FALSE(page.shows(QAccessible::Button, "Send a request"));
    EXPECT_FALSE(page.says("Last used"));
    page.choose("Current room", "Room 1");
    EXPECT_FALSE(page.says("Choose a room for this sign-in before sending."));
    EXPECT_TRUE(page.shows(QAccessible::ListItem, "Room 1, Patient ready"));
    EXPECT_FALSE(page.shows(QAccessible::ListItem, "Room 3, Patient ready"));
    EXPECT_TRUE(page.shows(QAccessible::Button, "Send a request"));
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status"));
    page.press("Sign out");
    EXPECT_EQ(page.computer.requestCount("POST", "/devices/me/signout"), 1U);
    page.computer.answer("POST", "/devices/me/signout", 200);
    page.settle();
    EXPECT_FALSE(page.shows(QAccessible::ComboBox, "Your status"));
    EXPECT_TRUE(page.says("Sign in to Front desk"));
    EXPECT_FALSE(page.shows(QAccessible::Button, "Sign out"));
    auto device = support::makeDeviceWithSignIn("dr-amari");
    device.name = "Front desk";
    page.computer.deliverSessionStarted(device, practice().members[0]);
    page.settle();
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status"));
    EXPECT_TRUE(page.says("Last used: Room 1. Choose it or another room for this sign-in."));
    EXPECT_FALSE(page.shows(QAccessible::Button, "Send a request"));
}

TEST_F(DeskPage, unlinkingTakesTwoPresses) {
    openRoom();
    page.press("Unlink this computer");
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 0U);
    advance(1s);
    page.press("Press again to unlink");
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 1U);
    page.computer.answer("DELETE", "/devices/me", 200);
    page.settle();
    EXPECT_TRUE(page.says("Set up this computer"));
}

TEST_F(DeskPage, aDoubleClickDoesNoMoreThanAskWhetherToUnlink) {
    openRoom();
    const Node button = page.node(QAccessible::Button, "Unlink this computer");
    QTest::mouseDClick(page.window, Qt::LeftButton, {}, page.window->mapFromGlobal(button.rect().center()));
    page.settle();
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 0U);
    page.click(page.node(QAccessible::Button, "Press again to unlink"));
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 0U) << "nor does a third";
    advance(400ms);
    page.click(page.node(QAccessible::Button, "Press again to unlink"));
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 1U);
}

TEST_F(DeskPage, aKeyThatIsHeldDoesNoMoreThanAskWhetherToUnlink) {
    openRoom();
    auto* const button =
        qobject_cast<QQuickItem*>(page.node(QAccessible::Button, "Unlink this computer").interface->object());
    button->forceActiveFocus(Qt::TabFocusReason);
    QTest::keyPress(page.window, Qt::Key_Return);
    advance(1s);
    QTest::simulateEvent(page.window, true, Qt::Key_Return, {}, {}, true);
    advance(1s);
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 0U);
    EXPECT_TRUE(page.shows(QAccessible::Button, "Press again to unlink"));
}

TEST_F(DeskPage, whetherToUnlinkIsAskedForSixSeconds) {
    openRoom();
    page.press("Unlink this computer");
    advance(5999ms);
    EXPECT_TRUE(page.shows(QAccessible::Button, "Press again to unlink"));
    advance(1ms);
    EXPECT_TRUE(page.shows(QAccessible::Button, "Unlink this computer"));
    page.press("Unlink this computer");
    EXPECT_EQ(page.computer.requestCount("DELETE", "/devices/me"), 0U);
}

TEST_F(DeskPage, aWideWindowShowsBothListsSideBySide) {
    page.computer.launchWith("member", practice([](records::StateSnapshot& snapshot) {
                                 snapshot.device = support::makeDeviceOfMember("dr-amari");
                                 snapshot.signals = {call("to-me"), call("by-me", "room-1")};
                                 snapshot.signals[1].requesterId = "dr-amari";
                             }));
    page.open(420, 680);
    EXPECT_EQ(page.rowItems().size(), 1U);
    page.press("Sent");
    ASSERT_NE(page.rowItem("by-me"), nullptr);
    EXPECT_EQ(page.rowItem("to-me"), nullptr);
    page.resize(1000, 640);
    QQuickItem* const received = page.rowItem("to-me");
    QQuickItem* const sent = page.rowItem("by-me");
    ASSERT_NE(received, nullptr);
    ASSERT_NE(sent, nullptr);
    EXPECT_GT(received->width(), 400);
    EXPECT_GT(sent->width(), 400);
    EXPECT_GT(sent->mapToScene({}).x(), received->mapToScene({}).x() + received->width());
}

TEST_F(DeskPage, someoneOffShiftIsTold) {
    page.computer.launchWith("member", practice([](records::StateSnapshot& snapshot) {
                                 snapshot.device = support::makeDeviceOfMember("dr-amari");
                                 snapshot.members[0].onShift = false;
                             }));
    page.open();
    EXPECT_TRUE(page.says("You're off shift."));
}

}  // namespace
}  // namespace zelkovanta::desktop_test
