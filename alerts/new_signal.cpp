#include "alerts/new_signal.h"

#include "alerts/signal_notification.h"
#include "records/device_role.h"
#include "screens/vocabulary/vocabulary.h"
#include "store/queues.h"

#include <algorithm>
#include <array>

namespace zelkovanta::alerts {

namespace {

constexpr std::array<std::string_view, 4> sounds{"chime", "bell", "blip", "pulse"};
constexpr std::string_view defaultSoundName = sounds.front();
constexpr std::string_view silence = "none";

bool isAddressedTo(const records::Member& member, const records::Signal& signal) {
    if (signal.providerIds) {
        return std::ranges::find(*signal.providerIds, member.id) != signal.providerIds->end();
    }
    if (signal.providerId) {
        return *signal.providerId == member.id;
    }
    return store::shiftOf(member) == store::Shift::on && store::providerOf(member) == store::Provider::yes;
}

/// At a shared workstation a person answers for the room that they are in.
bool isOfThisPlace(const store::StoreState& state, const records::Signal& signal) {
    return state.role != records::DeviceRole::shared || store::confirmedFlexibleRoomId(state) == signal.roomId;
}

std::optional<platform::NotificationSound> soundNamed(const std::optional<std::string>& name) {
    if (!name) {
        return std::nullopt;
    }
    return platform::SoundFile{*name + std::string{soundFileExtension}};
}

}  // namespace

ResolvedAlerts resolveDesktopAlerts(const std::optional<records::DesktopAlerts>& alerts) {
    const bool enabled = !alerts || alerts->enabled.value_or(true);
    const std::optional<std::string> chosen = alerts ? alerts->sound : std::nullopt;
    if (chosen == silence) {
        return {.enabled = enabled, .sound = std::nullopt};
    }
    const bool isKnown = chosen && std::ranges::find(sounds, *chosen) != sounds.end();
    return {.enabled = enabled, .sound = isKnown ? *chosen : std::string{defaultSoundName}};
}

std::string notificationBody(const std::optional<std::string>& requesterName, const std::optional<std::string>& note,
                             std::string_view fallback) {
    std::string body = requesterName.value_or(std::string{});
    if (note && !note->empty()) {
        if (!body.empty()) {
            body += separator;
        }
        body += *note;
    }
    return body.empty() ? std::string{fallback} : body;
}

std::string typeLabel(const store::StoreState& state, std::string_view typeId, const platform::StringTable& strings) {
    const records::SignalType* type = store::signalTypeById(state, typeId);
    return type ? screens::vocabulary::signalTypeLabel(type->key, type->label,
                                                       state.office ? state.office->vertical : std::nullopt, strings)
                : strings.localized("Ready");
}

std::optional<platform::NotificationRequest> requestForNewSignal(const store::StoreState& state,
                                                                 const records::Signal& signal,
                                                                 const platform::StringTable& strings) {
    const records::Member* member = store::activeMember(state);
    if (!member || !isOfThisPlace(state, signal) || !isAddressedTo(*member, signal) ||
        signal.requesterId == member->id) {
        return std::nullopt;
    }
    const ResolvedAlerts alerts = resolveDesktopAlerts(member->desktopAlerts);
    if (!alerts.enabled || member->status == records::rawValue(records::MemberStatus::dnd)) {
        return std::nullopt;
    }
    const records::Room* room = store::roomById(state, signal.roomId);
    const records::Member* requester = store::memberById(state, signal.requesterId);
    const std::string label = typeLabel(state, signal.typeId, strings);

    platform::NotificationContent content;
    content.title = room ? room->name : strings.localized("A room");
    content.title += separator;
    content.title += label;
    content.body = notificationBody(requester ? std::optional{requester->name} : std::nullopt, signal.note, label);
    content.sound = soundNamed(alerts.sound);
    content.threadIdentifier = signal.roomId;
    content.categoryIdentifier = readySignalCategory;
    content.userInfo = signalUserInfo(signal.id, member->id);
    return platform::NotificationRequest{.identifier = signalIdentifier(signal.id), .content = std::move(content)};
}

}  // namespace zelkovanta::alerts
