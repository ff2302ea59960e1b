#include "screens/queue_row.h"

#include "records/server_date.h"
#include "tests/support/office_records.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using support::makeMember;
using support::makeRoom;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeType;
using testing::ElementsAre;
using testing::IsEmpty;
using theme::fixed;
using theme::rgb;

const platform::KeysAsTexts strings;

std::vector<std::string> namesOf(const std::vector<RowButton>& buttons) {
    std::vector<std::string> names;
    for (const RowButton& button : buttons) {
        names.push_back(button.accessibleName);
    }
    return names;
}

records::Member named(std::string name) {
    return makeMember("member-1", [&](records::Member& member) { member.name = std::move(name); });
}

/// A row as a person's own list makes it.
QueueRow receivedRow(records::Signal signal) {
    QueueRow row;
    row.signal = std::move(signal);
    row.onAcknowledge = RowAction::acknowledge;
    row.onDone = RowAction::done;
    row.completionLabel = "Done";
    return row;
}

TEST(QueueRow, showsItsRoomTypeNoteAndBeginning) {
    QueueRow row = receivedRow(makeSignal("signal-1", [](records::Signal& signal) {
        signal.note = "Bring the tray";
        signal.createdAt = "2026-01-02T08:00:00Z";
    }));
    row.room = makeRoom("room-1", [](records::Room& room) { room.name = "Room 4"; });
    row.type = makeType("type-1", 1, [](records::SignalType& type) {
        type.key = "xray";
        type.label = "X-ray";
        type.color = "#5789f2";
    });
    const DrawnRow shown = drawn(row, strings);
    EXPECT_EQ(shown.id, "signal-1");
    EXPECT_EQ(shown.room, "Room 4");
    EXPECT_EQ(shown.type, "X-ray");
    EXPECT_EQ(shown.mark, rgb(0x5789F2));
    EXPECT_EQ(shown.typeColor, (theme::ColorPair{.light = rgb(0x3457C4), .dark = rgb(0x8FB0F7)}));
    EXPECT_EQ(shown.note, "Bring the tray");
    EXPECT_EQ(shown.since, records::parseServerDate("2026-01-02T08:00:00Z"));
    EXPECT_EQ(shown.outline, theme::hairline);
}

TEST(QueueRow, theTypesWordFollowsTheOfficesTrade) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.type = makeType("type-1", 1, [](records::SignalType& type) { type.key = "ready"; });
    EXPECT_EQ(drawn(row, strings).type, "signal-ready");
    row.vertical = "medical";
    EXPECT_EQ(drawn(row, strings).type, "signal-ready-medical");
}

TEST(QueueRow, withNothingKnownItStillShows) {
    const DrawnRow shown = drawn(receivedRow(makeSignal("signal-1")), strings);
    EXPECT_EQ(shown.room, "Room");
    EXPECT_EQ(shown.type, "");
    EXPECT_EQ(shown.mark, rgb(0xFF8C28));
    EXPECT_EQ(shown.typeColor, fixed(rgb(0xFF8C28)));
    EXPECT_EQ(shown.detail, "");
    EXPECT_EQ(shown.note, "");
    EXPECT_EQ(shown.position, "");
}

TEST(QueueRow, aDeletedTypeLeavesTheRoom) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.room = makeRoom("room-1");
    const DrawnRow shown = drawn(row, strings);
    EXPECT_EQ(shown.room, "Name of room-1");
    EXPECT_EQ(shown.type, "");
    EXPECT_EQ(shown.mark, rgb(0xFF8C28));
}

TEST(QueueRow, aTypeWhoseColourIsNoneKeepsItsLabel) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.type = makeType("type-1", 1, [](records::SignalType& type) { type.color = "red"; });
    const DrawnRow shown = drawn(row, strings);
    EXPECT_EQ(shown.type, "Label of type-1");
    EXPECT_EQ(shown.mark, rgb(0xFF8C28));
    EXPECT_EQ(shown.typeColor, theme::textPrimary);
}

