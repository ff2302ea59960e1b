#pragma once

#include <QCoreApplication>
#include <QFocusEvent>
#include <QQuickWindow>

namespace zelkovanta::desktop_test {

/// A person turns to another window, and back to this one.
inline void leaveWindow(QQuickWindow* window) {
    QFocusEvent left(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window, &left);
}
inline void comeBackTo(QQuickWindow* window) {
    QFocusEvent back(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(window, &back);
}

}  // namespace zelkovanta::desktop_test
