#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace zelkovanta::screens {

struct LayoutSize {
    double width = 0;
    double height = 0;
    bool operator==(const LayoutSize&) const = default;
};

struct LayoutPoint {
    double x = 0;
    double y = 0;
    bool operator==(const LayoutPoint&) const = default;
};

/// Places pieces in lines, left to right, like words in a paragraph, each in its natural size and at the top of its
/// line. The first piece of a line stands there however wide it is.
struct FlowLayout {
    struct Row {
        std::vector<std::size_t> items;
        double width = 0;
        double height = 0;
        bool operator==(const Row&) const = default;
    };

    double spacing = 0;
    double lineSpacing = 0;

    /// Without a width everything stands in one row.
    [[nodiscard]] std::vector<Row> rows(std::span<const LayoutSize> pieces, std::optional<double> width) const;
    /// Never wider than `width`, even where a piece is.
    [[nodiscard]] LayoutSize size(std::span<const LayoutSize> pieces, std::optional<double> width) const;
    /// The top left of each piece, in the order of the pieces, from the top left of the whole.
    [[nodiscard]] std::vector<LayoutPoint> places(std::span<const LayoutSize> pieces,
                                                  std::optional<double> width) const;
};

}  // namespace zelkovanta::screens
