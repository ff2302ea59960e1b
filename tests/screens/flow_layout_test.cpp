#include "screens/flow_layout.h"

#include <algorithm>
#include <ranges>
#include <rapidcheck.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::screens {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Pieces = std::vector<LayoutSize>;

TEST(FlowLayout, breaksLinesLikeWords) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    const Pieces pieces{{40, 10}, {30, 20}, {20, 12}, {90, 8}, {10, 10}};
    const auto rows = layout.rows(pieces, 100);
    // 40 + 10 + 30 = 80; with 10 + 20 more it would be 110.
    EXPECT_THAT(rows, ElementsAre(FlowLayout::Row{.items = {0, 1}, .width = 80, .height = 20},
                                  FlowLayout::Row{.items = {2}, .width = 20, .height = 12},
                                  FlowLayout::Row{.items = {3}, .width = 90, .height = 8},
                                  FlowLayout::Row{.items = {4}, .width = 10, .height = 10}));
    EXPECT_EQ(layout.size(pieces, 100), (LayoutSize{90, 20 + 12 + 8 + 10 + 3 * 5}));
    EXPECT_THAT(layout.places(pieces, 100), ElementsAre(LayoutPoint{0, 0}, LayoutPoint{50, 0}, LayoutPoint{0, 25},
                                                        LayoutPoint{0, 42}, LayoutPoint{0, 55}));
}

TEST(FlowLayout, aPieceThatFitsExactlyStays) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    EXPECT_EQ(layout.rows(Pieces{{40, 10}, {50, 10}}, 100).size(), 1U);
    EXPECT_EQ(layout.rows(Pieces{{40, 10}, {50.5, 10}}, 100).size(), 2U);
}

TEST(FlowLayout, onePieceWiderThanTheWidthIsOneRowAndReportsTheWidth) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    const Pieces pieces{{250, 10}};
    EXPECT_THAT(layout.rows(pieces, 100), ElementsAre(FlowLayout::Row{.items = {0}, .width = 250, .height = 10}));
    EXPECT_EQ(layout.size(pieces, 100), (LayoutSize{100, 10}));
    EXPECT_THAT(layout.places(pieces, 100), ElementsAre(LayoutPoint{0, 0}));
}

TEST(FlowLayout, aWidePieceBetweenOthersHasARowOfItsOwn) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 0};
    const auto rows = layout.rows(Pieces{{20, 10}, {250, 10}, {20, 10}}, 100);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[1].items, ElementsAre(1));
}

TEST(FlowLayout, withoutAWidthEverythingStandsInOneRow) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    const Pieces pieces{{4000, 10}, {3000, 20}, {2000, 12}};
    EXPECT_EQ(layout.rows(pieces, std::nullopt).size(), 1U);
    EXPECT_EQ(layout.size(pieces, std::nullopt), (LayoutSize{9020, 20}));
}

TEST(FlowLayout, withoutPiecesThereIsNothing) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    EXPECT_THAT(layout.rows({}, 100), IsEmpty());
    EXPECT_EQ(layout.size({}, 100), LayoutSize{});
    EXPECT_EQ(layout.size({}, std::nullopt), LayoutSize{});
    EXPECT_THAT(layout.places({}, 100), IsEmpty());
}

TEST(FlowLayout, aShorterPieceStandsAtTheTopOfItsRow) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    EXPECT_THAT(layout.places(Pieces{{10, 40}, {10, 8}}, 100), ElementsAre(LayoutPoint{0, 0}, LayoutPoint{20, 0}));
}

TEST(FlowLayout, linesThatOverlapTakeNoLessThanTheirHeights) {
    const FlowLayout layout{.spacing = 0, .lineSpacing = -4};
    EXPECT_EQ(layout.size(Pieces{{60, 10}, {60, 10}}, 100), (LayoutSize{60, 20}));
}

TEST(FlowLayout, thereIsNoWidthWithoutRoom) {
    const FlowLayout layout{.spacing = 10, .lineSpacing = 5};
    const Pieces pieces{{30, 10}, {30, 10}};
    EXPECT_EQ(layout.rows(pieces, 0).size(), 2U);
    EXPECT_EQ(layout.size(pieces, 0), (LayoutSize{0, 25}));
}

RC_GTEST_PROP(FlowLayout, everyPieceIsPlacedOnceInOrderAndNoneTouchesAnother, ()) {
    const auto number = [](int most) { return static_cast<double>(*rc::gen::inRange(0, most)); };
    Pieces pieces;
    for (auto count = *rc::gen::inRange(0, 30); count > 0; --count) {
        pieces.push_back({number(120), number(40)});
    }
    const FlowLayout layout{.spacing = number(12), .lineSpacing = number(12)};
    const double width = number(300);
    const auto rows = layout.rows(pieces, width);
    const auto places = layout.places(pieces, width);

    std::vector<std::size_t> order;
    for (const auto& row : rows) {
        RC_ASSERT(!row.items.empty());
        RC_ASSERT(row.items.size() == 1 || row.width <= width);
        order.insert(order.end(), row.items.begin(), row.items.end());
    }
    RC_ASSERT(std::ranges::equal(order, std::views::iota(std::size_t{0}, pieces.size())));
    RC_ASSERT(places.size() == pieces.size());

    for (std::size_t index = 1; index < pieces.size(); ++index) {
        const bool isBeside = places[index].y == places[index - 1].y &&
                              places[index].x == places[index - 1].x + pieces[index - 1].width + layout.spacing;
        const bool isBelow = places[index].x == 0 && places[index].y >= places[index - 1].y + pieces[index - 1].height;
        RC_ASSERT(isBeside || isBelow);
    }
    // A row breaks only where the next piece does not fit.
    for (std::size_t index = 1; index < rows.size(); ++index) {
        RC_ASSERT(rows[index - 1].width + layout.spacing + pieces[rows[index].items.front()].width > width);
    }
    const LayoutSize size = layout.size(pieces, width);
    double bottom = 0;
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        bottom = std::max(bottom, places[index].y + pieces[index].height);
    }
    RC_ASSERT(size.height >= bottom);
    RC_ASSERT(size.width <= width);
}

}  // namespace
}  // namespace zelkovanta::screens
