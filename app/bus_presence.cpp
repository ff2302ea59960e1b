#include "app/bus_presence.h"

#include "platform/linux/dbus_calls.h"

#include <utility>

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace zelkovanta::app {

namespace {

constexpr unsigned int doNotQueue = 4;  // a flag of "RequestName"

QString objectPath(const QString& name) {
    return "/" + QString{name}.replace('.', '/').replace('-', '_');
}

class ApplicationInterface : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    ApplicationInterface(QObject* parent, std::function<void(const QString&)> onActivate)
        : QDBusAbstractAdaptor(parent), onActivate_(std::move(onActivate)) {}

public Q_SLOTS:
    // Names and arguments are those of the desktop entry specification.
    void Activate(const QVariantMap& platformData) { activate(platformData); }
    void Open(const QStringList&, const QVariantMap& platformData) { activate(platformData); }
    void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) {
        activate(platformData);
    }

private:
    void activate(const QVariantMap& platformData) {
        onActivate_(platformData.value(QStringLiteral("activation-token")).toString());
    }

    std::function<void(const QString&)> onActivate_;
};

}  // namespace

class BusPresence::Application {
public:
    Application(QString name, std::function<void(const QString&)> onActivate)
        : name_(std::move(name)), interface_(&object_, std::move(onActivate)) {}

    void appear() {
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.registerObject(objectPath(name_), &object_, QDBusConnection::ExportAdaptors);
        QDBusMessage request = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
        request << name_ << doNotQueue;
        bus.send(request);
    }

private:
    const QString name_;
    QObject object_;
    ApplicationInterface interface_;
};

BusPresence::BusPresence(const std::string& name, const platform::Executor& connecting, platform::Executor main,
                         std::function<void(const QString&)> onActivate)
    : application_(std::make_shared<Application>(QString::fromStdString(name), std::move(onActivate))) {
    using platform::linux_host::Bus;
    platform::linux_host::connectToBus(Bus::session, connecting, std::move(main),
                                       [weak = std::weak_ptr(application_)](bool isConnected) {
                                           if (const auto application = weak.lock(); application && isConnected) {
                                               application->appear();
                                           }
                                       });
}

BusPresence::~BusPresence() = default;

}  // namespace zelkovanta::app

#include "bus_presence.moc"