TEST(QueueRow, aDateThatCannotBeReadIsNoBeginning) {
    EXPECT_EQ(drawn(receivedRow(makeSignal("1", [](auto& signal) { signal.createdAt = "yesterday"; })), strings).since,
              std::nullopt);
}

TEST(QueueRow, aHighlightedRowHasAnotherOutline) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.highlighted = true;
    EXPECT_EQ(drawn(row, strings).outline, fixed(rgb(0xF2C94C)));
}

TEST(QueueRow, theDetailNamesTheRequesterAndTheTarget) {
    using Ids = std::optional<std::vector<std::string>>;
    struct Case {
        std::optional<std::string> requester;
        std::optional<std::string> department;
        bool showTarget;
        Ids providerIds;
        std::optional<std::string> provider;
        std::string detail;
    };
    const std::vector<Case> cases{
        {{}, {}, false, {}, {}, ""},
        {"Ana", {}, false, {}, {}, "Ana"},
        {"Ana", "Nurse", false, {}, {}, "Ana · Nurse"},
        // A name may be empty, and is a part all the same.
        {"", "Nurse", false, {}, {}, " · Nurse"},
        {"", {}, true, {}, "Bo", " · for Bo"},
        // A department without a person is none.
        {{}, "Nurse", false, {}, {}, ""},
        {"Ana", "Nurse", false, {}, "Bo", "Ana · Nurse"},
        {"Ana", "Nurse", true, {}, "Bo", "Ana · Nurse · for Bo"},
        {{}, {}, true, {}, "Bo", "for Bo"},
        {"Ana", "Nurse", true, {}, {}, "Ana · Nurse"},
        {"Ana", {}, true, Ids{{"1", "2", "3"}}, {}, "Ana · for 3 doctors"},
        {{}, {}, true, Ids{{"1"}}, {}, "for 1 doctors"},
        {{}, {}, true, Ids{std::vector<std::string>{}}, {}, "for 0 doctors"},
        // The list decides, even beside one addressed member.
        {{}, {}, true, Ids{{"1", "2"}}, "Bo", "for 2 doctors"},
        {{}, {}, false, Ids{{"1", "2"}}, {}, ""},
    };
    for (const Case& each : cases) {
        QueueRow row =
            receivedRow(makeSignal("signal-1", [&](auto& signal) { signal.providerIds = each.providerIds; }));
        if (each.requester) {
            row.requester = named(*each.requester);
        }
        row.requesterDepartment = each.department;
        row.showTarget = each.showTarget;
        if (each.provider) {
            row.provider = named(*each.provider);
        }
        EXPECT_EQ(drawn(row, strings).detail, each.detail);
    }
}

TEST(QueueRow, aDepartmentAsTargetIsNotShown) {
    QueueRow row = receivedRow(makeSignal("signal-1", [](auto& signal) { signal.toDepartment = "nurse"; }));
    row.showTarget = true;
    EXPECT_EQ(drawn(row, strings).detail, "");
}

TEST(QueueRow, aNameFromRightToLeftKeepsItsDirectionToItself) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.requester = named("דנה כהן");
    row.requesterDepartment = "Nurse";
    EXPECT_EQ(drawn(row, strings).detail, "\u2068דנה כהן\u2069 · Nurse");
    row.requester = named("سارة");
    EXPECT_EQ(drawn(row, strings).detail, "\u2068سارة\u2069 · Nurse");
    row.requester = named("Żaneta 王 😀 Ω");
    EXPECT_EQ(drawn(row, strings).detail, "Żaneta 王 😀 Ω · Nurse");
}

