#include "screens/qml/choice_model.h"
#include "tests/desktop/piece_fixture.h"

#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

class Choice : public testing::Test {
protected:
    Choice() { rooms.setChoices({{"a", "Room 1"}, {"b", "Room 2"}, {"c", "Room 3"}}); }

    std::string chosen() const { return piece.window->property("title").toString().toStdString(); }
    bool isOpen() const { return opened()->property("visible").toBool(); }
    QObject* opened() const { return piece.object("choice")->property("popup").value<QObject*>(); }
    int shownIndex() const { return piece.object("choice")->property("currentIndex").toInt(); }

    screens::qml::ChoiceModel rooms;
    Piece piece{R"(AppChoice { objectName: "choice"; label: "Room"; choices: rooms; x: 20; y: 20; width: 160
                               onChosen: choiceId => window.title = choiceId })",
                Appearance::light,
                {300, 260},
                {{"rooms", QVariant::fromValue(&rooms)}}};
};

TEST_F(Choice, opensWithSpaceAndTakesTheEntryOfReturn) {
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    ASSERT_TRUE(isOpen());
    piece.key(Qt::Key_Down);
    EXPECT_EQ(chosen(), "") << "an entry that is only looked at is not chosen";
    piece.key(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "b");
    EXPECT_EQ(shownIndex(), 1);
}

TEST_F(Choice, escapeLeavesWhatWasChosen) {
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    piece.key(Qt::Key_Down);
    piece.key(Qt::Key_Down);
    piece.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "");
    EXPECT_EQ(shownIndex(), 0);
}

TEST_F(Choice, opensWithTheArrowsAndTakesNothingByThem) {
    for (const auto arrow : {Qt::Key_Up, Qt::Key_Down}) {
        piece.focus("choice");
        piece.key(arrow);
        EXPECT_TRUE(isOpen());
        EXPECT_EQ(shownIndex(), 0);
        piece.key(Qt::Key_Escape);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(chosen(), "");
    }
}

TEST_F(Choice, keepsItsEntryWhateverElseIsTypedWhileItIsClosed) {
    piece.focus("choice");
    for (const auto key : {Qt::Key_Home, Qt::Key_End, Qt::Key_R, Qt::Key_2}) {
        piece.key(key);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(shownIndex(), 0);
        EXPECT_EQ(chosen(), "");
    }
}

TEST_F(Choice, returnDoesNothingToItWhileItIsClosed) {
    piece.focus("choice");
    piece.key(Qt::Key_Return);
    piece.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "");
}

TEST_F(Choice, isOpenedAndChosenFromByAScreenReader) {
    EXPECT_EQ(piece.node(QAccessible::ComboBox).name, "Room: Room 1");
    piece.act(piece.node(QAccessible::ComboBox), QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(isOpen());
    std::vector<Node> entries = piece.nodes();
    std::erase_if(entries, [](const Node& node) { return node.role != QAccessible::ListItem; });
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[2].name, "Room 3");
    piece.act(entries[2], QAccessibleActionInterface::pressAction());
    EXPECT_EQ(chosen(), "c");
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(piece.node(QAccessible::ComboBox).name, "Room: Room 3");
}

TEST_F(Choice, showsThatTheKeyboardIsThereAndIsOutlinedAsEverythingElse) {
    const QColor ring = piece.theme().property("focusRing").value<QColor>();
    EXPECT_EQ(pixelsOf(piece.picture(), ring), 0);
    piece.focus("choice");
    EXPECT_GT(pixelsOf(piece.picture(), ring), 40);
    const QObject* const ground = opened()->property("background").value<QObject*>();
    EXPECT_EQ(ground->property("border").value<QObject*>()->property("color").value<QColor>(),
              piece.theme().hairline());
}

}  // namespace
}  // namespace zelkovanta::desktop_test
