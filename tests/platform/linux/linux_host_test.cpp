#include "platform/linux/linux_host.h"

#include "platform/task.h"
#include "tests/platform/linux/qt_loop.h"
#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/scripted_web_socket.h"
#include "tests/support/temporary_folder.h"

#include <chrono>
#include <optional>

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

/// The whole host, on a bus without services and without a bus.
struct LinuxHostTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    support::TemporaryFolder folder;
    LinuxHost::Settings settings{
        .profile = Profile{"test"},
        .roots = {.config = folder.path() / "config", .data = folder.path() / "data", .state = folder.path() / "state"},
        .resources = folder.path(),
        .program = programFile(),
        .environment = [](const std::string&) { return std::nullopt; },
        .facts = folder.path()};
    std::optional<LinuxHost> host{std::in_place, settings};
    const KeyStoreItem token{.service = "com.zelkovanta.macos.test", .account = "deviceToken"};
};

TEST_F(LinuxHostTest, everyPortIsThereUnderTheNamesOfItsProfile) {
    EXPECT_TRUE(host->loginItem().registerItem(RegistrationIntent::personsWish).has_value());
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "config/autostart/com.zelkovanta.Desktop.test.desktop"));
    host->defaults().setBoolean("openAsWindow", true);
    host->shutDown();
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "config/zelkovanta/settings.ini"));
    EXPECT_EQ(host->info().localeIdentifier(), "en-US");
    EXPECT_EQ(host->information().text("missing"), std::nullopt);
}

TEST_F(LinuxHostTest, aMissingKeyStoreIsNoTokenWithoutDelay) {
    const auto start = std::chrono::steady_clock::now();
    bool isDone = false;
    startTask(host->background().executor(), [&]() -> Awaitable<void> {
        const auto value = co_await host->keyStore().read(token);
        EXPECT_EQ(value, std::nullopt);
        isDone = true;
    });
    host->keyStore().write(token, "lost");
    EXPECT_TRUE(runUntil([&] { return isDone; }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

// Whoever has a token to go on with has waited for the key store, so no sign-in is lost for an id that comes too late.
TEST_F(LinuxHostTest, withoutKernelAuditAndLoginServiceTheBusHasToldItsIdOnceTheKeyStoreHasAnswered) {
    bool isDone = false;
    startTask(host->mainThread().executor(), [&]() -> Awaitable<void> {
        co_await host->keyStore().read(token);
        isDone = true;
    });
    ASSERT_TRUE(runUntil([&] { return isDone; }));
    const std::string session = host->info().auditSessionId();
    if (processEnvironment()("DBUS_SESSION_BUS_ADDRESS")) {
        EXPECT_EQ(session.size(), 33U) << session;
        EXPECT_TRUE(session.starts_with('b')) << session;
    } else {
        EXPECT_EQ(session, "");
    }
}

TEST_F(LinuxHostTest, busesThatAcceptAndStaySilentHoldUpNeitherTheSettingsNorTheEnd) {
    ScriptedServer silent([](ScriptedConnection& connection) { connection.waitForClose(); });
    settings.environment = [&silent](const std::string& name) -> std::optional<std::string> {
        return name.starts_with("DBUS_") ? std::optional{"tcp:host=127.0.0.1,port=" + std::to_string(silent.port())}
                                         : std::nullopt;
    };
    host.reset();
    host.emplace(settings);
    const auto witness = std::make_shared<int>();
    startTask(host->mainThread().executor(), [&, witness]() -> Awaitable<void> {
        const auto kept = witness;
        co_await host->keyStore().read(token);
        ADD_FAILURE() << "the key store answered without a bus";
    });
    EXPECT_TRUE(runUntil([&] { return silent.connections() == 2; }));
    host->defaults().setBoolean("openAsWindow", true);
    EXPECT_TRUE(host->defaults().boolean("openAsWindow").value_or(false));
    const auto file = folder.path() / "config/zelkovanta/settings.ini";
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(file); }, 5s));
    const auto start = std::chrono::steady_clock::now();
    host->shutDown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
    host.reset();
    EXPECT_EQ(witness.use_count(), 1) << "a task is still there";
}

TEST_F(LinuxHostTest, itEndsQuicklyWithEverythingUnderWay) {
    ScriptedServer silent([](ScriptedConnection& connection) { connection.waitForClose(); });
    ScriptedServer sockets([](ScriptedConnection& connection) {
        acceptUpgrade(connection);
        connection.waitForClose();
    });
    auto session = host->urlLoading().makeSession({});
    Executor queue = host->background().makeSerialQueue();
    auto webSocketSession = host->webSockets().makeSession(queue);
    const auto witness = std::make_shared<int>();
    for (int i = 0; i < 10; ++i) {
        startTask(host->mainThread().executor(), [&, witness]() -> Awaitable<void> {
            const auto kept = witness;
            const HttpRequest request{.method = "GET", .url = "http://" + silent.address()};
            co_await session->perform(request);
        });
        startTask(queue, [&, witness]() -> Awaitable<void> {
            const auto kept = witness;
            const auto task = webSocketSession->makeTask({.url = "ws://" + sockets.address()});
            task->resume();
            co_await task->receive();
        });
        startTask(host->mainThread().executor(), [&, witness]() -> Awaitable<void> {
            const auto kept = witness;
            co_await sleepFor(host->clock(), 1h);
        });
        startTask(host->background().executor(), [&, witness]() -> Awaitable<void> {
            const auto kept = witness;
            co_await sleepFor(host->clock(), 1h);
        });
    }
    EXPECT_TRUE(runUntil([&] { return silent.connections() == 10 && sockets.connections() == 10; }));
    const auto start = std::chrono::steady_clock::now();
    host->shutDown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    webSocketSession.reset();
    session.reset();
    queue = {};
    host.reset();
    EXPECT_EQ(witness.use_count(), 1) << "a task is still there";
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
