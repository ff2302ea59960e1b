#include "platform/simulated/simulated_appearance.h"
#include "screens/qml/brand_mark.h"
#include "screens/qml/symbols.h"
#include "tests/desktop/piece_fixture.h"

#include <cmath>

#include <QPainter>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

using namespace screens::qml;

QImage markIn(QSize size, const QRectF& place, const QColor& color = Qt::black) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintBrandMark(painter, color, place);
    return image;
}

/// How much of the grid's point is covered, in a picture of `scaleX` by `scaleY` pixels to each of its points.
int alphaAt(const QImage& image, double x, double y, double scaleX, double scaleY) {
    return image.pixelColor(static_cast<int>(std::floor(x * scaleX)), static_cast<int>(std::floor(y * scaleY))).alpha();
}

struct Scale {
    double x;
    double y;
};

class Mark : public testing::TestWithParam<Scale> {};

INSTANTIATE_TEST_SUITE_P(InEveryProportion, Mark,
                         testing::Values(Scale{4, 4}, Scale{4, 2}, Scale{2, 5}, Scale{3.5, 3.5}));

TEST_P(Mark, hasItsDiscAndItsStrokesWhereItsPlacePutsThem) {
    const auto [x, y] = GetParam();
    const QSize size{static_cast<int>(200 * x), static_cast<int>(240 * y)};
    const QImage image = markIn(size, {{0, 0}, QSizeF{size}});
    const auto alpha = [&](double column, double row) { return alphaAt(image, column, row, x, y); };
    // The disc: as wide and as high as the place makes it.
    EXPECT_EQ(alpha(94, 38), 255);
    EXPECT_EQ(alpha(94 - 26, 38), 255);
    EXPECT_EQ(alpha(94 + 26, 38), 255);
    EXPECT_EQ(alpha(94, 38 - 26), 255);
    EXPECT_EQ(alpha(94 - 28, 38), 0);
    EXPECT_EQ(alpha(94, 38 - 28), 0);
    // On the lines, and in the middle of the curve: (x0 + 3 x1 + 3 x2 + x3) / 8.
    EXPECT_EQ(alpha(94, 200), 255);
    EXPECT_EQ(alpha(56, 71), 255);
    EXPECT_EQ(alpha((94 + 3 * 160 + 3 * 170 + 96) / 8.0, (100 + 3 * 100 + 3 * 146 + 156) / 8.0), 255);
    EXPECT_EQ(alpha(126, 185), 255);
    EXPECT_EQ(alpha(30, 150), 0);
    EXPECT_EQ(alpha(190, 60), 0);
    // Strokes are 37 wide at the smaller of the two scales, here to the left of the upright one.
    const double half = 37.0 / 2 * std::min(x, y) / x;
    EXPECT_EQ(alpha(94 - half + 1, 190), 255);
    EXPECT_EQ(alpha(94 - half - 1, 190), 0);
    // Round ends: beyond the last point in the middle, and not in the corner.
    const double reach = 37.0 / 2 * std::min(x, y) / y;
    EXPECT_EQ(alpha(94, 214 + reach - 1), 255);
    EXPECT_EQ(alpha(94 - half + 1, 214 + reach - 1), 0);
}

TEST(MarkOfTheTray, standsInSeventeenPixelsOfHeight) {
    const QImage image = markIn({15, 17}, {0, 0, 200.0 * 17 / 240, 17});
    int painted = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            painted += color.alpha() > 127 ? 1 : 0;
            if (color.alpha() > 0) {
                EXPECT_EQ(color.lightness(), 0) << "it is tinted by whoever shows it";
            }
        }
    }
    EXPECT_GT(painted, 60);
    EXPECT_LT(painted, 150);
    EXPECT_GT(image.pixelColor(6, 2).alpha(), 200) << "its disc";
}

TEST(MarkOfTheTray, aColourThatLetsSomethingThroughIsNowhereLaidOnTwice) {
    const QImage image = markIn({200, 240}, {0, 0, 200, 240}, QColor(0, 0, 0, 100));
    int most = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            most = std::max(most, image.pixelColor(x, y).alpha());
        }
    }
    EXPECT_EQ(most, 100);
}

