#pragma once

#include "screens/theme/color.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The colours of the product. What the office chooses itself is in `screens/theme/office_color.h`.
namespace zelkovanta::screens::theme {

inline constexpr Color brandYellow = rgb(0xFFE14D);       ///< selected tab, primary button, "waiting", status "busy"
inline constexpr Color brandYellowLight = rgb(0xFFEA6B);  ///< top of the add button's gradient
inline constexpr Color highlightYellow = rgb(0xF2C94C);   ///< outline of a highlighted row
inline constexpr Color ink = rgb(0x1A1206);               ///< text on yellow
inline constexpr Color brandOrange = rgb(0xFF8C28);       ///< in place of an office colour that cannot be read
inline constexpr Color brandBlue = rgb(0x5789F2);         ///< "On my way", "acknowledged", combined badge
inline constexpr Color brandRed = rgb(0xE21833);          ///< errors, cancel fill, update dot
inline constexpr Color brandGreen = rgb(0x2FA24F);        ///< check button, "done", status "available"
inline constexpr Color stone = rgb(0x8A8170);             ///< status "dnd"
inline constexpr Color white = rgb(0xFFFFFF);             ///< text on blue and green; the code's card

inline constexpr ColorPair pageBackground{.light = rgb(0xFFFFFF), .dark = rgb(0x141018)};
inline constexpr ColorPair sidebarBackground{.light = rgb(0xF7F2E4), .dark = rgb(0x191521)};
inline constexpr ColorPair cardBackground{.light = rgb(0xFFFFFF), .dark = rgb(0x1E1B24)};
inline constexpr ColorPair textPrimary{.light = rgb(0x1A1206), .dark = rgb(0xF3EFE6)};
inline constexpr ColorPair textSecondary{.light = rgb(0x5C5142), .dark = rgb(0xC9C4BB)};
/// For what weighs little: on white it is fainter than a text to be read should be.
inline constexpr ColorPair textTertiary{.light = rgb(0x8A8170), .dark = rgb(0x8F8A80)};
inline constexpr ColorPair hairline{.light = rgb(0x1A1206, 0.08), .dark = rgb(0xFFFFFF, 0.14)};
inline constexpr ColorPair blueText{.light = rgb(0x3457C4), .dark = rgb(0x8FB0F7)};
inline constexpr ColorPair redText{.light = rgb(0xC41230), .dark = rgb(0xFF6B7E)};
inline constexpr ColorPair greenText{.light = rgb(0x1E7A38), .dark = rgb(0x57C077)};
inline constexpr ColorPair stoneText{.light = rgb(0x6E6553), .dark = rgb(0xA29A8B)};

inline constexpr std::array<ColorPair, 6> accentColors{{
    {.light = rgb(0x3457C4), .dark = rgb(0x8FB0F7)},
    {.light = rgb(0x0B7A6E), .dark = rgb(0x3FC9B8)},
    {.light = rgb(0x6647C0), .dark = rgb(0xA78BF0)},
    {.light = rgb(0x9E5405), .dark = rgb(0xFFA85C)},
    {.light = rgb(0xA63D8F), .dark = rgb(0xE07BC4)},
    {.light = rgb(0x1E7A38), .dark = rgb(0x57C077)},
}};

/// Colours to tell things apart by. Any index will do, a negative one too: they repeat in both directions.
[[nodiscard]] constexpr const ColorPair& accentPalette(std::int64_t index) {
    constexpr auto count = static_cast<std::int64_t>(accentColors.size());
    return accentColors[static_cast<std::size_t>((index % count + count) % count)];
}

}  // namespace zelkovanta::screens::theme
