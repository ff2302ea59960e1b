#include "alerts/signal_notification.h"

#include <bit>
#include <cstddef>
#include <functional>
#include <variant>

namespace zelkovanta::alerts {

namespace {

std::size_t hashOf(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

/// The half of the hash that does not say where it lies.
std::uint32_t markOf(std::size_t hash) {
    return static_cast<std::uint32_t>(hash >> 32U);
}

}  // namespace

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

StaleNotifications::StaleNotifications(const ExpectedIdentifiers& expected, const std::optional<std::string>& memberId)
    : expected_(expected.all()), memberId_(memberId), slots_(std::bit_ceil(2 * expected_.size() + 1)) {
    for (std::uint32_t index = 0; index < expected_.size(); ++index) {
        const std::size_t hash = hashOf(expected_[index]);
        std::size_t place = hash & (slots_.size() - 1);
        while (slots_[place].number != 0) {
            place = (place + 1) & (slots_.size() - 1);
        }
        slots_[place] = {.mark = markOf(hash), .number = index + 1};
    }
}

bool StaleNotifications::isExpected(std::string_view identifier) const {
    const std::size_t hash = hashOf(identifier);
    for (std::size_t place = hash & (slots_.size() - 1); slots_[place].number != 0;
         place = (place + 1) & (slots_.size() - 1)) {
        if (slots_[place].mark == markOf(hash) && expected_[slots_[place].number - 1] == identifier) {
            return true;
        }
    }
    return false;
}

bool StaleNotifications::contain(const DesktopSignalNotificationIdentity& identity) const {
    return identity.identifier.starts_with(signalIdentifierPrefix) &&
           (identity.memberId != memberId_ || !isExpected(identity.identifier));
}

}  // namespace zelkovanta::alerts
