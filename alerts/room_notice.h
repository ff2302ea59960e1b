#pragma once

#include "platform/string_table.h"
#include "platform/user_notification_center.h"
#include "records/signal.h"
#include "store/store_state.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// What a room's computer tells of the signals that were sent from the room. Pure functions.
namespace zelkovanta::alerts {

struct OnTheWay {
    std::optional<std::string> providerName;
    std::string typeLabel;
    bool operator==(const OnTheWay&) const = default;
};
struct AllSet {
    std::string roomName;
    std::optional<std::string> clearedBy;  ///< as in `records::Signal`
    bool operator==(const AllSet&) const = default;
};
using RoomNotice = std::variant<OnTheWay, AllSet>;

/// What is to be told of an update. A signal is on the way when it turns from waiting into acknowledged under the eyes
/// of this computer; that it is done is told at every update that says so. `previous` is the copy that was held before,
/// null if there was none.
[[nodiscard]] std::optional<RoomNotice> noticeOfUpdate(const store::StoreState& state, const records::Signal& signal,
                                                       const records::Signal* previous,
                                                       const platform::StringTable& strings);

// Notices have no category and carry nothing, so that nothing takes them back but the person.
[[nodiscard]] platform::NotificationContent onTheWayContent(const std::optional<std::string>& providerName,
                                                            std::string_view typeLabel,
                                                            const platform::StringTable& strings);
[[nodiscard]] platform::NotificationContent allSetContent(std::string_view roomName,
                                                          const std::optional<std::string>& clearedBy,
                                                          const platform::StringTable& strings);

}  // namespace zelkovanta::alerts
