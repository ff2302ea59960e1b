#include "alerts/notification_action.h"

#include "alerts/signal_notification.h"
#include "records/signal.h"

#include <string>

namespace zelkovanta::alerts {

platform::NotificationCategory readySignalButtons(const platform::StringTable& strings) {
    return {.identifier = std::string{readySignalCategory},
            .actions = {
                {.identifier = std::string{action_identifier::onMyWay}, .title = strings.localized("On my way")},
                {.identifier = std::string{action_identifier::done}, .title = strings.localized("Done")},
            }};
}

std::optional<store::DesktopSignalNotificationAction> actionFromResponse(
    std::string_view categoryIdentifier, std::string_view actionIdentifier,
    const platform::NotificationUserInfo& userInfo) {
    const std::string* signalId = textIn(userInfo, user_info_key::signalId);
    const std::string* memberId = textIn(userInfo, user_info_key::memberId);
    if (categoryIdentifier != readySignalCategory || !signalId || signalId->empty() || !memberId || memberId->empty()) {
        return std::nullopt;
    }
    if (actionIdentifier == action_identifier::onMyWay) {
        return store::DesktopSignalNotificationAction{
            .signalId = *signalId, .memberId = *memberId, .action = std::string{records::signal_action::acknowledge}};
    }
    if (actionIdentifier == action_identifier::done) {
        return store::DesktopSignalNotificationAction{
            .signalId = *signalId, .memberId = *memberId, .action = std::string{records::signal_action::done}};
    }
    return std::nullopt;
}

}  // namespace zelkovanta::alerts
