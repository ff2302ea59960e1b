#include "screens/queue_row_layout.h"

#include <algorithm>

namespace zelkovanta::screens {

namespace {

constexpr double topPadding = 2;
constexpr double betweenPieces = 8;
constexpr double betweenLines = 6;

LayoutSize lineSize(std::span<const LayoutSize> pieces) {
    LayoutSize line;
    for (const LayoutSize& piece : pieces) {
        line.width += piece.width + (&piece == pieces.data() ? 0 : betweenPieces);
        line.height = std::max(line.height, piece.height);
    }
    return line;
}

/// The places of the pieces in a line of that height which begins at `start`.
std::vector<LayoutPoint> placed(std::span<const LayoutSize> pieces, LayoutPoint start, double height) {
    std::vector<LayoutPoint> places;
    places.reserve(pieces.size());
    for (const LayoutSize& piece : pieces) {
        places.push_back({.x = start.x, .y = start.y + (height - piece.height) / 2});
        start.x += piece.width + betweenPieces;
    }
    return places;
}

}  // namespace

ActionBarLayout actionBarLayout(std::span<const LayoutSize> chips, std::span<const LayoutSize> buttons, double width) {
    const LayoutSize chipLine = lineSize(chips);
    const LayoutSize buttonLine = lineSize(buttons);
    const bool hasBoth = !chips.empty() && !buttons.empty();
    const double buttonsStart = chipLine.width + (hasBoth ? betweenPieces : 0);
    const double oneLine = buttonsStart + buttonLine.width;

    ActionBarLayout layout;
    layout.stacked = hasBoth && oneLine > width;
    if (layout.stacked) {
        const double buttonsTop = topPadding + chipLine.height + betweenLines;
        layout.chips = placed(chips, {.x = 0, .y = topPadding}, chipLine.height);
        layout.buttons = placed(buttons, {.x = 0, .y = buttonsTop}, buttonLine.height);
        layout.size = {.width = std::max(chipLine.width, buttonLine.width), .height = buttonsTop + buttonLine.height};
    } else {
        const double height = std::max(chipLine.height, buttonLine.height);
        layout.chips = placed(chips, {.x = 0, .y = topPadding}, height);
        layout.buttons = placed(buttons, {.x = buttonsStart, .y = topPadding}, height);
        layout.size = {.width = oneLine, .height = topPadding + height};
    }
    return layout;
}

}  // namespace zelkovanta::screens
