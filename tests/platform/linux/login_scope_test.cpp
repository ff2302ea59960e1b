#include "store/login_scope.h"

#include "platform/linux/ini_user_defaults.h"
#include "platform/linux/linux_host_info.h"
#include "platform/linux/network_thread.h"
#include "store/settings.h"
#include "tests/support/temporary_folder.h"

#include <chrono>
#include <fstream>
#include <map>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QStringList>
#include <gtest/gtest.h>

/// What becomes of a sign-in when the person behind the computer changes, and when only the computer does: the host's
/// real answers over the files that the kernel and the login service leave, a real session bus, and a real settings
/// file.
namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;
using store::LoginScope;

/// A session bus with nothing on it.
class PrivateBus {
public:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                       QStringLiteral("--address=unix:tmpdir=/tmp")});
        if (daemon_.waitForReadyRead(10'000)) {
            address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        }
    }
    ~PrivateBus() {
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] std::string id() const {
        const QString name = QStringLiteral("private bus");
        const std::string id = QDBusConnection::connectToBus(address_, name)
                                   .call(QDBusMessage::createMethodCall(
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")))
                                   .arguments()
                                   .value(0)
                                   .toString()
                                   .toStdString();
        QDBusConnection::disconnectFromBus(name);
        return id;
    }

private:
    QProcess daemon_;
    QString address_;
};

struct LoginScopeOfThisHostTest : testing::Test {
    support::TemporaryFolder root;
    support::TemporaryFolder home;
    NetworkThread threads;
    std::map<std::string, std::string> variables;
    std::string busId;

    void write(const std::string& file, const std::string& content) const {
        std::filesystem::create_directories((root.path() / file).parent_path());
        std::ofstream(root.path() / file) << content;
    }
    void remove(const std::string& file) const { std::filesystem::remove_all(root.path() / file); }

    void bootAt(long long seconds) const {
        write("proc/stat", "cpu  1 2 3 4\nintr 5\nctxt 6\nbtime " + std::to_string(seconds) + "\nprocesses 7\n");
    }
    void setKernelSession(const std::string& session) const { write("proc/self/sessionid", session); }
    /// A program that the session itself has started.
    void runInSession(const std::string& session) {
        write("run/systemd/sessions/" + session, "UID=1000\nACTIVE=1\nSTATE=active\n");
        write("proc/self/cgroup", "0::/user.slice/user-1000.slice/session-" + session + ".scope\n");
    }
    /// A program that the person's service manager has started, which belongs to no session.
    void runInServiceManager(const std::string& inheritedSession) {
        write("proc/self/cgroup", "0::/user.slice/user-1000.slice/user@1000.service/app.slice/zelkovanta.service\n");
        variables["XDG_SESSION_ID"] = inheritedSession;
    }

    /// A program that starts now, and asks the host.
    [[nodiscard]] LoginScope current() {
        const LinuxHostInfo info{{.root = root.path(),
                                  .environment = [this](const std::string& name) -> std::optional<std::string> {
                                      const auto found = variables.find(name);
                                      return found == variables.end() ? std::nullopt : std::optional{found->second};
                                  },
                                  .hostName = [] { return "desk"; },
                                  .sessionBusId = [this] { return busId; },
                                  .userId = 1000}};
        return {.bootTime = info.bootTime(), .auditSessionId = info.auditSessionId()};
    }

    /// Somebody signs in now; the program writes it down and ends.
    void signIn() {
        IniUserDefaults defaults{home.path() / "settings.ini", threads.makeWorkerQueue()};
        const LoginScope scope = current();
        defaults.setNumber(store::settings_key::stationSignInBootTime, scope.bootTime);
        defaults.setText(store::settings_key::stationSignInAuditSessionId, scope.auditSessionId);
        EXPECT_TRUE(defaults.flush(10s));
    }
    /// Whether a program that starts now keeps that sign-in.
    [[nodiscard]] bool holds() {
        const IniUserDefaults defaults{home.path() / "settings.ini", threads.makeWorkerQueue()};
        return store::loadSettings(defaults).stationSignIn.holdsIn(current());
    }
};

TEST_F(LoginScopeOfThisHostTest, aRestartOfTheProgramKeepsTheSignIn) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    signIn();
    EXPECT_TRUE(holds());
}

TEST_F(LoginScopeOfThisHostTest, anotherLoginEndsTheSignIn) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    signIn();
    setKernelSession("5");
    EXPECT_FALSE(holds());
}

TEST_F(LoginScopeOfThisHostTest, aRebootEndsTheSignInThoughTheSessionsAreCountedAnew) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    signIn();
    bootAt(1'700'000'060);
    setKernelSession("3");
    EXPECT_FALSE(holds());
}

TEST_F(LoginScopeOfThisHostTest, aClockThatIsTrimmedKeepsTheSignIn) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    signIn();
    for (const long long drift : {-5, -1, 1, 5}) {
        bootAt(1'700'000'000 + drift);
        EXPECT_TRUE(holds()) << drift;
    }
}

