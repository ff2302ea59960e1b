#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// Keeps the children of an item in the order in which they stand, from top to bottom: the order in which the keyboard
/// and a screen reader go through them. A list makes its rows in the order in which they come.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem* of READ of WRITE setOf NOTIFY ofChanged REQUIRED)

public:
    using QObject::QObject;

    [[nodiscard]] QQuickItem* of() const { return of_; }
    void setOf(QQuickItem* item);

    /// Something moved: the order is set right before the next event.
    Q_INVOKABLE void schedule();

Q_SIGNALS:
    void ofChanged();

private:
    void sort();

    QPointer<QQuickItem> of_;
    bool isScheduled_ = false;
};

}  // namespace zelkovanta::screens::qml
