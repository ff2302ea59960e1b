#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace zelkovanta::platform::linux_host {

/// Runs the event loop until `isDone`, half a minute at most; gives whether it is. `isDone` is looked at after each
/// event.
inline bool runUntil(const std::function<bool()>& isDone, std::chrono::milliseconds limit = std::chrono::seconds{30}) {
    const QDeadlineTimer deadline(limit);
    QTimer wake;
    wake.start(std::min(limit, std::chrono::milliseconds{20}));
    while (!isDone() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return isDone();
}

}  // namespace zelkovanta::platform::linux_host