TEST(Tile, holdsTheMarkWithinItsMargin) {
    for (const int side : {16, 32, 64, 256}) {
        const QColor yellow("#FFE14D");
        const QColor ink("#1A1206");
        const QImage image = brandTileImage(side, yellow, ink);
        ASSERT_EQ(image.size(), QSize(side, side));
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "its corners are round";
        EXPECT_EQ(image.pixelColor(side / 2, 0), yellow);
        const double inset = 0.19 * side;
        QRect marked;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                if (image.pixelColor(x, y).alpha() == 255 && image.pixelColor(x, y) != yellow) {
                    marked |= QRect{x, y, 1, 1};
                }
            }
        }
        EXPECT_GE(marked.left(), std::floor(inset) - 1) << side;
        EXPECT_GE(marked.top(), std::floor(inset)) << side;
        EXPECT_LE(marked.right(), std::ceil(side - inset)) << side;
        EXPECT_LE(marked.bottom(), std::ceil(side - inset)) << side;
        // The disc's middle, from the grid onto the square that is left.
        const double inner = side - 2 * inset;
        const QPoint disc{static_cast<int>(inset + inner * 94 / 200), static_cast<int>(inset + inner * 38 / 240)};
        EXPECT_EQ(image.pixelColor(disc), ink) << side;
    }
}

TEST(Tile, isTheSameInAWindow) {
    Piece piece(R"(BrandTile { size: 64 })");
    const QImage shown = piece.picture();
    const double ratio = shown.devicePixelRatio();
    const auto side = static_cast<int>(64 * ratio);
    const QImage drawn = brandTileImage(side, QColor("#FFE14D"), QColor("#1A1206"));
    int apart = 0;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            if (drawn.pixelColor(x, y).alpha() == 255) {
                apart += std::abs(drawn.pixelColor(x, y).green() - shown.pixelColor(x, y).green()) > 40 ? 1 : 0;
            }
        }
    }
    EXPECT_LT(apart, side * side / 100) << "but for the pixels of its edges";
}

TEST(Wordmark, isTwoWordsOfWhichOneStandsOnAPlate) {
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        Piece piece(R"(BrandWordmark { objectName: "wordmark"; size: 40; x: 20; y: 20 })", appearance, {400, 120});
        const QQuickItem* const wordmark = piece.item("wordmark");
        ASSERT_EQ(wordmark->childItems().size(), 2);
        const QQuickItem* const first = wordmark->childItems()[0];
        const QQuickItem* const plate = wordmark->childItems()[1];
        ASSERT_EQ(plate->childItems().size(), 1);
        const QQuickItem* const second = plate->childItems()[0];
        EXPECT_EQ(first->property("text"), "Zelko");
        EXPECT_EQ(first->property("color").value<QColor>(), piece.theme().primary());
        EXPECT_EQ(second->property("text"), "Vanta");
        EXPECT_EQ(second->property("color").value<QColor>(), QColor("#1A1206"));
        EXPECT_EQ(plate->property("color").value<QColor>(), QColor("#FFE14D"));
        EXPECT_NEAR(plate->width(), second->implicitWidth() + 2 * 0.32 * 40, 1);
        EXPECT_NEAR(plate->height(), second->implicitHeight() + 2, 1);
        EXPECT_NEAR(second->x() + second->width() / 2, plate->width() / 2, 1);
    }
}

TEST(Wordmark, isSaidAsOneWord) {
    const Piece piece(R"(BrandWordmark {})");
    std::vector<std::string> said;
    for (const Node& node : piece.nodes()) {
        if (node.role == QAccessible::StaticText) {
            said.push_back(node.name);
        }
    }
    EXPECT_EQ(said, std::vector<std::string>{"ZelkoVanta"});
}

}  // namespace
}  // namespace zelkovanta::desktop_test
