#include "tests/platform/linux/notification_daemon_on_bus.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusVariant>
#include <QStringList>
#include <QUuid>

namespace zelkovanta::platform::linux_host {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

}  // namespace

NotificationDaemonOnBus::NotificationDaemonOnBus(DaemonQuirks quirks)
    : daemon(std::move(quirks), [this](const std::string&, const ledger::Event& event) { tell(event); }),
      bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QUuid::createUuid().toString())) {
    bus_.registerVirtualObject(path, this);
    bus_.registerService(service);
}

NotificationDaemonOnBus::~NotificationDaemonOnBus() {
    vanish();
}

void NotificationDaemonOnBus::vanish() {
    if (!bus_.isConnected()) {
        return;
    }
    bus_.unregisterObject(path);
    const QString name = bus_.name();
    bus_ = QDBusConnection(QString{});
    QDBusConnection::disconnectFromBus(name);
}

QString NotificationDaemonOnBus::introspect(const QString&) const {
    return {};
}

void NotificationDaemonOnBus::tell(const ledger::Event& event) {
    const auto send = [this](const char* name, const QVariantList& arguments) {
        auto signal = QDBusMessage::createSignal(path, service, QString::fromLatin1(name));
        signal.setArguments(arguments);
        bus_.send(signal);
    };
    if (const auto* const closed = std::get_if<ledger::Closed>(&event)) {
        send("NotificationClosed", {closed->id, closed->reason});
    } else if (const auto* const token = std::get_if<ledger::TokenGiven>(&event)) {
        send("ActivationToken", {token->id, QString::fromStdString(token->token)});
    } else if (const auto* const invoked = std::get_if<ledger::Invoked>(&event)) {
        send("ActionInvoked", {invoked->id, QString::fromStdString(invoked->action)});
    }
}

void NotificationDaemonOnBus::notify(const QDBusMessage& message) {
    const auto arguments = message.arguments();
    FakeNotificationDaemon::Shown shown{.program = message.service().toStdString(),
                                        .title = arguments.at(3).toString().toStdString(),
                                        .body = arguments.at(4).toString().toStdString(),
                                        .actions = {}};
    for (const auto& action : arguments.at(5).toStringList()) {
        shown.actions.push_back(action.toStdString());
    }
    const auto number =
        daemon.notify(shown, arguments.at(1).toUInt(), SteadyTime{} + std::chrono::seconds{posts.size()});
    bus_.send(message.createReply(number));
}

void NotificationDaemonOnBus::answerNow() {
    behaviour = Behaviour::answers;
    for (const auto& message : std::exchange(unanswered_, {})) {
        if (message.member() == QStringLiteral("Notify")) {
            notify(message);
        } else {
            handleMessage(message, bus_);
        }
    }
}

bool NotificationDaemonOnBus::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    const QString method = message.member();
    const auto arguments = message.arguments();
    if (method == QStringLiteral("Notify")) {
        posts.push_back(message);
    }
    if (behaviour == Behaviour::isSilent) {
        message.setDelayedReply(true);
        unanswered_.push_back(message);
        return true;
    }
    if (method == QStringLiteral("GetCapabilities")) {
        QStringList names;
        for (const auto& name : daemon.quirks().capabilities) {
            names << QString::fromStdString(name);
        }
        bus_.send(message.createReply(names));
    } else if (method == QStringLiteral("Notify")) {
        if (behaviour == Behaviour::refuses) {
            bus_.send(message.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("too many")));
        } else {
            notify(message);
        }
    } else if (method == QStringLiteral("CloseNotification")) {
        closings.push_back(arguments.at(0).toUInt());
        daemon.close(message.service().toStdString(), closings.back());
        bus_.send(message.createReply());
    } else if (method == QStringLiteral("Get") && arguments.at(1).toString() == QStringLiteral("Inhibited")) {
        ++silenceQuestions;
        bus_.send(message.createReply(QVariant::fromValue(QDBusVariant(isInhibited))));
    } else {
        return false;
    }
    return true;
}

}  // namespace zelkovanta::platform::linux_host
