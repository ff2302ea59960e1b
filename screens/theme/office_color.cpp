#include "screens/theme/office_color.h"

#include "records/text.h"
#include "screens/theme/palette.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace zelkovanta::screens::theme {

namespace {

constexpr double leastContrast = 4.5;
constexpr int mixingSteps = 20;

struct HandPicked {
    std::string_view office;
    ColorPair shown;
};

constexpr std::array<HandPicked, 7> handPicked{{
    {"FFE14D", {.light = rgb(0x765B00), .dark = rgb(0xFFE14D)}},
    {"FF8C28", {.light = rgb(0x9E5405), .dark = rgb(0xFFA85C)}},
    {"12A594", {.light = rgb(0x0B7A6E), .dark = rgb(0x3FC9B8)}},
    {"5789F2", {.light = rgb(0x3457C4), .dark = rgb(0x8FB0F7)}},
    {"7C5CD6", {.light = rgb(0x6647C0), .dark = rgb(0xA78BF0)}},
    {"E21833", {.light = rgb(0xC41230), .dark = rgb(0xFF6B7E)}},
    {"2FA24F", {.light = rgb(0x1E7A38), .dark = rgb(0x57C077)}},
}};

std::string bareColor(std::string_view text) {
    std::string bare = records::trimmed(text);
    if (bare.starts_with('#')) {
        bare.erase(0, 1);
    }
    return bare;
}

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const Color& color) {
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const Color& left, const Color& right) {
    const auto [darker, lighter] = std::minmax({luminance(left), luminance(right)});
    return (lighter + 0.05) / (darker + 0.05);
}

struct HueSaturationBrightness {
    double hue = 0;  ///< in sixths of the circle, from 0 to below 6
    double saturation = 0;
    double brightness = 0;
};

HueSaturationBrightness toHueSaturationBrightness(const Color& color) {
    const auto [least, most] = std::minmax({color.red, color.green, color.blue});
    const double spread = most - least;
    if (spread <= 0) {
        return {.hue = 0, .saturation = 0, .brightness = most};
    }
    double hue = 0;
    if (most == color.red) {
        hue = (color.green - color.blue) / spread;
    } else if (most == color.green) {
        hue = (color.blue - color.red) / spread + 2;
    } else {
        hue = (color.red - color.green) / spread + 4;
    }
    return {.hue = hue < 0 ? hue + 6 : hue, .saturation = spread / most, .brightness = most};
}

Color toColor(const HueSaturationBrightness& from) {
    const auto channel = [&](double turn) {
        const double place = std::fmod(turn + from.hue, 6);
        const double part = std::clamp(std::min(place, 4 - place), 0.0, 1.0);
        return from.brightness * (1 - from.saturation * part);
    };
    return {.red = channel(5), .green = channel(3), .blue = channel(1)};
}

Color legible(HueSaturationBrightness color, Appearance appearance) {
    if (appearance == Appearance::dark) {
        color.saturation = std::min(color.saturation, 0.7);
        color.brightness = std::max(color.brightness, 0.92);
    } else {
        color.saturation = std::max(color.saturation, 0.75);
        color.brightness = std::min(color.brightness, 0.58);
    }
    return ensureContrast(toColor(color), appearance);
}

}  // namespace

std::optional<Color> parseHexColor(std::string_view text) {
    // Six characters that are all digits are six bytes.
    const std::string bare = bareColor(text);
    constexpr std::string_view digits = "0123456789abcdefABCDEF";
    if (bare.size() != 6 || bare.find_first_not_of(digits) != std::string::npos) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    std::from_chars(bare.data(), bare.data() + bare.size(), value, 16);
    return rgb(value);
}

Color officeColor(std::string_view text) {
    return parseHexColor(text).value_or(brandOrange);
}

ColorPair adaptiveOfficeColor(std::string_view text) {
    const auto picked = std::ranges::find(handPicked, records::uppercased(bareColor(text)), &HandPicked::office);
    if (picked != handPicked.end()) {
        return picked->shown;
    }
    const auto parsed = parseHexColor(text);
    if (!parsed) {
        return textPrimary;
    }
    const auto color = toHueSaturationBrightness(*parsed);
    return {.light = legible(color, Appearance::light), .dark = legible(color, Appearance::dark)};
}

Color ensureContrast(const Color& color, Appearance appearance) {
    const Color& card = cardBackground.in(appearance);
    const double target = appearance == Appearance::dark ? 1 : 0;
    const auto mixed = [target](double channel, int step) { return channel + (target - channel) * step / mixingSteps; };
    for (int step = 0; step < mixingSteps; ++step) {
        const Color candidate{
            .red = mixed(color.red, step), .green = mixed(color.green, step), .blue = mixed(color.blue, step)};
        const double reached = contrast(candidate, card);
        if (std::isfinite(reached) && reached >= leastContrast) {
            return candidate;
        }
    }
    return textPrimary.in(appearance);
}

}  // namespace zelkovanta::screens::theme
