#include "tests/desktop/page_fixture.h"

#include <gtest/gtest.h>

/// The queue with the keyboard alone.
namespace zelkovanta::desktop_test {
namespace {

constexpr auto statusPath = "/members/me/status";

records::Signal call(std::string id, const std::string& createdAt = "2026-01-02T08:00:00Z") {
    return support::makeSignal(std::move(id), [&](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.createdAt = createdAt;
    });
}

class QueueKeys : public testing::Test {
protected:
    void open(std::vector<records::Signal> signals = {call("a")}, const std::string& status = "available") {
        page.computer.launchWith("member", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDeviceOfMember("dr-amari");
                                     snapshot.members[0].status = status;
                                     snapshot.signals = signals;
                                 }));
        page.open();
    }
    /// Goes by the Tab key to what a person hears by this name.
    void goTo(QAccessible::Role role, const std::string& name) {
        for (int presses = 0; presses < 30; ++presses) {
            if (focusedName().starts_with(name) && focused()->role() == role) {
                return;
            }
            page.key(Qt::Key_Tab);
        }
        FAIL() << "The keyboard never came to " << name;
    }
    [[nodiscard]] std::string focusedName() const {
        return focused() != nullptr ? focused()->text(QAccessible::Name).toStdString() : "";
    }
    /// What has the keyboard, as a screen reader meets it.
    [[nodiscard]] QAccessibleInterface* focused() const {
        return QAccessible::queryAccessibleInterface(page.window->activeFocusItem());
    }
    [[nodiscard]] bool isIn(const std::string& signalId) const {
        QQuickItem* const row = page.rowItem(signalId);
        QQuickItem* const focused = page.window->activeFocusItem();
        return row != nullptr && focused != nullptr && row->isAncestorOf(focused);
    }
    [[nodiscard]] std::size_t statusRequests() const { return page.computer.requestCount("POST", statusPath); }
    [[nodiscard]] std::size_t pressesOn(const std::string& signalId) const {
        return page.computer.requestCount("PATCH", "/signals/" + signalId);
    }
    [[nodiscard]] std::string lastBody(std::string_view method, std::string_view path) const {
        auto* const request = page.computer.openRequest(method, path);
        return request != nullptr ? request->request.body.value_or("") : "no request";
    }

    Page page;
};

TEST_F(QueueKeys, theClosedStatusListDoesNothingButOpen) {
    for (const auto opener : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Space}) {
        Page fresh;
        fresh.computer.launchWith("member", practice([](records::StateSnapshot& snapshot) {
                                      snapshot.device = support::makeDeviceOfMember("dr-amari");
                                  }));
        fresh.open();
        for (int presses = 0; presses < 30 && fresh.node(QAccessible::ComboBox, "Your status").state().focused == 0;
             ++presses) {
            fresh.key(Qt::Key_Tab);
        }
        ASSERT_TRUE(fresh.node(QAccessible::ComboBox, "Your status").state().focused);
        fresh.type("b");
        fresh.type("d");
        fresh.key(Qt::Key_Home);
        fresh.key(Qt::Key_End);
        EXPECT_FALSE(fresh.shows(QAccessible::ListItem, "Busy"));
        EXPECT_EQ(fresh.computer.requestCount("POST", statusPath), 0U);
        fresh.key(opener);
        EXPECT_TRUE(fresh.shows(QAccessible::ListItem, "Busy")) << opener;
        EXPECT_EQ(fresh.computer.requestCount("POST", statusPath), 0U);
        fresh.key(Qt::Key_Escape);
        EXPECT_FALSE(fresh.shows(QAccessible::ListItem, "Busy"));
        EXPECT_EQ(fresh.computer.requestCount("POST", statusPath), 0U);
    }
}

TEST_F(QueueKeys, anEntryOfTheOpenedStatusListIsTakenByReturn) {
    open();
    goTo(QAccessible::ComboBox, "Your status");
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Down);
    EXPECT_EQ(statusRequests(), 0U) << "going to an entry is not taking it";
    page.key(Qt::Key_Return);
    EXPECT_EQ(statusRequests(), 1U);
    EXPECT_EQ(lastBody("POST", statusPath), R"({"status":"busy"})");
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Available")) << "until the office says otherwise";
}

TEST_F(QueueKeys, leavingTheOpenedStatusListTakesNothing) {
    open();
    goTo(QAccessible::ComboBox, "Your status");
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Escape);
    EXPECT_EQ(statusRequests(), 0U);
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Available"));
}

TEST_F(QueueKeys, aLetterGoesToItsEntryInTheOpenedListAlone) {
    open();
    goTo(QAccessible::ComboBox, "Your status");
    page.key(Qt::Key_Space);
    page.type("B");
    EXPECT_EQ(statusRequests(), 0U);
    page.key(Qt::Key_Return);
    EXPECT_EQ(lastBody("POST", statusPath), R"({"status":"busy"})");
}

TEST_F(QueueKeys, theKeyboardStaysInARowWhoseButtonHasGone) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z")});
    goTo(QAccessible::Button, "On my way");
    ASSERT_TRUE(isIn("a"));
    page.key(Qt::Key_Return);
    EXPECT_EQ(lastBody("PATCH", "/signals/a"), R"({"action":"acknowledge"})");
    auto taken = call("a", "2026-01-02T08:00:01Z");
    taken.status = "acknowledged";
    taken.acknowledgedBy = "dr-amari";
    page.computer.answerWith("PATCH", "/signals/a", taken);
    page.settle();
    EXPECT_TRUE(isIn("a"));
    EXPECT_EQ(focusedName(), "Done");
    page.key(Qt::Key_Space);
    EXPECT_EQ(pressesOn("a"), 2U);
    EXPECT_EQ(lastBody("PATCH", "/signals/a"), R"({"action":"done"})");
    EXPECT_EQ(pressesOn("b"), 0U);
}

