#include "platform/linux/dbus_calls.h"

#include <memory>
#include <utility>

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>

namespace zelkovanta::platform::linux_host {

Awaitable<QDBusMessage> callBus(QDBusConnection bus, QDBusMessage call, std::chrono::milliseconds limit,
                                QObject& owner) {
    auto begin = [bus, call = std::move(call), limit, &owner](Completion<QDBusMessage> done) {
        auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(limit.count())), &owner);
        auto shared = std::make_shared<Completion<QDBusMessage>>(std::move(done));
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, shared] {
            (*shared)(watcher->reply());
            watcher->deleteLater();
        });
    };
    return awaitCallback<QDBusMessage>(std::move(begin));
}

DBusSignal::DBusSignal(QDBusConnection bus, const QString& sender, const QString& path, const QString& interface,
                       const QString& name, Handler handler)
    : handler_(std::move(handler)) {
    bus.connect(sender, path, interface, name, this, SLOT(received(QDBusMessage)));
}

void DBusSignal::received(const QDBusMessage& signal) {
    // A copy, since the handler may end this.
    const Handler handler = handler_;
    handler(signal);
}

}  // namespace zelkovanta::platform::linux_host
