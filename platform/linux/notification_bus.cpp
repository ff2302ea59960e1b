#include "platform/linux/notification_bus.h"

#include "platform/linux/application_id.h"
#include "platform/linux/notification_text.h"

#include <limits>
#include <memory>
#include <utility>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

namespace zelkovanta::platform::linux_host {

using namespace ledger;

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

constexpr std::chrono::milliseconds withoutLimit{std::numeric_limits<int>::max()};
constexpr std::chrono::milliseconds silenceLimit{500};
constexpr uchar normalUrgency = 1;
constexpr int staysOnScreen = 0;
constexpr int daemonsOwnTime = -1;

QDBusMessage callOf(const QString& daemon, const char* method, const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(daemon, path, service, QString::fromLatin1(method));
    message.setArguments(arguments);
    return message;
}

QDBusMessage callOfBus(const char* method, const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(busService, busPath, busService, QString::fromLatin1(method));
    message.setArguments(arguments);
    return message;
}

QDBusMessage callOfProperty(const QString& daemon, const QString& interface, const QString& property) {
    auto message = QDBusMessage::createMethodCall(daemon, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message.setArguments({interface, property});
    return message;
}

/// Asks the settings of a desktop that may not be this one, and starts nothing for it.
QDBusMessage callOfXfce(const QString& channel, const QString& property) {
    auto message = QDBusMessage::createMethodCall(QStringLiteral("org.xfce.Xfconf"), QStringLiteral("/org/xfce/Xfconf"),
                                                  QStringLiteral("org.xfce.Xfconf"), QStringLiteral("GetProperty"));
    message.setArguments({channel, property});
    message.setAutoStartService(false);
    return message;
}

bool isReply(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage && !message.arguments().isEmpty();
}

std::optional<std::string> nonEmpty(const QString& name) {
    return name.isEmpty() ? std::nullopt : std::optional{name.toStdString()};
}

QVariantList notifyArguments(const Post& command) {
    const NotificationContent& content = command.request->content;
    QStringList actions;
    if (command.capabilities.actions) {
        actions << QString::fromUtf8(notification_action::defaultAction.data()) << QStringLiteral("ZelkoVanta");
        for (const auto& action : command.actions) {
            actions << QString::fromStdString(action.identifier) << notificationTitle(action.title);
        }
    }
    QVariantMap hints{{QStringLiteral("desktop-entry"), QString::fromLatin1(applicationId)},
                      {QStringLiteral("category"), QStringLiteral("im.received")},
                      {QStringLiteral("urgency"), QVariant::fromValue(normalUrgency)}};
    if (command.hasDaemonSound) {
        hints[QStringLiteral("sound-name")] = QStringLiteral("message-new-instant");
    } else {
        hints[QStringLiteral("suppress-sound")] = true;
    }
    const auto reading = command.capabilities.bodyMarkup ? BodyReading::markup : BodyReading::literal;
    // It stays on the screen, unless there is a list that it can leave it for.
    const int time = command.capabilities.persistence ? daemonsOwnTime : staysOnScreen;
    return {QStringLiteral("ZelkoVanta"),
            command.replaces,
            QString::fromLatin1(applicationId),
            notificationTitle(content.title),
            notificationBody(content.body, reading),
            actions,
            hints,
            time};
}

}  // namespace

void NotificationBus::call(const QDBusMessage& message, std::chrono::milliseconds limit,
                           Completion<const QDBusMessage&> answer) {
    callBus(QDBusConnection::sessionBus(), message, limit, *receiver_, std::move(answer));
}

void NotificationBus::hear(const char* name, std::function<std::optional<Event>(const QList<QVariant>&)> eventFrom) {
    signals_.push_back(
        std::make_unique<DBusSignal>(QDBusConnection::sessionBus(), QString{}, path, service, QString::fromLatin1(name),
                                     [this, eventFrom = std::move(eventFrom)](const QDBusMessage& signal) {
                                         const auto arguments = signal.arguments();
                                         if (daemon_.isEmpty() || signal.service() != daemon_ || arguments.size() < 2) {
                                             return;
                                         }
                                         if (auto event = eventFrom(arguments)) {
                                             listener_(std::move(*event));
                                         }
                                     }));
}

void NotificationBus::follow() {
    receiver_ = std::make_unique<QObject>();
    hear("NotificationClosed",
         [](const auto& arguments) { return Closed{.id = arguments[0].toUInt(), .reason = arguments[1].toUInt()}; });
    hear("ActivationToken", [](const auto& arguments) {
        return TokenGiven{.id = arguments[0].toUInt(), .token = arguments[1].toString().toStdString()};
    });
    hear("ActionInvoked", [](const auto& arguments) {
        return Invoked{.id = arguments[0].toUInt(), .action = arguments[1].toString().toStdString()};
    });
    owner_ = std::make_unique<QDBusServiceWatcher>(service, QDBusConnection::sessionBus(),
                                                   QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(owner_.get(), &QDBusServiceWatcher::serviceOwnerChanged, receiver_.get(),
                     [this](const QString&, const QString&, const QString& daemon) {
                         daemon_ = daemon;
                         listener_(DaemonChanged{nonEmpty(daemon)});
                     });
    tellFirst();
}

void NotificationBus::tellFirst() {
    call(callOfBus("GetId"), withoutLimit, [this](const QDBusMessage& id) {
        const std::string bus = isReply(id) ? id.arguments().constFirst().toString().toStdString() : std::string{};
        call(callOfBus("GetNameOwner", {service}), withoutLimit, [this, bus](const QDBusMessage& owner) {
            daemon_ = isReply(owner) ? owner.arguments().constFirst().toString() : QString{};
            listener_(BusAnswered{.bus = bus, .daemon = nonEmpty(daemon_)});
        });
    });
}

void NotificationBus::leave() {
    signals_.clear();
    owner_.reset();
    receiver_.reset();
}

void NotificationBus::start() {
    call(callOfBus("StartServiceByName", {service, 0U}), usualCallLimit,
         [this](const QDBusMessage&) { listener_(StartEnded{}); });
}

void NotificationBus::askCapabilities(const std::string& daemon) {
    call(callOf(QString::fromStdString(daemon), "GetCapabilities"), withoutLimit,
         [this, daemon](const QDBusMessage& answer) {
             const auto names = isReply(answer) ? answer.arguments().constFirst().toStringList() : QStringList{};
             listener_(CapabilitiesKnown{.daemon = daemon,
                                         .capabilities = {.actions = names.contains(QStringLiteral("actions")),
                                                          .bodyMarkup = names.contains(QStringLiteral("body-markup")),
                                                          .persistence = names.contains(QStringLiteral("persistence")),
                                                          .sound = names.contains(QStringLiteral("sound"))}});
         });
}

void NotificationBus::post(const Post& command) {
    const auto message = callOf(QString::fromStdString(command.daemon), "Notify", notifyArguments(command));
    call(message, withoutLimit, [this, number = command.call](const QDBusMessage& answer) {
        if (isReply(answer)) {
            listener_(PostAnswered{.call = number, .id = answer.arguments().constFirst().toUInt()});
        } else {
            listener_(PostRefused{number});
        }
    });
}

void NotificationBus::withdraw(const Withdraw& command) {
    auto message = callOf(QString::fromStdString(command.daemon), "CloseNotification", {command.id});
    QDBusConnection::sessionBus().send(message);
}

void NotificationBus::unlessSilenced(std::function<void()> play) {
    if (daemon_.isEmpty()) {
        play();
        return;
    }
    struct Question {
        std::function<void()> play;
        std::size_t unanswered = 0;
        bool isSilenced = false;
    };
    const QDBusMessage settings[] = {
        callOfProperty(daemon_, service, QStringLiteral("Inhibited")),
        callOfProperty(daemon_, QStringLiteral("org.dunstproject.cmd0"), QStringLiteral("paused")),
        callOfXfce(QStringLiteral("xfce4-notifyd"), QStringLiteral("/do-not-disturb")),
    };
    const auto question =
        std::make_shared<Question>(Question{.play = std::move(play), .unanswered = std::size(settings)});
    for (const auto& setting : settings) {
        call(setting, silenceLimit, [question](const QDBusMessage& answer) {
            if (isReply(answer)) {
                question->isSilenced |= qvariant_cast<QDBusVariant>(answer.arguments().constFirst()).variant().toBool();
            }
            if (--question->unanswered == 0 && !question->isSilenced) {
                question->play();
            }
        });
    }
}

}  // namespace zelkovanta::platform::linux_host
