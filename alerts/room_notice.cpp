#include "alerts/room_notice.h"

#include "alerts/new_signal.h"
#include "records/device_role.h"
#include "store/queues.h"

namespace zelkovanta::alerts {

namespace {

std::optional<std::string> nameOfProvider(const store::StoreState& state, const records::Signal& signal) {
    const records::Member* provider = store::memberById(state, signal.acknowledgedBy);
    if (!provider) {
        provider = store::memberById(state, signal.providerId);
    }
    return provider ? std::optional{provider->name} : std::nullopt;
}

platform::NotificationContent noticeContent(std::string title, std::string body) {
    platform::NotificationContent content;
    content.title = std::move(title);
    content.body = std::move(body);
    content.sound = platform::DefaultSound{};
    return content;
}

}  // namespace

std::optional<RoomNotice> noticeOfUpdate(const store::StoreState& state, const records::Signal& signal,
                                         const records::Signal* previous, const platform::StringTable& strings) {
    if (state.role != records::DeviceRole::room || !state.device || state.device->roomId != signal.roomId) {
        return std::nullopt;
    }
    if (signal.status == records::signal_status::acknowledged) {
        if (!previous || previous->status != records::signal_status::waiting) {
            return std::nullopt;
        }
        return OnTheWay{.providerName = nameOfProvider(state, signal),
                        .typeLabel = typeLabel(state, signal.typeId, strings)};
    }
    if (signal.status == records::signal_status::done) {
        const records::Room* room = store::pairedRoom(state);
        return AllSet{.roomName = room ? room->name : strings.localized("This room"), .clearedBy = signal.clearedBy};
    }
    return std::nullopt;
}

platform::NotificationContent onTheWayContent(const std::optional<std::string>& providerName,
                                              std::string_view typeLabel, const platform::StringTable& strings) {
    const std::string name = providerName ? *providerName : strings.localized("The doctor");
    return noticeContent(platform::filled(strings.localized("%@ is on the way"), {name}), std::string{typeLabel});
}

platform::NotificationContent allSetContent(std::string_view roomName, const std::optional<std::string>& clearedBy,
                                            const platform::StringTable& strings) {
    std::string body;
    if (clearedBy == records::cleared_by::beacon) {
        body = strings.localized("Cleared automatically: the provider arrived.");
    } else if (clearedBy == records::cleared_by::timeout) {
        body = strings.localized("The signal expired.");
    } else {
        body = strings.localized("The signal was marked done.");
    }
    return noticeContent(platform::filled(strings.localized("%@: all set"), {roomName}), std::move(body));
}

}  // namespace zelkovanta::alerts
