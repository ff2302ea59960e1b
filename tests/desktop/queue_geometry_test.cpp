#include "tests/desktop/drawn_items.h"
#include "tests/desktop/page_fixture.h"

#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

/// Where the pieces of a row stand. Logical pixels.
namespace zelkovanta::desktop_test {
namespace {

records::Signal call(const std::function<void(records::Signal&)>& adjust = [](auto&) {}) {
    return support::makeSignal("a", [&](records::Signal& signal) {
        signal.roomId = "room-3";
        signal.typeId = "ready";
        signal.requesterId = "june";
        signal.note = "Bring the blue folder";
        adjust(signal);
    });
}

class QueueGeometry : public testing::Test {
protected:
    void open(
        const records::Signal& signal, int width = 420,
        const std::function<void(records::StateSnapshot&)>& adjust = [](auto&) {}) {
        page.computer.launchWith("room", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.signals = {signal};
                                     adjust(snapshot);
                                 }));
        page.open(width, 680);
    }
    [[nodiscard]] QQuickItem* row() const { return page.rowItem("a"); }
    /// The one visible item of this type in the row.
    [[nodiscard]] QQuickItem* piece(std::string_view type) const {
        const auto found = shownItemsOfType(row(), type);
        if (found.size() != 1) {
            throw std::logic_error(std::to_string(found.size()) + " of " + std::string{type});
        }
        return found.front();
    }
    /// The first visible item of this type whose text is this.
    [[nodiscard]] QQuickItem* text(std::string_view type, const QString& text) const {
        for (QQuickItem* item : shownItemsOfType(row(), type)) {
            if (item->property("text").toString() == text) {
                return item;
            }
        }
        throw std::logic_error("No such text: " + text.toStdString());
    }
    [[nodiscard]] QQuickItem* card() const { return row()->childItems().at(1); }
    /// Of an item, in the row.
    [[nodiscard]] QRectF inRow(const QQuickItem* item) const {
        return item->mapRectToItem(row(), {0, 0, item->width(), item->height()});
    }
    /// The row of a section that is put into the list by hand.
    void show(const screens::QueueRow& shown) {
        screens::QueueSection section;
        section.rows = {shown};
        page.model->queue()->sent()->setSection(section);
        page.settle();
    }

    Page page;
};

TEST_F(QueueGeometry, aCardHoldsItsLinesWithinItsPadding) {
    open(call());
    const QRectF card = inRow(this->card());
    EXPECT_EQ(this->card()->property("radius").toDouble(), 13);
    EXPECT_EQ(card.left(), 0);
    EXPECT_EQ(card.width(), row()->width());

    const QRectF mark = inRow(piece("TypeMark"));
    EXPECT_EQ(mark.left(), 12);
    EXPECT_EQ(mark.size(), QSizeF(26, 26));
    const auto discs = shownItemsOfType(piece("TypeMark"), "QQuickRectangle");
    ASSERT_EQ(discs.size(), 2U);
    EXPECT_EQ(discs[0]->width(), 26);
    EXPECT_EQ(discs[1]->width(), 12);
    EXPECT_EQ(inRow(discs[1]).center(), mark.center());

    const QRectF room = inRow(text("Words", "Room 3"));
    EXPECT_EQ(room.left(), mark.right() + 12);
    const QRectF type = inRow(text("Words", "Patient ready"));
    EXPECT_EQ(type.left(), room.right() + 8);
    EXPECT_EQ(type.top(), room.top()) << "on one baseline, in the same letters";
    const QRectF timer = inRow(piece("WaitTimerText"));
    EXPECT_EQ(timer.right(), card.right() - 12);
    EXPECT_EQ(type.right(), timer.left() - 12);
    const QRectF head = inRow(text("Words", "Room 3")->parentItem());
    EXPECT_EQ(head.top(), 10);

    const auto lines = shownItemsOfType(row(), "RowLine");
    ASSERT_EQ(lines.size(), 2U);
    const QRectF detail = inRow(lines[0]);
    const QRectF note = inRow(lines[1]);
    EXPECT_EQ(detail.left(), 12 + 38);
    EXPECT_EQ(detail.top(), head.bottom() + 4);
    EXPECT_EQ(note.left(), 12 + 38);
    EXPECT_EQ(note.top(), std::ceil(detail.bottom()) + 4);
    EXPECT_EQ(note.right(), card.right() - 12);

    const QRectF bar = inRow(piece("zelkovanta::screens::qml::ActionBar"));
    EXPECT_EQ(bar.left(), 12) << "only the lines above are indented";
    EXPECT_EQ(bar.right(), card.right() - 12);
    EXPECT_EQ(bar.top(), std::ceil(note.bottom()) + 4);
    const QRectF cancel = inRow(text("RowButton", "Cancel"));
    EXPECT_EQ(inRow(shownItemsOfType(row(), "RowButton").front()).top(), bar.top() + 2);
    EXPECT_EQ(inRow(piece("StatusChip")).left(), 12);
    EXPECT_LT(cancel.bottom(), card.bottom());
    EXPECT_EQ(card.bottom(), bar.top() + piece("zelkovanta::screens::qml::ActionBar")->implicitHeight() + 10);
}

