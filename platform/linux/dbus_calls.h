#pragma once

#include "platform/linux/callback_awaitable.h"

#include <chrono>
#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace zelkovanta::platform::linux_host {

/// Calls without waiting, and gives the reply or the error message. Main thread. Destroying `owner` lets go of the
/// coroutine that waits.
[[nodiscard]] Awaitable<QDBusMessage> callBus(QDBusConnection bus, QDBusMessage call, std::chrono::milliseconds limit,
                                              QObject& owner);

/// Hears one signal of one sender as long as it lives.
class DBusSignal final : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage&)>;
    DBusSignal(QDBusConnection bus, const QString& sender, const QString& path, const QString& interface,
               const QString& name, Handler handler);

private slots:
    void received(const QDBusMessage& signal);

private:
    Handler handler_;
};

}  // namespace zelkovanta::platform::linux_host
