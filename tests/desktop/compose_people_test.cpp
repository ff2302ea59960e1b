#include "tests/desktop/compose_page.h"

#include <algorithm>

#include <QColor>
#include <QQuickItem>
#include <gmock/gmock.h>

/// Those whom a signal can be sent to, as a form shows them.
namespace zelkovanta::desktop_test {
namespace {

using testing::ElementsAre;

void collectTexts(const QQuickItem* item, std::vector<std::string>& into) {
    if (!item->isVisible()) {
        return;
    }
    if (item->inherits("QQuickText") && !item->property("text").toString().isEmpty()) {
        into.push_back(item->property("text").toString().toStdString());
    }
    for (const QQuickItem* child : item->childItems()) {
        collectTexts(child, into);
    }
}

class ComposePeople : public ComposePage {
protected:
    /// A room whose office has no provider on shift.
    void openWithoutProviders() {
        openRoom([](records::StateSnapshot& snapshot) {
            snapshot.members[0].onShift = false;
            snapshot.members[1].onShift = false;
        });
    }
    [[nodiscard]] std::vector<std::string> rows() const {
        std::vector<std::string> names;
        for (const Node& node : page.nodes(QAccessible::CheckBox)) {
            names.push_back(node.name);
        }
        return names;
    }
    [[nodiscard]] QQuickItem* itemOf(const std::string& name) const {
        return qobject_cast<QQuickItem*>(page.node(QAccessible::CheckBox, name).interface->object());
    }
    [[nodiscard]] std::vector<std::string> drawn(const std::string& name) const {
        std::vector<std::string> texts;
        collectTexts(itemOf(name), texts);
        return texts;
    }
};

TEST_F(ComposePeople, withNoProviderOnShiftWhoeverIsNextCanBeChosen) {
    openWithoutProviders();
    EXPECT_THAT(rows(), ElementsAre("Any Provider", "Any Assistant", "June Park"));
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "Any Provider"));
    EXPECT_TRUE(page.says("Goes to the next available Provider."));
    EXPECT_TRUE(maySend());
    pick("Any Provider");
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Any Provider"));
    EXPECT_TRUE(page.says("Pick who should get it."));
    EXPECT_FALSE(maySend());
    pick("Any Provider");
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "Any Provider"));
    page.press(sendButton);
    EXPECT_EQ(sent(), R"({"roomId":"room-3","typeId":"ready","note":""})");
}

TEST_F(ComposePeople, aPersonInsteadOfWhoeverIsNext) {
    openWithoutProviders();
    pick("June Park");
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Any Provider"));
    pick("Any Provider");
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "June Park"));
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "Any Provider"));
}

TEST_F(ComposePeople, aPersonsQueueAndTheirWishForQuietAreShownAndSaid) {
    openRoom([](records::StateSnapshot& snapshot) {
        snapshot.members[2].status = "dnd";
        snapshot.signals = {support::makeSignalTo("june", "call-1"), support::makeSignalTo("june", "call-2")};
    });
    EXPECT_THAT(drawn("June Park"), ElementsAre("JP", "June Park", "2 in queue", "DND"));
    EXPECT_EQ(page.node(QAccessible::CheckBox, "June Park").name, "June Park, 2 in queue, DND");
    EXPECT_THAT(drawn("Dr. Henrik Voss"), ElementsAre("DH", "Dr. Henrik Voss"));
    EXPECT_EQ(page.node(QAccessible::CheckBox, "Dr. Henrik Voss").name, "Dr. Henrik Voss");
    pick("June Park");
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "June Park")) << "who wants quiet can be chosen all the same";
    page.computer.deliverCreated(support::makeSignalTo("dr-voss", "call-3"));
    page.settle();
    EXPECT_THAT(drawn("Dr. Henrik Voss"), ElementsAre("DH", "Dr. Henrik Voss", "1 in queue"));
}

TEST_F(ComposePeople, anAvatarIsDrawnAsItsRowSays) {
    openRoom();
    const QQuickItem* row = itemOf("June Park");
    const auto avatars = row->findChildren<QQuickItem*>();
    const auto avatar =
        std::ranges::find_if(avatars, [](const QQuickItem* item) { return item->property("initials").isValid(); });
    ASSERT_NE(avatar, avatars.end());
    EXPECT_EQ((*avatar)->width(), row->property("diameter").toReal());
    EXPECT_GT((*avatar)->width(), 0);
    EXPECT_EQ((*avatar)->property("ringColor").value<QColor>(), QColor("#FFFFFF")) << "the page's own colour";
}