TEST_F(QueueGeometry, withoutDetailAndNoteTheBarFollowsTheHead) {
    open(call([](records::Signal& signal) {
        signal.requesterId.reset();
        signal.note = "";
    }));
    EXPECT_TRUE(shownItemsOfType(row(), "RowLine").empty());
    const QRectF head = inRow(text("Words", "Room 3")->parentItem());
    EXPECT_EQ(inRow(piece("zelkovanta::screens::qml::ActionBar")).top(), head.bottom() + 4);
}

TEST_F(QueueGeometry, aButtonIsAsLargeAsItsWordAndItsPadding) {
    page.computer.launchWith("member", practice([](records::StateSnapshot& snapshot) {
                                 snapshot.device = support::makeDeviceOfMember("dr-amari");
                                 snapshot.signals = {call()};
                             }));
    page.open();
    const auto labelOf = [](QQuickItem* button) { return shownItemsOfType(button, "QQuickText").front(); };
    QQuickItem* const take = text("RowButton", "On my way");
    EXPECT_EQ(take->width(), std::ceil(labelOf(take)->implicitWidth()) + 2 * 12);
    EXPECT_EQ(take->height(), std::ceil(labelOf(take)->implicitHeight()) + 2 * 8);
    QQuickItem* const check = text("RowButton", "");
    EXPECT_EQ(check->width(), check->height()) << "a disc";
}

TEST_F(QueueGeometry, theCancelButtonIsALittleLower) {
    open(call());
    QQuickItem* const cancel = text("RowButton", "Cancel");
    QQuickItem* const label = shownItemsOfType(cancel, "QQuickText").front();
    EXPECT_EQ(cancel->width(), std::ceil(label->implicitWidth()) + 2 * 12);
    EXPECT_EQ(cancel->height(), std::ceil(label->implicitHeight()) + 2 * 7);
}

TEST_F(QueueGeometry, aChipIsLargerWhereThereIsSomethingToDo) {
    open(call());
    const auto expectChip = [&](int letters, double across, double along) {
        QQuickItem* const chip = piece("StatusChip");
        QQuickItem* const label = shownItemsOfType(chip, "Words").front();
        EXPECT_EQ(label->property("font").value<QFont>().pixelSize(), letters);
        EXPECT_EQ(chip->width(), std::ceil(label->implicitWidth()) + 2 * across);
        EXPECT_EQ(chip->height(), std::ceil(label->implicitHeight()) + 2 * along);
        EXPECT_EQ(chip->property("radius").toDouble(), chip->height() / 2) << "a capsule";
    };
    expectChip(14, 11, 6);
    screens::QueueRow quiet;
    quiet.signal = call();
    show(quiet);
    expectChip(12, 8, 3);
}

TEST_F(QueueGeometry, theBarFoldsWhereItDoesNotFitAndUnfoldsAgain) {
    open(call([](records::Signal& signal) { signal.providerIds = {{"dr-amari", "dr-voss"}}; }));
    const auto expectOneLine = [&] {
        const QRectF chip = inRow(piece("StatusChip"));
        const QRectF button = inRow(text("RowButton", "Cancel"));
        EXPECT_EQ(chip.center().y(), button.center().y());
        EXPECT_GT(button.left(), inRow(piece("CombinedBadge")).right());
    };
    expectOneLine();
    const double flat = row()->height();
    page.resize(320, 680);
    const QRectF badge = inRow(piece("CombinedBadge"));
    const QRectF chip = inRow(piece("StatusChip"));
    const QRectF position = inRow(piece("QueuePosition"));
    const auto buttons = shownItemsOfType(row(), "RowButton");
    ASSERT_EQ(buttons.size(), 2U);
    EXPECT_EQ(chip.left(), 12);
    EXPECT_EQ(badge.left(), chip.right() + 8);
    EXPECT_EQ(position.left(), badge.right() + 8);
    EXPECT_EQ(inRow(buttons[0]).left(), 12);
    EXPECT_EQ(inRow(buttons[0]).top(), chip.bottom() + 6);
    EXPECT_EQ(inRow(buttons[1]).left(), inRow(buttons[0]).right() + 8);
    EXPECT_GT(row()->height(), flat);
    EXPECT_EQ(inRow(card()).bottom(), inRow(buttons[0]).bottom() + 10);
    page.resize(420, 680);
    expectOneLine();
    EXPECT_EQ(row()->height(), flat);
}

