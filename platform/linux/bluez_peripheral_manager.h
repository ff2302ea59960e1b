#pragma once

#include "platform/async.h"
#include "platform/peripheral_manager.h"

#include <memory>

namespace zelkovanta::platform::linux_host {

/// Advertising through BlueZ, "org.bluez.LEAdvertisingManager1" on the system bus. Nothing happens before a manager is
/// made: no connection, no call, no service started.
///
/// The first adapter that is powered and can advertise is used. Main thread; connecting to the bus, which may block,
/// happens on `connecting`.
class BluezPeripheralManagers final : public PeripheralManagers {
public:
    BluezPeripheralManagers(Executor main, Executor connecting);

    [[nodiscard]] std::unique_ptr<PeripheralManager> make(std::weak_ptr<PeripheralManagerDelegate> delegate) override;

private:
    Executor main_;
    Executor connecting_;
};

}  // namespace zelkovanta::platform::linux_host
