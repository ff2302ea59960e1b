#pragma once

#include "platform/user_notification_center.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// The form of a signal's notification in the notification centre, and which of them are out of date. Pure functions;
/// from any thread.
namespace zelkovanta::alerts {

/// Before the signal's id. What does not begin with it is no signal's notification and is left alone.
inline constexpr std::string_view signalIdentifierPrefix = "zelkovanta.signal.";
inline constexpr std::string_view readySignalCategory = "READY_SIGNAL";
/// Between the parts of titles and bodies.
inline constexpr std::string_view separator = " · ";

namespace user_info_key {
inline constexpr std::string_view signalId = "signalId";
inline constexpr std::string_view memberId = "memberId";  ///< to whom the notification was posted
}  // namespace user_info_key

/// One signal has one identifier, so that posting it again replaces its notification.
[[nodiscard]] std::string signalIdentifier(std::string_view signalId);
[[nodiscard]] platform::NotificationUserInfo signalUserInfo(std::string_view signalId, std::string_view memberId);

/// The text of an entry; null if there is none, or if it is no text.
[[nodiscard]] const std::string* textIn(const platform::NotificationUserInfo& userInfo, std::string_view key);

/// What a reconciliation knows of one pending or delivered notification.
struct DesktopSignalNotificationIdentity {
    std::string identifier;
    std::optional<std::string> memberId;
    bool operator==(const DesktopSignalNotificationIdentity&) const = default;
};
[[nodiscard]] DesktopSignalNotificationIdentity identityOf(const platform::NotificationRequest& request);

using SignalIds = std::unordered_set<std::string>;

/// The identifiers that may stand in the centre, in no order.
[[nodiscard]] std::vector<std::string> expectedIdentifiers(const SignalIds& activeSignalIds);

/// Those to take back, in the order of `identities`: notifications of signals that are not open, and those that were
/// posted to somebody else than the member.
[[nodiscard]] std::vector<std::string> staleIdentifiers(std::span<const DesktopSignalNotificationIdentity> identities,
                                                        const SignalIds& activeSignalIds,
                                                        const std::optional<std::string>& memberId);

}  // namespace zelkovanta::alerts
