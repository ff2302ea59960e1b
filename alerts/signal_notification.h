#pragma once

#include "platform/user_notification_center.h"

#include <cstdint>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
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

/// What a reconciliation knows of one pending or delivered notification. Points into the request.
struct DesktopSignalNotificationIdentity {
    std::string_view identifier;
    std::optional<std::string_view> memberId;
    bool operator==(const DesktopSignalNotificationIdentity&) const = default;
};
[[nodiscard]] DesktopSignalNotificationIdentity identityOf(const platform::NotificationRequest& request);

/// The identifiers that may stand in the centre. They lie in one piece of memory, since they are written at every
/// change of the store and read only when there is something in the centre.
class ExpectedIdentifiers {
public:
    explicit ExpectedIdentifiers(std::span<const std::string_view> activeSignalIds = {});
    ExpectedIdentifiers(ExpectedIdentifiers&&) = default;
    ExpectedIdentifiers& operator=(ExpectedIdentifiers&&) = default;

    /// In the order of the signals.
    [[nodiscard]] std::span<const std::string_view> all() const { return identifiers_; }

private:
    std::vector<char> text_;
    std::vector<std::string_view> identifiers_;  ///< of `text_`
};
[[nodiscard]] inline ExpectedIdentifiers expectedIdentifiers(std::span<const std::string_view> activeSignalIds) {
    return ExpectedIdentifiers{activeSignalIds};
}

/// Tells which notifications are out of date. Its arguments must outlive it.
class StaleNotifications {
public:
    StaleNotifications(const ExpectedIdentifiers& expected, const std::optional<std::string>& memberId);

    /// Of a signal that is not open, or posted to somebody else than the member.
    [[nodiscard]] bool contain(const DesktopSignalNotificationIdentity& identity) const;

private:
    struct Slot {
        std::uint32_t mark = 0;    ///< of the identifier's hash, so that most others are not looked at
        std::uint32_t number = 0;  ///< of the identifier, from 1 on; none: 0
    };
    [[nodiscard]] bool isExpected(std::string_view identifier) const;

    const std::span<const std::string_view> expected_;
    const std::optional<std::string>& memberId_;
    // A hash table in one piece, at least half of it empty. A set of the library takes and gives back a piece of memory
    // for each identifier, and for a great many that costs more than all the comparing.
    std::vector<Slot> slots_;
};

/// Those to take back, in the order of `identities`. Each is asked for once and looked at there and then: what many
/// notifications say lies far apart in memory, and is fetched once.
template <std::ranges::view Identities>
[[nodiscard]] std::vector<std::string> staleIdentifiers(Identities identities,
                                                        const StaleNotifications& notifications) {
    std::vector<std::string> stale;
    for (const DesktopSignalNotificationIdentity& identity : identities) {
        if (notifications.contain(identity)) {
            stale.emplace_back(identity.identifier);
        }
    }
    return stale;
}

}  // namespace zelkovanta::alerts
