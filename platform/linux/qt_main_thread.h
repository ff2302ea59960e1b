#pragma once

#include "platform/main_thread.h"

#include <memory>

namespace zelkovanta::platform::linux_host {

/// The main thread as an executor: work runs in Qt's event loop, one piece after the other.
///
/// To be made on the thread that runs the loop. It outlives the loop and everything that posts to it: what is posted
/// while no loop runs waits, and after `end` it is destroyed at once without being run.
class QtMainThread final : public PostingContext {
public:
    QtMainThread();
    ~QtMainThread() override;
    QtMainThread(const QtMainThread&) = delete;
    QtMainThread& operator=(const QtMainThread&) = delete;

    void post(Work work) override;
    /// Drops all work, now and from here on. Main thread.
    void end();

private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_;
};

}  // namespace zelkovanta::platform::linux_host
