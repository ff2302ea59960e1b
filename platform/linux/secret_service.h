#pragma once

#include "platform/async.h"
#include "platform/key_store.h"
#include "platform/linux/secret_cipher.h"

#include <chrono>
#include <optional>
#include <string>

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

namespace zelkovanta::platform::linux_host {

/// One conversation with the Secret Service. Main thread. Every step gives nothing when the service fails it, or when
/// the owner is gone. Destroying the owner lets go of whoever waits for the service or for the person at its prompt.
class SecretService {
public:
    SecretService(QDBusConnection bus, std::chrono::milliseconds callLimit, QObject& owner);

    Awaitable<std::optional<std::string>> read(KeyStoreItem item);
    Awaitable<void> write(KeyStoreItem item, std::string value);
    Awaitable<void> remove(KeyStoreItem item);

private:
    using Paths = QList<QDBusObjectPath>;
    struct Found {
        Paths unlocked;
        Paths locked;
    };

    Awaitable<bool> begin();
    Awaitable<std::optional<QList<QVariant>>> call(QString path, QString interface, QString method,
                                                   QList<QVariant> arguments);
    Awaitable<std::optional<Found>> search(KeyStoreItem item);
    Awaitable<bool> unlock(QDBusObjectPath object);
    /// The one of the found items that counts, unlocked; none if the person declined.
    Awaitable<std::optional<QDBusObjectPath>> unlockedItem(Found found);
    /// What the person's answer led to; none if it was declined or the service went away. "/" needs no answer.
    Awaitable<std::optional<QVariant>> answer(QDBusObjectPath prompt);
    Awaitable<std::optional<QDBusObjectPath>> defaultCollection();
    Awaitable<void> create(KeyStoreItem item, QVariant secret);

    QDBusConnection bus_;
    std::chrono::milliseconds callLimit_;
    QPointer<QObject> owner_;
    QString service_ = QStringLiteral("org.freedesktop.secrets");
    QDBusObjectPath session_;
    SecretCipher cipher_;
};

}  // namespace zelkovanta::platform::linux_host
