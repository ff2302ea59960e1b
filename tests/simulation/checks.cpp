#include "tests/simulation/checks.h"

#include "store/queues.h"

#include <algorithm>
#include <cmath>
#include <ranges>

namespace zelkovanta::simulation {

namespace {

using store::StoreField;

bool isPoisoned(const store::StoreState& state, const store::StoreChanges& changes) {
    const auto holds = [](const auto& list) {
        return std::ranges::any_of(list, [](const auto& record) { return record.id == poison::word; });
    };
    return (state.office && state.office->id == poison::word) || (state.device && state.device->id == poison::word) ||
           (changes.contains(StoreField::members) && holds(state.members)) ||
           (changes.contains(StoreField::rooms) && holds(state.rooms)) ||
           (changes.contains(StoreField::signalTypes) && holds(state.signalTypes)) ||
           (changes.contains(StoreField::signals) && holds(state.signals));
}

/// An id in the list that belongs to another practice than the one that the store shows.
template <class Kept, class Shown>
Complaint foreign(const std::vector<Shown>& list, const office::State& office, const std::string& practiceId,
                  const std::string& what) {
    for (const Shown& record : list) {
        const Kept* kept = office.find<Kept>(record.id);
        if (kept != nullptr && kept->practiceId != practiceId) {
            return "shows " + what + ' ' + record.id + " of another office";
        }
    }
    return std::nullopt;
}

Complaint foreignRecord(const store::StoreState& state, const store::StoreChanges& changes,
                        const office::State& office) {
    const std::string& practice = state.office->id;
    const bool moved = changes.contains(StoreField::office);
    Complaint complaint;
    if (moved || changes.contains(StoreField::signals)) {
        complaint = foreign<office::Signal>(state.signals, office, practice, "signal");
    }
    if (!complaint && (moved || changes.contains(StoreField::members))) {
        complaint = foreign<office::Member>(state.members, office, practice, "member");
    }
    if (!complaint && (moved || changes.contains(StoreField::rooms))) {
        complaint = foreign<office::Room>(state.rooms, office, practice, "room");
    }
    if (!complaint && (moved || changes.contains(StoreField::signalTypes))) {
        complaint = foreign<office::SignalType>(state.signalTypes, office, practice, "signal type");
    }
    return complaint;
}

Complaint brokenSession(const store::StoreState& state) {
    if (state.isPaired) {
        return std::nullopt;
    }
    if (state.hasAuthenticatedSnapshot) {
        return "has a snapshot without a session";
    }
    if (state.office || state.device || !state.members.empty() || !state.rooms.empty() || !state.signalTypes.empty() ||
        !state.signals.empty()) {
        return "holds an office's data without a session";
    }
    if (state.connectionState != server::ConnectionState::stopped) {
        return "is connected without a session";
    }
    return std::nullopt;
}

template <class Record>
Complaint listDifference(const std::vector<Record>& shown, const std::vector<Record>& expected, Order order,
                         const std::string& what) {
    if (shown == expected) {
        return std::nullopt;
    }
    if (order == Order::any && shown.size() == expected.size()) {
        const auto isAmong = [&shown](const Record& record) { return std::ranges::find(shown, record) != shown.end(); };
        if (std::ranges::all_of(expected, isAmong)) {
            return std::nullopt;
        }
    }
    std::string text = what + " differ:";
    for (const Record& record : shown) {
        if (std::ranges::find(expected, record) == expected.end()) {
            text += " shows " + record.id;
        }
    }
    for (const Record& record : expected) {
        if (std::ranges::find(shown, record) == shown.end()) {
            text += " lacks " + record.id;
        }
    }
    return text;
}

// The rules of the queues, on the office's own records.

bool shouldReceive(const office::Signal& signal, const office::Member& member) {
    if (signal.requesterId == member.id) {
        return false;
    }
    bool isAddressed = false;
    if (signal.providerIds) {
        isAddressed = std::ranges::count(*signal.providerIds, member.id) > 0;
    } else if (signal.providerId) {
        isAddressed = *signal.providerId == member.id;
    } else {
        isAddressed = member.department == "provider" && member.onShift.value_or(true);
    }
    const bool isTaken = signal.status == office::SignalStatus::acknowledged && signal.acknowledgedBy &&
                         *signal.acknowledgedBy != member.id;
    return isAddressed && !isTaken;
}

/// Place in the queue: the higher priority first, then the older.
struct Place {
    std::int64_t priority;
    std::string createdAt;
    bool operator==(const Place&) const = default;
    bool operator<(const Place& other) const {
        return priority != other.priority ? priority > other.priority : createdAt < other.createdAt;
    }
};

Place placeOf(const office::Signal& signal, const office::State& office) {
    const auto* type = office.find<office::SignalType>(signal.typeId);
    return {type == nullptr ? 0 : type->priority, office::isoText(signal.createdAt)};
}

Complaint compareQueue(const store::SignalList& shown, std::vector<const office::Signal*> expected,
                       const office::State& office, const std::string& what) {
    if (shown.size() != expected.size()) {
        return what + " shows " + std::to_string(shown.size()) + " signals and not " + std::to_string(expected.size());
    }
    std::ranges::stable_sort(expected, [&](const office::Signal* left, const office::Signal* right) {
        return placeOf(*left, office) < placeOf(*right, office);
    });
    for (std::size_t index = 0; index < shown.size(); ++index) {
        const office::Signal* signal = office.find<office::Signal>(shown[index]->id);
        const bool isExpected = std::ranges::find(expected, signal) != expected.end();
        if (signal == nullptr || !isExpected || placeOf(*signal, office) != placeOf(*expected[index], office)) {
            return what + " shows " + shown[index]->id + " at place " + std::to_string(index + 1);
        }
    }
    return std::nullopt;
}

}  // namespace

StationView viewOf(const store::StoreState& state) {
    return {.confirmedRoomId = store::confirmedFlexibleRoomId(state),
            .received = store::receivedSignals(state).size(),
            .count = store::activeQueueCount(state)};
}

Complaint brokenStation(const store::StoreState& state, const StationView& view, Logins logins) {
    const auto& session = state.flexibleRoomSession;
    if (session.confirmedRoomId && !session.signedInMemberId) {
        return "a room is confirmed without a member";
    }
    if (view.confirmedRoomId) {
        const records::Room* room = store::roomById(state, *view.confirmedRoomId);
        if (room == nullptr || !room->active.value_or(true)) {
            return "the confirmed room is not an active one";
        }
        if (!state.device || !state.device->signedInMemberId ||
            state.device->signedInMemberId != session.signedInMemberId) {
            return "the confirmed room is not the signed-in member's";
        }
    }
    // A move to another office takes the device and the rooms away and leaves the session to the next snapshot; at any
    // other time what is kept is in order, too.
    if (state.device && session.confirmedRoomId && view.confirmedRoomId != session.confirmedRoomId) {
        return "a confirmed room is kept that does not count";
    }
    const bool isBound = state.device && state.device->memberId;
    const bool isSignedIn = state.device && state.device->signedInMemberId && !isBound;
    if (isSignedIn && logins.ofSignIn != logins.now) {
        return "shows a sign-in that was made in another login";
    }
    if (!isSignedIn && !isBound && view.received != 0) {
        return "shows a queue to nobody";
    }
    if (!isSignedIn && !isBound && state.role == records::DeviceRole::shared && view.count != 0) {
        return "counts a queue for nobody";
    }
    return std::nullopt;
}

bool isSignInOfAnotherBoot(const store::StoreState& state, double bootTime) {
    constexpr double tolerance = 5;
    const bool isSignedIn = state.device && state.device->signedInMemberId && !state.device->memberId;
    return isSignedIn && std::abs(state.settings.stationSignIn.bootTime - bootTime) > tolerance;
}

Complaint brokenInvariant(const Computer& computer, const store::StoreChanges& changes, const office::State& office) {
    const store::StoreState& state = computer.state();
    if (isPoisoned(state, changes)) {
        return "holds what came from a dead socket or a dead session";
    }
    if (changes.contains(StoreField::signals) && !std::ranges::all_of(state.signals, records::isActive)) {
        return "holds a signal that is not active";
    }
    if (auto complaint = brokenSession(state)) {
        return complaint;
    }
    if (auto complaint = brokenStation(state, viewOf(state),
                                       {.ofSignIn = computer.watch().signInLogin(), .now = computer.login()})) {
        return complaint;
    }
    return state.office ? foreignRecord(state, changes, office) : std::nullopt;
}

Complaint difference(const store::StoreState& state, const records::StateSnapshot& expected, Order order,
                     SignIn signIn) {
    if (state.office != expected.office) {
        return "the office differs";
    }
    std::vector<records::Signal> active = expected.signals;
    std::erase_if(active, [](const records::Signal& signal) { return !records::isActive(signal); });
    if (auto complaint = listDifference(state.signals, active, order, "signals")) {
        return complaint;
    }
    if (auto complaint = listDifference(state.members, expected.members, order, "members")) {
        return complaint;
    }
    if (auto complaint = listDifference(state.rooms, expected.rooms, Order::same, "rooms")) {
        return complaint;
    }
    if (auto complaint = listDifference(state.signalTypes, expected.signalTypes, Order::same, "signal types")) {
        return complaint;
    }
    auto device = std::optional{expected.device};
    if (signIn == SignIn::mayBeGone && state.device && !state.device->signedInMemberId) {
        device->signedInMemberId.reset();
    }
    if (state.device != device) {
        return "the device differs";
    }
    return std::nullopt;
}

Complaint queueDifference(const store::StoreState& state, const office::State& office, const office::Device& device) {
    std::vector<const office::Signal*> all;
    for (const auto& [id, signal] : office.all<office::Signal>()) {
        if (signal.practiceId == device.practiceId && office::isActive(signal)) {
            all.push_back(&signal);
        }
    }
    const auto memberId = device.memberId ? device.memberId : device.signedInMemberId;
    const office::Member* member = memberId ? office.find<office::Member>(*memberId) : nullptr;
    const auto among = [&all](auto&& keep) {
        std::vector<const office::Signal*> kept;
        std::ranges::copy_if(all, std::back_inserter(kept), keep);
        return kept;
    };

    const auto received =
        among([&](const office::Signal* signal) { return member != nullptr && shouldReceive(*signal, *member); });
    if (auto complaint = compareQueue(store::receivedSignals(state), received, office, "the received queue")) {
        return complaint;
    }
    const auto sent = among([&](const office::Signal* signal) {
        return (member != nullptr && signal->requesterId == member->id) ||
               (device.roomId && signal->roomId == *device.roomId);
    });
    if (auto complaint = compareQueue(store::sentSignals(state), sent, office, "the sent queue")) {
        return complaint;
    }

    std::size_t count = member == nullptr ? all.size() : received.size();
    if (state.role == records::DeviceRole::shared) {
        const auto room = member == nullptr ? std::nullopt : state.flexibleRoomSession.confirmedRoomId;
        count = room ? static_cast<std::size_t>(std::ranges::count(received, *room, &office::Signal::roomId)) : 0;
    }
    if (store::activeQueueCount(state) != count) {
        return "the badge counts " + std::to_string(store::activeQueueCount(state)) + " and not " +
               std::to_string(count);
    }
    return std::nullopt;
}

}  // namespace zelkovanta::simulation