TEST_F(QueueKeys, theKeyboardGoesToTheRowThatTakesThePlaceOfAFinishedOne) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z"), call("c", "2026-01-02T08:00:03Z")});
    const auto finish = [&](const std::string& id) {
        goTo(QAccessible::Button, "Done");
        ASSERT_TRUE(isIn(id)) << id;
        page.key(Qt::Key_Return);
        auto done = call(id);
        done.status = "done";
        page.computer.answerWith("PATCH", "/signals/" + id, done);
        page.settle();
        EXPECT_EQ(page.rowItem(id), nullptr);
    };
    finish("a");
    EXPECT_TRUE(isIn("b"));
    // The last of them: its neighbour above.
    page.key(Qt::Key_Down);
    finish("c");
    EXPECT_TRUE(isIn("b"));
    EXPECT_TRUE(page.window->activeFocusItem()->property("visualFocus").toBool()) << "and shows where it is";
    finish("b");
    EXPECT_EQ(focusedName(), "Send a request");
}

TEST_F(QueueKeys, aRowThatGoesWhileTheKeyboardIsInAnotherLeavesItThere) {
    open({call("a", "2026-01-02T08:00:01Z"), call("b", "2026-01-02T08:00:02Z")});
    goTo(QAccessible::Button, "On my way");
    page.key(Qt::Key_Down);
    ASSERT_TRUE(isIn("b"));
    QQuickItem* const focused = page.window->activeFocusItem();
    auto done = call("a");
    done.status = "done";
    page.computer.socket().accept();
    page.computer.deliverUpdated(done);
    page.settle();
    ASSERT_EQ(page.rowItem("a"), nullptr);
    EXPECT_EQ(page.window->activeFocusItem(), focused);
    EXPECT_TRUE(isIn("b"));
}

TEST_F(QueueKeys, theKeyboardStaysInTheListWhereARowGoesAndAnotherComesAtOnce) {
    open({call("a", "2026-01-02T08:00:00Z"), call("b", "2026-01-02T08:01:00Z")});
    goTo(QAccessible::Button, "On my way");
    ASSERT_TRUE(isIn("a"));
    page.computer.socket().accept();
    const auto tell = [this](std::vector<records::Signal> signals) {
        page.computer.deliverSnapshot(practice([&](records::StateSnapshot& snapshot) {
            snapshot.device = support::makeDeviceOfMember("dr-amari");
            snapshot.signals = std::move(signals);
        }));
        page.settle();
    };
    tell({call("b", "2026-01-02T08:01:00Z"), call("c", "2026-01-02T08:02:00Z")});
    EXPECT_TRUE(isIn("b")) << focusedName();
    // Nothing of it is left for later.
    goTo(QAccessible::Button, "Send a request");
    tell({call("b", "2026-01-02T08:01:00Z")});
    EXPECT_EQ(focusedName(), "Send a request");
}

TEST_F(QueueKeys, aPressWithTheMouseLeavesARowWhereItIs) {
    std::vector<records::Signal> signals;
    for (const char letter : std::string{"abcdefghijkl"}) {
        signals.push_back(call({letter}, "2026-01-02T08:00:" + std::to_string(10 + letter - 'a') + "Z"));
    }
    open(signals);
    QQuickItem* const row = page.rowItem("a");
    auto* const list = qobject_cast<QQuickItem*>(row->parentItem()->parentItem());
    list->setProperty("contentY", row->height() / 3);
    page.settle();
    page.click(page.node(QAccessible::Button, "On my way"));
    EXPECT_EQ(list->property("contentY").toDouble(), row->height() / 3);
    EXPECT_EQ(pressesOn("a"), 1U) << "it counts, though its row is cut at the top";
    page.key(Qt::Key_Down);
    page.key(Qt::Key_Up);
    EXPECT_TRUE(isIn("a"));
    EXPECT_EQ(list->property("contentY").toDouble(), 0) << "a key brings it in sight";
}

TEST_F(QueueKeys, twoQuickPressesAreTwoActions) {
    open();
    goTo(QAccessible::Button, "On my way");
    page.key(Qt::Key_Return);
    page.key(Qt::Key_Return);
    EXPECT_EQ(pressesOn("a"), 2U);
}

TEST_F(QueueKeys, theTabsAreChosenByKeyMouseAndScreenReader) {
    open({call("a"), call("b"), call("c")});
    const auto isChecked = [&](const std::string& tab) {
        return page.node(QAccessible::Button, tab).state().checked != 0;
    };
    EXPECT_TRUE(page.node(QAccessible::Button, "Received").state().checkable);
    EXPECT_TRUE(isChecked("Received"));
    EXPECT_FALSE(isChecked("Sent"));
    for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
        goTo(QAccessible::Button, "Sent");
        page.key(key);
        EXPECT_TRUE(isChecked("Sent"));
        EXPECT_FALSE(isChecked("Received"));
        EXPECT_TRUE(page.says("Nothing sent yet."));
        page.click(page.node(QAccessible::Button, "Received"));
        EXPECT_TRUE(isChecked("Received"));
        EXPECT_NE(page.rowItem("a"), nullptr);
    }
    page.press("Sent");
    EXPECT_TRUE(isChecked("Sent"));
    page.click(page.node(QAccessible::Button, "Sent"));
    EXPECT_TRUE(isChecked("Sent")) << "a second press changes nothing";
}

}  // namespace
}  // namespace zelkovanta::desktop_test
