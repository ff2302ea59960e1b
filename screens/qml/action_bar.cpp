#include "screens/qml/action_bar.h"

#include "screens/queue_row_layout.h"

namespace zelkovanta::screens::qml {

void ActionBar::setPart(QQuickItem*& part, QQuickItem* value) {
    if (part != value && value != nullptr) {
        part = value;
        watch(*value);
        Q_EMIT partsChanged();
        polish();
    }
}

void ActionBar::place() {
    if (chips_ == nullptr || buttons_ == nullptr || !isComponentComplete()) {
        return;
    }
    const auto chips = piecesOf(*chips_);
    const auto buttons = piecesOf(*buttons_);
    const ActionBarLayout layout = actionBarLayout(sizesOf(chips), sizesOf(buttons), width());
    put(chips, layout.chips);
    put(buttons, layout.buttons);
    setImplicitSize(layout.size.width, layout.size.height);
}

}  // namespace zelkovanta::screens::qml
