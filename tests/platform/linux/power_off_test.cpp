#include "platform/linux/power_off.h"

#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "tests/platform/linux/qt_loop.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <optional>
#include <unistd.h>
#include <utility>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QProcess>
#include <QSessionManager>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString loginPath = QStringLiteral("/org/freedesktop/login1");
const QString loginInterface = QStringLiteral("org.freedesktop.login1.Manager");

/// Calls nobody by itself.
class StoppedClock final : public Clock {
public:
    [[nodiscard]] SteadyTime steadyNow() const override { return {}; }
    [[nodiscard]] WallTime wallNow() const override { return {}; }
    [[nodiscard]] Timer callAfter(Duration delay, Executor, std::move_only_function<void()> call) override {
        delay_ = delay;
        call_ = std::make_shared<std::move_only_function<void()>>(std::move(call));
        return Timer{[this, id = std::weak_ptr(call_)] {
            if (id.lock() == call_) {
                call_.reset();
            }
        }};
    }

    /// How long the call that is waited for shall be delayed; none if nobody waits.
    [[nodiscard]] std::optional<Duration> delay() const { return call_ ? std::optional{delay_} : std::nullopt; }
    void reach() {
        const auto call = std::exchange(call_, nullptr);
        (*call)();
    }

private:
    Duration delay_{};
    std::shared_ptr<std::move_only_function<void()>> call_;
};

struct PowerOffTest : testing::Test {
    int count = 0;
    QGuiApplication application{count, nullptr};
    QtMainThread mainThread;
    NetworkThread network;
    StoppedClock clock;
    int handled = 0;
    int quits = 0;
    KeysAsTexts texts;
    std::optional<PowerOff> powerOff;
    Observation observer;

    void begin() {
        powerOff.emplace(clock, network.context(), network.makeWorkerQueue(), mainThread.executor(), texts,
                         [this] { ++quits; });
        observer = powerOff->observe([this] { ++handled; });
    }
    void announceLogOut() {
        // The session's manager is not touched.
        alignas(QSessionManager) std::array<std::byte, sizeof(QSessionManager)> storage{};
        Q_EMIT application.commitDataRequest(*reinterpret_cast<QSessionManager*>(storage.data()));
    }
    ~PowerOffTest() override {
        powerOff.reset();
        network.stop();
        mainThread.end();
    }
};

TEST_F(PowerOffTest, sigtermRunsTheHandlerOnceAndThenQuits) {
    begin();
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 1; }));
    EXPECT_EQ(handled, 1);
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 2; }));
    EXPECT_EQ(handled, 1);
}

TEST_F(PowerOffTest, anObservationThatEndedIsNotCalled) {
    begin();
    int others = 0;
    auto other = powerOff->observe([&] { ++others; });
    observer.reset();
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 1; }));
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(others, 1);
}

TEST_F(PowerOffTest, theEndOfTheDesktopSessionRunsTheHandlerBeforeItGoesOn) {
    begin();
    announceLogOut();
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(quits, 0);
    announceLogOut();
    EXPECT_EQ(handled, 1);
}

TEST_F(PowerOffTest, aLogOutThatThisProcessOutlivesByHalfAMinuteCountsAsNone) {
    begin();
    announceLogOut();
    ASSERT_EQ(clock.delay(), 30s);
    clock.reach();
    EXPECT_EQ(handled, 1);
    announceLogOut();
    EXPECT_EQ(handled, 2);
    clock.reach();
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 1; }));
    EXPECT_EQ(handled, 3);
}

TEST_F(PowerOffTest, sigtermInTheMidstOfALogOutEndsTheCounting) {
    begin();
    announceLogOut();
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 1; }));
    EXPECT_EQ(clock.delay(), std::nullopt);
    EXPECT_EQ(handled, 1);
}

TEST_F(PowerOffTest, nothingIsHandledOrCountedOnceStopped) {
    begin();
    announceLogOut();
    powerOff->stop();
    EXPECT_EQ(clock.delay(), std::nullopt);
    announceLogOut();
    EXPECT_EQ(clock.delay(), std::nullopt);
    EXPECT_EQ(handled, 1);
}

struct LoginServiceTest : PowerOffTest {
    QProcess service;
    QDBusConnection bus = QDBusConnection::systemBus();

