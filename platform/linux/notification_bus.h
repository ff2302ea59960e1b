#pragma once

#include "platform/linux/dbus_calls.h"
#include "platform/linux/notification_events.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

namespace zelkovanta::platform::linux_host {

/// "org.freedesktop.Notifications" on the session bus: says what the ledger's commands say, and tells what it hears.
/// Every daemon is spoken to by its own name on the bus, so that what is meant for one never reaches the next, and
/// nobody else is believed. Main thread; no call waits.
class NotificationBus {
public:
    using Listener = std::function<void(ledger::Event)>;

    explicit NotificationBus(Listener listener) : listener_(std::move(listener)) {}

    /// To be called once the session bus is connected to.
    void follow();
    /// Nothing is heard from here on.
    void leave();

    void start();
    void askCapabilities(const std::string& daemon);
    void post(const ledger::Post& command);
    void withdraw(const ledger::Withdraw& command);
    /// Calls `play`, unless the daemon or Xfce's settings say that the person wants no disturbance; within half a
    /// second. GNOME tells nobody on the bus.
    void unlessSilenced(std::function<void()> play);

private:
    void call(const QDBusMessage& message, std::chrono::milliseconds limit, Completion<const QDBusMessage&> answer);
    void hear(const char* name, std::function<std::optional<ledger::Event>(const QList<QVariant>&)> eventFrom);
    void tellFirst();

    Listener listener_;
    QString daemon_;  ///< none runs: empty
    std::vector<std::unique_ptr<DBusSignal>> signals_;
    std::unique_ptr<QDBusServiceWatcher> owner_;
    std::unique_ptr<QObject> receiver_;
};

}  // namespace zelkovanta::platform::linux_host
