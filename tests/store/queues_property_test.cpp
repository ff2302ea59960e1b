#include "store/queues.h"
#include "tests/support/office_records.h"

#include <algorithm>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::Signal;

/// The rules of the queues once more, as slowly and as plainly as they can be said.
namespace naive {

bool isOpen(const Signal& signal) {
    return signal.status == "waiting" || signal.status == "acknowledged";
}

std::int64_t priorityOf(const StoreState& state, const Signal& signal) {
    for (const auto& type : state.signalTypes) {
        if (type.id == signal.typeId) {
            return type.priority;
        }
    }
    return 0;
}

bool goesBefore(const StoreState& state, const Signal& left, const Signal& right) {
    const auto leftPriority = priorityOf(state, left);
    const auto rightPriority = priorityOf(state, right);
    return leftPriority != rightPriority ? leftPriority > rightPriority : left.createdAt < right.createdAt;
}

/// By insertion: behind everything that does not go behind it.
std::vector<Signal> officeQueue(const StoreState& state) {
    std::vector<Signal> queue;
    for (const Signal& signal : state.signals) {
        if (isOpen(signal)) {
            auto place = queue.end();
            while (place != queue.begin() && goesBefore(state, signal, *(place - 1))) {
                --place;
            }
            queue.insert(place, signal);
        }
    }
    return queue;
}

bool receives(const StoreState& state, const std::string& memberId, const Signal& signal) {
    if (!isOpen(signal) || (signal.requesterId && *signal.requesterId == memberId)) {
        return false;
    }
    bool isAddressed = false;
    if (signal.providerIds) {
        for (const auto& id : *signal.providerIds) {
            isAddressed = isAddressed || id == memberId;
        }
    } else if (signal.providerId) {
        isAddressed = *signal.providerId == memberId;
    } else {
        for (const auto& member : state.members) {
            if (member.id == memberId) {
                const bool isOnShift = !member.onShift || *member.onShift;
                isAddressed = isOnShift && member.department == "provider";
                break;
            }
        }
    }
    const bool isTakenByAnother =
        signal.status == "acknowledged" && signal.acknowledgedBy && *signal.acknowledgedBy != memberId;
    return isAddressed && !isTakenByAnother;
}

std::vector<Signal> personalQueue(const StoreState& state, const std::string& memberId) {
    std::vector<Signal> kept;
    for (const Signal& signal : officeQueue(state)) {
        if (receives(state, memberId, signal)) {
            kept.push_back(signal);
        }
    }
    return kept;
}

std::optional<std::string> activeMemberId(const StoreState& state) {
    if (!state.device) {
        return std::nullopt;
    }
    const auto wanted = state.device->memberId ? state.device->memberId : state.device->signedInMemberId;
    for (const auto& member : state.members) {
        if (member.id == wanted) {
            return wanted;
        }
    }
    return std::nullopt;
}

std::vector<Signal> sentSignals(const StoreState& state) {
    const auto me = activeMemberId(state);
    std::vector<Signal> kept;
    for (const Signal& signal : officeQueue(state)) {
        const bool isMine = me && signal.requesterId && *signal.requesterId == *me;
        const bool isFromHere = state.device && state.device->roomId && *state.device->roomId == signal.roomId;
        if (isMine || isFromHere) {
            kept.push_back(signal);
        }
    }
    return kept;
}

std::size_t count(const StoreState& state) {
    const auto me = activeMemberId(state);
    if (state.role != DeviceRole::shared) {
        return me ? personalQueue(state, *me).size() : officeQueue(state).size();
    }
    const auto& session = state.flexibleRoomSession;
    const auto& signedIn = state.device ? state.device->signedInMemberId : std::nullopt;
    if (!me || !signedIn || !session.confirmedRoomId || session.signedInMemberId != signedIn) {
        return 0;
    }
    const bool isRoomActive = std::ranges::any_of(state.rooms, [&](const records::Room& room) {
        return room.id == *session.confirmedRoomId && (!room.active || *room.active);
    });
    std::size_t inRoom = 0;
    for (const Signal& signal : personalQueue(state, *me)) {
        inRoom += signal.roomId == *session.confirmedRoomId ? 1U : 0U;
    }
    return isRoomActive ? inRoom : 0;
}

}  // namespace naive

// Few ids, so that they meet.
const std::vector<std::string> memberIds{"m1", "m2", "m3", "m4"};
const std::vector<std::string> roomIds{"r1", "r2", "r3"};
const std::vector<std::string> typeIds{"t1", "t2", "t3"};

template <class Value>
std::optional<Value> maybe(rc::Gen<Value> gen) {
    return *rc::gen::arbitrary<bool>() ? std::optional{*gen} : std::nullopt;
}

