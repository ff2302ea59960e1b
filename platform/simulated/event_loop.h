#pragma once

#include "platform/clock.h"
#include "platform/main_thread.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelkovanta::platform::simulated {

/// Virtual time and every thread of every simulated computer, in one real thread: work runs in the order in which it
/// was posted, whichever thread it was posted to, and time moves only when no work is left.
///
/// Two loops fed with the same calls run the same work in the same order.
class EventLoop {
public:
    explicit EventLoop(WallTime start = WallTime{std::chrono::days{20'000}});
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// A simulated thread. It belongs to the loop, since a coroutine that is let go unwinds through its executor.
    class Thread final : public PostingContext {
    public:
        explicit Thread(EventLoop& loop) : loop_(loop) {}
        ~Thread() override;
        Thread(const Thread&) = delete;
        Thread& operator=(const Thread&) = delete;

        void post(Work work) override;
        /// While a thread is held its work waits: a blocked thread, or a suspended computer.
        void setHeld(bool held);
        /// Drops all work, now and from here on: the thread's process is gone.
        void end();

    private:
        friend class EventLoop;
        enum class Phase : std::uint8_t { running, held, ended };
        void takeReadyWork(std::deque<Work>& to);

        EventLoop& loop_;
        Phase phase_ = Phase::running;
        std::deque<Work> waiting_;
    };

    [[nodiscard]] Thread& makeThread();

    [[nodiscard]] SteadyTime now() const { return now_; }
    [[nodiscard]] WallTime wallNow() const;

    using TimerId = std::uint64_t;
    TimerId schedule(SteadyTime when, std::move_only_function<void()> call);
    void withdraw(TimerId id);

    /// Runs work that is due now, without moving time.
    void runReady();
    /// Moves time by `span`, running everything that falls due.
    void advance(Duration span);
    /// Moves time until `isDone` holds, or `limit` has passed; gives whether it holds.
    bool advanceUntil(const std::function<bool()>& isDone, Duration limit);
    /// Pieces of work run so far.
    [[nodiscard]] std::uint64_t workDone() const { return workDone_; }

private:
    struct Item {
        Thread* thread;
        PostingContext::Work work;
    };
    bool runNextTimer(SteadyTime until);

    std::vector<std::unique_ptr<Thread>> threads_;
    std::deque<Item> ready_;
    // Ordered by time, then by number, so that calls for one moment come in the order in which they were asked for.
    std::map<std::pair<SteadyTime, TimerId>, std::move_only_function<void()>> timers_;
    std::unordered_map<TimerId, SteadyTime> whenById_;
    SteadyTime now_{};
    WallTime start_;
    TimerId nextTimer_ = 1;
    std::uint64_t workDone_ = 0;
};

/// One computer's clock over the loop. Its time of day can be set apart from the others'.
class ManualClock final : public Clock {
public:
    explicit ManualClock(EventLoop& loop) : loop_(loop) {}

    [[nodiscard]] SteadyTime steadyNow() const override { return loop_.now(); }
    [[nodiscard]] WallTime wallNow() const override { return loop_.wallNow() + wallOffset_; }
    [[nodiscard]] Timer callAfter(Duration delay, Executor executor, std::move_only_function<void()> call) override;

    void setWallOffset(Duration offset) { wallOffset_ = std::chrono::duration_cast<std::chrono::microseconds>(offset); }

private:
    EventLoop& loop_;
    std::chrono::microseconds wallOffset_{};
};

}  // namespace zelkovanta::platform::simulated
