#pragma once

#include "screens/flow_layout.h"

#include <span>
#include <vector>

namespace zelkovanta::screens {

/// Where the chips and the buttons of a row stand. Logical pixels, from the bar's top left.
struct ActionBarLayout {
    bool stacked = false;  ///< the chips above the buttons
    std::vector<LayoutPoint> chips;
    std::vector<LayoutPoint> buttons;
    LayoutSize size;  ///< the padding at the top included; wider than the room there is where nothing fits
    bool operator==(const ActionBarLayout&) const = default;
};

/// One line where it fits into `width`, else two. Within a line, pieces of different heights share their middle.
[[nodiscard]] ActionBarLayout actionBarLayout(std::span<const LayoutSize> chips, std::span<const LayoutSize> buttons,
                                              double width);

}  // namespace zelkovanta::screens
