#pragma once

#include "platform/peripheral_manager.h"

#include <functional>

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMap>
#include <QString>
#include <QVariantMap>

namespace zelkovanta::platform::linux_host {

inline const QString bluezService = QStringLiteral("org.bluez");
inline const QString bluezAdapter = QStringLiteral("org.bluez.Adapter1");
inline const QString bluezAdvertising = QStringLiteral("org.bluez.LEAdvertisingManager1");

using BluezInterfaces = QMap<QString, QVariantMap>;
using BluezObjects = QMap<QDBusObjectPath, BluezInterfaces>;

/// What the objects of BlueZ come to: the state, and the path of the adapter to use in state `poweredOn`.
struct BluezRadio {
    PeripheralManagerState state = PeripheralManagerState::unknown;
    QString adapter;
    bool operator==(const BluezRadio&) const = default;
};
[[nodiscard]] BluezRadio bluezRadio(const BluezObjects& objects);
/// The same from the answer to "GetManagedObjects".
[[nodiscard]] BluezRadio bluezRadioFrom(const QDBusMessage& answer);

/// What BlueZ reads of an advertisement: its kind and its entries, and nothing that BlueZ would add of its own.
class BluezAdvertisement final : public QDBusVirtualObject {
public:
    /// `released` is called when BlueZ has ended it.
    BluezAdvertisement(const Advertisement& advertisement, std::function<void()> released);

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QVariantMap properties_;
    std::function<void()> released_;
};

}  // namespace zelkovanta::platform::linux_host
