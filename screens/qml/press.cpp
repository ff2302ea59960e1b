#include "screens/qml/press.h"

#include <utility>

namespace zelkovanta::screens::qml {

Press::Press(QQuickItem* parent) : QQuickItem(parent) {
    setAcceptedMouseButtons(Qt::LeftButton);
    setActiveFocusOnTab(true);
}

void Press::setContentItem(QQuickItem* item) {
    if (std::exchange(contentItem_, item) != item) {
        if (item != nullptr) {
            item->setParentItem(this);
        }
        arrange();
        Q_EMIT contentItemChanged();
    }
}

void Press::setBackground(QQuickItem* item) {
    if (std::exchange(background_, item) != item) {
        if (item != nullptr) {
            item->setParentItem(this);
            item->setZ(-1);
        }
        arrange();
        Q_EMIT backgroundChanged();
    }
}

void Press::setHorizontalPadding(double padding) {
    if (std::exchange(horizontalPadding_, padding) != padding) {
        arrange();
        Q_EMIT paddingChanged();
    }
}

void Press::arrange() {
    if (background_ != nullptr) {
        background_->setSize(size());
    }
    if (contentItem_ != nullptr) {
        contentItem_->setX(horizontalPadding_);
        contentItem_->setSize({width() - 2 * horizontalPadding_, height()});
    }
}

void Press::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        arrange();
    }
}

void Press::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if ((change == ItemVisibleHasChanged || change == ItemEnabledHasChanged) && !data.boolValue) {
        giveUp();
        setHovered(false);
    }
}

void Press::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    setDown(true);
    event->accept();
}

void Press::mouseMoveEvent(QMouseEvent* event) {
    setDown(contains(event->position()));
    event->accept();
}

void Press::mouseReleaseEvent(QMouseEvent* event) {
    const bool counts = isDown_ && contains(event->position());
    giveUp();
    event->accept();
    if (counts) {
        Q_EMIT clicked();  // May delete this.
    }
}

// Two quick presses are two presses, which come as such beside this.
void Press::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

void Press::mouseUngrabEvent() {
    giveUp();
}

void Press::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space) {
        QQuickItem::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat()) {
        isHeldByKey_ = true;
        setDown(true);
    }
}

void Press::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space) {
        QQuickItem::keyReleaseEvent(event);
        return;
    }
    if (!event->isAutoRepeat() && isHeldByKey_) {
        giveUp();
        Q_EMIT clicked();  // May delete this.
    }
}

void Press::focusInEvent(QFocusEvent* event) {
    QQuickItem::focusInEvent(event);
    const Qt::FocusReason reason = event->reason();
    // A window that comes back brings the keyboard back to where it was, and in the way in which it was there.
    const bool isBack = reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
    if (!isBack && std::exchange(focusReason_, reason) != reason) {
        Q_EMIT focusReasonChanged();
    }
    setVisualFocus(focusReason_ == Qt::TabFocusReason || focusReason_ == Qt::BacktabFocusReason ||
                   focusReason_ == Qt::ShortcutFocusReason);
    if (!isBack) {
        Q_EMIT entered(reason);
    }
}

void Press::focusOutEvent(QFocusEvent* event) {
    QQuickItem::focusOutEvent(event);
    setVisualFocus(false);
    if (isHeldByKey_) {
        giveUp();
    }
}

void Press::hoverEnterEvent(QHoverEvent* event) {
    setHovered(true);
    event->accept();
}

void Press::hoverLeaveEvent(QHoverEvent* event) {
    setHovered(false);
    event->accept();
}

void Press::setHoverEnabled(bool enabled) {
    if (enabled != acceptHoverEvents()) {
        setAcceptHoverEvents(enabled);
        setHovered(isHovered_ && enabled);
        Q_EMIT hoverEnabledChanged();
    }
}

void Press::setDown(bool down) {
    if (std::exchange(isDown_, down) != down) {
        Q_EMIT downChanged();
    }
}

void Press::setHovered(bool hovered) {
    if (std::exchange(isHovered_, hovered) != hovered) {
        Q_EMIT hoveredChanged();
    }
}

void Press::setVisualFocus(bool focus) {
    if (std::exchange(hasVisualFocus_, focus) != focus) {
        Q_EMIT visualFocusChanged();
    }
}

void Press::giveUp() {
    isHeldByKey_ = false;
    setDown(false);
}

}  // namespace zelkovanta::screens::qml
