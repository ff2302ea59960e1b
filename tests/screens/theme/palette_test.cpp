#include "screens/theme/palette.h"

#include "tests/screens/theme/contrast.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::theme {
namespace {

/// "#RRGGBB", with the opacity in per cent behind it where it is not full.
std::string hex(const Color& color) {
    const auto byte = [](double channel) { return static_cast<unsigned>(std::lround(channel * 255)); };
    char text[32];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", byte(color.red), byte(color.green), byte(color.blue));
    const auto percent = std::lround(color.opacity * 100);
    return percent == 100 ? text : text + (" " + std::to_string(percent));
}

TEST(Palette, theBrandsColoursAreTheseInBothAppearances) {
    EXPECT_EQ(hex(brandYellow), "#FFE14D");
    EXPECT_EQ(hex(brandYellowLight), "#FFEA6B");
    EXPECT_EQ(hex(highlightYellow), "#F2C94C");
    EXPECT_EQ(hex(ink), "#1A1206");
    EXPECT_EQ(hex(brandOrange), "#FF8C28");
    EXPECT_EQ(hex(brandBlue), "#5789F2");
    EXPECT_EQ(hex(brandRed), "#E21833");
    EXPECT_EQ(hex(brandGreen), "#2FA24F");
    EXPECT_EQ(hex(stone), "#8A8170");
}

TEST(Palette, everythingElseIsAPairOfALightAndADarkColour) {
    struct Case {
        const char* name;
        ColorPair pair;
        std::string light;
        std::string dark;
    };
    const std::vector<Case> cases{
        {"pageBackground", pageBackground, "#FFFFFF", "#141018"},
        {"sidebarBackground", sidebarBackground, "#F7F2E4", "#191521"},
        {"cardBackground", cardBackground, "#FFFFFF", "#1E1B24"},
        {"textPrimary", textPrimary, "#1A1206", "#F3EFE6"},
        {"textSecondary", textSecondary, "#5C5142", "#C9C4BB"},
        {"textTertiary", textTertiary, "#8A8170", "#8F8A80"},
        {"hairline", hairline, "#1A1206 8", "#FFFFFF 14"},
        {"blueText", blueText, "#3457C4", "#8FB0F7"},
        {"redText", redText, "#C41230", "#FF6B7E"},
        {"greenText", greenText, "#1E7A38", "#57C077"},
        {"stoneText", stoneText, "#6E6553", "#A29A8B"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(hex(each.pair.in(Appearance::light)), each.light) << each.name;
        EXPECT_EQ(hex(each.pair.in(Appearance::dark)), each.dark) << each.name;
    }
}

TEST(Palette, theAccentsComeInThisOrder) {
    const std::vector<std::pair<std::string, std::string>> accents{
        {"#3457C4", "#8FB0F7"}, {"#0B7A6E", "#3FC9B8"}, {"#6647C0", "#A78BF0"},
        {"#9E5405", "#FFA85C"}, {"#A63D8F", "#E07BC4"}, {"#1E7A38", "#57C077"},
    };
    for (std::size_t index = 0; index < accents.size(); ++index) {
        const ColorPair& accent = accentPalette(static_cast<std::int64_t>(index));
        EXPECT_EQ(hex(accent.light), accents[index].first);
        EXPECT_EQ(hex(accent.dark), accents[index].second);
    }
}

TEST(Palette, anAccentOfAnyIndexWraps) {
    EXPECT_EQ(accentPalette(-1), accentPalette(5));
    EXPECT_EQ(accentPalette(6), accentPalette(0));
    EXPECT_EQ(accentPalette(-6), accentPalette(0));
    EXPECT_EQ(accentPalette(-7), accentPalette(5));
    EXPECT_EQ(accentPalette(13), accentPalette(1));
    EXPECT_EQ(accentPalette(std::numeric_limits<std::int64_t>::max()), accentPalette(1));  // 2^63 - 1 = 6 n + 1
    EXPECT_EQ(accentPalette(std::numeric_limits<std::int64_t>::min()), accentPalette(4));  // -2^63 = 6 n - 2
}

TEST(Palette, whatIsToBeReadCanBeRead) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        const Color& card = cardBackground.in(appearance);
        for (const ColorPair& text : {textPrimary, textSecondary, blueText, redText, greenText, stoneText}) {
            EXPECT_GE(wcagContrast(text.in(appearance), card), 4.5) << hex(text.in(appearance));
        }
        for (const ColorPair& accent : accentColors) {
            EXPECT_GE(wcagContrast(accent.in(appearance), card), 4.5) << hex(accent.in(appearance));
        }
    }
    EXPECT_GE(wcagContrast(ink, brandYellow), 4.5);
}

TEST(Palette, tertiaryTextIsFaintOnWhite) {
    EXPECT_LT(wcagContrast(textTertiary.light, white), 4.5);
    EXPECT_GT(wcagContrast(textTertiary.light, white), 3.0);
    EXPECT_GE(wcagContrast(textTertiary.dark, cardBackground.dark), 4.5);
}

}  // namespace
}  // namespace zelkovanta::screens::theme
