#pragma once

#include "platform/linux/notification_events.h"

#include <string>
#include <string_view>

/// What is kept of the notifications on the desktop between two runs, as the text of a file: numbers and identifiers,
/// nothing that was shown.
namespace zelkovanta::platform::linux_host {

/// Nothing longer is read.
inline constexpr std::size_t longestNotificationFile = std::size_t{4} << 20U;

[[nodiscard]] std::string notificationFileText(const ledger::KeptNotifications& kept);
/// What is damaged is left out; a text that is nothing of the kind keeps nothing.
[[nodiscard]] ledger::KeptNotifications readNotificationFile(std::string_view text);

}  // namespace zelkovanta::platform::linux_host
