// Two real daemons of different families before a display that nobody sees: dunst, and GTK's notification-daemon.

#include "tests/platform/linux/notification_fixture.h"

#include <sys/stat.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QProcessEnvironment>
#include <gmock/gmock.h>

namespace zelkovanta::platform::linux_host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString service = QStringLiteral("org.freedesktop.Notifications");

struct RealDaemonTest : NotificationTest {
    QProcess display;
    QProcess daemon;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

    ~RealDaemonTest() override {
        for (auto* const process : {&daemon, &display}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void showDisplay() {
        display.start(
            QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
             QStringLiteral("800x600x24"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
             // One that begins anew whenever nobody looks would drop whoever comes at that moment.
             QStringLiteral("-noreset")});
        ASSERT_TRUE(runUntil([this] { return display.canReadLine(); })) << display.readAllStandardError().toStdString();
        environment.insert(QStringLiteral("DISPLAY"), ":" + QString::fromLatin1(display.readLine().trimmed()));
    }
    void startDaemon(const QString& program, const QStringList& arguments) {
        daemon.setProcessEnvironment(environment);
        daemon.setProcessChannelMode(QProcess::MergedChannels);
        daemon.start(program, arguments);
        auto* const bus = QDBusConnection::sessionBus().interface();
        ASSERT_TRUE(runUntil([&] { return bus->isServiceRegistered(service).value(); }))
            << daemon.readAll().toStdString();
    }
    void endDaemon() {
        daemon.kill();
        ASSERT_TRUE(daemon.waitForFinished());
    }
    std::string output(const char* program, const QStringList& arguments) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QString::fromLatin1(program), arguments);
        EXPECT_TRUE(runUntil([&] { return process.state() == QProcess::NotRunning; })) << program;
        return process.readAllStandardOutput().trimmed().toStdString();
    }
};

struct DunstTest : RealDaemonTest {
    void startDunst() {
        std::ofstream(folder.path() / "dunstrc") << "[global]\n    dmenu = " << (folder.path() / "menu").string()
                                                 << "\n    idle_threshold = 0\n    show_indicators = yes\n";
        // The menu of a notification's buttons: picks the one that the test wants.
        std::ofstream(folder.path() / "menu")
            << "#!/bin/sh\ngrep \"$(cat " << (folder.path() / "choice").string() << ")\" | head -n 1\n";
        ::chmod((folder.path() / "menu").c_str(), 0700);
        startDaemon(QStringLiteral("dunst"),
                    {QStringLiteral("-conf"), QString::fromStdString((folder.path() / "dunstrc").string())});
    }
    std::string displayed() { return output("dunstctl", {QStringLiteral("count"), QStringLiteral("displayed")}); }
    void choose(const std::string& button) {
        std::ofstream(folder.path() / "choice") << button;
        output("dunstctl", {QStringLiteral("context")});
    }

    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(showDisplay());
        ASSERT_NO_FATAL_FAILURE(startDunst());
        begin();
    }
};

