#include "tests/desktop/page_fixture.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

using namespace std::chrono_literals;

records::Signal call(const std::string& id, const std::string& createdAt = "2026-01-02T08:00:00Z") {
    return support::makeSignal(id, [&](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.createdAt = createdAt;
    });
}

records::Signal urgentCall(const std::string& id) {
    auto signal = call(id);
    signal.typeId = "urgent";
    return signal;
}

std::vector<std::string> shownOrder(Page& page) {
    auto rows = page.rowItems();
    std::ranges::sort(rows, {}, [](QQuickItem* row) { return row->mapToScene({}).y(); });
    std::vector<std::string> ids;
    for (QQuickItem* row : rows) {
        ids.push_back(row->property("signalId").toString().toStdString());
    }
    return ids;
}

class SignalList : public testing::Test {
protected:
    void open(std::vector<records::Signal> signals, int height = 900) {
        page.computer.launchWith("room",
                                 practice([&](records::StateSnapshot& snapshot) { snapshot.signals = signals; }));
        page.open(420, height);
    }

    Page page;
};

TEST_F(SignalList, rowsKeepTheirItemsWhileOthersComeGoAndOvertake) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z"), call("c", "2026-01-02T08:00:03Z")});
    QQuickItem* const b = page.rowItem("b");
    QQuickItem* const c = page.rowItem("c");
    page.computer.deliverCreated(urgentCall("u"));
    auto gone = call("a");
    gone.status = "done";
    page.computer.deliverUpdated(gone);
    page.settle();
    EXPECT_EQ(shownOrder(page), (std::vector<std::string>{"u", "b", "c"}));
    EXPECT_EQ(page.rowItem("b"), b);
    EXPECT_EQ(page.rowItem("c"), c);
}

TEST_F(SignalList, theFocusStaysOnItsRow) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z")});
    QQuickItem* const b = page.rowItem("b");
    for (int presses = 0; presses < 20; ++presses) {
        page.key(Qt::Key_Tab);
        QQuickItem* const focused = page.window->activeFocusItem();
        if (focused != nullptr && b->isAncestorOf(focused)) {
            break;
        }
    }
    QQuickItem* const focused = page.window->activeFocusItem();
    ASSERT_NE(focused, nullptr);
    ASSERT_TRUE(b->isAncestorOf(focused));
    page.computer.deliverCreated(urgentCall("u"));
    page.settle();
    EXPECT_EQ(page.window->activeFocusItem(), focused);
    EXPECT_TRUE(page.rowItem("b")->isAncestorOf(page.window->activeFocusItem()));
}

TEST_F(SignalList, waitsAreCountedInWholeSeconds) {
    open({call("a", "2024-10-04T00:00:00Z")});
    // The simulated day begins 20,000 days after 1970, on 2024-10-04.
    const auto tick = [&] {
        page.model->queue()->sent()->tick();
        page.settle();
    };
    tick();
    EXPECT_TRUE(page.says("0:00"));
    page.computer.loop.advance(59s);
    tick();
    EXPECT_TRUE(page.says("0:59"));
    page.computer.loop.advance(3541s);
    tick();
    EXPECT_TRUE(page.says("1:00:00"));
}

TEST_F(SignalList, theClockOfAListRunsOnlyWhileARowCanBeSeen) {
    open({});
    page.computer.socket().accept();
    page.computer.deliverSnapshot(practice());
    page.settle();
    const auto runningClocks = [&] {
        int running = 0;
        for (QObject* object : page.window->findChildren<QObject*>()) {
            const bool isTimer = std::string_view{object->metaObject()->className()} == "QQmlTimer";
            running += isTimer && object->property("running").toBool() ? 1 : 0;
        }
        return running;
    };
    EXPECT_EQ(runningClocks(), 0);
    page.computer.deliverCreated(call("a"));
    page.settle();
    EXPECT_EQ(runningClocks(), 1);
    page.window->hide();
    page.settle();
    EXPECT_EQ(runningClocks(), 0);
    page.window->show();
    page.settle();
    EXPECT_EQ(runningClocks(), 1);
    page.window->showMinimized();
    page.settle();
    EXPECT_EQ(runningClocks(), 0);
}

