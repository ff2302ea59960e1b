#include "screens/flow_layout.h"

#include <algorithm>
#include <limits>

namespace zelkovanta::screens {

std::vector<FlowLayout::Row> FlowLayout::rows(std::span<const LayoutSize> pieces, std::optional<double> width) const {
    const double most = width.value_or(std::numeric_limits<double>::infinity());
    std::vector<Row> rows;
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        const LayoutSize& piece = pieces[index];
        if (rows.empty() || most < rows.back().width + spacing + piece.width) {
            rows.push_back({.items = {index}, .width = piece.width, .height = piece.height});
            continue;
        }
        Row& row = rows.back();
        row.items.push_back(index);
        row.width += spacing + piece.width;
        row.height = std::max(row.height, piece.height);
    }
    return rows;
}

LayoutSize FlowLayout::size(std::span<const LayoutSize> pieces, std::optional<double> width) const {
    const auto lines = rows(pieces, width);
    if (lines.empty()) {
        return {};
    }
    LayoutSize whole{.width = 0, .height = std::max(lineSpacing * static_cast<double>(lines.size() - 1), 0.0)};
    for (const Row& line : lines) {
        whole.width = std::max(whole.width, line.width);
        whole.height += line.height;
    }
    whole.width = std::min(whole.width, width.value_or(whole.width));
    return whole;
}

std::vector<LayoutPoint> FlowLayout::places(std::span<const LayoutSize> pieces, std::optional<double> width) const {
    std::vector<LayoutPoint> places;
    places.reserve(pieces.size());
    double y = 0;
    for (const Row& row : rows(pieces, width)) {
        double x = 0;
        for (const std::size_t index : row.items) {
            places.push_back({.x = x, .y = y});
            x += pieces[index].width + spacing;
        }
        y += row.height + lineSpacing;
    }
    return places;
}

}  // namespace zelkovanta::screens
