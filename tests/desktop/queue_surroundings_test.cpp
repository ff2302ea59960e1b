#include "screens/qml/registration.h"
#include "tests/desktop/drawn_items.h"
#include "tests/desktop/page_fixture.h"

#include <QQmlComponent>
#include <gtest/gtest.h>

/// What stands around the rows: the banner, the tabs, the status, the words of an empty list.
namespace zelkovanta::desktop_test {
namespace {

records::Signal call(std::string id) {
    return support::makeSignal(std::move(id), [](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
    });
}

class QueueSurroundings : public testing::Test {
protected:
    void openFor(
        const std::string& memberId, const std::function<void(records::StateSnapshot&)>& adjust = [](auto&) {}) {
        page.computer.launchWith("member", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDeviceOfMember(memberId);
                                     adjust(snapshot);
                                 }));
        page.open();
    }
    [[nodiscard]] QQuickItem* only(std::string_view type) const {
        const auto found = itemsOfType(page.window->contentItem(), type);
        return found.size() == 1 ? found.front() : nullptr;
    }
    [[nodiscard]] double topOfLists() const { return rectOf(only("QueueLists")).top(); }

    Page page;
};

TEST_F(QueueSurroundings, theBannerTakesNoRoomWhileConnected) {
    openFor("dr-amari");
    QQuickItem* const banner = only("ConnectionBanner");
    ASSERT_NE(banner, nullptr);
    EXPECT_TRUE(banner->isVisible());
    EXPECT_EQ(banner->width(), page.window->width() - 24) << "one line, all across";
    EXPECT_EQ(shownItemsOfType(banner, "Spinner").size(), 1U);
    const double pushed = topOfLists();
    const double height = banner->height();
    EXPECT_GT(height, 10);

    page.computer.socket().accept();
    page.computer.deliverSnapshot(
        practice([](records::StateSnapshot& snapshot) { snapshot.device = support::makeDeviceOfMember("dr-amari"); }));
    page.settle();
    EXPECT_FALSE(banner->isVisible());
    EXPECT_EQ(topOfLists(), pushed - height);

    page.computer.socket().fail({});
    page.settle();
    EXPECT_TRUE(page.says("Offline, retrying…"));
    EXPECT_EQ(shownItemsOfType(banner, "Spinner").size(), 1U);
    EXPECT_EQ(topOfLists(), pushed);
}

TEST_F(QueueSurroundings, aBannerThatWaitsForNothingHasNoSpinner) {
    QQmlEngine engine;
    screens::qml::registerScreens(engine, page.appearance);
    QQmlComponent component(&engine);
    component.setData(
        "import ZelkoVanta.Screens\n"
        "ConnectionBanner { width: 300; text: \"Not connected\"; spins: false; inSight: true }",
        {});
    const std::unique_ptr<QObject> made(component.create());
    const auto* const banner = qobject_cast<QQuickItem*>(made.get());
    ASSERT_NE(banner, nullptr) << component.errorString().toStdString();
    EXPECT_GT(banner->implicitHeight(), 10);
    EXPECT_EQ(itemsOfType(banner, "Spinner").size(), 1U);
    EXPECT_TRUE(shownItemsOfType(banner, "Spinner").empty());
    const auto words = shownItemsOfType(banner, "Caption");
    ASSERT_EQ(words.size(), 1U);
    EXPECT_EQ(words[0]->x(), 0) << "nothing is kept free for it either";
}