// The kernel counts the boot time back from the time of day, so that a corrected clock looks like another boot. Asking
// for the sign-in once more is the safe side.
TEST_F(LoginScopeOfThisHostTest, aClockThatIsCorrectedByHoursEndsTheSignIn) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    signIn();
    bootAt(1'700'000'000 + 7200);
    EXPECT_FALSE(holds());
    signIn();
    EXPECT_TRUE(holds()) << "the next sign-in is an ordinary one";
    bootAt(1'700'000'000);
    EXPECT_FALSE(holds());
}

TEST_F(LoginScopeOfThisHostTest, anAuditSessionThatIsSetTellsTheLoginBelowTheServiceManagerToo) {
    bootAt(1'700'000'000);
    setKernelSession("3");
    runInSession("7");
    runInServiceManager("7");
    EXPECT_EQ(current().auditSessionId, "k3");
    signIn();
    remove("run/systemd/sessions/7");
    runInSession("9");
    runInServiceManager("9");
    EXPECT_TRUE(holds());
    setKernelSession("5");
    EXPECT_FALSE(holds());
}

TEST_F(LoginScopeOfThisHostTest, withoutABootTimeNoSignInHolds) {
    setKernelSession("3");
    signIn();
    EXPECT_FALSE(holds());
}

// A kernel without audit: the id is not set, or there is no such file.
struct WithoutKernelAuditTest : LoginScopeOfThisHostTest, testing::WithParamInterface<bool> {
    WithoutKernelAuditTest() {
        bootAt(1'700'000'000);
        if (GetParam()) {
            setKernelSession("4294967295");
        }
    }
};
INSTANTIATE_TEST_SUITE_P(FileWithUnsetIdOrNoFile, WithoutKernelAuditTest, testing::Bool());

TEST_P(WithoutKernelAuditTest, theSessionOfTheLoginServiceTellsLoginsApart) {
    runInSession("7");
    signIn();
    EXPECT_TRUE(holds());
    runInSession("9");
    EXPECT_FALSE(holds());
}

TEST_P(WithoutKernelAuditTest, whatTheServiceManagerStartsInheritsTheSession) {
    runInSession("7");
    runInServiceManager("7");
    signIn();
    EXPECT_TRUE(holds());
    remove("run/systemd/sessions/7");
    runInSession("9");
    runInServiceManager("9");
    EXPECT_FALSE(holds());
}

// The service manager outlives a login where somebody has asked it to, and a log-out by some seconds where not.
TEST_P(WithoutKernelAuditTest, aServiceManagerThatOutlivesTheLoginDoesNotMakeTheNextOneTheSame) {
    busId = "thesamebus";
    runInSession("7");
    write("run/systemd/users/1000", "NAME=desk\nSTATE=active\nDISPLAY=7\nSESSIONS=7\n");
    runInServiceManager("7");
    signIn();
    EXPECT_TRUE(holds());
    remove("run/systemd/sessions/7");
    write("run/systemd/sessions/9", "UID=1000\nACTIVE=1\nSTATE=active\n");
    write("run/systemd/users/1000", "NAME=desk\nSTATE=active\nDISPLAY=9\nSESSIONS=9\n");
    EXPECT_FALSE(holds());
    signIn();
    EXPECT_TRUE(holds());
}

TEST_P(WithoutKernelAuditTest, aSessionThatIsClosingIsNobodysLogin) {
    runInSession("9");
    write("run/systemd/users/1000", "DISPLAY=9\n");
    runInServiceManager("7");
    write("run/systemd/sessions/7", "UID=1000\nACTIVE=0\nSTATE=closing\n");
    EXPECT_EQ(current().auditSessionId, "l9");
}

TEST_P(WithoutKernelAuditTest, withoutALoginServiceTheBusOfTheLoginTellsLoginsApart) {
    const PrivateBus first;
    busId = first.id();
    ASSERT_EQ(busId.size(), 32U);
    signIn();
    EXPECT_TRUE(holds());
    const PrivateBus second;
    busId = second.id();
    ASSERT_EQ(busId.size(), 32U);
    EXPECT_FALSE(holds());
    busId = first.id();
    EXPECT_TRUE(holds());
}

TEST_P(WithoutKernelAuditTest, whereNothingTellsLoginsApartNoSignInHolds) {
    signIn();
    EXPECT_EQ(current().auditSessionId, "");
    EXPECT_FALSE(holds());
}

TEST_P(WithoutKernelAuditTest, aRebootEndsTheSignInThoughTheLoginServiceCountsAnew) {
    runInSession("1");
    signIn();
    bootAt(1'700'000'300);
    EXPECT_FALSE(holds());
}

TEST(LoginOfThisComputerTest, twoProgramsOfOneLoginAgree) {
    const LinuxHostInfo one{HostSources::ofThisComputer()};
    const LinuxHostInfo two{HostSources::ofThisComputer()};
    const LoginScope scope{.bootTime = one.bootTime(), .auditSessionId = one.auditSessionId()};
    EXPECT_GT(scope.bootTime, 1e9);
    ASSERT_FALSE(scope.auditSessionId.empty()) << "this test runs on a session bus of its own";
    EXPECT_TRUE(scope.holdsIn({.bootTime = two.bootTime(), .auditSessionId = two.auditSessionId()}));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host

int main(int count, char** arguments) {
    const QCoreApplication application(count, arguments);
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
