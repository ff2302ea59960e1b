#include "platform/linux/notification_ledger.h"

#include <algorithm>

namespace zelkovanta::platform::linux_host {

using namespace ledger;

NotificationRequests NotificationLedger::pending() const {
    NotificationRequests requests;
    for (const auto& [identifier, entry] : entries_) {
        if (entry.isPending()) {
            requests.push_back(entry.request);
        }
    }
    return requests;
}

NotificationRequests NotificationLedger::delivered() const {
    NotificationRequests requests;
    requests.reserve(entries_.size());
    for (const auto& [identifier, entry] : entries_) {
        if (entry.isDelivered()) {
            requests.push_back(entry.request);
        }
    }
    return requests;
}

KeptNotifications NotificationLedger::kept() const {
    KeptNotifications kept{.bus = bus_, .daemon = daemon_, .notifications = {}};
    for (const auto& [id, live] : live_) {
        if (isNotice(live.request)) {
            continue;
        }
        kept.notifications.push_back({.id = id,
                                      .identifier = live.identifier,
                                      .categoryIdentifier = live.request->content.categoryIdentifier,
                                      .userInfo = live.request->content.userInfo});
    }
    std::ranges::sort(kept.notifications, {}, &Kept::id);
    return kept;
}

std::optional<SteadyTime> NotificationLedger::nextDue() const {
    return due_.empty() ? std::nullopt : std::optional{due_.begin()->first};
}

}  // namespace zelkovanta::platform::linux_host
