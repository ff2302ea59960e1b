#include "tests/desktop/page_fixture.h"

#include <tuple>

#include <QGuiApplication>
#include <QPalette>
#include <gtest/gtest.h>

/// What must hold however the page is filled and sized.
namespace zelkovanta::desktop_test {
namespace {

constexpr auto longName = "Professor Dr. Maximiliane-Alexandra von Hohenstein-Wetterburg zu Oberlangenau";
constexpr auto hebrewName = "ד״ר אבישג בן־דוד־לוי";

enum class Filled { unpaired, room, person, station, signIn, error, form };

void fill(Page& page, Filled filled) {
    auto snapshot = practice([&](records::StateSnapshot& state) {
        state.office.name = std::string{"Practice of "} + longName;
        state.members[0].name = longName;
        state.members[1].name = hebrewName;
        state.rooms[1].name = longName;
        state.signalTypes[0].label = longName;
        state.signals = {support::makeSignal("a", [](records::Signal& signal) {
            signal.roomId = "room-3";
            signal.typeId = "ready";
            signal.requesterId = "dr-voss";
            signal.note = std::string{longName} + " " + longName + " " + longName;
        })};
    });
    switch (filled) {
        case Filled::unpaired:
            page.computer.launchUnpaired();
            return;
        case Filled::room:
            page.computer.launchWith("room", snapshot);
            return;
        case Filled::person:
            snapshot.device = support::makeDeviceOfMember("dr-amari");
            page.computer.launchWith("member", snapshot);
            return;
        case Filled::station:
            snapshot.device = support::makeDeviceWithSignIn("dr-amari");
            page.computer.defaults.memory.setNumber("stationSignInBootTime", page.computer.hostInfo.bootTime());
            page.computer.defaults.memory.setText("stationSignInAuditSessionId",
                                                  page.computer.hostInfo.auditSessionId());
            page.computer.launchWith("shared", snapshot);
            return;
        case Filled::signIn:
            snapshot.device = support::makeDevice();
            snapshot.device.name = longName;
            page.computer.launchWith("shared", snapshot);
            return;
        case Filled::form:
            page.computer.launchWith("room", snapshot);
            return;
        case Filled::error:
            page.computer.launchWith("room", snapshot);
            page.computer.run([](store::AppStore& store) { return store.sendSignal("ready", "", {}, {}, {}); });
            page.computer.answer(
                "POST", "/signals", 409,
                R"({"error":"busy","message":"A sentence that is long enough to need a second line."})");
            return;
    }
}

class PageLooks : public testing::TestWithParam<std::tuple<Filled, Appearance, int>> {};

INSTANTIATE_TEST_SUITE_P(EveryWay, PageLooks,
                         testing::Combine(testing::Values(Filled::unpaired, Filled::room, Filled::person,
                                                          Filled::station, Filled::signIn, Filled::error, Filled::form),
                                          testing::Values(Appearance::light, Appearance::dark),
                                          testing::Values(320, 360, 1100)));

void open(Page& page, Filled filled, int width) {
    page.open(width, 600);
    if (filled == Filled::form) {
        page.press("Send a request");
    }
}

bool takesFocus(const Node& node) {
    return node.state().focusable != 0 && node.role != QAccessible::Window && node.role != QAccessible::Application;
}

TEST_P(PageLooks, nothingLeavesTheWindowAndWhatTakesFocusHasAName) {
    const auto [filled, appearance, width] = GetParam();
    Page page(appearance);
    fill(page, filled);
    open(page, filled, width);
    const QRect frame{page.window->position(), page.window->size()};
    int focusable = 0;
    for (const Node& node : page.nodes()) {
        if (takesFocus(node)) {
            ++focusable;
            EXPECT_FALSE(node.name.empty()) << "role " << node.role;
        }
        if (!node.rect().isEmpty()) {
            EXPECT_GE(node.rect().left(), frame.left()) << node.name;
            EXPECT_LE(node.rect().right(), frame.right()) << node.name;
        }
    }
    EXPECT_GE(focusable, filled == Filled::unpaired || filled == Filled::signIn ? 1 : 3);
}

TEST_P(PageLooks, everyButtonCanBePressedByAScreenReader) {
    const auto [filled, appearance, width] = GetParam();
    Page page(appearance);
    fill(page, filled);
    open(page, filled, width);
    const auto buttons = page.nodes(QAccessible::Button);
    EXPECT_FALSE(buttons.empty());
    for (const Node& button : buttons) {
        QAccessibleActionInterface* const actions = button.interface->actionInterface();
        ASSERT_NE(actions, nullptr) << button.name;
        EXPECT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::pressAction())) << button.name;
    }
}

TEST_P(PageLooks, thePageFollowsTheAppearance) {
    const auto [filled, appearance, width] = GetParam();
    Page page(appearance);
    fill(page, filled);
    open(page, filled, width);
    const QColor corner = page.picture().pixelColor(2, 2);
    EXPECT_EQ(corner, appearance == Appearance::dark ? QColor("#141018") : QColor("#FFFFFF"));
}

TEST(PageAppearance, theAppearanceIsFollowedWhileThePageIsShown) {
    Page page(Appearance::light);
    fill(page, Filled::room);
    page.open();
    EXPECT_EQ(page.picture().pixelColor(2, 2), QColor("#FFFFFF"));
    page.appearance.become(platform::ColorScheme::dark);
    EXPECT_EQ(page.picture().pixelColor(2, 2), QColor("#141018"));
}

TEST(PageAppearance, whereTheDesktopSaysNothingItsPaletteDecides) {
    Page page(Appearance::dark);
    fill(page, Filled::room);
    page.open();
    page.appearance.become(platform::ColorScheme::unknown);
    EXPECT_EQ(page.picture().pixelColor(2, 2), QColor("#FFFFFF"));
    const QPalette before = QGuiApplication::palette();
    QGuiApplication::setPalette(QPalette{QColor{0x30, 0x30, 0x30}, QColor{0x22, 0x22, 0x22}});
    EXPECT_EQ(page.picture().pixelColor(2, 2), QColor("#141018"));
    QGuiApplication::setPalette(before);
    EXPECT_EQ(page.picture().pixelColor(2, 2), QColor("#FFFFFF"));
}

}  // namespace
}  // namespace zelkovanta::desktop_test
