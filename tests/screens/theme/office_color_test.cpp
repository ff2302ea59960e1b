#include "screens/theme/office_color.h"

#include "screens/theme/palette.h"
#include "tests/screens/theme/contrast.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::screens::theme {
namespace {

constexpr double rounding = 1e-9;

std::string hexText(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06X", value);
    return text;
}

rc::Gen<std::uint32_t> anyColor() {
    return rc::gen::resize(rc::kNominalSize, rc::gen::inRange<std::uint32_t>(0, 0x1000000));
}

/// Where the colour stands on the circle of hues, in degrees; the angle of its channels laid out on three axes that are
/// a third of a circle apart.
double hueOf(const Color& color) {
    const double alpha = color.red - (color.green + color.blue) / 2;
    const double beta = std::numbers::sqrt3 / 2 * (color.green - color.blue);
    return std::atan2(beta, alpha) * 180 / std::numbers::pi;
}

double saturationOf(const Color& color) {
    const auto [least, most] = std::minmax({color.red, color.green, color.blue});
    return most > 0 ? 1 - least / most : 0;
}

double brightnessOf(const Color& color) {
    return std::max({color.red, color.green, color.blue});
}

void expectLegible(const std::string& text) {
    const ColorPair pair = adaptiveOfficeColor(text);
    EXPECT_GE(wcagContrast(pair.light, cardBackground.light), 4.5 - rounding) << text << " in light";
    EXPECT_GE(wcagContrast(pair.dark, cardBackground.dark), 4.5 - rounding) << text << " in dark";
    for (const Color& color : {pair.light, pair.dark}) {
        EXPECT_EQ(color.opacity, 1);
        for (const double channel : {color.red, color.green, color.blue}) {
            EXPECT_TRUE(channel >= 0 && channel <= 1) << text;
        }
    }
}

TEST(ParseHexColor, readsSixDigitsInEitherCase) {
    for (const char* text : {"#12A5f4", "12A5F4", "12a5f4", "  #12A5F4\r\n", "\t12a5F4 ", "\u00A0#12a5f4\u2003"}) {
        EXPECT_EQ(parseHexColor(text), (Color{.red = 0x12 / 255.0, .green = 0xA5 / 255.0, .blue = 0xF4 / 255.0}))
            << text;
    }
    EXPECT_EQ(parseHexColor("#000000"), (Color{0, 0, 0, 1}));
    EXPECT_EQ(parseHexColor("FFFFFF"), (Color{1, 1, 1, 1}));
}

TEST(ParseHexColor, takesNothingElse) {
    for (const char* text : {"",           "#",         "#FFF",    "FFF",          "#FFE14",        "#FFE14D0",
                             "##FFE14D",   "# FFE14D",  "#GGE14D", "#FFE1 4D",     "0xFFE1",        "+FFE14",
                             "-FFE14",     "#FFE14D80", "yellow",  "#FFE14\u0301", "#FFE14D\u0301", "ＦＦＥ１４Ｄ",
                             "rgb(1,2,3)", "#12345\xFF"}) {
        EXPECT_EQ(parseHexColor(text), std::nullopt) << text;
    }
}

TEST(OfficeColor, aDiscAlwaysHasAColour) {
    EXPECT_EQ(officeColor("#336699"), rgb(0x336699));
    EXPECT_EQ(officeColor("#369"), brandOrange);
    EXPECT_EQ(officeColor("#GGGGGG"), brandOrange);
    EXPECT_EQ(officeColor(""), brandOrange);
}

TEST(OfficeColor, theHandPickedColoursAreFixedOnDiscs) {
    EXPECT_EQ(officeColor("#FFE14D"), rgb(0xFFE14D));
}

struct Picked {
    std::string office;
    std::uint32_t light;
    std::uint32_t dark;
};

const std::vector<Picked>& pickedColors() {
    static const std::vector<Picked> colors{
        {"FFE14D", 0x765B00, 0xFFE14D}, {"FF8C28", 0x9E5405, 0xFFA85C}, {"12A594", 0x0B7A6E, 0x3FC9B8},
        {"5789F2", 0x3457C4, 0x8FB0F7}, {"7C5CD6", 0x6647C0, 0xA78BF0}, {"E21833", 0xC41230, 0xFF6B7E},
        {"2FA24F", 0x1E7A38, 0x57C077},
    };
    return colors;
}

TEST(AdaptiveOfficeColor, theBrandsOwnColoursHaveTheirPairsHoweverTheyAreWritten) {
    for (const Picked& color : pickedColors()) {
        const ColorPair pair{.light = rgb(color.light), .dark = rgb(color.dark)};
        std::string lower = color.office;
        std::ranges::transform(lower, lower.begin(),
                               [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        for (const std::string& text :
             {color.office, "#" + color.office, lower, "#" + lower, "  #" + lower + "\n", " " + color.office + " "}) {
            EXPECT_EQ(adaptiveOfficeColor(text), pair) << text;
        }
        expectLegible(color.office);
    }
}

TEST(AdaptiveOfficeColor, aTextThatIsNoColourReadsAsText) {
    for (const char* text : {"", "#FFF", "#GGE14D", "##FFE14D", "# FFE14D", "orange"}) {
        EXPECT_EQ(adaptiveOfficeColor(text), textPrimary) << text;
    }
}

TEST(AdaptiveOfficeColor, whiteDarkensOnTheLightCard) {
    const Color light = adaptiveOfficeColor("#FFFFFF").light;
    EXPECT_LE(brightnessOf(light), 0.58 + rounding);
    EXPECT_NEAR(saturationOf(light), 0.75, rounding);
    // On the dark card it is white already.
    EXPECT_EQ(adaptiveOfficeColor("#FFFFFF").dark, rgb(0xFFFFFF));
}

TEST(AdaptiveOfficeColor, aVeryDarkColourIsRaisedBeforeAnythingIsMixedIn) {
    const Color green = adaptiveOfficeColor("#002000").dark;
    EXPECT_NEAR(green.green, 0.92, rounding);
    EXPECT_NEAR(green.red, 0.92 * 0.3, rounding);
    EXPECT_NEAR(green.blue, 0.92 * 0.3, rounding);
    // Red is darker to the eye: one step, a twentieth of the way to white, is enough.
    const Color red = adaptiveOfficeColor("#200000").dark;
    EXPECT_NEAR(red.red, 0.92 + 0.08 / 20, rounding);
    EXPECT_NEAR(red.green, 0.276 + 0.724 / 20, rounding);
    EXPECT_NEAR(red.blue, 0.276 + 0.724 / 20, rounding);
}

TEST(AdaptiveOfficeColor, aBrightBlueIsCappedInTheDarkAndDeepenedInTheLight) {
    const ColorPair blue = adaptiveOfficeColor("#80A0FF");
    EXPECT_NEAR(blue.dark.blue, 1, rounding);
    EXPECT_NEAR(saturationOf(blue.dark), saturationOf(rgb(0x80A0FF)), rounding);
    EXPECT_NEAR(blue.light.blue, 0.58, rounding);
    EXPECT_NEAR(blue.light.red, 0.58 * 0.25, rounding);
    EXPECT_NEAR(hueOf(blue.light), hueOf(rgb(0x80A0FF)), 1e-6);
}

TEST(AdaptiveOfficeColor, everyColourIsLegibleInBothAppearances) {
    std::mt19937 random{20260401};
    std::uniform_int_distribution<std::uint32_t> values{0, 0xFFFFFF};
    for (int count = 0; count < 100'000 && !HasFailure(); ++count) {
        expectLegible(hexText(values(random)));
    }
}

TEST(AdaptiveOfficeColor, theEdgesOfTheCubeAreLegible) {
    for (const std::uint32_t red : {0x00U, 0x01U, 0x0AU, 0x0BU, 0x80U, 0xFEU, 0xFFU}) {
        for (const std::uint32_t green : {0x00U, 0x01U, 0x0AU, 0x0BU, 0x80U, 0xFEU, 0xFFU}) {
            for (const std::uint32_t blue : {0x00U, 0x01U, 0x0AU, 0x0BU, 0x80U, 0xFEU, 0xFFU}) {
                expectLegible(hexText(red << 16U | green << 8U | blue));
            }
        }
    }
}

bool isHandPicked(const std::string& hash) {
    return std::ranges::find(pickedColors(), hash.substr(1), &Picked::office) != pickedColors().end();
}

RC_GTEST_PROP(AdaptiveOfficeColor, theHueStays, ()) {
    const std::string text = hexText(*anyColor());
    const Color office = *parseHexColor(text);
    RC_PRE(saturationOf(office) > 0.01 && brightnessOf(office) > 0.02 && !isHandPicked(text));
    const ColorPair pair = adaptiveOfficeColor(text);
    for (const Color& shown : {pair.light, pair.dark}) {
        const double turn = std::remainder(hueOf(shown) - hueOf(office), 360);
        RC_ASSERT(std::abs(turn) < 1e-6);
    }
}

RC_GTEST_PROP(AdaptiveOfficeColor, upperAndLowerCaseAreOneColour, ()) {
    const std::string text = hexText(*anyColor());
    std::string lower = text.substr(1);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    RC_ASSERT(adaptiveOfficeColor(text) == adaptiveOfficeColor(lower));
}

/// A mixture of colour and target by so many twentieths.
Color mixed(const Color& color, double target, int step) {
    const double part = step / 20.0;
    return {.red = color.red * (1 - part) + target * part,
            .green = color.green * (1 - part) + target * part,
            .blue = color.blue * (1 - part) + target * part};
}

bool isNear(const Color& one, const Color& other) {
    return std::abs(one.red - other.red) < rounding && std::abs(one.green - other.green) < rounding &&
           std::abs(one.blue - other.blue) < rounding;
}

RC_GTEST_PROP(EnsureContrast, theFirstStepThatReachesItIsTaken, (std::uint32_t value, bool isDark)) {
    const Color color = rgb(value & 0xFFFFFFU);
    const Appearance appearance = isDark ? Appearance::dark : Appearance::light;
    const Color& card = cardBackground.in(appearance);
    const Color result = ensureContrast(color, appearance);
    int step = 0;
    while (wcagContrast(mixed(color, isDark ? 1 : 0, step), card) < 4.5 - rounding) {
        ++step;
    }
    RC_ASSERT(step < 20);
    RC_ASSERT(isNear(result, mixed(color, isDark ? 1 : 0, step)));
}

TEST(EnsureContrast, aLegibleColourStaysAsItIs) {
    EXPECT_EQ(ensureContrast(rgb(0x123456), Appearance::light), rgb(0x123456));
    EXPECT_EQ(ensureContrast(rgb(0xFEDCBA), Appearance::dark), rgb(0xFEDCBA));
}

TEST(EnsureContrast, theResultIsOpaque) {
    EXPECT_EQ(ensureContrast(rgb(0x123456, 0.2), Appearance::light).opacity, 1);
}

TEST(EnsureContrast, whatIsNoColourReadsAsText) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double endless = std::numeric_limits<double>::infinity();
    for (const Color& color : {Color{.red = none}, Color{.green = none}, Color{.blue = none}, Color{.red = endless},
                               Color{.blue = -endless}}) {
        EXPECT_EQ(ensureContrast(color, Appearance::light), rgb(0x1A1206));
        EXPECT_EQ(ensureContrast(color, Appearance::dark), rgb(0xF3EFE6));
    }
}

}  // namespace
}  // namespace zelkovanta::screens::theme
