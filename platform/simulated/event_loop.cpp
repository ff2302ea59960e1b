#include "platform/simulated/event_loop.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <boost/asio/post.hpp>

namespace zelkovanta::platform::simulated {

EventLoop::EventLoop(WallTime start) : start_(start) {}

EventLoop::~EventLoop() {
    for (const auto& thread : threads_) {
        thread->end();
    }
    // Calls own coroutines, whose unwinding may withdraw timers: let go of them one at a time.
    while (!timers_.empty()) {
        const auto node = timers_.extract(timers_.begin());
    }
    whenById_.clear();
}

EventLoop::Thread& EventLoop::makeThread() {
    return *threads_.emplace_back(std::make_unique<Thread>(*this));
}

EventLoop::Thread::~Thread() {
    shutdown();
}

void EventLoop::Thread::post(Work work) {
    switch (phase_) {
        case Phase::running:
            loop_.ready_.push_back({this, std::move(work)});
            break;
        case Phase::held:
            waiting_.push_back(std::move(work));
            break;
        case Phase::ended:
            break;
    }
}

void EventLoop::Thread::setHeld(bool held) {
    if (phase_ == Phase::ended) {
        return;
    }
    phase_ = held ? Phase::held : Phase::running;
    if (held) {
        takeReadyWork(waiting_);
        return;
    }
    for (auto& work : std::exchange(waiting_, {})) {
        loop_.ready_.push_back({this, std::move(work)});
    }
}

void EventLoop::Thread::end() {
    phase_ = Phase::ended;
    std::deque<Work> dropped = std::exchange(waiting_, {});
    takeReadyWork(dropped);
}

void EventLoop::Thread::takeReadyWork(std::deque<Work>& to) {
    for (auto& item : loop_.ready_) {
        if (item.thread == this) {
            to.push_back(std::move(item.work));
        }
    }
    std::erase_if(loop_.ready_, [this](const Item& item) { return item.thread == this; });
}

WallTime EventLoop::wallNow() const {
    return start_ + std::chrono::duration_cast<std::chrono::microseconds>(now_.time_since_epoch());
}

EventLoop::TimerId EventLoop::schedule(SteadyTime when, std::move_only_function<void()> call) {
    const TimerId id = nextTimer_++;
    timers_.emplace(std::pair{std::max(when, now_), id}, std::move(call));
    whenById_.emplace(id, std::max(when, now_));
    return id;
}

void EventLoop::withdraw(TimerId id) {
    const auto found = whenById_.find(id);
    if (found == whenById_.end()) {
        return;
    }
    const auto when = found->second;
    whenById_.erase(found);
    // The call is destroyed last: what it owns may withdraw other timers.
    [[maybe_unused]] const auto node = timers_.extract({when, id});
}

void EventLoop::runReady() {
    while (!ready_.empty()) {
        Item item = std::move(ready_.front());
        ready_.pop_front();
        ++workDone_;
        item.work();
    }
}

bool EventLoop::runNextTimer(SteadyTime until) {
    if (timers_.empty() || timers_.begin()->first.first > until) {
        return false;
    }
    auto node = timers_.extract(timers_.begin());
    whenById_.erase(node.key().second);
    now_ = node.key().first;
    node.mapped()();
    return true;
}

void EventLoop::advance(Duration span) {
    const SteadyTime until = now_ + span;
    runReady();
    while (runNextTimer(until)) {
        runReady();
    }
    // Work may itself have moved time further.
    now_ = std::max(now_, until);
}

bool EventLoop::advanceUntil(const std::function<bool()>& isDone, Duration limit) {
    const SteadyTime until = now_ + limit;
    runReady();
    while (!isDone()) {
        if (!runNextTimer(until)) {
            now_ = std::max(now_, until);
            return isDone();
        }
        runReady();
    }
    return true;
}

Timer ManualClock::callAfter(Duration delay, Executor executor, std::move_only_function<void()> call) {
    struct Pending {
        bool withdrawn = false;
        EventLoop::TimerId id = 0;
        std::move_only_function<void()> call;
    };
    auto pending = std::make_shared<Pending>();
    pending->call = std::move(call);
    pending->id = loop_.schedule(loop_.now() + delay, [pending, executor = std::move(executor)] {
        boost::asio::post(executor, [pending] {
            if (!pending->withdrawn) {
                auto due = std::move(pending->call);
                due();
            }
        });
    });
    // Weakly, since what the call owns may own the timer.
    return Timer{[weak = std::weak_ptr(pending), &loop = loop_] {
        if (const auto held = weak.lock()) {
            held->withdrawn = true;
            const auto dropped = std::move(held->call);
            loop.withdraw(held->id);
        }
    }};
}

}  // namespace zelkovanta::platform::simulated
