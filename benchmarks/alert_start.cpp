#include "benchmarks/alert_start.h"

#include "alerts/notification_service.h"
#include "benchmarks/monotonic.h"
#include "platform/linux/boottime_clock.h"
#include "platform/linux/bus_threads.h"
#include "platform/linux/desktop_notification_center.h"
#include "platform/linux/gettext_string_table.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/os_random.h"
#include "platform/linux/profile.h"
#include "platform/linux/qt_main_thread.h"

#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <boost/asio/post.hpp>

namespace zelkovanta::benchmarks {

namespace {

namespace host = platform::linux_host;

/// The share of this process in what is resident, as everywhere where memory is measured here: what several processes
/// have of a library counts once.
double ownMegabytes() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    std::string word;
    double kibibytes = 0;
    while (rollup >> word) {
        if (word == "Pss:") {
            rollup >> kibibytes;
        }
    }
    return kibibytes * 1024 / 1e6;
}

host::Environment germanEnvironment() {
    return [process = host::processEnvironment()](const std::string& name) {
        return name == "LC_ALL" ? std::optional<std::string>{"de_DE.UTF-8"} : process(name);
    };
}

/// What the program has with alerts or without.
class Start {
public:
    Start() : buses_(environment_) {
        boost::asio::post(buses_.session(), [this] {
            const bool isConnected = QDBusConnection::sessionBus().isConnected();
            boost::asio::post(main_.executor(), [this, isConnected] {
                if (isConnected) {
                    askBus();
                } else {
                    QCoreApplication::exit(1);
                }
            });
        });
    }
    ~Start() {
        if (center_) {
            center_->end();
        }
        buses_.stop();
        network_.stop();
        main_.end();
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    void addAlerts() {
        ++unanswered_;
        const auto resources = host::resourcesFolderFrom(environment_, host::programFile());
        strings_.emplace(resources, environment_);
        const auto roots = host::fileRootsFrom(environment_, host::Profile{});
        center_.emplace(
            host::DesktopNotificationCenter::Settings{.file = roots.state / "zelkovanta" / "notifications.json",
                                                      .sounds = resources / "sounds"},
            clock_, main_.executor(), buses_.session(), network_.makeWorkerQueue());
        service_ = alerts::NotificationService::start(
            {.main = main_.executor(), .center = *center_, .random = random_, .strings = *strings_});
        center_->getDeliveredNotifications([this](const platform::NotificationRequests&) { countAnswer(); });
    }

private:
    void askBus() {
        const auto message = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
        auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), &receiver_);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &receiver_, [this] { countAnswer(); });
    }

    void countAnswer() {
        if (--unanswered_ == 0) {
            QCoreApplication::quit();
        }
    }

    QObject receiver_;  ///< of answers
    const host::Environment environment_ = germanEnvironment();
    host::QtMainThread main_;
    host::NetworkThread network_;
    host::BusThreads buses_;
    host::BoottimeClock clock_{network_.context()};
    host::OsRandom random_;
    std::optional<host::GettextStringTable> strings_;
    std::optional<host::DesktopNotificationCenter> center_;
    std::shared_ptr<alerts::NotificationService> service_;
    int unanswered_ = 1;
};

}  // namespace

int runAlertStart(int argc, char** argv, Alerts alerts) {
    const std::int64_t begun = monotonicNow();
    const QCoreApplication application(argc, argv);
    Start start;
    if (alerts == Alerts::onDesktop) {
        start.addAlerts();
    }
    const int status = QCoreApplication::exec();
    const double milliseconds = static_cast<double>(monotonicNow() - begun) / 1e6;
    std::printf("started %f %f\n", milliseconds, ownMegabytes());
    std::fflush(stdout);
    return status;
}

}  // namespace zelkovanta::benchmarks
