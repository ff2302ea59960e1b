#pragma once

#include "platform/async.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace zelkovanta::platform {

using Duration = std::chrono::nanoseconds;

/// Tag of the time for measuring: it never jumps, and a suspend of the computer counts. Its epoch means nothing.
struct SteadyClockTag {
    using duration = Duration;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<SteadyClockTag>;
    static constexpr bool is_steady = true;
};
using SteadyTime = SteadyClockTag::time_point;

/// The time of day, UTC. A person or a time service may set it back and forth.
using WallTime = std::chrono::sys_time<std::chrono::microseconds>;

/// Owns one pending call of `Clock::callAfter`: destroying or resetting it withdraws the call.
/// To be used on the executor that the call was asked for; there the call never comes after the withdrawal.
class Timer {
public:
    Timer() = default;
    explicit Timer(std::move_only_function<void()> withdraw) : withdraw_(std::move(withdraw)) {}
    Timer(Timer&& other) noexcept : withdraw_(std::exchange(other.withdraw_, nullptr)) {}
    Timer& operator=(Timer&& other) noexcept {
        if (this != &other) {
            reset();
            withdraw_ = std::exchange(other.withdraw_, nullptr);
        }
        return *this;
    }
    ~Timer() { reset(); }

    void reset() {
        if (auto withdraw = std::exchange(withdraw_, nullptr)) {
            withdraw();
        }
    }

private:
    std::move_only_function<void()> withdraw_;
};

/// Time, and calls in the future. Every operation may be used from any thread.
class Clock {
public:
    virtual ~Clock() = default;

    [[nodiscard]] virtual SteadyTime steadyNow() const = 0;
    [[nodiscard]] virtual WallTime wallNow() const = 0;

    /// Runs `call` on `executor` once `delay` has passed, unless the returned timer was reset before. The clock owns
    /// the call, the timer does not: a call may own its own timer.
    [[nodiscard]] virtual Timer callAfter(Duration delay, Executor executor, std::move_only_function<void()> call) = 0;
};

}  // namespace zelkovanta::platform
