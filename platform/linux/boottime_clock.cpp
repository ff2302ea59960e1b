#include "platform/linux/boottime_clock.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/post.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

namespace {

SteadyTime readBoottime() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return SteadyTime{std::chrono::seconds{now.tv_sec} + std::chrono::nanoseconds{now.tv_nsec}};
}

int makeKernelTimer() {
    const int descriptor = ::timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (descriptor < 0) {
        throw std::system_error(errno, std::system_category(), "timerfd_create");
    }
    return descriptor;
}

}  // namespace

class BoottimeClock::Queue : public std::enable_shared_from_this<Queue> {
public:
    explicit Queue(asio::io_context& network) : kernelTimer_(network, makeKernelTimer()) {}

    struct Pending {
        Executor executor;
        std::move_only_function<void()> call;
    };
    using Key = std::pair<SteadyTime, std::uint64_t>;

    Timer add(Duration delay, Executor executor, std::move_only_function<void()> call) {
        auto pending = std::make_shared<Pending>(Pending{std::move(executor), std::move(call)});
        Key key;
        {
            const std::scoped_lock lock(mutex_);
            key = {readBoottime() + std::max(delay, Duration::zero()), nextNumber_++};
            pending_.emplace(key, pending);
            arm();
        }
        // Weakly, since what the call owns may own the timer.
        return Timer{[queue = weak_from_this(), key, weak = std::weak_ptr(pending)] {
            if (const auto held = weak.lock()) {
                if (const auto self = queue.lock()) {
                    self->withdraw(key, *held);
                }
            }
        }};
    }

    void waitForKernelTimer() {
        kernelTimer_.async_wait(asio::posix::descriptor_base::wait_read,
                                [self = shared_from_this()](boost::system::error_code error) {
                                    if (!error && self->runDue()) {
                                        self->waitForKernelTimer();
                                    }
                                });
    }

    void end() {
        std::map<Key, std::shared_ptr<Pending>> dropped;
        {
            const std::scoped_lock lock(mutex_);
            ended_ = true;
            dropped.swap(pending_);
            disarm();
        }
        asio::post(kernelTimer_.get_executor(), [self = shared_from_this()] {
            boost::system::error_code ignored;
            self->kernelTimer_.close(ignored);
        });
    }

private:
    void withdraw(const Key& key, Pending& pending) {
        std::move_only_function<void()> dropped;
        std::shared_ptr<Pending> removed;
        {
            const std::scoped_lock lock(mutex_);
            dropped = std::exchange(pending.call, nullptr);
            if (const auto found = pending_.find(key); found != pending_.end()) {
                removed = std::move(found->second);
                pending_.erase(found);
            }
        }
        // Both are destroyed only here: what the call owns may withdraw other timers.
    }

    /// False once the clock has ended.
    bool runDue() {
        std::uint64_t expirations = 0;
        [[maybe_unused]] const auto length = ::read(kernelTimer_.native_handle(), &expirations, sizeof expirations);
        std::vector<std::shared_ptr<Pending>> due;
        {
            const std::scoped_lock lock(mutex_);
            armedFor_ = SteadyTime::max();
            const SteadyTime now = readBoottime();
            while (!pending_.empty() && pending_.begin()->first.first <= now) {
                due.push_back(std::move(pending_.begin()->second));
                pending_.erase(pending_.begin());
            }
            arm();
            if (ended_) {
                return false;
            }
        }
        for (auto& pending : due) {
            Executor executor = pending->executor;
            asio::post(executor, [self = shared_from_this(), pending = std::move(pending)] { self->run(*pending); });
        }
        return true;
    }

    void run(Pending& pending) {
        std::move_only_function<void()> call;
        {
            const std::scoped_lock lock(mutex_);
            call = std::exchange(pending.call, nullptr);
        }
        if (call) {
            call();
        }
    }

    // Withdrawn calls do not set the kernel timer back: it wakes once more and finds nothing due.
    void arm() {
        if (pending_.empty() || pending_.begin()->first.first >= armedFor_) {
            return;
        }
        armedFor_ = pending_.begin()->first.first;
        const auto since = std::max(armedFor_.time_since_epoch(), Duration{1});
        const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
        setKernelTimer(
            {.it_interval = {}, .it_value = {.tv_sec = seconds.count(), .tv_nsec = (since - seconds).count()}});
    }

    void disarm() { setKernelTimer({}); }

    void setKernelTimer(const itimerspec& value) {
        ::timerfd_settime(kernelTimer_.native_handle(), TFD_TIMER_ABSTIME, &value, nullptr);
    }

    std::mutex mutex_;
    asio::posix::stream_descriptor kernelTimer_;
    // Ordered by time, then by number, so that calls for one moment come in the order in which they were asked for.
    std::map<Key, std::shared_ptr<Pending>> pending_;
    std::uint64_t nextNumber_ = 1;
    SteadyTime armedFor_ = SteadyTime::max();
    bool ended_ = false;
};

BoottimeClock::BoottimeClock(asio::io_context& network) : queue_(std::make_shared<Queue>(network)) {
    queue_->waitForKernelTimer();
}

BoottimeClock::~BoottimeClock() {
    queue_->end();
}

SteadyTime BoottimeClock::steadyNow() const {
    return readBoottime();
}

WallTime BoottimeClock::wallNow() const {
    return std::chrono::time_point_cast<WallTime::duration>(std::chrono::system_clock::now());
}

Timer BoottimeClock::callAfter(Duration delay, Executor executor, std::move_only_function<void()> call) {
    return queue_->add(delay, std::move(executor), std::move(call));
}

}  // namespace zelkovanta::platform::linux_host
