#include "screens/queue_row_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Pieces = std::vector<LayoutSize>;

const Pieces chips{{80, 24}, {60, 20}};
const Pieces buttons{{90, 32}, {32, 32}};
constexpr double oneLine = 80 + 8 + 60 + 8 + 90 + 8 + 32;

TEST(ActionBar, standsInOneLineWhereItFits) {
    const auto layout = actionBarLayout(chips, buttons, oneLine);
    EXPECT_FALSE(layout.stacked);
    EXPECT_THAT(layout.chips, ElementsAre(LayoutPoint{0, 2 + 4}, LayoutPoint{88, 2 + 6}));
    EXPECT_THAT(layout.buttons, ElementsAre(LayoutPoint{156, 2}, LayoutPoint{254, 2}));
    EXPECT_EQ(layout.size, (LayoutSize{oneLine, 34}));
}

TEST(ActionBar, foldsTheButtonsUnderTheChipsWhereItDoesNot) {
    const auto layout = actionBarLayout(chips, buttons, oneLine - 0.5);
    EXPECT_TRUE(layout.stacked);
    EXPECT_THAT(layout.chips, ElementsAre(LayoutPoint{0, 2}, LayoutPoint{88, 2 + 2}));
    EXPECT_THAT(layout.buttons, ElementsAre(LayoutPoint{0, 2 + 24 + 6}, LayoutPoint{98, 2 + 24 + 6}));
    EXPECT_EQ(layout.size, (LayoutSize{148, 2 + 24 + 6 + 32}));
}

TEST(ActionBar, staysFoldedWhereNothingFits) {
    const auto layout = actionBarLayout(chips, buttons, 20);
    EXPECT_TRUE(layout.stacked);
    EXPECT_EQ(layout.size.width, 148);
}

TEST(ActionBar, withoutButtonsThereIsOneLine) {
    const auto layout = actionBarLayout(chips, {}, 20);
    EXPECT_FALSE(layout.stacked);
    EXPECT_THAT(layout.buttons, IsEmpty());
    EXPECT_EQ(layout.size, (LayoutSize{148, 26}));
}

TEST(ActionBar, withoutChipsTheButtonsBeginTheLine) {
    const auto layout = actionBarLayout({}, buttons, 20);
    EXPECT_FALSE(layout.stacked);
    EXPECT_THAT(layout.buttons, ElementsAre(LayoutPoint{0, 2}, LayoutPoint{98, 2}));
}

}  // namespace
}  // namespace zelkovanta::screens
