#include "platform/linux/network_thread.h"

#include <atomic>
#include <future>
#include <thread>

#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

TEST(NetworkThreadTest, aSerialQueueRunsItsWorkOneAfterTheOther) {
    NetworkThread network;
    const Executor queue = network.makeSerialQueue();
    std::vector<int> seen;
    std::promise<void> done;
    for (int i = 0; i < 100; ++i) {
        boost::asio::post(queue, [&seen, i] { seen.push_back(i); });
    }
    boost::asio::post(queue, [&] { done.set_value(); });
    done.get_future().wait();
    ASSERT_EQ(seen.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(seen));
}

TEST(NetworkThreadTest, aWorkerQueueRunsItsWorkOneAfterTheOtherBesideTheTraffic) {
    NetworkThread network(4);
    const Executor queue = network.makeWorkerQueue();
    std::atomic<int> inside = 0;
    std::atomic<int> overlaps = 0;
    std::promise<std::thread::id> worker;
    for (int i = 0; i < 200; ++i) {
        boost::asio::post(queue, [&] {
            overlaps += inside++ == 0 ? 0 : 1;
            --inside;
        });
    }
    boost::asio::post(queue, [&] { worker.set_value(std::this_thread::get_id()); });
    std::promise<std::thread::id> traffic;
    boost::asio::post(network.executor(), [&] { traffic.set_value(std::this_thread::get_id()); });
    EXPECT_NE(worker.get_future().get(), traffic.get_future().get());
    EXPECT_EQ(overlaps, 0);
}

TEST(NetworkThreadTest, waitingEndsWithTheTask) {
    NetworkThread network;
    std::atomic<bool> ran = false;
    const auto start = std::chrono::steady_clock::now();
    network.runAndWait(
        [&]() -> Awaitable<void> {
            ran = true;
            co_return;
        },
        1h);
    EXPECT_TRUE(ran);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1min);
}

TEST(NetworkThreadTest, waitingEndsAtItsLimitAndTheTaskGoesOn) {
    NetworkThread network;
    auto held = std::make_shared<std::promise<void>>();
    auto ended = std::make_shared<std::promise<void>>();
    auto end = ended->get_future();
    network.runAndWait(
        [held, ended]() -> Awaitable<void> {
            held->get_future().wait();
            ended->set_value();
            co_return;
        },
        20ms);
    EXPECT_EQ(end.wait_for(0s), std::future_status::timeout);
    held->set_value();
    end.wait();
}

TEST(NetworkThreadTest, workThatWasNotBegunIsDestroyedUnrunWithTheThread) {
    auto witness = std::make_shared<int>(0);
    {
        NetworkThread network;
        network.stop();
        boost::asio::post(network.executor(), [witness] { ++*witness; });
        boost::asio::post(network.makeWorkerQueue(), [witness] { ++*witness; });
        EXPECT_EQ(witness.use_count(), 3);
    }
    EXPECT_EQ(*witness, 0);
    EXPECT_EQ(witness.use_count(), 1);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
