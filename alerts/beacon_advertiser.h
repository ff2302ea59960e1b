#pragma once

#include "platform/peripheral_manager.h"
#include "store/collaborators.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::alerts {

/// The advertisement by which phones nearby recognise a room: the room's own identifier, and the program's name.
///
/// Idle until it is armed, and again after `stop`. Armed, it advertises whenever the radio is on. Nothing in this
/// program arms it. Main thread only.
class BeaconAdvertiser final : public store::RoomBeacon,
                               public platform::PeripheralManagerDelegate,
                               public std::enable_shared_from_this<BeaconAdvertiser> {
    struct Private {};

public:
    static constexpr std::string_view localName = "ZelkoVanta";

    /// Idle. `managers` must outlive the advertiser; while idle nothing is asked of it.
    [[nodiscard]] static std::shared_ptr<BeaconAdvertiser> make(platform::PeripheralManagers& managers);
    BeaconAdvertiser(Private, platform::PeripheralManagers& managers) : managers_(managers) {}

    /// Advertises the room with this identifier from here on, in place of an earlier one. A text that is no UUID of 128
    /// bits leaves the advertiser idle.
    void arm(std::string_view beaconUUID);
    void stop() override;
    void peripheralManagerDidUpdateState(platform::PeripheralManager& manager) override;

    /// What was asked of the host, which may differ from what the radio does.
    [[nodiscard]] bool isAdvertising() const { return isAdvertising_; }

private:
    void startAdvertisingIfPossible();

    platform::PeripheralManagers& managers_;
    std::unique_ptr<platform::PeripheralManager> manager_;  ///< none while idle
    std::optional<std::string> serviceUUID_;
    bool isAdvertising_ = false;
};

}  // namespace zelkovanta::alerts
