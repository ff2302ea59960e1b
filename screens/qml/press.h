#pragma once

#include <QQuickItem>
#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// What can be pressed with the mouse, a finger or the space bar, and reached with the tab key. The background lies
/// behind it and is as large as it is; the content stands between the paddings. Both are set once, by the QML that
/// makes them, which owns them. Toolkits have their own, which brings a library of all kinds of controls into the
/// window of a computer that only shows its queue. Main thread.
class Press : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER text_ NOTIFY textChanged)
    Q_PROPERTY(QQuickItem* contentItem READ contentItem WRITE setContentItem NOTIFY contentItemChanged)
    Q_PROPERTY(QQuickItem* background READ background WRITE setBackground NOTIFY backgroundChanged)
    Q_PROPERTY(double horizontalPadding READ horizontalPadding WRITE setHorizontalPadding NOTIFY paddingChanged)
    /// A press that is under way, and would count if it ended now.
    Q_PROPERTY(bool down READ isDown NOTIFY downChanged)
    Q_PROPERTY(bool hoverEnabled READ acceptHoverEvents WRITE setHoverEnabled NOTIFY hoverEnabledChanged)
    Q_PROPERTY(bool hovered READ isHovered NOTIFY hoveredChanged)
    /// How the keyboard came here the last time; the way back from another window does not count.
    Q_PROPERTY(Qt::FocusReason focusReason READ focusReason NOTIFY focusReasonChanged)
    /// It has the focus, and got it by key.
    Q_PROPERTY(bool visualFocus READ hasVisualFocus NOTIFY visualFocusChanged)

public:
    explicit Press(QQuickItem* parent = nullptr);

    [[nodiscard]] QQuickItem* contentItem() const { return contentItem_; }
    void setContentItem(QQuickItem* item);
    [[nodiscard]] QQuickItem* background() const { return background_; }
    void setBackground(QQuickItem* item);
    [[nodiscard]] double horizontalPadding() const { return horizontalPadding_; }
    void setHorizontalPadding(double padding);
    [[nodiscard]] bool isDown() const { return isDown_; }
    void setHoverEnabled(bool enabled);
    [[nodiscard]] bool isHovered() const { return isHovered_; }
    [[nodiscard]] Qt::FocusReason focusReason() const { return focusReason_; }
    [[nodiscard]] bool hasVisualFocus() const { return hasVisualFocus_; }

Q_SIGNALS:
    void clicked();
    /// The keyboard arrives, in this way; not when it only comes back with its window or from a list that was open.
    void entered(Qt::FocusReason reason);
    void textChanged();
    void contentItemChanged();
    void backgroundChanged();
    void paddingChanged();
    void downChanged();
    void hoverEnabledChanged();
    void hoveredChanged();
    void focusReasonChanged();
    void visualFocusChanged();

protected:
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;

private:
    void arrange();
    void setDown(bool down);
    void setHovered(bool hovered);
    void setVisualFocus(bool focus);
    void giveUp();

    QString text_;
    QQuickItem* contentItem_ = nullptr;
    QQuickItem* background_ = nullptr;
    double horizontalPadding_ = 0;
    Qt::FocusReason focusReason_ = Qt::OtherFocusReason;
    bool isDown_ = false;
    bool isHeldByKey_ = false;
    bool isHovered_ = false;
    bool hasVisualFocus_ = false;
};

}  // namespace zelkovanta::screens::qml
