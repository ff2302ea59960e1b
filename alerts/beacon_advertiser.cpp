#include "alerts/beacon_advertiser.h"

#include "records/text.h"

#include <cstddef>
#include <utility>

namespace zelkovanta::alerts {

namespace {

using platform::PeripheralManagerState;

/// The text in the form that the host takes: "8-4-4-4-12" in lower case.
std::optional<std::string> serviceUUIDFrom(std::string_view text) {
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string uuid = records::lowercased(text);
    if (uuid.size() != form.size()) {
        return std::nullopt;
    }
    for (std::size_t index = 0; index < form.size(); ++index) {
        const bool isHyphen = uuid[index] == '-';
        if (form[index] == '-' ? !isHyphen : digits.find(uuid[index]) == std::string_view::npos) {
            return std::nullopt;
        }
    }
    return uuid;
}

}  // namespace

std::shared_ptr<BeaconAdvertiser> BeaconAdvertiser::make(platform::PeripheralManagers& managers) {
    return std::make_shared<BeaconAdvertiser>(Private{}, managers);
}

void BeaconAdvertiser::arm(std::string_view beaconUUID) {
    stop();
    serviceUUID_ = serviceUUIDFrom(beaconUUID);
    if (serviceUUID_) {
        manager_ = managers_.make(weak_from_this());
        startAdvertisingIfPossible();
    }
}

void BeaconAdvertiser::stop() {
    if (manager_) {
        manager_->stopAdvertising();
    }
    isAdvertising_ = false;
    serviceUUID_.reset();
    manager_.reset();
}

void BeaconAdvertiser::peripheralManagerDidUpdateState(platform::PeripheralManager& manager) {
    if (manager.state() == PeripheralManagerState::poweredOn) {
        startAdvertisingIfPossible();
    } else {
        isAdvertising_ = false;
    }
}

void BeaconAdvertiser::startAdvertisingIfPossible() {
    if (!manager_ || manager_->state() != PeripheralManagerState::poweredOn || !serviceUUID_ ||
        manager_->isAdvertising()) {
        return;
    }
    manager_->startAdvertising({.serviceUUIDs = {*serviceUUID_}, .localName = std::string{localName}});
    isAdvertising_ = true;
}

}  // namespace zelkovanta::alerts
