#pragma once

#include "screens/theme/palette.h"

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::screens::theme {

/// The first characters of a name's first two words, in upper case; "?" for a name without a word. Words are parted by
/// blanks alone.
[[nodiscard]] std::string initials(std::string_view name);

/// A member as a disc with initials. Sizes are in logical pixels.
struct MemberAvatar {
    std::string name;
    std::optional<std::string> colorHex;
    double diameter = 0;
    ColorPair ringColor = pageBackground;

    [[nodiscard]] std::string initials() const { return theme::initials(name); }
    /// Behind the initials; a member without a colour has no disc.
    [[nodiscard]] std::optional<Color> disc() const;

    bool operator==(const MemberAvatar&) const = default;
};

}  // namespace zelkovanta::screens::theme
