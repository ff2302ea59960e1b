#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/describe/class.hpp>

namespace zelkovanta::records {

/// One request for attention: a row in a queue.
struct Signal {
    std::string id;
    std::string roomId;
    std::optional<std::string> requesterId;
    std::optional<std::string> providerId;
    std::optional<std::vector<std::string>> providerIds;  ///< where present it decides alone, even when empty
    std::optional<std::string> toDepartment;
    std::string typeId;
    std::optional<std::string> note;
    std::string status;
    std::string createdAt;
    std::optional<std::string> acknowledgedAt;
    std::optional<std::string> acknowledgedBy;
    std::optional<std::string> clearedAt;
    std::optional<std::string> clearedBy;  ///< a member's id, or one of the words below
    bool operator==(const Signal&) const = default;
};
BOOST_DESCRIBE_STRUCT(Signal, (),
                      (id, roomId, requesterId, providerId, providerIds, toDepartment, typeId, note, status, createdAt,
                       acknowledgedAt, acknowledgedBy, clearedAt, clearedBy))

namespace signal_status {
inline constexpr std::string_view waiting = "waiting";            ///< sent, nobody has taken it
inline constexpr std::string_view acknowledged = "acknowledged";  ///< somebody is on the way
inline constexpr std::string_view done = "done";
inline constexpr std::string_view canceled = "canceled";
inline constexpr std::string_view expired = "expired";
}  // namespace signal_status

/// What a computer may do with a signal: the words of `SignalActionRequest`.
namespace signal_action {
inline constexpr std::string_view acknowledge = "acknowledge";
inline constexpr std::string_view done = "done";
inline constexpr std::string_view cancel = "cancel";
}  // namespace signal_action

namespace cleared_by {
inline constexpr std::string_view beacon = "ble";       ///< the provider arrived
inline constexpr std::string_view timeout = "timeout";  ///< the signal expired
}  // namespace cleared_by

/// "waiting" or "acknowledged"; any other word, known or not, is inactive.
[[nodiscard]] bool isActive(const Signal& signal);

}  // namespace zelkovanta::records
