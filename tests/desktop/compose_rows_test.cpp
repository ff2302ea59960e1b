#include "tests/desktop/compose_page.h"
#include "tests/desktop/drawn_items.h"
#include "tests/desktop/window_focus.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <QColor>
#include <gmock/gmock.h>

/// The scrolling part of a form, as it is drawn.
namespace zelkovanta::desktop_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QQuickItem* itemOf(const Node& node) {
    return qobject_cast<QQuickItem*>(node.interface->object());
}

std::vector<std::string> symbolsIn(const QQuickItem* row) {
    std::vector<std::string> names;
    for (const QQuickItem* symbol : shownItemsOfType(row, "zelkovanta::screens::qml::SymbolIcon")) {
        names.push_back(symbol->property("symbol").toString().toStdString());
    }
    return names;
}

/// The list that a screen reader says this stands in.
std::string listAround(const Node& node) {
    for (QAccessibleInterface* around = node.interface->parent(); around != nullptr; around = around->parent()) {
        if (around->role() == QAccessible::List) {
            return around->text(QAccessible::Name).toStdString();
        }
    }
    return "no list";
}

class ComposeRows : public ComposePage {
protected:
    [[nodiscard]] QQuickItem* person(const std::string& name) const {
        return itemOf(page.node(QAccessible::CheckBox, name));
    }
    [[nodiscard]] QQuickItem* list() const { return shownItemsOfType(page.window->contentItem(), "WhoPicker").at(0); }
    [[nodiscard]] double scrolled() const { return list()->property("contentY").toReal(); }
    [[nodiscard]] double headHeight() const { return list()->property("topMargin").toReal(); }
    void scrollTo(double y) {
        list()->setProperty("contentY", y);
        page.settle();
    }
    void clickAt(const QPointF& place) {
        QTest::mouseClick(page.window, Qt::LeftButton, {}, place.toPoint());
        page.settle();
    }
    /// More than fit into the window.
    static void addPeople(records::StateSnapshot& snapshot) {
        for (int number = 0; number < 12; ++number) {
            snapshot.members.push_back(support::makeMember("more-" + std::to_string(number)));
        }
    }
};

TEST_F(ComposeRows, haveTheSymbolsOfWhatTheyAreAndOfWhoIsChosen) {
    openRoom([](records::StateSnapshot& snapshot) {
        snapshot.members[0].onShift = false;
        snapshot.members[1].onShift = false;
    });
    EXPECT_THAT(symbolsIn(person("Any Provider")), ElementsAre("person.2.fill", "checkmark"));
    EXPECT_THAT(symbolsIn(person("Any Assistant")), ElementsAre("person.3.fill"));
    EXPECT_THAT(symbolsIn(person("June Park")), IsEmpty());
    const auto* const symbol = shownItemsOfType(person("Any Provider"), "zelkovanta::screens::qml::SymbolIcon").front();
    EXPECT_EQ(symbol->property("color").value<QColor>(), QColor("#3457C4"));
    pick("June Park");
    EXPECT_THAT(symbolsIn(person("Any Provider")), ElementsAre("person.2.fill"));
    EXPECT_THAT(symbolsIn(person("Any Assistant")), ElementsAre("person.3.fill", "checkmark"));
    EXPECT_THAT(symbolsIn(person("June Park")), ElementsAre("checkmark"));
}

TEST_F(ComposeRows, ofPeopleAreAListAndWhatStandsAboveThemIsNot) {
    openProvider();
    EXPECT_EQ(listAround(page.node(QAccessible::CheckBox, "June Park")), "Who");
    EXPECT_EQ(listAround(page.node(QAccessible::CheckBox, "Any Assistant")), "Who");
    EXPECT_EQ(listAround(page.node(QAccessible::ComboBox, "Room")), "no list");
    EXPECT_EQ(listAround(page.node(QAccessible::RadioButton, "Urgent")), "no list");
    EXPECT_EQ(listAround(page.node(QAccessible::EditableText, "Note")), "no list");
}

TEST_F(ComposeRows, thatStickOutAreChosenWhereTheyAreClicked) {
    constexpr auto name = "Name of more-2";
    openProvider(addPeople);
    page.resize(420, 520);
    scrollTo(0);
    scrollTo(person(name)->y() + 6 - list()->height());
    ASSERT_TRUE(isChecked(QAccessible::CheckBox, name));
    const double before = scrolled();
    const QRectF row = rectOf(person(name));
    ASSERT_NEAR(row.top(), rectOf(list()).bottom() - 6, 1);
    clickAt({row.center().x(), row.top() + 3});
    EXPECT_FALSE(isChecked(QAccessible::CheckBox, name)) << "all of the department were";
    EXPECT_EQ(scrolled(), before);
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Up);
    EXPECT_TRUE(isFocused(QAccessible::CheckBox, name));
    EXPECT_LE(rectOf(person(name)).bottom(), rectOf(list()).bottom()) << "a key brings it into sight";
}