TEST(QueueRow, aWaitingSignalInOnesOwnListCanBeTakenAndFinished) {
    const DrawnRow shown = drawn(receivedRow(makeSignal("signal-1")), strings);
    ASSERT_THAT(namesOf(shown.buttons), ElementsAre("On my way", "Done"));
    EXPECT_TRUE(shown.chip.prominent);

    const RowButton& take = shown.buttons[0];
    EXPECT_EQ(take.action, RowAction::acknowledge);
    EXPECT_EQ(take.text, "On my way");
    EXPECT_EQ(take.fill, rgb(0x5789F2));
    EXPECT_EQ(take.foreground, fixed(rgb(0xFFFFFF)));

    const RowButton& finish = shown.buttons[1];
    EXPECT_EQ(finish.action, RowAction::done);
    EXPECT_EQ(finish.text, "");
    EXPECT_EQ(finish.symbol, "checkmark");
    EXPECT_EQ(finish.fill, rgb(0x2FA24F));
}

TEST(QueueRow, anAcknowledgedSignalCanBeFinishedAloneAndStaysProminent) {
    const DrawnRow shown = drawn(receivedRow(makeSignalThatIs("acknowledged", "signal-1")), strings);
    EXPECT_THAT(namesOf(shown.buttons), ElementsAre("Done"));
    EXPECT_TRUE(shown.chip.prominent);
}

TEST(QueueRow, onlyTheExactWordWaitingCanBeTaken) {
    for (const char* status : {"Waiting", "waiting ", "", "done", "snoozed"}) {
        EXPECT_THAT(namesOf(drawn(receivedRow(makeSignalThatIs(status, "signal-1")), strings).buttons),
                    ElementsAre("Done"))
            << status;
    }
}

TEST(QueueRow, prominentFollowsWhetherAButtonIsShownNotWhetherItCouldBe) {
    QueueRow row = receivedRow(makeSignalThatIs("acknowledged", "signal-1"));
    row.onDone.reset();
    // It might be acknowledged, but is already.
    EXPECT_THAT(drawn(row, strings).buttons, IsEmpty());
    EXPECT_FALSE(drawn(row, strings).chip.prominent);
    row.onAcknowledge.reset();
    EXPECT_FALSE(drawn(row, strings).chip.prominent);
    row.onCancel = RowAction::cancel;
    EXPECT_TRUE(drawn(row, strings).chip.prominent);
}

TEST(QueueRow, theCancelButtonIsQuiet) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.onCancel = RowAction::cancel;
    const RowButton cancel = drawn(row, strings).buttons.back();
    EXPECT_EQ(cancel.action, RowAction::cancel);
    EXPECT_EQ(cancel.text, "Cancel");
    EXPECT_EQ(cancel.foreground, (theme::ColorPair{.light = rgb(0xC41230), .dark = rgb(0xFF6B7E)}));
    EXPECT_EQ(cancel.fill, rgb(0xE21833, 0.10));
    EXPECT_EQ(cancel.outline, rgb(0xE21833, 0.28));
}

TEST(QueueRow, aWordStandsFurtherFromTheEdgeOfItsButtonThanItsLinesDo) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.onCancel = RowAction::cancel;
    const auto buttons = drawn(row, strings).buttons;
    ASSERT_EQ(buttons.size(), 3U);
    EXPECT_EQ(buttons[0].padding, (ButtonPadding{.horizontal = 12, .vertical = 8}));
    EXPECT_EQ(buttons[1].padding.horizontal, buttons[1].padding.vertical) << "a disc";
    EXPECT_EQ(buttons[2].padding, (ButtonPadding{.horizontal = 12, .vertical = 7}));
}

TEST(QueueRow, theCheckButtonIsCalledDoneUnlessItHasAnotherName) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.completionLabel = "";
    EXPECT_THAT(namesOf(drawn(row, strings).buttons), ElementsAre("On my way", "Done"));
    row.completionLabel = "Mark completed";
    EXPECT_THAT(namesOf(drawn(row, strings).buttons), ElementsAre("On my way", "Mark completed"));
}