Signal anySignal(int number) {
    Signal signal = support::makeSignal("s" + std::to_string(number));
    signal.roomId = *rc::gen::elementOf(roomIds);
    signal.requesterId = maybe(rc::gen::elementOf(memberIds));
    signal.providerId = maybe(rc::gen::elementOf(memberIds));
    if (*rc::gen::inRange(0, 4) == 0) {
        signal.providerIds = *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(memberIds));
    }
    signal.toDepartment = maybe(rc::gen::element<std::string>("provider", "lab"));
    signal.typeId = *rc::gen::elementOf(typeIds);
    signal.status =
        *rc::gen::weightedElement<std::string>({{6, "waiting"}, {3, "acknowledged"}, {1, "done"}, {1, "?"}});
    signal.createdAt = *rc::gen::element<std::string>("1", "2", "3", "4");
    signal.acknowledgedBy = maybe(rc::gen::elementOf(memberIds));
    return signal;
}

StoreState anyState() {
    StoreState state;
    state.role = *rc::gen::elementOf(records::allDeviceRoles);
    for (const auto& id : memberIds) {
        if (*rc::gen::inRange(0, 4) != 0) {
            state.members.push_back(support::makeMember(id, [](records::Member& member) {
                member.department = *rc::gen::element<std::string>("provider", "assistant");
                member.onShift = maybe(rc::gen::arbitrary<bool>());
                member.active = maybe(rc::gen::arbitrary<bool>());
            }));
        }
    }
    for (const auto& id : roomIds) {
        state.rooms.push_back(
            support::makeRoom(id, [](records::Room& room) { room.active = maybe(rc::gen::arbitrary<bool>()); }));
    }
    // The last type stays unknown, so that its signals count as 0.
    state.signalTypes = {support::makeType("t1", *rc::gen::inRange(-2, 3)),
                         support::makeType("t2", *rc::gen::inRange(-2, 3))};
    if (*rc::gen::inRange(0, 8) != 0) {
        state.device = support::makeDevice([](records::Device& device) {
            device.memberId = *rc::gen::inRange(0, 3) == 0 ? maybe(rc::gen::elementOf(memberIds)) : std::nullopt;
            device.roomId = maybe(rc::gen::elementOf(roomIds));
            device.signedInMemberId = maybe(rc::gen::elementOf(memberIds));
        });
    }
    state.flexibleRoomSession.signedInMemberId = state.device && *rc::gen::inRange(0, 4) != 0
                                                     ? state.device->signedInMemberId
                                                     : maybe(rc::gen::elementOf(memberIds));
    state.flexibleRoomSession.confirmedRoomId = maybe(rc::gen::elementOf(roomIds));
    const int count = *rc::gen::inRange(0, 12);
    for (int number = 0; number < count; ++number) {
        state.signals.push_back(anySignal(number));
    }
    return state;
}

std::vector<std::string> idsOf(const SignalList& list) {
    std::vector<std::string> ids;
    for (const Signal* signal : list) {
        ids.push_back(signal->id);
    }
    return ids;
}

std::vector<std::string> idsOf(const std::vector<Signal>& list) {
    std::vector<std::string> ids;
    for (const Signal& signal : list) {
        ids.push_back(signal.id);
    }
    return ids;
}

std::vector<std::string> within(const std::vector<Signal>& list, const std::string& roomId) {
    std::vector<std::string> ids;
    for (const Signal& signal : list) {
        if (signal.roomId == roomId) {
            ids.push_back(signal.id);
        }
    }
    return ids;
}

RC_GTEST_PROP(QueuesPropertyTest, theOfficeQueueFollowsItsRule, ()) {
    const StoreState state = anyState();
    const auto expected = idsOf(naive::officeQueue(state));
    RC_ASSERT(idsOf(sortedActiveSignals(state.signalTypes, state.signals)) == expected);
    for (const Signal& signal : state.signals) {
        const auto place = std::ranges::find(expected, signal.id);
        const bool isQueued = place != expected.end();
        const auto position = isQueued ? static_cast<std::size_t>(place - expected.begin()) + 1 : 0;
        RC_ASSERT(queuePosition(state, signal.id).value_or(0) == position);
    }
}

RC_GTEST_PROP(QueuesPropertyTest, everyPersonalQueueFollowsItsRule, ()) {
    const StoreState state = anyState();
    for (const std::string& id : memberIds) {
        auto expected = idsOf(naive::personalQueue(state, id));
        RC_ASSERT(idsOf(personalQueue(state, id)) == expected);
        auto ids = personalSignalIds(state, id);
        std::ranges::sort(ids);
        std::ranges::sort(expected);
        RC_ASSERT(std::ranges::equal(ids, expected));
    }
}

RC_GTEST_PROP(QueuesPropertyTest, receivedAndSentAndTheCountFollowTheirRules, ()) {
    const StoreState state = anyState();
    const auto me = naive::activeMemberId(state);
    const auto mine = me ? naive::personalQueue(state, *me) : std::vector<Signal>{};
    const auto sent = naive::sentSignals(state);
    RC_ASSERT(idsOf(receivedSignals(state)) == idsOf(mine));
    RC_ASSERT(idsOf(sentSignals(state)) == idsOf(sent));
    for (const std::string& roomId : roomIds) {
        RC_ASSERT(idsOf(receivedSignals(state, roomId)) == within(mine, roomId));
        RC_ASSERT(idsOf(sentSignals(state, roomId)) == within(sent, roomId));
    }
    RC_ASSERT(activeQueueCount(state) == naive::count(state));
}

}  // namespace
}  // namespace zelkovanta::store