TEST_F(ComposeRows, aKindOfSignalThatSticksOutIsChosenWhereItIsClicked) {
    openProvider(addPeople);
    page.resize(420, 520);
    const auto urgent = [this] { return itemOf(page.node(QAccessible::RadioButton, "Urgent")); };
    scrollTo(scrolled() + rectOf(urgent()).bottom() - rectOf(list()).top() - 6);
    const double before = scrolled();
    clickAt({rectOf(urgent()).center().x(), rectOf(urgent()).bottom() - 3});
    EXPECT_TRUE(isChecked(QAccessible::RadioButton, "Urgent"));
    EXPECT_EQ(scrolled(), before);
    ASSERT_TRUE(tabTo(QAccessible::Button, "Back"));
    ASSERT_TRUE(tabTo(QAccessible::RadioButton, "Urgent"));
    EXPECT_GE(rectOf(urgent()).top(), rectOf(list()).top()) << "a key brings it into sight";
}

TEST_F(ComposeRows, stayWhereTheyAreWhenThePersonComesBackToTheWindow) {
    openProvider(addPeople);
    page.resize(420, 520);
    const std::vector<std::pair<QAccessible::Role, std::string>> stops{
        {QAccessible::ComboBox, "Room"}, {QAccessible::RadioButton, "Urgent"}, {QAccessible::CheckBox, "Any Provider"}};
    for (const auto& [role, name] : stops) {
        ASSERT_TRUE(tabTo(role, name));
        QQuickItem* const focused = page.window->activeFocusItem();
        scrollTo(scrolled() + rectOf(focused).bottom() - rectOf(list()).top() - 3);
        const double before = scrolled();
        ASSERT_LT(rectOf(focused).top(), rectOf(list()).top());
        leaveWindow(page.window);
        ASSERT_EQ(page.window->activeFocusItem(), nullptr);
        comeBackTo(page.window);
        page.settle();
        EXPECT_EQ(page.window->activeFocusItem(), focused) << name;
        EXPECT_EQ(scrolled(), before) << name;
    }
}

TEST_F(ComposeRows, keepTheBeginningInSightExactlyWhereItIs) {
    openProvider(addPeople);
    page.resize(1000, 520);
    const double height = headHeight();
    EXPECT_EQ(scrolled(), -height);
    page.resize(320, 520);
    ASSERT_GT(headHeight(), height) << "its words need more lines";
    EXPECT_EQ(scrolled(), -headHeight());
    page.resize(1000, 520);
    EXPECT_EQ(scrolled(), -headHeight());
    // As a scroll bar does.
    scrollTo(40);
    page.resize(320, 520);
    EXPECT_EQ(scrolled(), 40);
}

/// In the language whose words are the longest, in a narrow window.
class NarrowRow : public testing::TestWithParam<int> {
protected:
    void open() {
        page.computer.launchWith("room", practice([](records::StateSnapshot& snapshot) {
                                     snapshot.members[1].name = "Professor Maximiliane von Hohenstein-Wetterburg";
                                     for (const std::size_t quiet : {1U, 2U}) {
                                         snapshot.members[quiet].status = "dnd";
                                         const std::string& id = snapshot.members[quiet].id;
                                         snapshot.signals.push_back(support::makeSignalTo(id, id + "-1"));
                                         snapshot.signals.push_back(support::makeSignalTo(id, id + "-2"));
                                     }
                                 }));
        page.open(GetParam(), 1000);
        page.model->openCompose();
        page.settle();
    }
    [[nodiscard]] const QQuickItem* row(const std::string& name) const {
        return itemOf(page.node(QAccessible::CheckBox, name));
    }
    /// The words of a row: the name, the queue, and the wish for quiet.
    [[nodiscard]] std::vector<QQuickItem*> wordsOf(const std::string& name) const {
        return shownItemsOfType(row(name), "Words");
    }

    Page page{Appearance::light, "de"};
};

INSTANTIATE_TEST_SUITE_P(EveryWidth, NarrowRow, testing::Values(320, 360, 420));

TEST_P(NarrowRow, leavesRoomForTheName) {
    open();
    for (const auto* const name : {"June Park", "Professor Maximiliane"}) {
        const auto words = wordsOf(name);
        ASSERT_EQ(words.size(), 3U);
        const double whole = std::ceil(words[0]->implicitWidth());
        EXPECT_GE(words[0]->width(), std::min(whole, row(name)->width() / 2)) << name;
    }
    EXPECT_FALSE(wordsOf("June Park")[0]->property("truncated").toBool());
}

TEST_P(NarrowRow, drawsNothingOverAnythingElse) {
    open();
    for (const auto* const name : {"June Park", "Professor Maximiliane"}) {
        auto parts = wordsOf(name);
        const auto symbols = shownItemsOfType(row(name), "zelkovanta::screens::qml::SymbolIcon");
        parts.insert(parts.end(), symbols.begin(), symbols.end());
        const auto avatars = shownItemsOfType(row(name), "MemberAvatar");
        parts.insert(parts.end(), avatars.begin(), avatars.end());
        ASSERT_GE(parts.size(), 4U);
        const QRectF ground = rectOf(row(name));
        for (std::size_t one = 0; one < parts.size(); ++one) {
            EXPECT_TRUE(ground.contains(rectOf(parts[one]))) << name << " part " << one;
            for (std::size_t other = one + 1; other < parts.size(); ++other) {
                EXPECT_FALSE(rectOf(parts[one]).intersects(rectOf(parts[other])))
                    << name << " parts " << one << " and " << other;
            }
        }
    }
}

}  // namespace
}  // namespace zelkovanta::desktop_test
