#include "screens/vocabulary/vocabulary.h"
#include "tests/screens/vocabulary/marking_table.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::vocabulary {
namespace {

using Text = std::optional<std::string>;

struct SignalRow {
    std::string key;
    Text vertical;
    std::string text;
};

void expectRows(const std::vector<SignalRow>& rows) {
    const MarkingTable table;
    for (const auto& row : rows) {
        EXPECT_EQ(signalTypeLabel(row.key, "Own label", row.vertical, table), row.text)
            << row.key << " in " << row.vertical.value_or("(absent)");
    }
}

TEST(SignalTypeLabelTest, readyHasAKeyForEachVerticalButTheDentist) {
    expectRows({{"ready", "medical", "<signal-ready-medical>"},
                {"ready", "veterinary", "<signal-ready-veterinary>"},
                {"ready", "eyecare", "<signal-ready-eyecare>"},
                {"ready", "dermatology", "<signal-ready-dermatology>"},
                {"ready", "therapy", "<signal-ready-therapy>"},
                {"ready", "other", "<signal-ready-other>"},
                {"ready", "dental", "<signal-ready>"},
                {"ready", std::nullopt, "<signal-ready>"},
                {"ready", "", "<signal-ready>"},
                {"ready", "podiatry", "<signal-ready>"}});
}

TEST(SignalTypeLabelTest, seatedHasNoKeyForOther) {
    expectRows({{"patient_seated", "medical", "<signal-seated-medical>"},
                {"patient_seated", "veterinary", "<signal-seated-veterinary>"},
                {"patient_seated", "eyecare", "<signal-seated-eyecare>"},
                {"patient_seated", "dermatology", "<signal-seated-dermatology>"},
                {"patient_seated", "therapy", "<signal-seated-therapy>"},
                {"patient_seated", "other", "<signal-patient-seated>"},
                {"patient_seated", "dental", "<signal-patient-seated>"},
                {"patient_seated", std::nullopt, "<signal-patient-seated>"},
                {"patient_seated", "podiatry", "<signal-patient-seated>"}});
}

TEST(SignalTypeLabelTest, theVerticalCountsInAnyCase) {
    expectRows({{"ready", "Medical", "<signal-ready-medical>"},
                {"ready", "OTHER", "<signal-ready-other>"},
                {"ready", " medical", "<signal-ready>"},
                {"patient_seated", "EyeCare", "<signal-seated-eyecare>"}});
}

TEST(SignalTypeLabelTest, steppingOutAndUrgencyReadAlikeEverywhere) {
    for (const Text& vertical : {Text{"dental"}, Text{"veterinary"}, Text{"other"}, Text{}}) {
        expectRows({{"step_out", vertical, "<signal-step-out>"}, {"urgent", vertical, "<signal-urgent>"}});
    }
}

TEST(SignalTypeLabelTest, anyOtherKeyShowsTheOfficesLabelWithNoLookUp) {
    for (const Text& vertical : {Text{"dental"}, Text{"medical"}, Text{"other"}, Text{}}) {
        expectRows({{"coffee", vertical, "Own label"},
                    {"Ready", vertical, "Own label"},
                    {"READY", vertical, "Own label"},
                    {"ready ", vertical, "Own label"},
                    {"patient-seated", vertical, "Own label"},
                    {"Urgent", vertical, "Own label"},
                    {"", vertical, "Own label"}});
    }
    EXPECT_EQ(signalTypeLabel("coffee", "", "dental", MarkingTable{}), "");
}

TEST(StatusLabelTest, theKnownWordsHaveTheKeysOfTheirTwoFamilies) {
    const MarkingTable table;
    EXPECT_EQ(statusLabel("waiting", table), "<status-waiting>");
    EXPECT_EQ(statusLabel("acknowledged", table), "<status-acknowledged-short>");
    EXPECT_EQ(statusLabel("done", table), "<status-done>");
    EXPECT_EQ(statusLabel("canceled", table), "<ui-status-canceled>");
    EXPECT_EQ(statusLabel("expired", table), "<ui-status-expired>");
}

TEST(StatusLabelTest, anyOtherWordIsShownCapitalised) {
    const MarkingTable table;
    EXPECT_EQ(statusLabel("on hold", table), "On Hold");
    EXPECT_EQ(statusLabel("cancelled", table), "Cancelled");
    EXPECT_EQ(statusLabel("Waiting", table), "Waiting");
    EXPECT_EQ(statusLabel("DONE", table), "Done");
    EXPECT_EQ(statusLabel("", table), "");
}

TEST(MemberStatusLabelTest, eachStatusHasItsKey) {
    const MarkingTable table;
    EXPECT_EQ(memberStatusLabel(records::MemberStatus::available, table), "<member-available>");
    EXPECT_EQ(memberStatusLabel(records::MemberStatus::busy, table), "<member-busy>");
    EXPECT_EQ(memberStatusLabel(records::MemberStatus::dnd, table), "<member-dnd>");
}

class OneText final : public platform::StringTable {
public:
    explicit OneText(std::string text) : text_(std::move(text)) {}
    [[nodiscard]] std::string localized(std::string_view) const override { return text_; }

private:
    std::string text_;
};

TEST(RoomTextTest, eachTextHasItsKey) {
    const MarkingTable table;
    EXPECT_EQ(roomText(RoomText::hintSignedIn, "Room 3", table), "<hint-home-room-signed-in>");
    EXPECT_EQ(roomText(RoomText::hintByAdmin, "Room 3", table), "<hint-home-room-by-admin>");
    EXPECT_EQ(roomText(RoomText::homeRoomOption, "Room 3", table), "<label-home-room-option>");
}

TEST(RoomTextTest, theRoomTakesThePlaceOfEveryPlaceholder) {
    const auto text = [](std::string pattern, std::string_view room) {
        return roomText(RoomText::hintSignedIn, room, OneText{std::move(pattern)});
    };
    EXPECT_EQ(text("{room}: send from {room}.", "Room 3"), "Room 3: send from Room 3.");
    EXPECT_EQ(text("No placeholder", "Room 3"), "No placeholder");
    EXPECT_EQ(text("{room}{room}", "{room}"), "{room}{room}");
    EXPECT_EQ(text("{Room} {room", "Room 3"), "{Room} {room");
    EXPECT_EQ(text("100 % {room}", "%lld %@"), "100 % %lld %@");
}

}  // namespace
}  // namespace zelkovanta::screens::vocabulary
