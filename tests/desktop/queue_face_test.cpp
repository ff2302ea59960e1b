#include "screens/qml/theme.h"
#include "screens/theme/office_color.h"
#include "tests/desktop/face.h"

#include <algorithm>
#include <array>
#include <cmath>

/// The colours and letters in which the pieces of a queue are drawn.
namespace zelkovanta::desktop_test {
namespace {

class QueueFace : public Face {
protected:
    void open(std::string_view role = "room") {
        page.computer.launchWith(role, practice([&](records::StateSnapshot& snapshot) {
                                     if (role == "member") {
                                         snapshot.device = support::makeDeviceOfMember("dr-amari");
                                     }
                                 }));
        page.open(620, 680);
    }
    /// The list's only row.
    void show(const screens::QueueRow& shown) {
        screens::QueueSection section;
        section.rows = {shown};
        page.model->queue()->sent()->setSection(section);
        page.settle();
    }
    [[nodiscard]] QQuickItem* row() const { return page.rowItem("a"); }
    [[nodiscard]] QQuickItem* cardItem() const { return row()->childItems().at(1); }
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, QueueFace, testing::Values(Appearance::light, Appearance::dark),
                         appearanceName);

/// A row with everything that a row can have.
screens::QueueRow fullRow() {
    screens::QueueRow row;
    row.signal = support::makeSignal("a", [](records::Signal& signal) {
        signal.status = "waiting";
        signal.note = "Bring the blue folder";
        signal.createdAt = "2020-01-02T08:00:00Z";
        signal.providerIds = {{"dr-amari", "dr-voss"}};
    });
    row.room = support::makeRoom("room-3", [](records::Room& room) { room.name = "Room 3"; });
    row.type = support::makeType("ready", 1, [](records::SignalType& type) {
        type.key = "own";
        type.label = "Own kind";
        type.color = "#336699";
    });
    row.requester = support::makeMember("june", [](records::Member& member) { member.name = "June"; });
    row.position = 3;
    row.onAcknowledge = screens::RowAction::acknowledge;
    row.onDone = screens::RowAction::done;
    row.onCancel = screens::RowAction::cancel;
    row.showTarget = true;
    return row;
}

TEST_P(QueueFace, aCardHasItsOutlineAndAHighlightedOneAYellowOne) {
    open();
    for (const bool highlighted : {false, true}) {
        screens::QueueRow row = fullRow();
        row.highlighted = highlighted;
        show(row);
        EXPECT_EQ(told(colorOf(cardItem())), told(of(card)));
        EXPECT_EQ(outlineWidthOf(cardItem()), 1);
        EXPECT_EQ(told(outlineOf(cardItem())), highlighted ? told(QColor{"#F2C94C"}) : told(hairline()));
        EXPECT_EQ(told(colorOf(this->row()->childItems().at(0))), told(withOpacity("#000000", 0.05)));
    }
}

TEST_P(QueueFace, theLinesHaveTheirLettersAndColours) {
    open();
    show(fullRow());
    expectText(text(row(), "Room 3"), primary, 14, QFont::DemiBold);
    const QQuickItem* const type = text(row(), "Own kind");
    EXPECT_EQ(type->property("font").value<QFont>().weight(), QFont::DemiBold);
    EXPECT_EQ(type->property("font").value<QFont>().pixelSize(), 14);
    const screens::theme::ColorPair legible = screens::theme::adaptiveOfficeColor("#336699");
    EXPECT_EQ(told(colorOf(type)), told(screens::qml::toColor(isDark() ? legible.dark : legible.light)));
    expectText(text(row(), "June · for 2 doctors"), secondary, 12, QFont::Normal);
    expectText(text(row(), "Bring the blue folder"), secondary, 12, QFont::Normal);
    expectText(text(row(), "#3"), tertiary, 12, QFont::DemiBold);
}

TEST_P(QueueFace, theMarkHasTheOfficesColourInThreeStrengths) {
    open();
    show(fullRow());
    expectMark(only("TypeMark", row()), "#336699");
}

TEST_P(QueueFace, aTimerIsSecondaryAndTurnsRed) {
    open();
    show(fullRow());
    expectText(only("WaitTimerText", row()), redText, 14, QFont::DemiBold);
    screens::QueueRow fresh = fullRow();
    fresh.signal.createdAt = "2999-01-02T08:00:00Z";
    fresh.signal.id = "b";
    screens::QueueSection section;
    section.rows = {fresh};
    page.model->queue()->sent()->setSection(section);
    page.settle();
    expectText(only("WaitTimerText", page.rowItem("b")), secondary, 14, QFont::DemiBold);
}

TEST_P(QueueFace, theChipAndTheBadgeHaveTheirColours) {
    open();
    struct Case {
        const char* status{};
        Pair text{};
        QColor fill;
    };
    const std::array<Case, 4> cases{{
        {"waiting", ink, QColor{"#FFE14D"}},
        {"acknowledged", blueText, withOpacity("#5789F2", 0.16)},
        {"done", {"#1E7A38", "#57C077"}, withOpacity("#2FA24F", 0.16)},
        {"else", {"#6E6553", "#A29A8B"}, withOpacity(isDark() ? tertiary.dark : tertiary.light, 0.16)},
    }};
    for (const Case& each : cases) {
        screens::QueueRow row = fullRow();
        row.signal.status = each.status;
        show(row);
        QQuickItem* const chip = only("StatusChip", this->row());
        expectText(only("Words", chip), each.text, 14, QFont::DemiBold);
        EXPECT_EQ(told(colorOf(chip)), told(each.fill)) << each.status;
    }
    QQuickItem* const badge = only("CombinedBadge", row());
    expectText(only("Words", badge), blueText, 12, QFont::Medium);
    EXPECT_EQ(told(colorOf(badge)), told(withOpacity("#5789F2", 0.14)));
    const QQuickItem* const words = only("Words", badge);
    EXPECT_EQ(badge->width(), std::ceil(words->implicitWidth()) + 2 * 8);
    EXPECT_EQ(badge->height(), std::ceil(words->implicitHeight()) + 2 * 3);
}

TEST_P(QueueFace, theButtonsHaveTheirColours) {
    open();
    show(fullRow());
    struct Case {
        const char* text{};
        Pair foreground{};
        QColor fill;
        QColor outline;
    };
    const std::array<Case, 3> cases{{
        {"On my way", white, QColor{"#5789F2"}, Qt::transparent},
        {"", white, QColor{"#2FA24F"}, Qt::transparent},
        {"Cancel", redText, withOpacity("#E21833", 0.10), withOpacity("#E21833", 0.28)},
    }};
    const auto buttons = shownItemsOfType(row(), "RowButton");
    ASSERT_EQ(buttons.size(), cases.size());
    for (std::size_t index = 0; index < cases.size(); ++index) {
        const Case& each = cases[index];
        const QObject* const face = faceOf(buttons[index]);
        EXPECT_EQ(told(colorOf(face)), told(each.fill)) << each.text;
        EXPECT_EQ(outlineWidthOf(face), each.outline.alpha() > 0 ? 1 : 0) << each.text;
        if (each.outline.alpha() > 0) {
            EXPECT_EQ(told(outlineOf(face)), told(each.outline)) << each.text;
        }
        if (*each.text != '\0') {
            expectText(text(buttons[index], each.text), each.foreground, 12, QFont::DemiBold);
        } else {
            EXPECT_EQ(told(colorOf(only(symbolIcon, buttons[index]))), told(of(each.foreground)));
        }
    }
}

TEST_P(QueueFace, aRowHoldsNoMoreButtonsThanItOffers) {
    open();
    show(fullRow());
    EXPECT_EQ(itemsOfType(row(), "RowButton").size(), 3U);
    screens::QueueRow row = fullRow();
    row.onAcknowledge.reset();
    row.onCancel.reset();
    show(row);
    EXPECT_EQ(itemsOfType(this->row(), "RowButton").size(), 1U);
    show(fullRow());
    EXPECT_EQ(shownItemsOfType(this->row(), "RowButton").size(), 3U);
}

TEST_P(QueueFace, whatIsLeftClosesTheGapOfAButtonThatHasGone) {
    open();
    screens::QueueRow fewer = fullRow();
    fewer.onAcknowledge.reset();
    fewer.onCancel.reset();
    const auto placeOfDone = [&] {
        return only("RowButton", row())->mapRectToItem(row(), {{}, only("RowButton", row())->size()});
    };
    show(fewer);
    const QRectF fresh = placeOfDone();
    const double height = row()->height();
    show(fullRow());
    show(fewer);
    EXPECT_EQ(placeOfDone(), fresh);
    EXPECT_EQ(row()->height(), height);
}

TEST_P(QueueFace, aStatusThatIsNotKnownStaysWithinItsCard) {
    open();
    screens::QueueRow row = fullRow();
    row.signal.status = std::string(300, 'w');
    show(row);
    const QQuickItem* const chip = only("StatusChip", this->row());
    EXPECT_LE(chip->mapRectToItem(this->row(), {0, 0, chip->width(), chip->height()}).right(),
              this->row()->width() - 12);
    EXPECT_TRUE(only("Words", chip)->property("truncated").toBool());
}

TEST_P(QueueFace, theTabsHaveTheirLettersAndTheirBadges) {
    open("member");
    page.computer.deliverCreated(support::makeSignal("a", [](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
    }));
    page.settle();
    const auto tabs = shownItemsOfType(page.window->contentItem(), "QueueTabButton");
    ASSERT_EQ(tabs.size(), 2U);
    EXPECT_EQ(told(colorOf(faceOf(tabs[0]))), told(of(yellow)));
    EXPECT_EQ(outlineWidthOf(faceOf(tabs[0])), 0);
    EXPECT_EQ(told(colorOf(faceOf(tabs[1]))), told(of(card)));
    EXPECT_EQ(outlineWidthOf(faceOf(tabs[1])), 1);
    expectText(text(tabs[0], "Received"), ink, 14, QFont::DemiBold);
    expectText(text(tabs[1], "Sent"), secondary, 14, QFont::DemiBold);
    const QQuickItem* const number = only("Digits", tabs[0]);
    expectText(number, ink, 11, QFont::Bold);
    const QQuickItem* const badge = number->parentItem();
    EXPECT_EQ(told(colorOf(badge)), told(withOpacity("#1A1206", 0.25)));
    EXPECT_EQ(badge->height(), number->implicitHeight() + 2 * 1);
    EXPECT_EQ(badge->width(), std::max(badge->height(), number->implicitWidth() + 2 * 5));
    page.press("Sent");
    page.settle();
    EXPECT_EQ(told(colorOf(only("Digits", tabs[0])->parentItem())), told(of(yellow)));
}

TEST_P(QueueFace, theWordsOfAnEmptyListAreQuiet) {
    open();
    QQuickItem* const label = only("EmptyQueueLabel");
    expectText(text(label, "Nothing sent yet."), secondary, 14, QFont::Medium);
    expectText(text(label, "Tap + to send a signal."), tertiary, 12, QFont::Normal);
    EXPECT_EQ(told(colorOf(only(symbolIcon, label))), told(of(tertiary)));
    expectText(text(page.window->contentItem(), "Sent from here"), tertiary, 12, QFont::DemiBold);
}

TEST_P(QueueFace, theStatusAndTheBannerHaveTheirLetters) {
    open("member");
    QQuickItem* const pill = only("StatusPillLabel");
    EXPECT_EQ(pill->property("spacing").toDouble(), 6);
    expectText(text(pill, "Available"), primary, 12, QFont::Medium);
    EXPECT_EQ(told(colorOf(only(symbolIcon, pill))), told(of(tertiary)));
    QQuickItem* const banner = only("ConnectionBanner");
    expectText(text(banner, "Connecting…"), secondary, 12, QFont::Normal);
    const QQuickItem* const spinner = only("Spinner", banner);
    EXPECT_EQ(text(banner, "Connecting…")->x(), spinner->x() + spinner->width() + 6);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
