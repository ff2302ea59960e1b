#pragma once

#include "office/time_text.h"

#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/describe/enum.hpp>

namespace zelkovanta::office {

/// The first two are active; a signal leaves the last three never again.
enum class SignalStatus { waiting, acknowledged, done, canceled, expired };
BOOST_DESCRIBE_ENUM(SignalStatus, waiting, acknowledged, done, canceled, expired)

struct Signal {
    std::string id;
    std::string practiceId;
    std::string roomId;
    std::optional<std::string> requesterId;
    std::optional<std::string> providerId;
    std::optional<std::vector<std::string>> providerIds;
    std::optional<std::string> toDepartment;
    std::string typeId;
    std::optional<std::string> note;
    SignalStatus status = SignalStatus::waiting;
    Timestamp createdAt;
    std::optional<Timestamp> acknowledgedAt;
    std::optional<std::string> acknowledgedBy;
    std::optional<Timestamp> clearedAt;
    std::optional<std::string> clearedBy;  ///< a member's id, "ble" or "timeout"
    bool operator==(const Signal&) const = default;
};
BOOST_DESCRIBE_STRUCT(Signal, (),
                      (id, practiceId, roomId, requesterId, providerId, providerIds, toDepartment, typeId, note, status,
                       createdAt, acknowledgedAt, acknowledgedBy, clearedAt, clearedBy))

[[nodiscard]] inline bool isActive(const Signal& signal) {
    return signal.status == SignalStatus::waiting || signal.status == SignalStatus::acknowledged;
}

}  // namespace zelkovanta::office
