#include "tests/desktop/compose_page.h"

#include <algorithm>
#include <iterator>

#include <gmock/gmock.h>

namespace zelkovanta::desktop_test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

struct Stop {
    QAccessible::Role role;
    std::string name;
};

std::ostream& operator<<(std::ostream& out, const Stop& stop) {
    return out << stop.name;
}

/// The form of a person who has chosen a room, with the keyboard on one of its parts.
class ComposeKeys : public ComposePage, public testing::WithParamInterface<Stop> {
protected:
    void openThere() {
        openProvider();
        page.choose("Room", "Room 1");
        ASSERT_TRUE(tabTo(GetParam().role, GetParam().name));
    }
};

INSTANTIATE_TEST_SUITE_P(From, ComposeKeys,
                         testing::Values(Stop{QAccessible::Button, "Back"}, Stop{QAccessible::ComboBox, "Room"},
                                         Stop{QAccessible::RadioButton, "Urgent"}, Stop{QAccessible::CheckBox, "Any "},
                                         Stop{QAccessible::EditableText, "Note"}, Stop{QAccessible::Button, "Cancel"},
                                         Stop{QAccessible::Button, "Send signal"}));

TEST_P(ComposeKeys, controlAndReturnSend) {
    openThere();
    keyWithControl(Qt::Key_Return);
    EXPECT_EQ(sent(), R"({"roomId":"room-1","providerId":"dr-voss","typeId":"ready","note":""})");
    EXPECT_TRUE(isOpen());
    keyWithControl(Qt::Key_Return);
    EXPECT_EQ(page.computer.requestCount("POST", "/signals"), 1U);
    page.computer.answerWith("POST", "/signals", support::makeSignal("call-9"));
    page.settle();
    EXPECT_FALSE(isOpen());
}

TEST_P(ComposeKeys, escapeLeavesTheForm) {
    openThere();
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(sent(), "no request");
}

TEST_F(ComposePage, aKeyThatIsHeldSendsOnce) {
    openRoom();
    for (const Stop& from : {Stop{QAccessible::EditableText, "Note"}, Stop{QAccessible::Button, sendButton}}) {
        ASSERT_TRUE(tabTo(from.role, from.name));
        for (const auto with : {Qt::NoModifier, Qt::ControlModifier}) {
            const auto before = page.computer.requestCount("POST", "/signals");
            QTest::keyPress(page.window, Qt::Key_Return, with);
            page.settle();
            ASSERT_EQ(page.computer.requestCount("POST", "/signals"), before + 1);
            page.computer.answer("POST", "/signals", 409, R"({"error":"busy","message":"The office is closed."})");
            page.settle();
            ASSERT_TRUE(maySend());
            ASSERT_TRUE(tabTo(from.role, from.name));
            QTest::simulateEvent(page.window, true, Qt::Key_Return, with, {}, true);
            page.settle();
            EXPECT_EQ(page.computer.requestCount("POST", "/signals"), before + 1) << from;
            QTest::keyRelease(page.window, Qt::Key_Return, with);
        }
    }
}

TEST_F(ComposePage, controlAndReturnSendFromAPersonToo) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any "));
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Space);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    QTest::keyClick(page.window, Qt::Key_Enter, Qt::ControlModifier | Qt::KeypadModifier);
    page.settle();
    EXPECT_THAT(sent(), HasSubstr(R"("providerId":"dr-voss")"));
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
}

TEST_F(ComposePage, controlAndReturnInAnOpenListSendNothing) {
    openProvider();
    page.choose("Room", "Room 1");
    page.click(page.node(QAccessible::ComboBox, "Room"));
    page.key(Qt::Key_Down);
    keyWithControl(Qt::Key_Return);
    EXPECT_EQ(sent(), "no request");
    EXPECT_TRUE(isOpen());
}

TEST_F(ComposePage, escapeFromAPersonLeavesTheForm) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any "));
    page.key(Qt::Key_Down);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
}

