#pragma once

#include "platform/async.h"
#include "platform/clock.h"

#include <functional>
#include <memory>

namespace zelkovanta::platform {

namespace detail {
struct CancellationState {
    bool cancelled = false;
    /// Ends the sleep that the task is in, if it is in one.
    std::move_only_function<void()> wake;
};
}  // namespace detail

/// What a cancellable task looks at. Belongs to the executor that the task runs on.
class CancellationToken {
public:
    explicit CancellationToken(std::shared_ptr<detail::CancellationState> state) : state_(std::move(state)) {}
    [[nodiscard]] bool isCancelled() const { return state_->cancelled; }

private:
    friend Awaitable<void> sleepFor(Clock& clock, Duration delay, CancellationToken token);
    std::shared_ptr<detail::CancellationState> state_;
};

/// Handle of a running task. Letting go of it does not cancel the task.
class TaskHandle {
public:
    TaskHandle() = default;
    explicit TaskHandle(std::shared_ptr<detail::CancellationState> state) : state_(std::move(state)) {}

    /// Raises the token's flag and ends a sleep at once. A task may cancel itself: it goes on to its next check.
    void cancel();
    [[nodiscard]] explicit operator bool() const { return state_ != nullptr; }

private:
    std::shared_ptr<detail::CancellationState> state_;
};

/// Starts `task` on `executor`; its first step runs in a later turn. An exception that leaves it ends the program.
TaskHandle startTask(Executor executor, std::function<Awaitable<void>(CancellationToken)> task);

/// The same for work that is never cancelled.
void startTask(Executor executor, std::function<Awaitable<void>()> task);

/// Returns after `delay`, or at once when the task is or gets cancelled.
Awaitable<void> sleepFor(Clock& clock, Duration delay, CancellationToken token);
Awaitable<void> sleepFor(Clock& clock, Duration delay);

}  // namespace zelkovanta::platform
