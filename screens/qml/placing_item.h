#pragma once

#include "screens/flow_layout.h"

#include <vector>

#include <QQuickItem>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// An item that puts its pieces where a rule says, each in its implicit size, and is as large as the rule makes it.
/// A piece without an implicit width takes no room.
class PlacingItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    using QQuickItem::QQuickItem;
    ~PlacingItem() override;

protected:
    /// The children of `of` that take room.
    [[nodiscard]] static std::vector<QQuickItem*> piecesOf(const QQuickItem& of);
    [[nodiscard]] static std::vector<LayoutSize> sizesOf(const std::vector<QQuickItem*>& pieces);
    static void put(const std::vector<QQuickItem*>& pieces, const std::vector<LayoutPoint>& places);
    /// Has everything placed again when a child of `of` comes, goes or changes.
    void watch(QQuickItem& of);

    /// Places everything and sets the implicit size.
    virtual void place() = 0;

    void componentComplete() override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void updatePolish() override { place(); }

private:
    void watchChildren(QQuickItem& of);
};

}  // namespace zelkovanta::screens::qml
