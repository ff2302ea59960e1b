#include "tests/desktop/drawn_items.h"
#include "tests/desktop/page_fixture.h"
#include "tests/desktop/window_focus.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// Where the keyboard is while a long queue is scrolled below it.
namespace zelkovanta::desktop_test {
namespace {

std::string twoDigits(int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string idOf(int number) {
    return "call-" + twoDigits(number);
}

records::Signal call(int number) {
    return support::makeSignal(idOf(number), [&](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.createdAt = "2026-01-02T08:00:" + twoDigits(number) + "Z";
    });
}

class QueueScrolling : public testing::Test {
protected:
    void SetUp() override {
        page.computer.launchWith("member", practice([](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDeviceOfMember("dr-amari");
                                     for (int number = 0; number < 30; ++number) {
                                         snapshot.signals.push_back(call(number));
                                     }
                                 }));
        page.open();
        page.computer.socket().accept();
        for (int presses = 0; presses < 30 && rowWithKeyboard().empty(); ++presses) {
            page.key(Qt::Key_Tab);
        }
        ASSERT_EQ(rowWithKeyboard(), idOf(0));
        static_cast<void>(requests());
    }
    /// The signal of the row in which the keyboard is, also if nobody can see that row; empty for none.
    [[nodiscard]] std::string rowWithKeyboard() const {
        for (const QQuickItem* item = page.window->activeFocusItem(); item != nullptr; item = item->parentItem()) {
            if (item->property("signalId").isValid()) {
                return item->property("signalId").toString().toStdString();
            }
        }
        return "";
    }
    [[nodiscard]] QQuickItem* list() const { return shownItemsOfType(page.window->contentItem(), "QueueList").at(0); }
    [[nodiscard]] double scrolled() const { return list()->property("contentY").toDouble(); }
    [[nodiscard]] double end() const {
        return list()->property("originY").toDouble() + list()->property("contentHeight").toDouble() +
               list()->property("bottomMargin").toDouble() - list()->height();
    }
    void scrollTo(double y) {
        list()->setProperty("contentY", y);
        page.settle();
    }
    void scrollToTheEnd() {
        while (scrolled() < end()) {
            scrollTo(std::min(scrolled() + list()->height(), end()));
        }
    }
    void expectInSight(int number) const {
        EXPECT_EQ(rowWithKeyboard(), idOf(number));
        const QQuickItem* const row = page.rowItem(idOf(number));
        ASSERT_NE(row, nullptr);
        EXPECT_TRUE(rectOf(list()).contains(rectOf(row)));
        EXPECT_TRUE(page.window->activeFocusItem()->property("visualFocus").toBool());
    }
    /// What the office was asked since the last time.
    [[nodiscard]] std::vector<std::string> requests() {
        auto lines = page.computer.journal.take();
        std::erase_if(lines, [](const std::string& line) { return !line.starts_with("http "); });
        return lines;
    }
    void expectThatNothingCanBePressed() {
        EXPECT_EQ(rowWithKeyboard(), "");
        page.key(Qt::Key_Space);
        page.key(Qt::Key_Return);
        EXPECT_EQ(requests(), std::vector<std::string>{});
    }

    Page page;
};

TEST_F(QueueScrolling, aRowOutOfSightLeavesTheKeyboardToTheList) {
    while (scrolled() < end()) {
        scrollTo(std::min(scrolled() + list()->height(), end()));
        const std::string row = rowWithKeyboard();
        EXPECT_TRUE(row.empty() || row == idOf(0)) << row;
    }
    ASSERT_NE(page.rowItem(idOf(29)), nullptr);
    expectThatNothingCanBePressed();
    EXPECT_TRUE(list()->hasActiveFocus());
    scrollTo(0);
    expectThatNothingCanBePressed();
}

TEST_F(QueueScrolling, aRowThatOthersPushOutOfSightLeavesTheKeyboardToTheList) {
    for (int number = 30; number < 50; ++number) {
        auto urgent = call(number);
        urgent.typeId = "urgent";
        page.computer.deliverCreated(urgent);
        page.settle();
        const std::string row = rowWithKeyboard();
        EXPECT_TRUE(row.empty() || row == idOf(0)) << row;
    }
    static_cast<void>(requests());
    scrollTo(list()->property("originY").toDouble());
    ASSERT_NE(page.rowItem(idOf(30)), nullptr);
    expectThatNothingCanBePressed();
    page.key(Qt::Key_Down);
    expectInSight(1);
}

TEST_F(QueueScrolling, aRowThatGoesOutOfSightBehindAnotherWindowLeavesTheKeyboardToo) {
    leaveWindow(page.window);
    scrollToTheEnd();
    comeBackTo(page.window);
    page.settle();
    expectThatNothingCanBePressed();
    EXPECT_EQ(scrolled(), end());
    page.key(Qt::Key_Down);
    expectInSight(1);
}

TEST_F(QueueScrolling, theArrowsGoOnFromTheRowThatWasLeft) {
    for (int row = 0; row < 4; ++row) {
        page.key(Qt::Key_Down);
    }
    ASSERT_EQ(rowWithKeyboard(), idOf(4));
    scrollToTheEnd();
    ASSERT_EQ(rowWithKeyboard(), "");
    page.key(Qt::Key_Down);
    expectInSight(5);
    scrollToTheEnd();
    ASSERT_EQ(rowWithKeyboard(), "");
    page.key(Qt::Key_Up);
    expectInSight(4);
}

TEST_F(QueueScrolling, tabGoesIntoTheRowThatWasLeftAndBacktabBeforeIt) {
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Down);
    ASSERT_EQ(rowWithKeyboard(), idOf(2));
    scrollToTheEnd();
    ASSERT_EQ(rowWithKeyboard(), "");
    page.key(Qt::Key_Tab);
    expectInSight(2);
    scrollToTheEnd();
    ASSERT_EQ(rowWithKeyboard(), "");
    page.key(Qt::Key_Backtab);
    EXPECT_EQ(rowWithKeyboard(), idOf(1));
    EXPECT_TRUE(page.window->activeFocusItem()->property("visualFocus").toBool());
}

TEST_F(QueueScrolling, whereTheRowThatWasLeftIsGoneTheOneInItsPlaceIsGoneOnFrom) {
    page.key(Qt::Key_Down);
    ASSERT_EQ(rowWithKeyboard(), idOf(1));
    scrollToTheEnd();
    ASSERT_EQ(rowWithKeyboard(), "");
    auto done = call(1);
    done.status = "done";
    page.computer.deliverUpdated(done);
    page.settle();
    page.key(Qt::Key_Tab);
    expectInSight(2);
}

TEST_F(QueueScrolling, comingBackToTheWindowMovesNothing) {
    const double height = page.rowItem(idOf(0))->height();
    for (const double y : {height / 3, height + 8}) {
        scrollTo(y);
        ASSERT_EQ(scrolled(), y);
        leaveWindow(page.window);
        ASSERT_EQ(page.window->activeFocusItem(), nullptr);
        comeBackTo(page.window);
        page.settle();
        EXPECT_EQ(rowWithKeyboard(), idOf(0));
        EXPECT_EQ(scrolled(), y);
    }
}

}  // namespace
}  // namespace zelkovanta::desktop_test
