#pragma once

#include "platform/string_table.h"
#include "store/store_state.h"
#include "tests/support/office_records.h"

#include <string>
#include <string_view>
#include <utility>

namespace zelkovanta::alerts {

/// Shows which texts were looked up: "<text>".
class BracketedTexts final : public platform::StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view key) const override { return "<" + std::string{key} + ">"; }
};

/// The state of a computer that has just applied a snapshot.
inline store::StoreState stateOf(records::DeviceRole role, records::StateSnapshot snapshot) {
    store::StoreState state;
    state.isPaired = true;
    state.role = role;
    state.office = std::move(snapshot.office);
    state.members = std::move(snapshot.members);
    state.rooms = std::move(snapshot.rooms);
    state.signalTypes = std::move(snapshot.signalTypes);
    state.signals = std::move(snapshot.signals);
    state.device = std::move(snapshot.device);
    state.hasAuthenticatedSnapshot = true;
    return state;
}

/// The personal computer of "member-1", a provider.
inline store::StoreState stateOfMember() {
    return stateOf(records::DeviceRole::member, support::makeSnapshot([](records::StateSnapshot& snapshot) {
                       snapshot.device = support::makeDeviceOfMember("member-1");
                   }));
}

/// The computer of "room-1".
inline store::StoreState stateOfRoom() {
    return stateOf(records::DeviceRole::room, support::makeSnapshot());
}

/// A workstation where "member-1" is signed in and has confirmed "room-1".
inline store::StoreState stateOfWorkstation() {
    auto state = stateOf(records::DeviceRole::shared, support::makeSnapshot([](records::StateSnapshot& snapshot) {
                             snapshot.device = support::makeDeviceWithSignIn("member-1");
                         }));
    state.flexibleRoomSession.signedInMemberId = "member-1";
    state.flexibleRoomSession.confirmedRoomId = "room-1";
    return state;
}

}  // namespace zelkovanta::alerts