TEST_F(DunstTest, showsReplacesAndWithdraws) {
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room <3>", "5 > 3 & 2")));
    ASSERT_TRUE(addAndWait(signalRequest("b")));
    EXPECT_TRUE(runUntil([this] { return displayed() == "2"; }));
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room 4")));
    EXPECT_TRUE(runUntil([this] { return displayed() == "2"; }));
    center->removeDeliveredNotifications({"zelkovanta.signal.a", "zelkovanta.signal.b"});
    EXPECT_TRUE(runUntil([this] { return displayed() == "0"; }));
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(DunstTest, aButtonIsThatOfItsNotification) {
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    ASSERT_TRUE(runUntil([this] { return displayed() == "1"; }));
    choose("On my way");
    ASSERT_TRUE(runUntil([this] { return delegate->responses.size() == 1; }));
    EXPECT_EQ(delegate->responses[0].actionIdentifier, "ONMYWAY");
    EXPECT_EQ(delegate->responses[0].request->identifier, "zelkovanta.signal.a");
    EXPECT_TRUE(runUntil([this] { return displayed() == "0"; }));
}

TEST_F(DunstTest, aClickOnTheBodyRaisesTheProgram) {
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    output("dunstctl", {QStringLiteral("action")});
    ASSERT_TRUE(runUntil([this] { return raised.size() == 1; }));
    EXPECT_EQ(delegate->responses.at(0).actionIdentifier, "default");
}

TEST_F(DunstTest, oneThatThePersonClosesIsGone) {
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    output("dunstctl", {QStringLiteral("close")});
    EXPECT_TRUE(runUntil([this] { return delivered().empty(); }));
    EXPECT_THAT(delegate->responses, IsEmpty());
}

TEST_F(DunstTest, aRestartShowsWhatIsDueOnce) {
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room 3")));
    // This daemon shows equal texts once.
    ASSERT_TRUE(addAndWait(signalRequest("b", "Room 4")));
    ASSERT_NO_FATAL_FAILURE(endDaemon());
    EXPECT_TRUE(runUntil([this] { return pending().size() == 2; }));
    ASSERT_NO_FATAL_FAILURE(startDunst());
    EXPECT_TRUE(runUntil([this] { return displayed() == "2"; }));
    EXPECT_TRUE(runUntil([this] { return delivered().size() == 2; }));
    center->removeDeliveredNotifications({"zelkovanta.signal.a", "zelkovanta.signal.b"});
    EXPECT_TRUE(runUntil([this] { return displayed() == "0"; }));
}

TEST_F(DunstTest, theNextRunWithdrawsWhatTheLastOneLeft) {
    ASSERT_TRUE(addAndWait(signalRequest("a")));
    center.reset();
    begin();
    ASSERT_THAT(delivered(), ElementsAre("zelkovanta.signal.a"));
    EXPECT_TRUE(runUntil([this] { return displayed() == "1"; }));
    center->removeDeliveredNotifications({"zelkovanta.signal.a"});
    EXPECT_TRUE(runUntil([this] { return displayed() == "0"; }));
}

TEST_F(DunstTest, aClipIsHeardUnlessThePersonPausedTheNotifications) {
    auto request = signalRequest("a");
    request.content.sound = SoundFile{"bell.caf"};
    output("dunstctl", {QStringLiteral("set-paused"), QStringLiteral("true")});
    ASSERT_TRUE(addAndWait(request));
    ASSERT_TRUE(
        runUntil([this] { return output("dunstctl", {QStringLiteral("count"), QStringLiteral("waiting")}) == "1"; }));
    output("dunstctl", {QStringLiteral("set-paused"), QStringLiteral("false")});
    request.content.sound = SoundFile{"chime.caf"};
    ASSERT_TRUE(addAndWait(request));
    EXPECT_TRUE(runUntil([this] { return !played().empty(); }));
    EXPECT_EQ(played(), "chime.caf\n");
}

struct GtkDaemonTest : RealDaemonTest {
    /// The windows of the daemon: one for each notification.
    std::string windows() {
        return output("xdotool", {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--class"),
                                  QStringLiteral("notification-daemon")});
    }
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(showDisplay());
        ASSERT_NO_FATAL_FAILURE(startDaemon(QStringLiteral("/usr/lib/notification-daemon/notification-daemon"), {}));
        begin();
    }
};

TEST_F(GtkDaemonTest, showsAndWithdraws) {
    ASSERT_TRUE(addAndWait(signalRequest("a", "Room <3>", "5 > 3 & <b>2</b>")));
    EXPECT_TRUE(runUntil([this] { return !windows().empty(); }));
    EXPECT_THAT(delivered(), ElementsAre("zelkovanta.signal.a"));
    center->removeDeliveredNotifications({"zelkovanta.signal.a"});
    // This daemon takes it out of its list at once, and from the screen when its time is over.
    EXPECT_TRUE(runUntil([this] { return windows().empty(); }));
    EXPECT_THAT(delivered(), IsEmpty());
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