    void startService() {
        service.setProcessChannelMode(QProcess::MergedChannels);
        service.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-m"), QStringLiteral("dbusmock"),
                                                           QStringLiteral("--template"), QStringLiteral("logind")});
        // The distribution's interpreter has the distribution's modules.
        ASSERT_TRUE(runUntil([this] { return bus.interface()->isServiceRegistered(loginService).value(); }))
            << service.readAll().toStdString();
    }
    ~LoginServiceTest() override {
        service.kill();
        service.waitForFinished();
    }

    /// How many of our locks the login service knows.
    int locks() {
        const auto call =
            QDBusMessage::createMethodCall(loginService, loginPath, loginInterface, QStringLiteral("ListInhibitors"));
        const auto reply = bus.call(call);
        int found = 0;
        if (reply.type() == QDBusMessage::ReplyMessage) {
            const auto list = qvariant_cast<QDBusArgument>(reply.arguments().constFirst());
            list.beginArray();
            while (!list.atEnd()) {
                QString what, who, why, mode;
                uint person = 0;
                uint process = 0;
                list.beginStructure();
                list >> what >> who >> why >> mode >> person >> process;
                list.endStructure();
                found += what == "shutdown" && who == "ZelkoVanta" && mode == "delay" ? 1 : 0;
            }
            list.endArray();
        }
        return found;
    }

    void announce(bool isBeginning) {
        auto call = QDBusMessage::createMethodCall(loginService, loginPath, QStringLiteral("org.freedesktop.DBus.Mock"),
                                                   QStringLiteral("EmitSignal"));
        call.setArguments({loginInterface, QStringLiteral("PrepareForShutdown"), QStringLiteral("b"),
                           QVariant::fromValue(QVariantList{isBeginning})});
        EXPECT_EQ(bus.call(call).type(), QDBusMessage::ReplyMessage);
    }
};

TEST_F(LoginServiceTest, anAnnouncedShutdownRunsTheHandlerUnderTheLockAndThenLetsGo) {
    ASSERT_NO_FATAL_FAILURE(startService());
    begin();
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    int locksWhileHandled = -1;
    observer = powerOff->observe([&] {
        ++handled;
        locksWhileHandled = locks();
    });
    announce(true);
    EXPECT_TRUE(runUntil([this] { return handled == 1; }));
    EXPECT_EQ(locksWhileHandled, 1);
    EXPECT_TRUE(runUntil([this] { return locks() == 0; }));
    EXPECT_EQ(quits, 0);
}

TEST_F(LoginServiceTest, sigtermAfterTheAnnouncementQuitsWithoutRunningTheHandlerAgain) {
    ASSERT_NO_FATAL_FAILURE(startService());
    begin();
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    announce(true);
    EXPECT_TRUE(runUntil([this] { return handled == 1; }));
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(runUntil([this] { return quits == 1; }));
    EXPECT_EQ(handled, 1);
}

TEST_F(LoginServiceTest, aShutdownThatWasCalledOffCountsAsNone) {
    ASSERT_NO_FATAL_FAILURE(startService());
    begin();
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    announce(true);
    EXPECT_TRUE(runUntil([this] { return locks() == 0; }));
    announce(false);
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    announce(true);
    EXPECT_TRUE(runUntil([this] { return handled == 2; }));
}

TEST_F(LoginServiceTest, aShutdownAfterALogOutThatWasCalledOffRunsTheHandler) {
    ASSERT_NO_FATAL_FAILURE(startService());
    begin();
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    announceLogOut();
    EXPECT_EQ(handled, 1);
    clock.reach();
    announce(true);
    EXPECT_TRUE(runUntil([this] { return handled == 2; }));
}

TEST_F(LoginServiceTest, aShutdownInTheMidstOfALogOutIsTheSameEnd) {
    ASSERT_NO_FATAL_FAILURE(startService());
    begin();
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    announceLogOut();
    announce(true);
    EXPECT_TRUE(runUntil([this] { return locks() == 0; }));
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(clock.delay(), std::nullopt);
    announceLogOut();
    EXPECT_EQ(handled, 1);
    EXPECT_EQ(clock.delay(), std::nullopt);
}

TEST_F(LoginServiceTest, aLoginServiceThatComesLaterIsAskedThen) {
    begin();
    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_TRUE(runUntil([this] { return locks() == 1; }));
    powerOff.reset();
    EXPECT_TRUE(runUntil([this] { return locks() == 0; }));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host

int main(int count, char** arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
