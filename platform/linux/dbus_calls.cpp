#include "platform/linux/dbus_calls.h"

#include <memory>
#include <utility>

#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <boost/asio/post.hpp>

namespace zelkovanta::platform::linux_host {

void connectToBus(Bus bus, const Executor& connecting, Executor main, Completion<bool> done) {
    boost::asio::post(connecting, [bus, main = std::move(main), done = std::move(done)]() mutable {
        const bool isConnected =
            (bus == Bus::session ? QDBusConnection::sessionBus() : QDBusConnection::systemBus()).isConnected();
        boost::asio::post(main, [isConnected, done = std::move(done)]() mutable { done(isConnected); });
    });
}

void callBus(const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds limit, QObject& owner,
             Completion<const QDBusMessage&> answer) {
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(limit.count())), &owner);
    const auto shared = std::make_shared<Completion<const QDBusMessage&>>(std::move(answer));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, shared] {
        // What the answer leads to may destroy the owner, and this with it.
        const auto kept = std::shared_ptr(shared);
        const auto reply = watcher->reply();
        watcher->deleteLater();
        (*kept)(reply);
    });
}

Awaitable<QDBusMessage> callBus(const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds limit,
                                QObject& owner) {
    auto begin = [bus, call, limit, &owner](Completion<QDBusMessage> done) {
        callBus(bus, call, limit, owner,
                [done = std::move(done)](const QDBusMessage& answer) mutable { done(answer); });
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
