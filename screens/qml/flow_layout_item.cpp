#include "screens/qml/flow_layout_item.h"

#include <optional>

namespace zelkovanta::screens::qml {

void FlowLayoutItem::setSpacing(double spacing) {
    if (spacing != layout_.spacing) {
        layout_.spacing = spacing;
        Q_EMIT spacingChanged();
        polish();
    }
}

void FlowLayoutItem::setLineSpacing(double lineSpacing) {
    if (lineSpacing != layout_.lineSpacing) {
        layout_.lineSpacing = lineSpacing;
        Q_EMIT lineSpacingChanged();
        polish();
    }
}

void FlowLayoutItem::place() {
    const auto pieces = piecesOf(*this);
    const auto sizes = sizesOf(pieces);
    const std::optional<double> width = widthValid() ? std::optional{QQuickItem::width()} : std::nullopt;
    put(pieces, layout_.places(sizes, width));
    setImplicitSize(layout_.size(sizes, std::nullopt).width, layout_.size(sizes, width).height);
}

}  // namespace zelkovanta::screens::qml
