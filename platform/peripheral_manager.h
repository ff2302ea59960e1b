#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Advertising over Bluetooth Low Energy. Everything here happens on the main thread.
namespace zelkovanta::platform {

enum class PeripheralManagerState : std::uint8_t {
    unknown = 0,  ///< the host has not said yet
    resetting = 1,
    unsupported = 2,   ///< there is no adapter, or none that can advertise
    unauthorized = 3,  ///< the host's rules keep this program from advertising
    poweredOff = 4,
    poweredOn = 5,  ///< powered, and able to advertise
};

/// What phones nearby can read: nothing but these two entries is sent.
struct Advertisement {
    std::vector<std::string> serviceUUIDs;  ///< of 128 bits, "8-4-4-4-12" in lower case
    std::string localName;
    bool operator==(const Advertisement&) const = default;
};

class PeripheralManager;

class PeripheralManagerDelegate {
public:
    virtual ~PeripheralManagerDelegate() = default;
    /// The state differs from what it was at the last call; the first call tells the first state that is known. Never
    /// within a call of the manager.
    virtual void peripheralManagerDidUpdateState(PeripheralManager& manager) = 0;
};

/// Destroying it ends its advertisement. No operation waits for the host; a failure to advertise leaves `isAdvertising`
/// false and is told to nobody.
class PeripheralManager {
public:
    virtual ~PeripheralManager() = default;
    [[nodiscard]] virtual PeripheralManagerState state() const = 0;
    /// Whether the radio advertises, or was asked to and has not refused. False in every state but `poweredOn`: an
    /// advertisement ends with the radio, and is not taken up again by itself.
    [[nodiscard]] virtual bool isAdvertising() const = 0;
    /// Does nothing in any state but `poweredOn`.
    virtual void startAdvertising(Advertisement advertisement) = 0;
    virtual void stopAdvertising() = 0;
};

/// Where a manager comes from. The host's Bluetooth is not touched before the first one is made.
class PeripheralManagers {
public:
    virtual ~PeripheralManagers() = default;
    /// Its state is `unknown` until the host has told it.
    [[nodiscard]] virtual std::unique_ptr<PeripheralManager> make(
        std::weak_ptr<PeripheralManagerDelegate> delegate) = 0;
};

}  // namespace zelkovanta::platform
