#include "alerts/signal_notification.h"

#include <cstddef>
#include <unordered_set>
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
    return {.identifier = request.identifier,
            .memberId = memberId ? std::optional<std::string_view>{*memberId} : std::nullopt};
}

ExpectedIdentifiers::ExpectedIdentifiers(std::span<const std::string_view> activeSignalIds) {
    std::size_t size = 0;
    for (const std::string_view id : activeSignalIds) {
        size += signalIdentifierPrefix.size() + id.size();
    }
    // Reserved as a whole, so that nothing moves while it is being written.
    text_.reserve(size);
    identifiers_.reserve(activeSignalIds.size());
    for (const std::string_view id : activeSignalIds) {
        const std::size_t begin = text_.size();
        text_.insert(text_.end(), signalIdentifierPrefix.begin(), signalIdentifierPrefix.end());
        text_.insert(text_.end(), id.begin(), id.end());
        identifiers_.emplace_back(text_.data() + begin, text_.size() - begin);
    }
}

std::vector<std::string> staleIdentifiers(std::span<const DesktopSignalNotificationIdentity> identities,
                                          const ExpectedIdentifiers& expected,
                                          const std::optional<std::string>& memberId) {
    std::vector<std::string> stale;
    if (identities.empty()) {
        return stale;
    }
    const std::unordered_set<std::string_view> identifiers(expected.all().begin(), expected.all().end());
    for (const auto& identity : identities) {
        const bool isSignal = identity.identifier.starts_with(signalIdentifierPrefix);
        if (isSignal && (identity.memberId != memberId || !identifiers.contains(identity.identifier))) {
            stale.emplace_back(identity.identifier);
        }
    }
    return stale;
}

}  // namespace zelkovanta::alerts
