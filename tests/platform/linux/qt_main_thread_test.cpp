#include "platform/linux/qt_main_thread.h"

#include "platform/linux/network_thread.h"
#include "platform/task.h"

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

struct QtMainThreadTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    QtMainThread mainThread;
};

TEST_F(QtMainThreadTest, workPostedFromAnotherThreadRunsInTheLoopInItsOrder) {
    std::vector<int> seen;
    std::thread other([&] {
        for (int i = 0; i < 50; ++i) {
            mainThread.post([&seen, i] {
                EXPECT_EQ(QThread::currentThread(), qApp->thread());
                seen.push_back(i);
            });
        }
        mainThread.post([] { QCoreApplication::quit(); });
    });
    QCoreApplication::exec();
    other.join();
    ASSERT_EQ(seen.size(), 50U);
    EXPECT_TRUE(std::ranges::is_sorted(seen));
}

TEST_F(QtMainThreadTest, postingNeverRunsTheWorkWithinTheCall) {
    std::vector<std::string> seen;
    boost::asio::post(mainThread.executor(), [&] {
        mainThread.post([&] {
            seen.emplace_back("inner");
            QCoreApplication::quit();
        });
        seen.emplace_back("outer");
    });
    EXPECT_TRUE(seen.empty());
    QCoreApplication::exec();
    EXPECT_EQ(seen, (std::vector<std::string>{"outer", "inner"}));
}

TEST_F(QtMainThreadTest, workThatPostsWithoutEndLeavesTheToolkitItsTurn) {
    constexpr int patience = 10'000;
    int pieces = 0;
    int piecesBeforeTheToolkit = 0;
    const std::function<void()> again = [&] {
        if (++pieces < patience) {
            mainThread.post(again);
        } else {
            QCoreApplication::quit();
        }
    };
    mainThread.post(again);
    bool hadItsTurn = false;
    QTimer::singleShot(0, &application, [&] {
        hadItsTurn = true;
        piecesBeforeTheToolkit = pieces;
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    EXPECT_TRUE(hadItsTurn);
    EXPECT_GE(piecesBeforeTheToolkit, 1);
}

TEST_F(QtMainThreadTest, aCrowdOfWorkIsDoneWhole) {
    int pieces = 0;
    for (int i = 0; i < 1000; ++i) {
        mainThread.post([&] { ++pieces; });
    }
    mainThread.post([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_EQ(pieces, 1000);
}

TEST_F(QtMainThreadTest, workThatRunsALoopOfItsOwnIsNotWaitedForByTheRest) {
    bool isReached = false;
    mainThread.post([&] {
        QEventLoop inner;
        mainThread.post([&] {
            isReached = true;
            inner.quit();
        });
        inner.exec();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    EXPECT_TRUE(isReached);
}

TEST_F(QtMainThreadTest, workPostedAfterTheLoopEndedIsDestroyedUnrun) {
    auto owned = std::make_shared<int>(0);
    mainThread.post([] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    mainThread.post([owned] { ++*owned; });
    EXPECT_EQ(owned.use_count(), 2);
    mainThread.end();
    EXPECT_EQ(owned.use_count(), 1);
    mainThread.post([owned] { ++*owned; });
    EXPECT_EQ(owned.use_count(), 1);
    EXPECT_EQ(*owned, 0);
}

/// Never resumed: nobody holds what it waits for.
Awaitable<void> waitForNothing(std::shared_ptr<int>) {
    QCoreApplication::quit();
    co_await boost::asio::async_initiate<const boost::asio::use_awaitable_t<Executor>, void()>(
        [](auto) {}, boost::asio::use_awaitable_t<Executor>{});
}

TEST_F(QtMainThreadTest, tasksThatWaitForEachOtherAcrossThreadsAreUnwoundAtTheEnd) {
    auto owned = std::make_shared<int>(0);
    {
        NetworkThread network;
        startTask(mainThread.executor(), [&network, owned]() -> Awaitable<void> {
            co_await boost::asio::co_spawn(network.executor(), waitForNothing(owned), boost::asio::use_awaitable);
        });
        QCoreApplication::exec();
        network.stop();
        mainThread.end();
    }
    EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