TEST_F(QueueGeometry, longLinesAreCutAtTwo) {
    const std::string longText =
        "A text that goes on and on, about films, folders, trays and patients, and then again, "
        "about patients, trays, folders and films, until nobody reads it any longer at all";
    open(call([&](records::Signal& signal) { signal.note = longText; }), 320,
         [&](records::StateSnapshot& snapshot) { snapshot.members[2].name = longText; });
    const auto lines = shownItemsOfType(row(), "RowLine");
    ASSERT_EQ(lines.size(), 2U);
    for (const QQuickItem* line : lines) {
        EXPECT_EQ(line->property("lineCount").toInt(), 2);
        EXPECT_TRUE(line->property("truncated").toBool());
    }
}

TEST_F(QueueGeometry, aNameWithALineBreakStaysInOneLine) {
    open(call());
    const double height = row()->height();
    const double chip = piece("StatusChip")->height();
    screens::QueueRow broken;
    broken.signal = call([](records::Signal& signal) {
        signal.status = "on\nhold";
        signal.providerIds = {{"dr-amari"}};
    });
    broken.room = support::makeRoom("room-3", [](records::Room& room) { room.name = "Room\n4"; });
    broken.type = support::makeType("ready", 1, [](records::SignalType& type) { type.label = "Patient\nready"; });
    broken.requester = support::makeMember("june");
    broken.onDone = screens::RowAction::done;
    broken.onCancel = screens::RowAction::cancel;
    show(broken);
    EXPECT_EQ(row()->height(), height);
    EXPECT_EQ(piece("StatusChip")->height(), chip);
}

TEST_F(QueueGeometry, lettersShrinkToNoLessThanFourFifths) {
    open(call(), 320, [](records::StateSnapshot& snapshot) {
        snapshot.rooms[1].name = "Sterilisation and instrument preparation, second floor, left, behind the stairs";
        snapshot.signalTypes[0].label = "The patient has been prepared and is waiting for somebody to come";
    });
    int shrinking = 0;
    for (const QQuickItem* item : shownItemsOfType(row(), "Words")) {
        if (item->property("fontSizeMode").toInt() != 0) {
            ++shrinking;
            EXPECT_GE(item->property("minimumPixelSize").toInt(), 0.82 * 14);
            EXPECT_LE(item->property("contentWidth").toDouble(), item->width());
        }
    }
    EXPECT_EQ(shrinking, 2);
}

TEST_F(QueueGeometry, aHeadIsInOneLineOnlyWhereItsLettersNeedNotShrink) {
    open(call());
    QQuickItem* const shown = row();
    QQuickItem* const room = text("Words", "Room 3");
    QQuickItem* const type = text("Words", "Patient ready");
    QQuickItem* const head = room->parentItem();
    int inOneLine = 0;
    int inTwo = 0;
    for (const char* const name : {"Room 3", "Room 11", "Surgery", "Films", "Wing W", "Hall", "Till 7", "Lab"}) {
        shown->setProperty("room", name);
        const double whole = room->implicitWidth() + 8 + type->implicitWidth();
        for (const double width : {std::floor(whole), std::ceil(whole), std::ceil(whole) + 1}) {
            shown->setWidth(shown->width() + width - head->width());
            page.settle();
            ASSERT_EQ(head->width(), width);
            if (head->property("oneLine").toBool()) {
                ++inOneLine;
                EXPECT_GE(room->width(), room->implicitWidth()) << name << " in " << width;
                EXPECT_GE(type->width(), type->implicitWidth()) << name << " in " << width;
            } else {
                ++inTwo;
                EXPECT_LT(width, std::ceil(whole) + 1) << name;
            }
        }
    }
    EXPECT_GE(inOneLine, 8);
    EXPECT_GE(inTwo, 8);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
