#include "platform/linux/boottime_clock.h"

#include "platform/linux/network_thread.h"
#include "platform/task.h"

#include <future>
#include <memory>
#include <vector>

#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

struct BoottimeClockTest : testing::Test {
    NetworkThread network;
    BoottimeClock clock{network.context()};
    Executor queue = network.makeSerialQueue();

    /// Runs `work` on the queue and waits for it.
    void onQueue(std::function<void()> work) {
        std::promise<void> done;
        boost::asio::post(queue, [&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }
};

TEST_F(BoottimeClockTest, aCallComesAfterItsDelayAndNotBefore) {
    std::promise<SteadyTime> called;
    const SteadyTime start = clock.steadyNow();
    const Timer timer = clock.callAfter(30ms, queue, [&] { called.set_value(clock.steadyNow()); });
    EXPECT_GE(called.get_future().get() - start, 30ms);
}

TEST_F(BoottimeClockTest, callsComeInTheOrderOfTheirTimesWhateverTheOrderOfAsking) {
    std::vector<int> seen;
    std::promise<void> last;
    const Timer third = clock.callAfter(30ms, queue, [&] {
        seen.push_back(3);
        last.set_value();
    });
    const Timer first = clock.callAfter(10ms, queue, [&] { seen.push_back(1); });
    const Timer second = clock.callAfter(20ms, queue, [&] { seen.push_back(2); });
    last.get_future().wait();
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3}));
}

TEST_F(BoottimeClockTest, manyCallsForThePastComeAtOnce) {
    constexpr int count = 1000;
    int seen = 0;
    std::promise<void> last;
    std::vector<Timer> timers;
    for (int i = 0; i < count; ++i) {
        timers.push_back(clock.callAfter(-1h, queue, [&] {
            if (++seen == count) {
                last.set_value();
            }
        }));
    }
    last.get_future().wait();
    EXPECT_EQ(seen, count);
}

TEST_F(BoottimeClockTest, aResetTimerNeverCallsEvenIfItFellDueAlready) {
    bool called = false;
    auto owned = std::make_shared<int>();
    Timer timer = clock.callAfter(1ms, queue, [&called, owned] { called = true; });
    onQueue([&] {
        // The queue is busy until the call has fallen due, so that it waits behind this piece of work.
        const SteadyTime until = clock.steadyNow() + 20ms;
        while (clock.steadyNow() < until) {
        }
        timer.reset();
        EXPECT_EQ(owned.use_count(), 1);
    });
    onQueue([] {});
    EXPECT_FALSE(called);
}

TEST_F(BoottimeClockTest, aCallMayOwnItsOwnTimer) {
    std::promise<void> called;
    auto timer = std::make_shared<Timer>();
    onQueue([&] {
        *timer = clock.callAfter(1ms, queue, [&called, timer] {
            timer->reset();
            called.set_value();
        });
    });
    called.get_future().wait();
    onQueue([] {});
    EXPECT_EQ(timer.use_count(), 1);
}

TEST_F(BoottimeClockTest, aTaskSleepsAndCanBeWoken) {
    std::promise<bool> woken;
    const TaskHandle task = startTask(queue, [&](CancellationToken token) -> Awaitable<void> {
        co_await sleepFor(clock, 1h, token);
        woken.set_value(token.isCancelled());
    });
    onQueue([&] { TaskHandle(task).cancel(); });
    EXPECT_TRUE(woken.get_future().get());
}

TEST(BoottimeClockEndTest, aTimerMayOutliveItsClockAndPendingCallsAreDropped) {
    NetworkThread network;
    auto owned = std::make_shared<int>();
    Timer timer;
    {
        BoottimeClock clock{network.context()};
        timer = clock.callAfter(1h, network.executor(), [owned] {});
        EXPECT_EQ(owned.use_count(), 2);
    }
    EXPECT_EQ(owned.use_count(), 1);
    timer.reset();
}

TEST(BoottimeClockEndTest, theTimeOfDayIsTheSystems) {
    NetworkThread network;
    const BoottimeClock clock{network.context()};
    const auto apart = clock.wallNow() - std::chrono::system_clock::now();
    EXPECT_LT(std::chrono::abs(apart), 5s);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
