#pragma once

#include "office/time_text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>

// What a practice is made of, as the office keeps it. `position` gives the order in which records are sent.
namespace zelkovanta::office {

struct Department {
    std::string key;
    std::string label;
    std::optional<std::string> labelPlural;
    bool operator==(const Department&) const = default;
};
BOOST_DESCRIBE_STRUCT(Department, (), (key, label, labelPlural))

struct Practice {
    std::string id;
    std::int64_t position = 0;
    std::string name;
    std::optional<std::string> slug;
    std::optional<std::string> vertical;
    std::vector<Department> departments;
    std::optional<std::int64_t> autoExpireMinutes;  ///< absent or not positive: signals never expire
    std::optional<bool> allowAnyProvider;           ///< absent means true
    std::optional<bool> requireSignedInSender;      ///< absent means false
    std::optional<std::string> beaconAutoClearAction;
    std::optional<std::int64_t> beaconRssiThreshold;
    std::optional<std::int64_t> beaconDwellSeconds;
    bool operator==(const Practice&) const = default;
};
BOOST_DESCRIBE_STRUCT(Practice, (),
                      (id, position, name, slug, vertical, departments, autoExpireMinutes, allowAnyProvider,
                       requireSignedInSender, beaconAutoClearAction, beaconRssiThreshold, beaconDwellSeconds))

struct Member {
    std::string id;
    std::string practiceId;
    std::int64_t position = 0;
    std::string name;
    std::string department;
    std::optional<std::string> color;
    std::optional<std::string> status;
    std::optional<bool> active;   ///< absent means true
    std::optional<bool> onShift;  ///< absent means true
    std::optional<Timestamp> cooldownUntil;
    std::optional<std::string> offShiftReason;
    std::optional<Timestamp> registeredAt;
    std::optional<bool> isAdmin;
    std::optional<bool> alertsEnabled;
    std::optional<std::string> alertSound;
    bool operator==(const Member&) const = default;
};
BOOST_DESCRIBE_STRUCT(Member, (),
                      (id, practiceId, position, name, department, color, status, active, onShift, cooldownUntil,
                       offShiftReason, registeredAt, isAdmin, alertsEnabled, alertSound))

struct Room {
    std::string id;
    std::string practiceId;
    std::int64_t position = 0;
    std::string name;
    std::optional<std::string> beaconUuid;
    std::optional<bool> active;  ///< absent means true
    bool operator==(const Room&) const = default;
};
BOOST_DESCRIBE_STRUCT(Room, (), (id, practiceId, position, name, beaconUuid, active))

struct SignalType {
    std::string id;
    std::string practiceId;
    std::int64_t position = 0;
    std::string key;
    std::string label;
    std::string color;
    std::int64_t priority = 0;
    std::optional<std::int64_t> sortOrder;
    std::optional<std::vector<std::string>> senderDepartments;  ///< absent or empty: everybody may send it
    std::optional<std::string> targetDepartment;
    std::optional<bool> active;  ///< absent means true
    bool operator==(const SignalType&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignalType, (),
                      (id, practiceId, position, key, label, color, priority, sortOrder, senderDepartments,
                       targetDepartment, active))

}  // namespace zelkovanta::office