/// What is read out one after the other, from a whole form that was refused.
class ComposeOrder : public ComposePage {
protected:
    void openRefused() {
        openProvider();
        page.choose("Room", "Room 1");
        pick("June Park");
        page.press(sendButton);
        page.computer.answer("POST", "/signals", 409, R"({"error":"busy","message":"The office is closed."})");
        page.settle();
    }
    /// What stands for itself, not for what it contains.
    [[nodiscard]] std::vector<Node> leaves() const {
        auto found = page.nodes();
        std::erase_if(found, [](const Node& node) {
            return node.interface->childCount() > 0 || node.name.empty() || node.rect().isEmpty();
        });
        return found;
    }
    [[nodiscard]] std::string focusedName() const {
        // What contains it counts as focused too, and comes before it.
        std::string name = "nothing";
        for (const Node& node : page.nodes()) {
            name = node.state().focused ? node.name : name;
        }
        return name;
    }
    std::vector<std::string> stopsOf(Qt::Key key) {
        std::vector<std::string> stops;
        for (int presses = 0; presses < 9; ++presses) {
            page.key(key);
            stops.push_back(focusedName());
        }
        return stops;
    }
};

TEST_F(ComposeOrder, aFormIsReadOutFromTheTopToTheBottom) {
    openRefused();
    std::vector<std::string> names;
    for (const Node& node : leaves()) {
        names.push_back(node.name);
    }
    EXPECT_THAT(
        names, ElementsAre("Back", "Send a request", "Room", "Room: Room 1", "Signal", "Patient ready", "Urgent", "Who",
                           StartsWith("Pick a group"), StartsWith("Any "), "Dr. Henrik Voss", "Any Assistant",
                           "June Park", StartsWith("Combined call: all 2"), "Note", StartsWith("Say what needs doing"),
                           "The office is closed.", "Cancel", "Send signal"));
}

TEST_F(ComposeOrder, whatIsReadOutLaterStandsFurtherOn) {
    openRefused();
    const auto all = leaves();
    ASSERT_FALSE(all.empty());
    for (auto after = std::next(all.begin()); after != all.end(); ++after) {
        const QRect upper = std::prev(after)->rect();
        const QRect lower = after->rect();
        const bool isBelow = lower.top() >= upper.bottom();
        const bool isBeside = lower.left() >= upper.right() && lower.top() < upper.bottom();
        EXPECT_TRUE(isBelow || isBeside) << std::prev(after)->name << " before " << after->name;
    }
}

TEST_F(ComposeOrder, tabGoesTheSameWayAndBack) {
    openRefused();
    ASSERT_TRUE(tabTo(QAccessible::Button, "Back"));
    // The people are one stop: the arrows go through them.
    EXPECT_THAT(stopsOf(Qt::Key_Tab), ElementsAre("Room: Room 1", "Patient ready", "Urgent", "June Park", "Note",
                                                  "Cancel", "Send signal", "Back", "Room: Room 1"));
    EXPECT_THAT(stopsOf(Qt::Key_Backtab), ElementsAre("Back", "Send signal", "Cancel", "Note", "June Park", "Urgent",
                                                      "Patient ready", "Room: Room 1", "Back"));
}

/// A note that is not typed but written by a screen reader.
TEST_F(ComposePage, aNoteThatAScreenReaderWritesStopsAtTwoHundredScalars) {
    openRoom();
    takeReports();
    std::string first;
    for (int count = 0; count < 100; ++count) {
        first += "a🦷";
    }
    page.node(QAccessible::EditableText, "Note")
        .interface->setText(QAccessible::Value, QString::fromStdString(first + "b🦷c🦷d"));
    page.settle();
    EXPECT_EQ(note(), first);
    EXPECT_THAT(takeReports(),
                ElementsAre("notes.history compose-note [" + first + "]", "notes.set compose-note [" + first + "]"));
    page.press(sendButton);
    EXPECT_THAT(sent(), EndsWith(R"("note":")" + first + R"("})"));
}

}  // namespace
}  // namespace zelkovanta::desktop_test
