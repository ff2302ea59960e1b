#pragma once

#include "office/device.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What an admin, or a member of staff with a phone, orders. Members, rooms, types, computers and practices are named by
// their id or by their name (letter case does not matter); a name must be unique where it is looked for.
namespace zelkovanta::office {

/// Where a new computer belongs.
struct Placement {
    std::string practice = {};  ///< empty: the first practice
    DeviceRole role = DeviceRole::room;
    std::optional<std::string> room = {};    ///< required for `room`, possible for `shared`
    std::optional<std::string> member = {};  ///< required for `member`, refused otherwise
    std::optional<std::string> computerName = {};
};

/// How a computer learns that it was moved to another practice: by the whole new state, or by the new office alone,
/// upon which it asks for the state.
enum class MoveNotice { snapshot, officeUpdated };

/// A signal sent by hand.
struct SendOrder {
    std::string practice = {};  ///< empty: the first practice
    std::string room = {};
    std::string type = {};                 ///< id, key or label
    std::optional<std::string> from = {};  ///< a member
    std::vector<std::string> to = {};      ///< members; empty for an open call
    std::optional<std::string> toDepartment = {};
    std::string note = {};
};

/// `arrived` is the beacon's: the signal is done, cleared by "ble".
enum class SignalAction { acknowledge, done, cancel, arrived };

/// Fields without a value stay as they are. An empty text takes an optional text away.
struct MemberChange {
    std::optional<std::string> name = {};
    std::optional<std::string> department = {};
    std::optional<std::string> color = {};
    std::optional<std::string> status = {};
    std::optional<bool> active = {};
    std::optional<bool> onShift = {};  ///< true also ends a cooldown and takes the reason away
    std::optional<std::string> offShiftReason = {};
    std::optional<std::int64_t> cooldownMinutes = {};  ///< 0 ends a cooldown
    std::optional<bool> isAdmin = {};
    std::optional<bool> alertsEnabled = {};
    std::optional<std::string> alertSound = {};
};

struct RoomChange {
    std::optional<std::string> name = {};
    std::optional<bool> active = {};
    std::optional<std::string> beaconUuid = {};
};

struct TypeChange {
    std::optional<std::string> label = {};
    std::optional<std::string> color = {};
    std::optional<std::int64_t> priority = {};
    std::optional<std::int64_t> sortOrder = {};
    std::optional<bool> active = {};
};

struct PracticeChange {
    std::optional<std::string> name = {};
    std::optional<std::string> vertical = {};
    std::optional<std::int64_t> autoExpireMinutes = {};  ///< 0: never
    std::optional<bool> allowAnyProvider = {};
    std::optional<bool> requireSignedInSender = {};
};

}  // namespace zelkovanta::office
