#include "platform/linux/qt_main_thread.h"

#include <deque>
#include <mutex>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

namespace zelkovanta::platform::linux_host {

class QtMainThread::Receiver final : public QObject {
public:
    void add(Work work) {
        bool mustWake = false;
        {
            const std::scoped_lock lock(mutex_);
            if (ended_) {
                return;
            }
            waiting_.push_back(std::move(work));
            mustWake = !std::exchange(wakePosted_, true);
        }
        if (mustWake) {
            wake();
        }
    }

    void end() {
        std::deque<Work> dropped;
        {
            const std::scoped_lock lock(mutex_);
            ended_ = true;
            dropped.swap(waiting_);
        }
        // One at a time: unwinding one piece may post another, which is dropped likewise.
        while (!dropped.empty()) {
            const Work work = std::move(dropped.front());
            dropped.pop_front();
        }
    }

    bool event(QEvent* event) override {
        if (event->type() != wakeType_) {
            return QObject::event(event);
        }
        runWaiting();
        return true;
    }

private:
    void wake() { QCoreApplication::postEvent(this, new QEvent(wakeType_)); }

    // Goes on with what the pieces post, which saves a round through the toolkit for each, but not for ever, so that
    // the toolkit's own events get their turn. A piece may run an event loop of its own, hence the flag first.
    void runWaiting() {
        {
            const std::scoped_lock lock(mutex_);
            wakePosted_ = false;
        }
        for (int count = 0; count < mostPerTurn; ++count) {
            Work work;
            {
                const std::scoped_lock lock(mutex_);
                if (waiting_.empty()) {
                    return;
                }
                work = std::move(waiting_.front());
                waiting_.pop_front();
            }
            work();
        }
        const std::scoped_lock lock(mutex_);
        if (!waiting_.empty() && !std::exchange(wakePosted_, true)) {
            wake();
        }
    }

    static constexpr int mostPerTurn = 16;

    const QEvent::Type wakeType_ = static_cast<QEvent::Type>(QEvent::registerEventType());
    std::mutex mutex_;
    std::deque<Work> waiting_;
    bool wakePosted_ = false;
    bool ended_ = false;
};

QtMainThread::QtMainThread() : receiver_(std::make_unique<Receiver>()) {}

QtMainThread::~QtMainThread() {
    end();
    shutdown();
}

void QtMainThread::post(Work work) {
    receiver_->add(std::move(work));
}

void QtMainThread::end() {
    receiver_->end();
}

}  // namespace zelkovanta::platform::linux_host
