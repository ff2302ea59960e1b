#include "screens/qml/choice_model.h"
#include "tests/desktop/piece_fixture.h"

#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

class Choice : public testing::Test {
protected:
    Choice() { rooms.setChoices({{"a", "Room 1"}, {"b", "Room 2"}, {"c", "Room 3"}}); }

    /// What a person has taken; what is shown follows it.
    std::string chosen() const { return piece.window->property("title").toString().toStdString(); }
    void choose(const char* id) { piece.window->setProperty("title", id); }
    std::string shownName() const { return piece.node(QAccessible::ComboBox).name; }
    int lookedAt() const { return piece.object("choice")->property("highlightedIndex").toInt(); }
    bool isOpen() const { return opened()->property("visible").toBool(); }
    QObject* opened() const { return piece.object("choice")->property("popup").value<QObject*>(); }
    int shownIndex() const { return piece.object("choice")->property("currentIndex").toInt(); }

    screens::qml::ChoiceModel rooms;
    Piece piece{R"(AppChoice { objectName: "choice"; label: "Room"; prompt: "Choose"; choices: rooms
                               x: 20; y: 20; width: 160; chosenId: window.title
                               onChosen: choiceId => window.title = choiceId })",
                Appearance::light,
                {300, 260},
                {{"rooms", QVariant::fromValue(&rooms)}}};
};

TEST_F(Choice, opensWithSpaceAndTakesTheEntryOfReturn) {
    choose("a");
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    ASSERT_TRUE(isOpen());
    piece.key(Qt::Key_Down);
    EXPECT_EQ(chosen(), "a") << "an entry that is only looked at is not chosen";
    piece.key(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "b");
    EXPECT_EQ(shownIndex(), 1);
}

TEST_F(Choice, escapeLeavesWhatWasChosen) {
    choose("a");
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    piece.key(Qt::Key_Down);
    piece.key(Qt::Key_Down);
    piece.key(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "a");
    EXPECT_EQ(shownIndex(), 0);
}

TEST_F(Choice, opensWithTheArrowsAndTakesNothingByThem) {
    choose("a");
    for (const auto arrow : {Qt::Key_Up, Qt::Key_Down}) {
        piece.focus("choice");
        piece.key(arrow);
        EXPECT_TRUE(isOpen());
        EXPECT_EQ(shownIndex(), 0);
        piece.key(Qt::Key_Escape);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(chosen(), "a");
    }
}

TEST_F(Choice, keepsItsEntryWhateverElseIsTypedWhileItIsClosed) {
    choose("a");
    piece.focus("choice");
    for (const auto key : {Qt::Key_Home, Qt::Key_End, Qt::Key_R, Qt::Key_2}) {
        piece.key(key);
        EXPECT_FALSE(isOpen());
        EXPECT_EQ(shownIndex(), 0);
        EXPECT_EQ(chosen(), "a");
    }
}

TEST_F(Choice, returnDoesNothingToItWhileItIsClosed) {
    choose("a");
    piece.focus("choice");
    piece.key(Qt::Key_Return);
    piece.key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen(), "a");
}

TEST_F(Choice, isOpenedAndChosenFromByAScreenReader) {
    choose("a");
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

TEST_F(Choice, asksWhileNoneOfTheEntriesIsChosen) {
    EXPECT_EQ(shownName(), "Room: Choose");
    EXPECT_EQ(shownIndex(), -1);
    choose("gone");
    EXPECT_EQ(shownName(), "Room: Choose");
    choose("b");
    EXPECT_EQ(shownName(), "Room: Room 2");
    rooms.setChoices({{"a", "Room 1"}, {"c", "Room 3"}});
    EXPECT_EQ(shownName(), "Room: Choose");
    rooms.setChoices({{"c", "Room 3"}, {"b", "Room two"}});
    EXPECT_EQ(shownName(), "Room: Room two") << "what was chosen is there again";
    rooms.setChoices({{"c", "Room 3"}, {"b", "Room 2"}});
    EXPECT_EQ(shownName(), "Room: Room 2");
    rooms.setChoices({});
    EXPECT_EQ(shownName(), "Room: Choose");
}

TEST(ChoiceThatNobodyFollows, showsWhatItIsToldWhateverIsTaken) {
    screens::qml::ChoiceModel rooms;
    rooms.setChoices({{"a", "Room 1"}, {"b", "Room 2"}});
    Piece piece(R"(AppChoice { objectName: "choice"; label: "Room"; prompt: "Choose"; choices: rooms; width: 160
                               chosenId: "a"; onChosen: choiceId => window.title = choiceId })",
                Appearance::light, {300, 260}, {{"rooms", QVariant::fromValue(&rooms)}});
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    piece.key(Qt::Key_Down);
    piece.key(Qt::Key_Return);
    EXPECT_EQ(piece.window->property("title"), "b");
    EXPECT_EQ(piece.node(QAccessible::ComboBox).name, "Room: Room 1");
}

TEST_F(Choice, keepsTheEntryThatIsLookedAtWhileOthersComeAndGo) {
    choose("a");
    piece.focus("choice");
    piece.key(Qt::Key_Space);
    piece.key(Qt::Key_Down);
    ASSERT_EQ(lookedAt(), 1);
    rooms.setChoices({{"x", "Room 0"}, {"y", "Room ½"}, {"a", "Room 1"}, {"b", "Room 2"}, {"c", "Room 3"}});
    piece.settle();
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(lookedAt(), 3);
    EXPECT_EQ(shownIndex(), 2);
    rooms.setChoices({{"b", "Room 2"}, {"c", "Room 3"}});
    piece.settle();
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(lookedAt(), 0);
    piece.key(Qt::Key_Return);
    EXPECT_EQ(chosen(), "b");
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
