#include "platform/linux/bluez_objects.h"

#include <utility>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusVariant>
#include <QStringList>

namespace zelkovanta::platform::linux_host {

namespace {

const QString advertisementInterface = QStringLiteral("org.bluez.LEAdvertisement1");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

}  // namespace

BluezRadio bluezRadio(const BluezObjects& objects) {
    BluezRadio radio{.state = PeripheralManagerState::unsupported, .adapter = {}};
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        const BluezInterfaces& interfaces = object.value();
        if (!interfaces.contains(bluezAdapter) || !interfaces.contains(bluezAdvertising)) {
            continue;
        }
        if (interfaces[bluezAdapter][QStringLiteral("Powered")].toBool()) {
            return {.state = PeripheralManagerState::poweredOn, .adapter = object.key().path()};
        }
        radio.state = PeripheralManagerState::poweredOff;
    }
    return radio;
}

BluezRadio bluezRadioFrom(const QDBusMessage& answer) {
    using enum PeripheralManagerState;
    if (answer.type() == QDBusMessage::ReplyMessage) {
        const auto arguments = answer.arguments();
        return bluezRadio(arguments.isEmpty() ? BluezObjects{} : qdbus_cast<BluezObjects>(arguments.constFirst()));
    }
    switch (QDBusError(answer).type()) {
        case QDBusError::AccessDenied:
            return {.state = unauthorized, .adapter = {}};
        case QDBusError::NoReply:
            return {.state = unknown, .adapter = {}};
        default:
            return {.state = unsupported, .adapter = {}};
    }
}

BluezAdvertisement::BluezAdvertisement(const Advertisement& advertisement, std::function<void()> released)
    : released_(std::move(released)) {
    QStringList services;
    for (const auto& service : advertisement.serviceUUIDs) {
        services << QString::fromStdString(service);
    }
    properties_ = {{QStringLiteral("Type"), QStringLiteral("peripheral")},
                   {QStringLiteral("ServiceUUIDs"), services},
                   {QStringLiteral("LocalName"), QString::fromStdString(advertisement.localName)}};
}

QString BluezAdvertisement::introspect(const QString&) const {
    return QStringLiteral(
        R"(<interface name="org.bluez.LEAdvertisement1"><method name="Release"/>)"
        R"(<property name="Type" type="s" access="read"/><property name="ServiceUUIDs" type="as" access="read"/>)"
        R"(<property name="LocalName" type="s" access="read"/></interface>)");
}

bool BluezAdvertisement::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const auto arguments = message.arguments();
    const bool isProperties = message.interface() == propertiesInterface && !arguments.isEmpty() &&
                              arguments.constFirst().toString() == advertisementInterface;
    if (isProperties && message.member() == QStringLiteral("GetAll")) {
        connection.send(message.createReply(QVariant(properties_)));
        return true;
    }
    if (isProperties && message.member() == QStringLiteral("Get") && arguments.size() == 2 &&
        properties_.contains(arguments[1].toString())) {
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant(properties_[arguments[1].toString()]))));
        return true;
    }
    if (message.interface() == advertisementInterface && message.member() == QStringLiteral("Release")) {
        connection.send(message.createReply());
        const auto released = released_;
        released();
        return true;
    }
    return false;
}

}  // namespace zelkovanta::platform::linux_host
