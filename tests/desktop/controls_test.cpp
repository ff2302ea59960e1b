#include "screens/qml/shown_row.h"
#include "tests/desktop/piece_fixture.h"

#include <ostream>
#include <string>

#include <QCoreApplication>
#include <QFocusEvent>
#include <QTest>
#include <gtest/gtest.h>

/// What every control does for the keyboard and for a screen reader, looked at in what it sets off.
namespace zelkovanta::desktop_test {
namespace {

struct Control {
    const char* name;
    const char* qml;  ///< the control is called "control" and counts its presses in the window
    QAccessible::Role role;
};

std::ostream& operator<<(std::ostream& out, const Control& control) {
    return out << control.name;
}

constexpr Control buttons[] = {
    {"AppButton", R"(AppButton { objectName: "control"; text: "Send"; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
    {"IconButton",
     R"(IconButton { objectName: "control"; spokenName: "More"; symbol: "plus"; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
    {"DesktopBackButton", R"(DesktopBackButton { objectName: "control"; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
    {"ComposeFab", R"(ComposeFab { objectName: "control"; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
    {"RowButton", R"(RowButton { objectName: "control"; spec: rowButton; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
    {"QueueTabButton",
     R"(QueueTabButton { objectName: "control"; tab: queueTab; width: 120; x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::Button},
};

constexpr Control entries[] = {
    {"PickRow", R"(PickRow { objectName: "control"; spokenName: "June"; width: 120; x: 20; y: 20
                             contentItem: Item {} onClicked: ++window.presses })",
     QAccessible::CheckBox},
    {"TypeChoice", R"(TypeChoice { objectName: "control"; label: "Urgent"; tint: "#E21833"; chosen: false; widest: 200
                                   x: 20; y: 20; onClicked: ++window.presses })",
     QAccessible::RadioButton},
};

Piece::Names needed() {
    screens::qml::ShownButton button;
    button.shown = true;
    button.text = QStringLiteral("Done");
    button.name = QStringLiteral("Done");
    screens::qml::ShownTab tab;
    tab.title = QStringLiteral("Received");
    tab.badge = QStringLiteral("3");
    return {{"rowButton", QVariant::fromValue(button)}, {"queueTab", QVariant::fromValue(tab)}};
}

class EveryControl : public testing::TestWithParam<Control> {
protected:
    Piece piece{GetParam().qml, Appearance::light, {300, 200}, needed()};
};

INSTANTIATE_TEST_SUITE_P(Buttons, EveryControl, testing::ValuesIn(buttons));
INSTANTIATE_TEST_SUITE_P(Entries, EveryControl, testing::ValuesIn(entries));

TEST_P(EveryControl, isPressedWithSpaceReturnAndEnter) {
    piece.focus("control");
    piece.key(Qt::Key_Space);
    EXPECT_EQ(piece.presses(), 1);
    piece.key(Qt::Key_Return);
    EXPECT_EQ(piece.presses(), 2);
    piece.key(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(piece.presses(), 3);
    EXPECT_EQ(piece.heard(), 0) << "what pressed something is not heard around it";
}

TEST_P(EveryControl, isPressedOnceHoweverLongReturnIsHeld) {
    piece.focus("control");
    int presses = 0;
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        piece.hold(key, 4);
        EXPECT_EQ(piece.presses(), ++presses);
    }
    EXPECT_EQ(piece.heard(), 0) << "nor is the rest heard around it";
}

TEST_P(EveryControl, leavesReturnWithAnotherKeyToWhoeverIsAround) {
    piece.focus("control");
    int heard = 0;
    for (const auto with : {Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
        piece.key(Qt::Key_Return, with);
        piece.key(Qt::Key_Enter, with | Qt::KeypadModifier);
        heard += 2;
        EXPECT_EQ(piece.heard(), heard);
    }
    EXPECT_EQ(piece.presses(), 0);
}

TEST_P(EveryControl, isPressedByAScreenReader) {
    piece.act(piece.node(GetParam().role), QAccessibleActionInterface::pressAction());
    EXPECT_EQ(piece.presses(), 1);
}

TEST_P(EveryControl, showsThatTheKeyboardIsThere) {
    const QColor ring = piece.theme().property("focusRing").value<QColor>();
    piece.focus("control", Qt::MouseFocusReason);
    EXPECT_EQ(pixelsOf(piece.picture(), ring), 0) << "a click shows where it is by itself";
    piece.focus("around");
    piece.focus("control", Qt::TabFocusReason);
    const QImage picture = piece.picture();
    EXPECT_GT(pixelsOf(picture, ring), 40);
    const QQuickItem* const control = piece.item("control");
    EXPECT_EQ(pixelAt(picture, control->x() + control->width() / 2, control->y() - 2), ring)
        << "it stands around the control";
}

class EveryButton : public EveryControl {
protected:
    QQuickItem* button = piece.item("control");
    QPoint inside = button->mapToScene({button->width() / 2, button->height() / 2}).toPoint();
    QPoint outside = inside + QPoint(0, 60);
};

INSTANTIATE_TEST_SUITE_P(Buttons, EveryButton, testing::ValuesIn(buttons));
INSTANTIATE_TEST_SUITE_P(Entries, EveryButton, testing::ValuesIn(entries));

TEST_P(EveryButton, isPressedByAMouseThatIsLetGoOnIt) {
    QTest::mousePress(piece.window.get(), Qt::LeftButton, {}, inside);
    EXPECT_TRUE(button->property("down").toBool());
    EXPECT_TRUE(button->hasActiveFocus());
    EXPECT_EQ(piece.presses(), 0);
    QTest::mouseRelease(piece.window.get(), Qt::LeftButton, {}, inside);
    EXPECT_FALSE(button->property("down").toBool());
    EXPECT_EQ(piece.presses(), 1);
    QTest::mouseDClick(piece.window.get(), Qt::LeftButton, {}, inside);
    EXPECT_EQ(piece.presses(), 3) << "two quick presses are two";
    QTest::mouseClick(piece.window.get(), Qt::RightButton, {}, inside);
    EXPECT_EQ(piece.presses(), 3);
}

TEST_P(EveryButton, isNotPressedByAMouseThatHasLeftIt) {
    QTest::mousePress(piece.window.get(), Qt::LeftButton, {}, inside);
    QTest::mouseMove(piece.window.get(), outside);
    EXPECT_FALSE(button->property("down").toBool());
    QTest::mouseRelease(piece.window.get(), Qt::LeftButton, {}, outside);
    EXPECT_EQ(piece.presses(), 0);
}

TEST_P(EveryButton, keepsItsRingWhenTheWindowHasBeenLeft) {
    for (const auto reason : {Qt::TabFocusReason, Qt::MouseFocusReason}) {
        piece.focus("control", reason);
        EXPECT_EQ(button->property("visualFocus").toBool(), reason == Qt::TabFocusReason);
        for (const auto back : {Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
            QFocusEvent left(QEvent::FocusOut, back);
            QCoreApplication::sendEvent(button, &left);
            EXPECT_FALSE(button->property("visualFocus").toBool());
            QFocusEvent again(QEvent::FocusIn, back);
            QCoreApplication::sendEvent(button, &again);
            EXPECT_EQ(button->property("visualFocus").toBool(), reason == Qt::TabFocusReason);
        }
        piece.focus("around");
    }
}

TEST_P(EveryButton, givesAPressUpWhenTheKeyboardGoesOrItMayNotBePressedAnyMore) {
    piece.focus("control");
    QTest::keyPress(piece.window.get(), Qt::Key_Space);
    EXPECT_TRUE(button->property("down").toBool());
    piece.focus("around");
    EXPECT_FALSE(button->property("down").toBool());
    QTest::keyRelease(piece.window.get(), Qt::Key_Space);
    QTest::mousePress(piece.window.get(), Qt::LeftButton, {}, inside);
    button->setEnabled(false);
    EXPECT_FALSE(button->property("down").toBool());
    QTest::mouseRelease(piece.window.get(), Qt::LeftButton, {}, inside);
    EXPECT_EQ(piece.presses(), 0);
}

class EveryEntry : public EveryControl {};

INSTANTIATE_TEST_SUITE_P(Entries, EveryEntry, testing::ValuesIn(entries));

TEST_P(EveryEntry, isToggledByAScreenReader) {
    piece.act(piece.node(GetParam().role), QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(piece.presses(), 1);
    EXPECT_FALSE(piece.node(GetParam().role).state().checked) << "a press only asks for it";
}

TEST_P(EveryEntry, saysThatItIsChosen) {
    EXPECT_TRUE(piece.node(GetParam().role).state().checkable);
    EXPECT_FALSE(piece.node(GetParam().role).state().checked);
    piece.object("control")->setProperty("checked", true);
    EXPECT_TRUE(piece.node(GetParam().role).state().checked);
}

TEST(DisabledButton, cannotBePressedByAScreenReaderEither) {
    Piece piece(R"(AppButton { text: "Send"; enabled: false; onClicked: ++window.presses })");
    piece.act(piece.node(QAccessible::Button), QAccessibleActionInterface::pressAction());
    EXPECT_EQ(piece.presses(), 0);
}

TEST(ScrollBar, showsAndTakesTheListAlong) {
    Piece piece(
        R"(ListView { id: list; objectName: "list"; width: 100; height: 100; model: 50; delegate: Item { height: 20 }
                              bottomMargin: 20
                              AppScrollBar { objectName: "bar"; of: list } })");
    const QQuickItem* const list = piece.item("list");
    const QQuickItem* const bar = piece.item("bar");
    const double end = 50 * 20 + 20 - 100;
    const int x = static_cast<int>(bar->x() + bar->width() / 2);
    ASSERT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->x() + bar->width(), list->width());
    EXPECT_EQ(bar->height(), 80) << "the rest lies below what floats there";
    const auto place = [list] { return list->property("contentY").toDouble(); };
    // The handle is 100 of 1,020 long, and lies within a pixel of the bar's ends.
    const double handle = 78 * 100.0 / 1020;
    const double way = 78 - handle;
    QTest::mousePress(piece.window.get(), Qt::LeftButton, {}, {x, 3});
    EXPECT_EQ(place(), 0) << "it is taken where it is";
    QTest::mouseMove(piece.window.get(), {x, 38});
    EXPECT_NEAR(place(), end * 35 / way, 1);
    QTest::mouseMove(piece.window.get(), {x, 150});
    EXPECT_NEAR(place(), end, 1);
    QTest::mouseRelease(piece.window.get(), Qt::LeftButton, {}, {x, 150});
    EXPECT_NEAR(place(), end, 1);
    QTest::mouseClick(piece.window.get(), Qt::LeftButton, {}, {x, 40});
    EXPECT_NEAR(place(), end * (39 - handle / 2) / way, 1) << "a press beside it brings its middle there";
}

TEST(ScrollBar, isNotThereWhereEverythingIsInSight) {
    Piece piece(R"(ListView { id: list; width: 100; height: 100; model: 4; delegate: Item { height: 20 }
                              AppScrollBar { objectName: "bar"; of: list } })");
    EXPECT_FALSE(piece.item("bar")->isVisible());
}

TEST(Field, isOutlinedWhileItHasTheKeyboard) {
    Piece piece(R"(AppField { objectName: "field"; label: "Note"; x: 20; y: 20; width: 160 })");
    const QColor ring = piece.theme().property("focusRing").value<QColor>();
    EXPECT_EQ(pixelsOf(piece.picture(), ring), 0);
    piece.focus("field");
    EXPECT_GT(pixelsOf(piece.picture(), ring), 40);
    EXPECT_EQ(piece.node(QAccessible::EditableText).name, "Note");
}

TEST(Field, keepsATextThatIsTooLongWithinItsFrame) {
    // As dark as a letter can be, and letters without gaps.
    Piece piece(
        R"(AppField { objectName: "field"; label: "Note"; x: 40; y: 20; width: 160; text: "MMMMMMMMMMMMMMMMMMMMMMMM" })");
    const QColor letter = piece.theme().property("primary").value<QColor>();
    const auto lettersFromTo = [&](double left, double right) {
        const QImage picture = piece.picture();
        int count = 0;
        for (double x = left; x < right; ++x) {
            for (double y = 20; y < 52; ++y) {
                count += pixelAt(picture, x, y) == letter ? 1 : 0;
            }
        }
        return count;
    };
    for (const int at : {24, 0}) {
        piece.item("field")->setProperty("cursorPosition", at);
        piece.settle();
        EXPECT_EQ(lettersFromTo(0, 50), 0) << at;
        EXPECT_GT(lettersFromTo(50, 192), 50) << at;
        EXPECT_EQ(lettersFromTo(194, 240), 0) << at;
    }
}

TEST(Field, tellsAScreenReaderWhatBelongsIntoIt) {
    const Piece piece(R"(AppField { label: "Code"; placeholderText: "XXXX-XXXX"; width: 160 })");
    EXPECT_EQ(piece.node(QAccessible::EditableText).interface->text(QAccessible::Description), "XXXX-XXXX");
}

TEST(Field, isDoneWithOnceHoweverLongReturnIsHeld) {
    Piece piece(R"(AppField { objectName: "field"; label: "Note"; width: 160; onAccepted: ++window.presses })");
    piece.focus("field");
    int presses = 0;
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        piece.hold(key, 4);
        EXPECT_EQ(piece.presses(), ++presses);
    }
}

}  // namespace
}  // namespace zelkovanta::desktop_test
