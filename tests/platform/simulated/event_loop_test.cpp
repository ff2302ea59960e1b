#include "platform/simulated/event_loop.h"

#include "platform/task.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::platform::simulated {
namespace {

using namespace std::chrono_literals;

struct EventLoopTest : testing::Test {
    EventLoop loop;
    EventLoop::Thread& thread = loop.makeThread();
    ManualClock clock{loop};
    std::vector<std::string> seen;
};

TEST_F(EventLoopTest, workRunsInTheOrderInWhichItWasPostedAndNeverWithinPost) {
    thread.post([this] {
        seen.emplace_back("first");
        thread.post([this] { seen.emplace_back("third"); });
    });
    thread.post([this] { seen.emplace_back("second"); });
    EXPECT_TRUE(seen.empty());
    loop.runReady();
    EXPECT_EQ(seen, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(EventLoopTest, aTimerCallsWhenItsTimeHasComeAndNotAfterItWasReset) {
    Timer kept = clock.callAfter(2s, thread.executor(), [this] { seen.emplace_back("kept"); });
    Timer dropped = clock.callAfter(1s, thread.executor(), [this] { seen.emplace_back("dropped"); });
    dropped.reset();
    loop.advance(1999ms);
    EXPECT_TRUE(seen.empty());
    loop.advance(1ms);
    EXPECT_EQ(seen, std::vector<std::string>{"kept"});
}

TEST_F(EventLoopTest, aTimerResetAfterItFellDueButBeforeItsThreadCameRoundDoesNotCall) {
    Timer timer = clock.callAfter(1s, thread.executor(), [this] { seen.emplace_back("late"); });
    thread.setHeld(true);
    loop.advance(2s);
    timer.reset();
    thread.setHeld(false);
    loop.runReady();
    EXPECT_TRUE(seen.empty());
}

TEST_F(EventLoopTest, aTaskReadsInTheOrderInWhichThingsHappen) {
    startTask(thread.executor(), [this]() -> Awaitable<void> {
        seen.emplace_back("start");
        co_await sleepFor(clock, 3s);
        seen.emplace_back("after three seconds");
    });
    loop.advance(2s);
    EXPECT_EQ(seen, std::vector<std::string>{"start"});
    loop.advance(1s);
    EXPECT_EQ(seen, (std::vector<std::string>{"start", "after three seconds"}));
}

TEST_F(EventLoopTest, cancellingATaskEndsItsSleepAtOnce) {
    TaskHandle task = startTask(thread.executor(), [this](CancellationToken token) -> Awaitable<void> {
        co_await sleepFor(clock, 1h, token);
        seen.emplace_back(token.isCancelled() ? "cancelled" : "slept");
    });
    loop.runReady();
    task.cancel();
    loop.runReady();
    EXPECT_EQ(seen, std::vector<std::string>{"cancelled"});
    loop.advance(2h);
    EXPECT_EQ(seen.size(), 1U);
}

TEST_F(EventLoopTest, aTaskMayCancelItselfAndGoesOnToItsNextCheck) {
    TaskHandle task;
    task = startTask(thread.executor(), [&](CancellationToken token) -> Awaitable<void> {
        task.cancel();
        seen.emplace_back("still running");
        co_await sleepFor(clock, 1h, token);
        seen.emplace_back("not slept");
    });
    loop.runReady();
    EXPECT_EQ(seen, (std::vector<std::string>{"still running", "not slept"}));
}

TEST_F(EventLoopTest, aSleepingTaskIsLetGoWithTheLoop) {
    auto witness = std::make_shared<int>(0);
    {
        EventLoop other;
        EventLoop::Thread& otherThread = other.makeThread();
        ManualClock otherClock{other};
        startTask(otherThread.executor(), [&otherClock, witness]() -> Awaitable<void> {
            co_await sleepFor(otherClock, 1h);
            ADD_FAILURE() << "the loop ended before the hour";
        });
        other.runReady();
        EXPECT_GT(witness.use_count(), 1);
    }
    EXPECT_EQ(witness.use_count(), 1);
}

}  // namespace
}  // namespace zelkovanta::platform::simulated