TEST_F(QueueSurroundings, theTabsAreOfOneWidthAndCountWhatThereIs) {
    openFor("dr-amari", [](records::StateSnapshot& snapshot) { snapshot.signals = {call("a"), call("b"), call("c")}; });
    const auto tabs = shownItemsOfType(page.window->contentItem(), "QueueTabButton");
    ASSERT_EQ(tabs.size(), 2U);
    EXPECT_EQ(tabs[0]->width(), tabs[1]->width());
    EXPECT_EQ(page.node(QAccessible::Button, "Received").name, "Received, 3");
    EXPECT_EQ(page.node(QAccessible::Button, "Sent").name, "Sent");
    EXPECT_EQ(shownItemsOfType(tabs[0], "QQuickText").size(), 2U);
    EXPECT_EQ(shownItemsOfType(tabs[1], "QQuickText").size(), 1U) << "no badge";
    page.computer.socket().accept();
    page.computer.deliverSnapshot(
        practice([](records::StateSnapshot& snapshot) { snapshot.device = support::makeDeviceOfMember("dr-amari"); }));
    page.settle();
    EXPECT_EQ(page.node(QAccessible::Button, "Received").name, "Received");
    EXPECT_EQ(shownItemsOfType(tabs[0], "QQuickText").size(), 1U);
}

TEST_F(QueueSurroundings, withoutAnActiveMemberThereIsNoStatus) {
    page.computer.launchWith("room", practice());
    page.open();
    EXPECT_FALSE(page.shows(QAccessible::ComboBox, "Your status"));
    EXPECT_TRUE(shownItemsOfType(page.window->contentItem(), "StatusPillLabel").empty());
}

/// The entries of the opened list, and which of them carry the mark.
std::vector<std::pair<std::string, bool>> entriesOf(Page& page) {
    std::vector<std::pair<std::string, bool>> entries;
    for (const Node& node : page.nodes(QAccessible::ListItem)) {
        auto* const item = qobject_cast<QQuickItem*>(node.interface->object());
        const auto symbols = shownItemsOfType(item, "zelkovanta::screens::qml::SymbolIcon");
        const bool isMarked = symbols.size() == 1 && symbols[0]->property("symbol").toString() == "checkmark";
        entries.emplace_back(node.name, isMarked);
    }
    return entries;
}

TEST_F(QueueSurroundings, theStatusListHasThreeEntriesAndMarksTheCurrentOne) {
    openFor("dr-amari", [](records::StateSnapshot& snapshot) { snapshot.members[0].status = "busy"; });
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Busy"));
    page.click(page.node(QAccessible::ComboBox, "Your status"));
    using Entries = std::vector<std::pair<std::string, bool>>;
    EXPECT_EQ(entriesOf(page), (Entries{{"Available", false}, {"Busy", true}, {"Do not disturb", false}}));
}

TEST_F(QueueSurroundings, aStatusThatIsNotKnownReadsAsAvailableAndMarksNothing) {
    openFor("dr-amari", [](records::StateSnapshot& snapshot) { snapshot.members[0].status = "lunch"; });
    EXPECT_TRUE(page.shows(QAccessible::ComboBox, "Your status: Available"));
    const auto dots = shownItemsOfType(page.window->contentItem(), "StatusDot");
    ASSERT_EQ(dots.size(), 1U);
    EXPECT_EQ(dots[0]->property("color").value<QColor>(), QColor("#8A8170"));
    EXPECT_EQ(rectOf(dots[0]).size(), QSizeF(8, 8));
    page.click(page.node(QAccessible::ComboBox, "Your status"));
    using Entries = std::vector<std::pair<std::string, bool>>;
    EXPECT_EQ(entriesOf(page), (Entries{{"Available", false}, {"Busy", false}, {"Do not disturb", false}}));
}

TEST_F(QueueSurroundings, choosingTheCurrentStatusTellsTheOfficeAllTheSame) {
    openFor("dr-amari");
    page.choose("Your status", "Available");
    EXPECT_EQ(page.computer.requestCount("POST", "/members/me/status"), 1U);
}

TEST_F(QueueSurroundings, theFaceOfTheStatusHasASmallChevron) {
    openFor("dr-amari");
    const auto faces = shownItemsOfType(page.window->contentItem(), "StatusPillLabel");
    ASSERT_EQ(faces.size(), 1U);
    const auto symbols = shownItemsOfType(faces[0], "zelkovanta::screens::qml::SymbolIcon");
    ASSERT_EQ(symbols.size(), 1U);
    EXPECT_EQ(symbols[0]->property("symbol").toString(), "chevron.up.chevron.down");
    EXPECT_EQ(symbols[0]->size(), QSizeF(8, 8));
}

