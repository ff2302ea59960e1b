#include "store/queues.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <tuple>
#include <unordered_map>

namespace zelkovanta::store {

namespace {

template <class Record>
const Record* firstWithId(const std::vector<Record>& list, std::string_view id) {
    const auto found = std::ranges::find_if(list, [id](const Record& record) { return record.id == id; });
    return found == list.end() ? nullptr : &*found;
}

template <class Record>
std::vector<const Record*> pointersTo(const std::vector<Record>& list, auto&& keep) {
    std::vector<const Record*> kept;
    for (const Record& record : list) {
        if (keep(record)) {
            kept.push_back(&record);
        }
    }
    return kept;
}

using Priorities = std::unordered_map<std::string_view, std::int64_t>;

Priorities prioritiesById(std::span<const records::SignalType> types) {
    Priorities priorities;
    priorities.reserve(types.size());
    for (const auto& type : types) {
        if (!priorities.emplace(type.id, type.priority).second) {
            std::fprintf(stderr, "Duplicate values for key: '%s'\n", type.id.c_str());
            std::abort();
        }
    }
    return priorities;
}

/// For those who count signals in no order: a list of types that has none is a fault for them, too.
void requireDistinctIds(std::span<const records::SignalType> types) {
    static_cast<void>(prioritiesById(types));
}

/// The active signals that `keep` holds for, in queue order. Only those are sorted.
SignalList sortedIf(std::span<const records::SignalType> types, std::span<const records::Signal> signals, auto&& keep) {
    struct Entry {
        std::int64_t priority = 0;
        std::string_view createdAt;
        const records::Signal* signal = nullptr;
    };
    const Priorities priorities = prioritiesById(types);
    std::vector<Entry> entries;
    for (const auto& signal : signals) {
        if (records::isActive(signal) && keep(signal)) {
            const auto found = priorities.find(signal.typeId);
            entries.push_back({found == priorities.end() ? 0 : found->second, signal.createdAt, &signal});
        }
    }
    std::ranges::stable_sort(entries, [](const Entry& left, const Entry& right) {
        return std::tie(right.priority, left.createdAt) < std::tie(left.priority, right.createdAt);
    });
    SignalList sorted;
    sorted.reserve(entries.size());
    for (const Entry& entry : entries) {
        sorted.push_back(entry.signal);
    }
    return sorted;
}

bool isWithin(const std::optional<std::string>& roomId, const records::Signal& signal) {
    return !roomId || signal.roomId == *roomId;
}

/// How a member stands towards open calls; an unknown one gets none of them.
std::pair<Shift, Provider> standingOf(const StoreState& state, std::string_view memberId) {
    const records::Member* member = memberById(state, memberId);
    return member ? std::pair{shiftOf(*member), providerOf(*member)} : std::pair{Shift::off, Provider::no};
}

}  // namespace

const records::Room* roomById(const StoreState& state, std::string_view id) {
    return firstWithId(state.rooms, id);
}

const records::SignalType* signalTypeById(const StoreState& state, std::string_view id) {
    return firstWithId(state.signalTypes, id);
}

const records::Member* memberById(const StoreState& state, std::optional<std::string_view> id) {
    return id ? firstWithId(state.members, *id) : nullptr;
}

const records::Room* pairedRoom(const StoreState& state) {
    return state.device && state.device->roomId ? roomById(state, *state.device->roomId) : nullptr;
}

const records::Member* pairedMember(const StoreState& state) {
    return state.device ? memberById(state, state.device->memberId) : nullptr;
}

const records::Member* signedInMember(const StoreState& state) {
    return state.device ? memberById(state, state.device->signedInMemberId) : nullptr;
}

const records::Member* activeMember(const StoreState& state) {
    return state.device && state.device->memberId ? pairedMember(state) : signedInMember(state);
}

bool requiresSignedInSender(const StoreState& state) {
    if (state.device && state.device->memberId) {
        return false;
    }
    switch (state.role) {
        case records::DeviceRole::shared:
            return true;
        case records::DeviceRole::room:
            return state.office && state.office->settings &&
                   state.office->settings->requireSignedInSender.value_or(false);
        case records::DeviceRole::member:
            return false;
    }
    return false;
}

bool needsSignIn(const StoreState& state) {
    return requiresSignedInSender(state) && !(state.device && state.device->signedInMemberId);
}

SignalList sortedActiveSignals(std::span<const records::SignalType> types, std::span<const records::Signal> signals) {
    return sortedIf(types, signals, [](const records::Signal&) { return true; });
}

bool isActionable(const records::Signal& signal, std::string_view memberId, Shift shift, Provider provider) {
    if (!records::isActive(signal) || signal.requesterId == memberId) {
        return false;
    }
    if (signal.providerIds) {
        if (std::ranges::find(*signal.providerIds, memberId) == signal.providerIds->end()) {
            return false;
        }
    } else if (signal.providerId) {
        if (*signal.providerId != memberId) {
            return false;
        }
    } else if (shift == Shift::off || provider == Provider::no) {
        return false;
    }
    return signal.status == records::signal_status::waiting || !signal.acknowledgedBy ||
           *signal.acknowledgedBy == memberId;
}

Shift shiftOf(const records::Member& member) {
    return Shift{member.onShift.value_or(true)};
}

Provider providerOf(const records::Member& member) {
    return Provider{member.department == records::providerDepartment};
}

SignalList personalQueue(const StoreState& state, std::string_view memberId) {
    const auto [shift, provider] = standingOf(state, memberId);
    return sortedIf(state.signalTypes, state.signals, [&, shift = shift, provider = provider](const auto& signal) {
        return isActionable(signal, memberId, shift, provider);
    });
}

std::vector<std::string_view> personalSignalIds(const StoreState& state, std::string_view memberId) {
    requireDistinctIds(state.signalTypes);
    const auto [shift, provider] = standingOf(state, memberId);
    std::vector<std::string_view> ids;
    for (const auto& signal : state.signals) {
        if (isActionable(signal, memberId, shift, provider)) {
            ids.emplace_back(signal.id);
        }
    }
    return ids;
}

SignalList receivedSignals(const StoreState& state, const std::optional<std::string>& roomId) {
    const records::Member* member = activeMember(state);
    if (!member) {
        return {};
    }
    SignalList received = personalQueue(state, member->id);
    std::erase_if(received, [&](const records::Signal* signal) { return !isWithin(roomId, *signal); });
    return received;
}

SignalList sentSignals(const StoreState& state, const std::optional<std::string>& roomId) {
    const records::Member* me = activeMember(state);
    const std::optional<std::string> here = state.device ? state.device->roomId : std::nullopt;
    return sortedIf(state.signalTypes, state.signals, [&](const records::Signal& signal) {
        const bool isMine = me && signal.requesterId == me->id;
        const bool isFromHere = here && signal.roomId == *here;
        return (isMine || isFromHere) && isWithin(roomId, signal);
    });
}

std::optional<std::size_t> queuePosition(const StoreState& state, std::string_view signalId) {
    const SignalList queue = sortedActiveSignals(state.signalTypes, state.signals);
    const auto found =
        std::ranges::find_if(queue, [&](const records::Signal* signal) { return signal->id == signalId; });
    if (found == queue.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - queue.begin()) + 1;
}

std::size_t activeQueueCount(const StoreState& state) {
    const records::Member* member = activeMember(state);
    if (state.role == records::DeviceRole::shared) {
        const auto room = confirmedFlexibleRoomId(state);
        return member && room ? receivedSignals(state, room).size() : 0;
    }
    if (member) {
        return personalSignalIds(state, member->id).size();
    }
    requireDistinctIds(state.signalTypes);
    return static_cast<std::size_t>(std::ranges::count_if(state.signals, records::isActive));
}

RoomList activeRooms(const StoreState& state) {
    return pointersTo(state.rooms, [](const records::Room& room) { return room.active.value_or(true); });
}

MemberList onShiftMembers(const StoreState& state) {
    return pointersTo(state.members, [](const records::Member& member) { return shiftOf(member) == Shift::on; });
}

MemberList selectableRecipients(const StoreState& state) {
    MemberList recipients = onShiftMembers(state);
    if (const records::Member* me = activeMember(state)) {
        std::erase_if(recipients, [me](const records::Member* member) { return member->id == me->id; });
    }
    return recipients;
}

std::span<const records::OfficeDepartment> officeDepartments(const StoreState& state) {
    if (state.office && state.office->departments) {
        return *state.office->departments;
    }
    return {};
}

SignalTypeList activeSignalTypes(const StoreState& state) {
    SignalTypeList types =
        pointersTo(state.signalTypes, [](const records::SignalType& type) { return type.active.value_or(true); });
    std::ranges::stable_sort(types, {}, [](const records::SignalType* type) {
        return std::pair{type->sortOrder.value_or(0), std::string_view{type->key}};
    });
    return types;
}

FlexibleRoomSession reconciledFlexibleRoomSession(const StoreState& state) {
    if (state.role != records::DeviceRole::shared) {
        return {};
    }
    std::vector<std::string_view> validRoomIds;
    for (const records::Room* room : activeRooms(state)) {
        validRoomIds.emplace_back(room->id);
    }
    FlexibleRoomSession session = state.flexibleRoomSession;
    session.reconcile(state.device ? state.device->signedInMemberId : std::nullopt, validRoomIds);
    return session;
}

std::optional<std::string> confirmedFlexibleRoomId(const StoreState& state) {
    return reconciledFlexibleRoomSession(state).confirmedRoomId;
}

}  // namespace zelkovanta::store
