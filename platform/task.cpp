#include "platform/task.h"

#include <exception>
#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform {

namespace asio = boost::asio;

namespace {

void rethrow(std::exception_ptr failure) {
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// The function must outlive the coroutine that it made, since a lambda's captures live in the lambda.
Awaitable<void> run(std::function<Awaitable<void>(CancellationToken)> task, CancellationToken token) {
    co_await task(std::move(token));
}

}  // namespace

void TaskHandle::cancel() {
    if (!state_) {
        return;
    }
    state_->cancelled = true;
    if (auto wake = std::exchange(state_->wake, nullptr)) {
        wake();
    }
}

TaskHandle startTask(Executor executor, std::function<Awaitable<void>(CancellationToken)> task) {
    auto state = std::make_shared<detail::CancellationState>();
    asio::post(executor, [executor, task = std::move(task), state]() mutable {
        asio::co_spawn(executor, run(std::move(task), CancellationToken{state}), rethrow);
    });
    return TaskHandle{std::move(state)};
}

void startTask(Executor executor, std::function<Awaitable<void>()> task) {
    startTask(std::move(executor), [task = std::move(task)](CancellationToken) -> Awaitable<void> { return task(); });
}

Awaitable<void> sleepFor(Clock& clock, Duration delay, CancellationToken token) {
    if (token.isCancelled()) {
        co_return;
    }
    const Executor executor = co_await asio::this_coro::executor;
    auto state = token.state_;
    // By reference, as these live in this frame: GCC 12 destroys what a closure within a co_await holds once too often.
    co_await asio::async_initiate<const asio::use_awaitable_t<Executor>, void()>(
        [&clock, delay, &executor, &state](auto handler) {
            struct Sleep {
                decltype(handler) resume;
                Timer timer;
            };
            auto sleep = std::make_shared<Sleep>(Sleep{std::move(handler), {}});
            // All weakly: the clock owns the sleep, and the state would own itself through `wake`.
            auto finish = [weak = std::weak_ptr(sleep), weakState = std::weak_ptr(state), executor] {
                const auto self = weak.lock();
                const auto held = weakState.lock();
                if (!self || !held) {
                    return;
                }
                const auto wake = std::exchange(held->wake, nullptr);
                self->timer.reset();
                asio::post(executor, std::move(self->resume));
            };
            sleep->timer = clock.callAfter(delay, executor, [sleep, finish] { finish(); });
            state->wake = std::move(finish);
        },
        asio::use_awaitable_t<Executor>{});
}

Awaitable<void> sleepFor(Clock& clock, Duration delay) {
    return sleepFor(clock, delay, CancellationToken{std::make_shared<detail::CancellationState>()});
}

}  // namespace zelkovanta::platform
