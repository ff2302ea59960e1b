#include "alerts/beacon_advertiser.h"

#include "records/text.h"

#include <algorithm>
#include <utility>

namespace zelkovanta::alerts {

namespace {

using platform::PeripheralManagerState;

bool isHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

bool isUUID(std::string_view text) {
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(
        text, form, [](char given, char expected) { return expected == '-' ? given == '-' : isHexDigit(given); });
}

}  // namespace

std::shared_ptr<BeaconAdvertiser> BeaconAdvertiser::make(platform::PeripheralManagers& managers) {
    return std::make_shared<BeaconAdvertiser>(Private{}, managers);
}

void BeaconAdvertiser::arm(std::string_view beaconUUID) {
    stop();
    if (isUUID(beaconUUID)) {
        serviceUUID_ = records::lowercased(beaconUUID);
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
