#include "screens/qml/placing_item.h"

#include <cstddef>

namespace zelkovanta::screens::qml {

PlacingItem::~PlacingItem() {
    // An item tells of its children's leave when it is no more than an item.
    disconnect(this, nullptr, this, nullptr);
}

std::vector<QQuickItem*> PlacingItem::piecesOf(const QQuickItem& of) {
    std::vector<QQuickItem*> pieces;
    for (QQuickItem* child : of.childItems()) {
        // Not `isVisible`, which also says no while the whole is hidden.
        if (child->implicitWidth() > 0) {
            pieces.push_back(child);
        }
    }
    return pieces;
}

std::vector<LayoutSize> PlacingItem::sizesOf(const std::vector<QQuickItem*>& pieces) {
    std::vector<LayoutSize> sizes;
    sizes.reserve(pieces.size());
    for (const QQuickItem* piece : pieces) {
        sizes.push_back({.width = piece->implicitWidth(), .height = piece->implicitHeight()});
    }
    return sizes;
}

void PlacingItem::put(const std::vector<QQuickItem*>& pieces, const std::vector<LayoutPoint>& places) {
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        pieces[index]->setPosition({places[index].x, places[index].y});
        pieces[index]->setSize({pieces[index]->implicitWidth(), pieces[index]->implicitHeight()});
    }
}

void PlacingItem::watch(QQuickItem& of) {
    connect(&of, &QQuickItem::childrenChanged, this, [this, &of] {
        watchChildren(of);
        polish();
    });
    watchChildren(of);
}

void PlacingItem::watchChildren(QQuickItem& of) {
    for (QQuickItem* child : of.childItems()) {
        connect(child, &QQuickItem::implicitWidthChanged, this, &QQuickItem::polish, Qt::UniqueConnection);
        connect(child, &QQuickItem::implicitHeightChanged, this, &QQuickItem::polish, Qt::UniqueConnection);
    }
}

void PlacingItem::componentComplete() {
    QQuickItem::componentComplete();
    place();
}

void PlacingItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (isComponentComplete() && now.width() != before.width()) {
        place();
    }
}

}  // namespace zelkovanta::screens::qml