TEST(QueueRow, theBadgeCountsTheListWhateverItsLength) {
    const auto badgeOf = [](std::optional<std::vector<std::string>> ids) {
        return drawn(receivedRow(makeSignal("1", [&](auto& signal) { signal.providerIds = ids; })), strings).combined;
    };
    EXPECT_EQ(badgeOf(std::nullopt), std::nullopt);
    EXPECT_EQ(badgeOf({{"1", "2", "3"}}), (CombinedBadge{.count = 3, .text = "Combined · 3"}));
    EXPECT_EQ(badgeOf({{"1"}}), (CombinedBadge{.count = 1, .text = "Combined · 1"}));
    EXPECT_EQ(badgeOf(std::vector<std::string>{}), (CombinedBadge{.count = 0, .text = "Combined · 0"}));
}

TEST(QueueRow, thePositionIsNumbered) {
    QueueRow row = receivedRow(makeSignal("signal-1"));
    row.position = 3;
    EXPECT_EQ(drawn(row, strings).position, "#3");
}

TEST(QueueRow, thePressesHaveTheServersWords) {
    EXPECT_EQ(rawValue(RowAction::acknowledge), "acknowledge");
    EXPECT_EQ(rawValue(RowAction::done), "done");
    EXPECT_EQ(rawValue(RowAction::cancel), "cancel");
}

TEST(StatusChip, eachStatusHasItsColours) {
    struct Case {
        std::string status;
        std::string text;
        theme::ColorPair color;
        theme::ColorPair fill;
    };
    const theme::ColorPair stoneText{.light = rgb(0x6E6553), .dark = rgb(0xA29A8B)};
    const theme::ColorPair faint{.light = rgb(0x8A8170, 0.16), .dark = rgb(0x8F8A80, 0.16)};
    const std::vector<Case> cases{
        {"waiting", "status-waiting", fixed(rgb(0x1A1206)), fixed(rgb(0xFFE14D))},
        {"acknowledged",
         "status-acknowledged-short",
         {.light = rgb(0x3457C4), .dark = rgb(0x8FB0F7)},
         fixed(rgb(0x5789F2, 0.16))},
        {"done", "status-done", {.light = rgb(0x1E7A38), .dark = rgb(0x57C077)}, fixed(rgb(0x2FA24F, 0.16))},
        {"canceled", "ui-status-canceled", stoneText, faint},
        {"expired", "ui-status-expired", stoneText, faint},
        {"Waiting", "Waiting", stoneText, faint},
        {"on hold", "On Hold", stoneText, faint},
        {"", "", stoneText, faint},
    };
    for (const Case& each : cases) {
        const StatusChip chip = statusChip(each.status, true, strings);
        EXPECT_EQ(chip.text, each.text);
        EXPECT_EQ(chip.textColor, each.color) << each.status;
        EXPECT_EQ(chip.fill, each.fill) << each.status;
        EXPECT_TRUE(chip.prominent);
    }
}

TEST(StatusDot, eachStatusHasItsColour) {
    EXPECT_EQ(statusDotColor("available", DotPlace::plain), fixed(rgb(0x2FA24F)));
    EXPECT_EQ(statusDotColor("busy", DotPlace::plain), fixed(rgb(0xFFE14D)));
    EXPECT_EQ(statusDotColor("busy", DotPlace::onSelectedBackground), fixed(rgb(0x1A1206)));
    EXPECT_EQ(statusDotColor("available", DotPlace::onSelectedBackground), fixed(rgb(0x2FA24F)));
    EXPECT_EQ(statusDotColor("dnd", DotPlace::plain), fixed(rgb(0x8A8170)));
    for (const std::optional<std::string>& status :
         {std::optional<std::string>{}, std::optional<std::string>{""}, std::optional<std::string>{"Busy"},
          std::optional<std::string>{"away"}}) {
        EXPECT_EQ(statusDotColor(status, DotPlace::plain), theme::textTertiary);
        EXPECT_EQ(statusDotColor(status, DotPlace::onSelectedBackground), theme::textTertiary);
    }
}

}  // namespace
}  // namespace zelkovanta::screens
