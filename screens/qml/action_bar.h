#pragma once

#include "screens/qml/placing_item.h"

#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// What stands at the foot of a row: the children of `chips` and the children of `buttons`, in one line where it fits,
/// else in two. Both are children of the bar.
class ActionBar : public zelkovanta::screens::qml::PlacingItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem* chips READ chips WRITE setChips NOTIFY partsChanged REQUIRED)
    Q_PROPERTY(QQuickItem* buttons READ buttons WRITE setButtons NOTIFY partsChanged REQUIRED)

public:
    using PlacingItem::PlacingItem;

    [[nodiscard]] QQuickItem* chips() const { return chips_; }
    void setChips(QQuickItem* chips) { setPart(chips_, chips); }
    [[nodiscard]] QQuickItem* buttons() const { return buttons_; }
    void setButtons(QQuickItem* buttons) { setPart(buttons_, buttons); }

Q_SIGNALS:
    void partsChanged();

protected:
    void place() override;

private:
    void setPart(QQuickItem*& part, QQuickItem* value);

    QQuickItem* chips_ = nullptr;
    QQuickItem* buttons_ = nullptr;
};

}  // namespace zelkovanta::screens::qml
