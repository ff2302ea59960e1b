#pragma once

#include "platform/async.h"
#include "platform/clock.h"

#include <functional>

namespace zelkovanta::platform {

/// Work beside the main thread.
class Background {
public:
    virtual ~Background() = default;

    /// Where requests run and their answers are decoded.
    [[nodiscard]] virtual Executor executor() = 0;
    /// A new serial queue: what is posted to it runs one piece after the other, beside other queues.
    [[nodiscard]] virtual Executor makeSerialQueue() = 0;
    /// Runs `task` off the main thread and holds the calling thread until it has ended or `limit` has passed; the task
    /// goes on then. The one place where the main thread waits.
    virtual void runAndWait(std::function<Awaitable<void>()> task, Duration limit) = 0;
};

}  // namespace zelkovanta::platform
