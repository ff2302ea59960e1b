#pragma once

#include <functional>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

namespace zelkovanta::platform::linux_host {

/// Runs the event loop until `isDone`, half a minute at most; gives whether it is. `isDone` is looked at after each
/// event.
inline bool runUntil(const std::function<bool()>& isDone, std::chrono::milliseconds limit = std::chrono::seconds{30}) {
    const QDeadlineTimer deadline(limit);
    QTimer wake;
    wake.start(std::min(limit, std::chrono::milliseconds{20}));
    // Asked once for each answer: what looks at another process may be told something else the next time.
    while (!isDone()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Deletes, when its scope ends, what was to be deleted later: no loop runs any more that would. Declared right after
/// the application.
struct LastDeletions {
    LastDeletions() = default;
    ~LastDeletions() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    LastDeletions(const LastDeletions&) = delete;
    LastDeletions& operator=(const LastDeletions&) = delete;
};

}  // namespace zelkovanta::platform::linux_host
