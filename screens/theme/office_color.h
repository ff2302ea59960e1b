#pragma once

#include "screens/theme/color.h"

#include <optional>
#include <string_view>

/// Colours that an office gave its signal types and members, as texts. Any text may come; what is shown is legible in
/// both appearances. Pure, any thread.
namespace zelkovanta::screens::theme {

/// "#RRGGBB", the "#" optional, in upper or lower case, with white space around it; none for anything else.
[[nodiscard]] std::optional<Color> parseHexColor(std::string_view text);

/// For discs and fills: the colour as it is, `brandOrange` for a text that is none.
[[nodiscard]] Color officeColor(std::string_view text);

/// For texts on a card: a hand-picked pair for the brand's own colours, for others one of the same hue with a contrast
/// of 4.5 or more; `textPrimary` for a text that is no colour.
[[nodiscard]] ColorPair adaptiveOfficeColor(std::string_view text);

/// The colour, mixed towards black (light) or white (dark) in steps of a twentieth until its contrast against the card
/// is 4.5 or more; the appearance's own text colour where no step reaches that, or for a channel that is no number.
/// The contrast is the ratio of WCAG 2.1, section 1.4.3.
[[nodiscard]] Color ensureContrast(const Color& color, Appearance appearance);

}  // namespace zelkovanta::screens::theme