TEST_F(QueueSurroundings, anEmptyListSaysSoInItsMiddle) {
    openFor("dr-amari");
    const auto expectEmpty = [&](const QString& symbol, const std::vector<QString>& words) {
        const auto labels = shownItemsOfType(page.window->contentItem(), "EmptyQueueLabel");
        ASSERT_EQ(labels.size(), 1U);
        const auto symbols = shownItemsOfType(labels[0], "zelkovanta::screens::qml::SymbolIcon");
        ASSERT_EQ(symbols.size(), 1U);
        EXPECT_EQ(symbols[0]->property("symbol").toString(), symbol);
        EXPECT_EQ(rectOf(symbols[0]).top(), rectOf(labels[0]).top() + 28);
        EXPECT_EQ(rectOf(symbols[0]).center().x(), page.window->width() / 2.0);
        const auto texts = shownItemsOfType(labels[0], "Words");
        ASSERT_EQ(texts.size(), words.size());
        for (std::size_t index = 0; index < texts.size(); ++index) {
            EXPECT_EQ(texts[index]->property("text").toString(), words[index]);
        }
        EXPECT_EQ(rectOf(texts[0]).top(), rectOf(symbols[0]).bottom() + 6);
        EXPECT_NEAR(rectOf(labels[0]).bottom(), rectOf(texts.back()).bottom() + 28, 1);
        EXPECT_EQ(labels[0]->width(), page.window->width() - 24);
    };
    expectEmpty("tray", {"No one is waiting for you."});
    page.press("Sent");
    expectEmpty("paperplane", {"Nothing sent yet.", "Tap + to send a signal."});
}

TEST_F(QueueSurroundings, aSectionsTitleIsDrawnInUpperCaseAboveItsRows) {
    openFor("dr-amari", [](records::StateSnapshot& snapshot) { snapshot.signals = {call("a")}; });
    EXPECT_FALSE(page.shows(QAccessible::Heading, "Your signals"));
    const double before = rectOf(page.rowItem("a")).top();
    screens::qml::QueueModel& list = *page.model->queue()->received();
    const platform::KeysAsTexts words;
    const auto show = [&] {
        list.setSection(screens::personalQueueSection(page.computer.state(), screens::SectionTitle::shown, {}, words));
        page.settle();
    };
    show();
    ASSERT_TRUE(page.shows(QAccessible::Heading, "Your signals")) << "read as it is written";
    const auto titles = shownItemsOfType(page.window->contentItem(), "SectionHeader");
    ASSERT_EQ(titles.size(), 1U);
    EXPECT_EQ(titles[0]->property("font").value<QFont>().capitalization(), QFont::AllUppercase);
    EXPECT_EQ(rectOf(page.rowItem("a")).top(), before + titles[0]->height() + 8);
    page.computer.socket().accept();
    page.computer.deliverSnapshot(
        practice([](records::StateSnapshot& snapshot) { snapshot.device = support::makeDeviceOfMember("dr-amari"); }));
    show();
    const auto empty = shownItemsOfType(page.window->contentItem(), "EmptyQueueLabel");
    ASSERT_EQ(empty.size(), 1U);
    EXPECT_EQ(rectOf(empty[0]).top(), rectOf(titles[0]).bottom() + 8) << "also above the words of an empty list";
}

TEST_F(QueueSurroundings, theTitleOfTheOnlyListIsDrawnInUpperCaseToo) {
    page.computer.launchWith("room", practice());
    page.open();
    ASSERT_TRUE(page.shows(QAccessible::Heading, "Sent from here"));
    for (const QQuickItem* title : shownItemsOfType(page.window->contentItem(), "SectionHeader")) {
        EXPECT_EQ(title->property("font").value<QFont>().capitalization(), QFont::AllUppercase);
    }
}

}  // namespace
}  // namespace zelkovanta::desktop_test
