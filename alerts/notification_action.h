#pragma once

#include "platform/string_table.h"
#include "platform/user_notification_center.h"
#include "store/collaborators.h"

#include <optional>
#include <string_view>

/// The buttons of a signal's notification.
namespace zelkovanta::alerts {

namespace action_identifier {
inline constexpr std::string_view onMyWay = "ONMYWAY";
inline constexpr std::string_view done = "DONE";
}  // namespace action_identifier

[[nodiscard]] platform::NotificationCategory readySignalButtons(const platform::StringTable& strings);

/// What a response asks of the store; nothing for a response that is no press of one of our buttons, or to a
/// notification that does not tell its signal and its member. From any thread.
[[nodiscard]] std::optional<store::DesktopSignalNotificationAction> actionFromResponse(
    std::string_view categoryIdentifier, std::string_view actionIdentifier,
    const platform::NotificationUserInfo& userInfo);

}  // namespace zelkovanta::alerts
