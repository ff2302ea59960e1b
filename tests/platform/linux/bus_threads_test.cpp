#include "platform/linux/bus_threads.h"

#include "tests/platform/linux/qt_loop.h"
#include "tests/platform/linux/scripted_server.h"

#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <optional>
#include <string>

#include <QCoreApplication>
#include <QDBusConnection>
#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

std::string addressOf(const ScriptedServer& server) {
    return "tcp:host=127.0.0.1,port=" + std::to_string(server.port());
}

struct BusThreadsTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    std::map<std::string, std::string> variables;
    std::optional<BusThreads> threads;

    /// Both buses are this process's own where the test names no other.
    void begin() {
        const Environment own = processEnvironment();
        threads.emplace([this, own](const std::string& name) {
            const auto found = variables.find(name);
            return found == variables.end() ? own(name) : std::optional{found->second};
        });
    }
    static std::future<void> reached(const Executor& executor) {
        auto promise = std::make_shared<std::promise<void>>();
        boost::asio::post(executor, [promise] { promise->set_value(); });
        return promise->get_future();
    }
    static bool isReached(const std::future<void>& work, std::chrono::milliseconds limit) {
        return work.wait_for(limit) == std::future_status::ready;
    }
};

TEST_F(BusThreadsTest, workBeginsOnceItsBusHasAnswered) {
    begin();
    std::promise<bool> isConnected;
    boost::asio::post(threads->session(), [&] { isConnected.set_value(QDBusConnection::sessionBus().isConnected()); });
    auto answer = isConnected.get_future();
    ASSERT_EQ(answer.wait_for(30s), std::future_status::ready);
    EXPECT_TRUE(answer.get());
    EXPECT_TRUE(isReached(reached(threads->system()), 30s));
}

TEST_F(BusThreadsTest, aBusThatIsNotThereIsNotWaitedFor) {
    for (const std::string address : {"unix:path=/nonexistent/bus", "unix:path=/etc/hostname", "nonsense",
                                      "autolaunch:", "tcp:host=127.0.0.1,port=1"}) {
        variables = {{"DBUS_SESSION_BUS_ADDRESS", address}, {"DBUS_SYSTEM_BUS_ADDRESS", address}};
        begin();
        EXPECT_TRUE(isReached(reached(threads->session()), 30s)) << address;
        EXPECT_TRUE(isReached(reached(threads->system()), 30s)) << address;
    }
}

TEST_F(BusThreadsTest, aBusThatAcceptsAndStaysSilentHoldsItsOwnWorkAndNothingElse) {
    ScriptedServer silent([](ScriptedConnection& connection) { connection.waitForClose(); });
    variables = {{"DBUS_SYSTEM_BUS_ADDRESS", addressOf(silent)}};
    begin();
    std::promise<bool> isConnected;
    boost::asio::post(threads->session(), [&] { isConnected.set_value(QDBusConnection::sessionBus().isConnected()); });
    EXPECT_TRUE(isConnected.get_future().get());
    const auto held = reached(threads->system());
    EXPECT_FALSE(isReached(held, 300ms));
    EXPECT_EQ(silent.connections(), 1);
    const auto start = std::chrono::steady_clock::now();
    threads->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
    EXPECT_FALSE(isReached(held, 0ms));
}

TEST_F(BusThreadsTest, aBusThatRefusesLateIsWaitedForUntilThen) {
    std::promise<void> mayRefuse;
    ScriptedServer late([&](ScriptedConnection& connection) {
        mayRefuse.get_future().wait();
        connection.closeNow();
    });
    variables = {{"DBUS_SESSION_BUS_ADDRESS", addressOf(late)}};
    begin();
    const auto held = reached(threads->session());
    EXPECT_FALSE(isReached(held, 100ms));
    mayRefuse.set_value();
    EXPECT_TRUE(isReached(held, 30s));
}

TEST(SilentSessionBusTest, aProcessGoesWithoutABusThatStaysSilentAndKeepsOneThatAnswersOrRefuses) {
    const QByteArray own = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_FALSE(own.isEmpty());
    leaveSilentSessionBusAlone(processEnvironment(), 30s);
    EXPECT_EQ(qgetenv("DBUS_SESSION_BUS_ADDRESS"), own);
    const auto at = [](std::string address) -> Environment {
        return [address](const std::string&) { return std::optional{address}; };
    };
    leaveSilentSessionBusAlone(at("unix:path=/nonexistent/bus"), 30s);
    EXPECT_EQ(qgetenv("DBUS_SESSION_BUS_ADDRESS"), own);
    ScriptedServer silent([](ScriptedConnection& connection) { connection.waitForClose(); });
    const auto start = std::chrono::steady_clock::now();
    leaveSilentSessionBusAlone(at(addressOf(silent)), 200ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_EQ(qgetenv("DBUS_SESSION_BUS_ADDRESS"), "disabled:");
    qputenv("DBUS_SESSION_BUS_ADDRESS", own);
}

TEST_F(BusThreadsTest, theSessionBusIsAskedForItsIdWithoutWaiting) {
    begin();
    const SessionBusId id(threads->session());
    static_cast<void>(id.value());
    EXPECT_TRUE(runUntil([&] { return !id.value().empty(); }));
    EXPECT_EQ(id.value().size(), 32U);
    EXPECT_EQ(SessionBusId(threads->session()).value(), "");
}

TEST_F(BusThreadsTest, whatWaitsForTheBusFindsItsIdThoughTheFirstAnswerFailed) {
    begin();
    std::atomic calls = 0;
    const SessionBusId id(threads->session(), [&calls] { return ++calls == 1 ? "" : "id"; });
    EXPECT_EQ(id.value(), "");
    ASSERT_TRUE(isReached(reached(threads->session()), 30s));
    EXPECT_EQ(id.value(), "id");
    EXPECT_EQ(calls, 2);
}

TEST_F(BusThreadsTest, aBusThatDoesNotTellItsIdIsAskedAgainWhenSomebodyWantsToKnow) {
    begin();
    std::atomic calls = 0;
    const SessionBusId id(threads->session(), [&calls] { return ++calls <= 3 ? "" : "id"; });
    EXPECT_EQ(id.value(), "");
    ASSERT_TRUE(isReached(reached(threads->session()), 30s));
    EXPECT_EQ(calls, 3) << "nobody is asked for ever";
    EXPECT_EQ(id.value(), "");
    ASSERT_TRUE(isReached(reached(threads->session()), 30s));
    EXPECT_EQ(id.value(), "id");
}

TEST_F(BusThreadsTest, theIdOfASilentBusIsNotKnownAndNobodyWaits) {
    ScriptedServer silent([](ScriptedConnection& connection) { connection.waitForClose(); });
    variables = {{"DBUS_SESSION_BUS_ADDRESS", addressOf(silent)}};
    begin();
    const SessionBusId id(threads->session());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(id.value(), "");
    EXPECT_EQ(id.value(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
