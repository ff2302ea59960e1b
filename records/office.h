#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/describe/class.hpp>

/// The office as the server describes it. These are images of the wire: texts stay texts (statuses, departments,
/// colours, timestamps), so that a word which a later server invents decodes and simply compares unequal. A plain field
/// is required, a `std::optional` one may be absent or null; `records/json_codec.h` has the rules. Fallbacks for absent
/// fields are taken where a field is read.
namespace zelkovanta::records {

struct OfficeDepartment {
    std::string key;
    std::string label;
    std::optional<std::string> labelPlural;
    bool operator==(const OfficeDepartment&) const = default;
};
BOOST_DESCRIBE_STRUCT(OfficeDepartment, (), (key, label, labelPlural))

/// The office's tuning of the automatic clearing by beacon.
struct BLESettings {
    std::optional<std::string> autoClearAction;
    std::optional<std::int64_t> rssiThreshold;
    std::optional<std::int64_t> dwellSeconds;
    bool operator==(const BLESettings&) const = default;
};
BOOST_DESCRIBE_STRUCT(BLESettings, (), (autoClearAction, rssiThreshold, dwellSeconds))

struct OfficeSettings {
    std::optional<std::int64_t> autoExpireMinutes;
    std::optional<bool> allowAnyProvider;
    std::optional<BLESettings> ble;
    std::optional<bool> requireSignedInSender;
    bool operator==(const OfficeSettings&) const = default;
};
BOOST_DESCRIBE_STRUCT(OfficeSettings, (), (autoExpireMinutes, allowAnyProvider, ble, requireSignedInSender))

struct Office {
    std::string id;
    std::string name;
    std::optional<std::string> slug;
    std::optional<std::string> vertical;
    std::optional<OfficeSettings> settings;
    std::optional<std::vector<OfficeDepartment>> departments;
    bool operator==(const Office&) const = default;
};
BOOST_DESCRIBE_STRUCT(Office, (), (id, name, slug, vertical, settings, departments))

struct Room {
    std::string id;
    std::string name;
    std::optional<std::string> beaconUuid;
    std::optional<bool> active;  ///< none means active
    bool operator==(const Room&) const = default;
};
BOOST_DESCRIBE_STRUCT(Room, (), (id, name, beaconUuid, active))

struct DesktopAlerts {
    std::optional<bool> enabled;
    std::optional<std::string> sound;
    bool operator==(const DesktopAlerts&) const = default;
};
BOOST_DESCRIBE_STRUCT(DesktopAlerts, (), (enabled, sound))

struct Member {
    std::string id;
    std::string name;
    std::string department;
    std::optional<std::string> color;
    std::optional<std::string> status;
    std::optional<bool> active;   ///< none means active
    std::optional<bool> onShift;  ///< none means on shift
    std::optional<std::string> cooldownUntil;
    std::optional<std::string> offShiftReason;
    std::optional<std::string> registeredAt;
    std::optional<bool> isAdmin;
    std::optional<DesktopAlerts> desktopAlerts;
    bool operator==(const Member&) const = default;
};
BOOST_DESCRIBE_STRUCT(Member, (),
                      (id, name, department, color, status, active, onShift, cooldownUntil, offShiftReason,
                       registeredAt, isAdmin, desktopAlerts))

/// The department of those who receive calls that are addressed to nobody in particular.
inline constexpr std::string_view providerDepartment = "provider";

struct SignalType {
    std::string id;  ///< unique within a list of types
    std::string key;
    std::string label;
    std::string color;
    std::int64_t priority = 0;              ///< larger sorts first in the queue
    std::optional<std::int64_t> sortOrder;  ///< order among the types, ascending; none counts as 0
    std::optional<std::vector<std::string>> senderDepartments;
    std::optional<std::string> targetDepartment;
    std::optional<bool> active;  ///< none means active
    bool operator==(const SignalType&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignalType, (),
                      (id, key, label, color, priority, sortOrder, senderDepartments, targetDepartment, active))

struct EscalationSettings {
    std::optional<bool> enabled;
    std::optional<std::int64_t> afterMinutes;
    std::optional<std::string> notifyMemberId;
    bool operator==(const EscalationSettings&) const = default;
};
BOOST_DESCRIBE_STRUCT(EscalationSettings, (), (enabled, afterMinutes, notifyMemberId))

struct PerTypeSettings {
    std::optional<bool> enabled;
    std::optional<std::string> sound;
    std::optional<std::string> tone;
    bool operator==(const PerTypeSettings&) const = default;
};
BOOST_DESCRIBE_STRUCT(PerTypeSettings, (), (enabled, sound, tone))

struct NotificationSettings {
    std::optional<bool> enabled;
    std::optional<std::string> sound;
    std::optional<std::string> tone;
    std::optional<bool> showNote;
    std::optional<std::int64_t> repeatAfterMinutes;
    std::optional<bool> quiet;
    std::optional<EscalationSettings> escalation;
    std::optional<std::map<std::string, PerTypeSettings>> perType;  ///< by signal type key
    bool operator==(const NotificationSettings&) const = default;
};
BOOST_DESCRIBE_STRUCT(NotificationSettings, (),
                      (enabled, sound, tone, showNote, repeatAfterMinutes, quiet, escalation, perType))

/// A computer's registration on the server.
struct Device {
    std::string id;
    std::string kind;
    std::optional<std::string> name;
    std::optional<std::string> memberId;          ///< whose personal computer it is
    std::optional<std::string> roomId;            ///< the room that it is tied to
    std::optional<std::string> signedInMemberId;  ///< who is signed in at a shared workstation
    std::optional<NotificationSettings> notificationSettings;
    std::optional<std::string> lastSeenAt;
    bool operator==(const Device&) const = default;
};
BOOST_DESCRIBE_STRUCT(Device, (),
                      (id, kind, name, memberId, roomId, signedInMemberId, notificationSettings, lastSeenAt))

}  // namespace zelkovanta::records
