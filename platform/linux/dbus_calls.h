#pragma once

#include "platform/linux/callback_awaitable.h"

#include <chrono>
#include <cstdint>
#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace zelkovanta::platform::linux_host {

enum class Bus : std::uint8_t { session, system };

/// Connects to a bus, which may wait for long, on `connecting`; `done` is called on `main` and told whether there is
/// one. From any thread. Once connected, `QDBusConnection::sessionBus` and `systemBus` never wait.
void connectToBus(Bus bus, const Executor& connecting, Executor main, Completion<bool> done);

/// As long as the library waits for an answer by itself.
inline constexpr std::chrono::milliseconds usualCallLimit{25'000};

/// Calls without waiting; `answer` is given the reply or the error message, unless `owner` is destroyed before. Main
/// thread.
void callBus(const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds limit, QObject& owner,
             Completion<const QDBusMessage&> answer);

/// The same for a coroutine. Destroying `owner` lets go of it.
[[nodiscard]] Awaitable<QDBusMessage> callBus(const QDBusConnection& bus, const QDBusMessage& call,
                                              std::chrono::milliseconds limit, QObject& owner);

/// Hears one signal of one sender as long as it lives.
class DBusSignal final : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage&)>;
    DBusSignal(QDBusConnection bus, const QString& sender, const QString& path, const QString& interface,
               const QString& name, Handler handler);

private Q_SLOTS:
    void received(const QDBusMessage& signal);

private:
    Handler handler_;
};

}  // namespace zelkovanta::platform::linux_host
