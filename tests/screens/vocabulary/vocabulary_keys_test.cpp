#include "screens/vocabulary/vocabulary_keys.h"

#include "screens/vocabulary/vocabulary.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::vocabulary {
namespace {

using Keys = std::set<std::string, std::less<>>;
using Text = std::optional<std::string>;

const std::vector<Text> verticals{"dental",  "medical", "veterinary", "eyecare",   "dermatology",
                                  "therapy", "other",   "podiatry",   std::nullopt};

/// Writes down what is looked up.
class RecordingTable final : public platform::StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view key) const override {
        keys_.emplace(key);
        return {};
    }
    [[nodiscard]] const Keys& keys() const { return keys_; }

private:
    mutable Keys keys_;
};

template <class Listed>
Keys setOf(const Listed& listed) {
    return {listed.begin(), listed.end()};
}

Keys departmentsLookedUp(Count count) {
    const RecordingTable table;
    for (const Text& vertical : verticals) {
        records::Office office;
        office.vertical = vertical;
        for (const std::string name :
             {"provider", "hygienist", "assistant", "frontdesk", "nurse", "ma", "vettech", "eyetech", "technician",
              "scribe", "optician", "esthetician", "aide", "clinical"}) {
            EXPECT_EQ(departmentLabel(office, name, count, table), "");
        }
    }
    return table.keys();
}

TEST(VocabularyKeysTest, theListsHoldJustTheDepartmentsThatAreLookedUp) {
    EXPECT_EQ(departmentsLookedUp(Count::one), setOf(departmentKeys));
    EXPECT_EQ(departmentsLookedUp(Count::many), setOf(pluralDepartmentKeys));
}

TEST(VocabularyKeysTest, theListHoldsJustTheSignalsThatAreLookedUp) {
    const RecordingTable table;
    for (const Text& vertical : verticals) {
        for (const std::string_view key : {"ready", "patient_seated", "step_out", "urgent"}) {
            EXPECT_EQ(signalTypeLabel(key, "Own", vertical, table), "");
        }
    }
    EXPECT_EQ(table.keys(), setOf(signalKeys));
}

TEST(VocabularyKeysTest, theListsHoldJustTheStatusesAndRoomTextsThatAreLookedUp) {
    const RecordingTable signalStatuses;
    for (const std::string_view status : {"waiting", "acknowledged", "done", "canceled", "expired"}) {
        EXPECT_EQ(statusLabel(status, signalStatuses), "");
    }
    EXPECT_EQ(signalStatuses.keys(), setOf(statusKeys));

    const RecordingTable memberStatuses;
    for (const auto status :
         {records::MemberStatus::available, records::MemberStatus::busy, records::MemberStatus::dnd}) {
        EXPECT_EQ(memberStatusLabel(status, memberStatuses), "");
    }
    EXPECT_EQ(memberStatuses.keys(), setOf(memberKeys));

    const RecordingTable rooms;
    for (const auto text : {RoomText::hintSignedIn, RoomText::hintByAdmin, RoomText::homeRoomOption}) {
        EXPECT_EQ(roomText(text, "Room 3", rooms), "");
    }
    EXPECT_EQ(rooms.keys(), setOf(roomKeys));
}

}  // namespace
}  // namespace zelkovanta::screens::vocabulary