TEST_F(ComposePeople, theKeyboardGoesOnWhereSomebodyHasLeft) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Down);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    leaveTheShift(0);
    EXPECT_FALSE(page.shows(QAccessible::CheckBox, "Dr. Leila Amari"));
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Henrik Voss"));
    page.key(Qt::Key_Up);
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Tab);
    EXPECT_TRUE(isFocused(QAccessible::EditableText, "Note"));
    QTest::keyClick(page.window, Qt::Key_Tab, Qt::ShiftModifier);
    page.settle();
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
}

TEST_F(ComposePeople, whereSomebodyHasLeftWhoWasClickedTheNextOneShowsNoRing) {
    openRoom();
    const auto showsRing = [this] { return page.window->activeFocusItem()->property("visualFocus").toBool(); };
    pick("Dr. Leila Amari");
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    leaveTheShift(0);
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Henrik Voss"));
    EXPECT_FALSE(showsRing());
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Up);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Henrik Voss"));
    leaveTheShift(1);
    EXPECT_TRUE(showsRing()) << "whoever came by key still sees where they are";
}

TEST_F(ComposePeople, aKeyboardThatIsWantedElsewhereStaysThere) {
    openRoom();
    auto* const button = qobject_cast<QQuickItem*>(page.node(QAccessible::Button, sendButton).interface->object());
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Down);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    records::Member gone = practice().members.at(0);
    gone.onShift = false;
    page.computer.deliverRecord("member.updated", server::server_message::MemberUpdated{gone});
    button->forceActiveFocus(Qt::MouseFocusReason);
    page.settle();
    EXPECT_FALSE(page.shows(QAccessible::CheckBox, "Dr. Leila Amari"));
    EXPECT_TRUE(isFocused(QAccessible::Button, sendButton));
}

TEST_F(ComposePeople, escapeLeavesTheFormOnceTheFocusedPersonIsGone) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Down);
    leaveTheShift(0);
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
}

TEST_F(ComposePeople, theLastOneLeavesTheKeyboardToTheOneAbove) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Provider"));
    for (int presses = 0; presses < 4; ++presses) {
        page.key(Qt::Key_Down);
    }
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "June Park"));
    leaveTheShift(2);
    EXPECT_THAT(rows(), ElementsAre("Any Provider", "Dr. Leila Amari", "Dr. Henrik Voss"));
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Henrik Voss"));
}

TEST_F(ComposePeople, whereNobodyIsLeftTheKeyboardStaysInTheForm) {
    openRoom([](records::StateSnapshot& snapshot) {
        snapshot.office.settings = records::OfficeSettings{
            .autoExpireMinutes = {}, .allowAnyProvider = false, .ble = {}, .requireSignedInSender = {}};
        snapshot.members = {snapshot.members[2]};
    });
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Assistant"));
    leaveTheShift(2);
    EXPECT_THAT(rows(), ElementsAre());
    EXPECT_TRUE(tabTo(QAccessible::EditableText, "Note"));
    change(2, [](records::Member&) {});
    EXPECT_TRUE(tabTo(QAccessible::CheckBox, "Any Assistant")) << "who comes back can be reached again";
    page.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
}

TEST_F(ComposePeople, whoeverComesAndGoesTheKeyboardAndTheChecksStayWithThePerson) {
    openRoom([](records::StateSnapshot& snapshot) { snapshot.members[0].onShift = false; });
    pick("Dr. Henrik Voss");
    pick("June Park");
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "June Park"));
    change(0, [](records::Member&) {});
    EXPECT_THAT(rows(),
                ElementsAre("Any Provider", "Dr. Leila Amari", "Dr. Henrik Voss", "Any Assistant", "June Park"));
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "June Park"));
    EXPECT_TRUE(isChecked(QAccessible::CheckBox, "June Park"));
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "Dr. Leila Amari"));
    leaveTheShift(0);
    leaveTheShift(1);
    EXPECT_THAT(rows(), ElementsAre("Any Provider", "Any Assistant", "June Park"));
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "June Park"));
    page.key(Qt::Key_Space);
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, "June Park"));
    page.key(Qt::Key_Up);
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Any Assistant"));
}

TEST_F(ComposePeople, whoMovesToAnotherDepartmentTakesTheKeyboardAlong) {
    openRoom();
    ASSERT_TRUE(tabTo(QAccessible::CheckBox, "Any Provider"));
    page.key(Qt::Key_Down);
    ASSERT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    change(0, [](records::Member& member) { member.department = "assistant"; });
    EXPECT_THAT(rows(),
                ElementsAre("Any Provider", "Dr. Henrik Voss", "Any Assistant", "Dr. Leila Amari", "June Park"));
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "Dr. Leila Amari"));
    page.key(Qt::Key_Down);
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, "June Park"));
}

}  // namespace
}  // namespace zelkovanta::desktop_test
