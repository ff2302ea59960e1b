#include "alerts/signal_notification.h"

#include <utility>
#include <variant>

namespace zelkovanta::alerts {

std::string signalIdentifier(std::string_view signalId) {
    std::string identifier{signalIdentifierPrefix};
    identifier += signalId;
    return identifier;
}

platform::NotificationUserInfo signalUserInfo(std::string_view signalId, std::string_view memberId) {
    return {{std::string{user_info_key::signalId}, std::string{signalId}},
            {std::string{user_info_key::memberId}, std::string{memberId}}};
}

const std::string* textIn(const platform::NotificationUserInfo& userInfo, std::string_view key) {
    const auto entry = userInfo.find(key);
    return entry == userInfo.end() ? nullptr : std::get_if<std::string>(&entry->second);
}

DesktopSignalNotificationIdentity identityOf(const platform::NotificationRequest& request) {
    const std::string* memberId = textIn(request.content.userInfo, user_info_key::memberId);
    return {.identifier = request.identifier, .memberId = memberId ? std::optional{*memberId} : std::nullopt};
}

std::vector<std::string> expectedIdentifiers(const SignalIds& activeSignalIds) {
    std::vector<std::string> identifiers;
    identifiers.reserve(activeSignalIds.size());
    for (const std::string& id : activeSignalIds) {
        identifiers.push_back(signalIdentifier(id));
    }
    return identifiers;
}

std::vector<std::string> staleIdentifiers(std::span<const DesktopSignalNotificationIdentity> identities,
                                          const SignalIds& activeSignalIds,
                                          const std::optional<std::string>& memberId) {
    std::vector<std::string> stale;
    if (identities.empty()) {
        return stale;
    }
    const std::vector<std::string> identifiers = expectedIdentifiers(activeSignalIds);
    const std::unordered_set<std::string_view> expected(identifiers.begin(), identifiers.end());
    for (const auto& identity : identities) {
        const bool isSignal = identity.identifier.starts_with(signalIdentifierPrefix);
        if (isSignal && (identity.memberId != memberId || !expected.contains(identity.identifier))) {
            stale.push_back(identity.identifier);
        }
    }
    return stale;
}

}  // namespace zelkovanta::alerts
