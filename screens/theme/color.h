#pragma once

#include <cstdint>

namespace zelkovanta::screens::theme {

/// An sRGB colour; each channel from 0 to 1, not rounded to what a screen can show.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double opacity = 1;
    bool operator==(const Color&) const = default;
};

/// From 0xRRGGBB.
[[nodiscard]] constexpr Color rgb(std::uint32_t value, double opacity = 1) {
    const auto channel = [value](unsigned shift) { return static_cast<double>(value >> shift & 0xFFU) / 255; };
    return {.red = channel(16), .green = channel(8), .blue = channel(0), .opacity = opacity};
}

[[nodiscard]] constexpr Color withOpacity(Color color, double opacity) {
    color.opacity = opacity;
    return color;
}

/// How the desktop looks. Where it does not say so, its palette does; one that nobody has chosen is light.
enum class Appearance : std::uint8_t { light, dark };

/// A colour that follows the appearance.
struct ColorPair {
    Color light;
    Color dark;

    [[nodiscard]] constexpr const Color& in(Appearance appearance) const {
        return appearance == Appearance::dark ? dark : light;
    }
    bool operator==(const ColorPair&) const = default;
};

/// The same colour in both appearances.
[[nodiscard]] constexpr ColorPair fixed(const Color& color) {
    return {.light = color, .dark = color};
}

[[nodiscard]] constexpr ColorPair withOpacity(const ColorPair& pair, double opacity) {
    return {.light = withOpacity(pair.light, opacity), .dark = withOpacity(pair.dark, opacity)};
}

}  // namespace zelkovanta::screens::theme
