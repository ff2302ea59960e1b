#pragma once

#include "records/device_role.h"
#include "records/snapshot.h"
#include "server/connection_state.h"
#include "store/flexible_room.h"
#include "store/login_scope.h"
#include "store/sign_in_code.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::store {

/// Settings that are kept between launches; the keys stand in `store/settings.h`.
struct StoreSettings {
    std::string serverURLString;
    std::string storedRole;
    bool beaconEnabled = false;
    bool launchAtLogin = false;
    bool openAsWindow = false;
    LoginScope stationSignIn;
    bool operator==(const StoreSettings&) const = default;
};

struct ShiftCooldown {
    std::string message;
    std::optional<std::string> until;
    bool operator==(const ShiftCooldown&) const = default;
};

/// Everything that the screens read. Lists are in the server's order.
struct StoreState {
    StoreSettings settings;

    bool isPaired = false;  ///< a device token is held, and a session exists or is being started
    records::DeviceRole role = records::DeviceRole::room;
    std::optional<records::Office> office;
    std::vector<records::Member> members;
    std::vector<records::Room> rooms;
    std::vector<records::SignalType> signalTypes;
    std::vector<records::Signal> signals;  ///< only active ones, unsorted
    std::optional<records::Device> device;
    server::ConnectionState connectionState = server::ConnectionState::stopped;
    std::optional<std::string> lastError;  ///< the one line of error text shown to the person
    bool isSending = false;
    std::optional<ShiftCooldown> shiftCooldown;  ///< reserved: nothing writes it
    FlexibleRoomSession flexibleRoomSession;
    std::optional<std::string> setupQrImage;      ///< bytes of the image file
    std::optional<std::string> setupQrExpiresAt;  ///< ISO 8601
    std::optional<std::string> setupQrError;
    std::optional<std::string> setupQrNotice;
    SignInCode signInCode;

    bool hasAuthenticatedSnapshot = false;  ///< a snapshot of this session has been applied
    bool operator==(const StoreState&) const = default;
};

/// The parts of the state that observers are told of.
enum class StoreField : std::uint8_t {
    settings,
    isPaired,
    role,
    office,
    members,
    rooms,
    signalTypes,
    signals,
    device,
    connectionState,
    lastError,
    isSending,
    flexibleRoomSession,
    setupQrImage,
    setupQrExpiresAt,
    setupQrError,
    setupQrNotice,
    signInCode,
};
inline constexpr std::size_t storeFieldCount = static_cast<std::size_t>(StoreField::signInCode) + 1;

class StoreChanges {
public:
    void mark(StoreField field) { fields_.set(static_cast<std::size_t>(field)); }
    [[nodiscard]] bool contains(StoreField field) const { return fields_.test(static_cast<std::size_t>(field)); }
    [[nodiscard]] bool any() const { return fields_.any(); }
    bool operator==(const StoreChanges&) const = default;

private:
    std::bitset<storeFieldCount> fields_;
};

}  // namespace zelkovanta::store
