#include "benchmarks/alert_daemon.h"

#include "benchmarks/monotonic.h"

#include <cstdio>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>

namespace zelkovanta::benchmarks {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
constexpr unsigned int takenBack = 3;

class Daemon final : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const std::int64_t now = monotonicNow();
        const QString method = message.member();
        const auto arguments = message.arguments();
        QDBusConnection bus = connection;
        if (method == QStringLiteral("Notify")) {
            bus.send(message.createReply(++last_));
            std::printf("notify %s %lld\n", qPrintable(arguments.at(0).toString()), static_cast<long long>(now));
        } else if (method == QStringLiteral("CloseNotification")) {
            bus.send(message.createReply());
            auto closed = QDBusMessage::createSignal(path, service, QStringLiteral("NotificationClosed"));
            closed << arguments.at(0).toUInt() << takenBack;
            bus.send(closed);
            std::puts("close");
        } else if (method == QStringLiteral("GetCapabilities")) {
            bus.send(message.createReply(QStringList{QStringLiteral("actions"), QStringLiteral("body")}));
            std::puts("asked");
        } else {
            return false;
        }
        std::fflush(stdout);
        return true;
    }

private:
    unsigned int last_ = 0;
};

}  // namespace

int runAlertDaemon(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    Daemon daemon;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerVirtualObject(path, &daemon) || !bus.registerService(service)) {
        std::fputs("There is no session bus, or it has a notification daemon already.\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

}  // namespace zelkovanta::benchmarks