TEST_F(SignalList, theClockCountsFromTheMomentAtWhichTheListCameInSight) {
    open({call("a", "2024-10-04T00:00:00Z")});
    page.window->hide();
    page.settle();
    page.computer.loop.advance(400ms);
    page.window->show();
    page.settle();
    QObject* clock = nullptr;
    for (QObject* object : page.window->findChildren<QObject*>()) {
        const bool isTimer = std::string_view{object->metaObject()->className()} == "QQmlTimer";
        clock = isTimer && object->property("running").toBool() ? object : clock;
    }
    ASSERT_NE(clock, nullptr);
    const auto shown = [this] { return page.rowItem("a")->property("waitText").toString(); };
    const QString before = shown();
    page.computer.loop.advance(12250ms);
    EXPECT_EQ(shown(), before);
    QMetaObject::invokeMethod(clock, "triggered");
    page.settle();
    EXPECT_NE(shown(), before);
    EXPECT_EQ(clock->property("interval").toInt(), 750) << "up to the next whole second since then";
}

TEST_F(SignalList, aSignalThatOvertakesIsAlsoReadFirst) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z")});
    page.computer.deliverCreated(urgentCall("u"));
    page.settle();
    std::vector<std::string> read;
    for (const Node& row : page.nodes(QAccessible::ListItem)) {
        read.push_back(row.name);
    }
    EXPECT_EQ(read, (std::vector<std::string>{"Room 3, Urgent, Waiting", "Room 3, Patient ready, Waiting",
                                              "Room 3, Patient ready, Waiting"}));
    // The keyboard goes the same way: the first row's button comes first.
    QQuickItem* const u = page.rowItem("u");
    for (int presses = 0; presses < 20; ++presses) {
        page.key(Qt::Key_Tab);
        QQuickItem* const focused = page.window->activeFocusItem();
        if (focused != nullptr && page.rowItem("a")->isAncestorOf(focused)) {
            FAIL() << "the second row came first";
        }
        if (focused != nullptr && u->isAncestorOf(focused)) {
            return;
        }
    }
    FAIL() << "the keyboard never came to the list";
}

TEST_F(SignalList, theArrowsGoFromRowToRowAndBringItIntoSight) {
    std::vector<records::Signal> many;
    for (int number = 0; number < 30; ++number) {
        many.push_back(call("call-" + std::to_string(1000 + number)));
    }
    open(many, 680);
    page.node(QAccessible::Button, "Mark completed")
        .interface->actionInterface()
        ->doAction(QAccessibleActionInterface::setFocusAction());
    page.settle();
    for (int row = 1; row < 30; ++row) {
        page.key(Qt::Key_Down);
        QQuickItem* const item = page.rowItem("call-" + std::to_string(1000 + row));
        ASSERT_NE(item, nullptr) << row;
        ASSERT_NE(page.window->activeFocusItem(), nullptr);
        EXPECT_TRUE(item->isAncestorOf(page.window->activeFocusItem())) << row;
        EXPECT_LE(item->mapToScene({0, item->height()}).y(), page.window->height()) << row;
    }
    page.key(Qt::Key_Up);
    EXPECT_TRUE(page.rowItem("call-1028")->isAncestorOf(page.window->activeFocusItem()));
}

TEST_F(SignalList, aLongListMakesOnlyTheRowsThatAreSeen) {
    std::vector<records::Signal> many;
    for (int number = 0; number < 300; ++number) {
        many.push_back(call("call-" + std::to_string(1000 + number)));
    }
    open(many, 680);
    const std::size_t before = page.rowItems().size();
    EXPECT_GT(before, 2U);
    EXPECT_LT(before, 20U);
    QQuickItem* const list = page.rowItem("call-1000")->parentItem()->parentItem();
    ASSERT_EQ(list->property("count").toInt(), 300);
    // To the end, a page at a time: every row comes by.
    const double pageHeight = list->height();
    std::set<std::string> seen;
    for (int step = 0; step < 200; ++step) {
        for (const auto& id : shownOrder(page)) {
            seen.insert(id);
        }
        EXPECT_LT(page.rowItems().size(), 24U);
        const double end = list->property("contentHeight").toDouble() + list->property("originY").toDouble();
        const double next = list->property("contentY").toDouble() + pageHeight * 0.8;
        if (next + pageHeight > end) {
            break;
        }
        list->setProperty("contentY", next);
        page.settle();
    }
    QMetaObject::invokeMethod(list, "positionViewAtEnd");
    page.settle();
    for (const auto& id : shownOrder(page)) {
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 300U);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
