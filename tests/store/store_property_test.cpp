#include "server/server_message.h"
#include "tests/store/store_test.h"

#include <algorithm>
#include <functional>
#include <map>
#include <rapidcheck.h>
#include <set>

#include <rapidcheck/gtest.h>

namespace zelkovanta::store {
namespace {

using records::Member;
using records::Room;
using records::Signal;
using records::StateSnapshot;
using support::Computer;

namespace message = server::server_message;

// Few ids, so that they meet.
const std::vector<std::string> signalIds{"s1", "s2", "s3", "s4", "s5"};
const std::vector<std::string> memberIds{"m1", "m2", "m3"};
const std::vector<std::string> roomIds{"r1", "r2", "r3"};
const std::vector<std::string> statuses{"waiting", "acknowledged", "done", "canceled", "expired", "a later word"};

std::string anyOf(const std::vector<std::string>& words) {
    return *rc::gen::elementOf(words);
}

bool oneIn(int count) {
    return *rc::gen::inRange(0, count) == 0;
}

Signal anySignal(std::string id) {
    return support::makeSignal(std::move(id), [](Signal& signal) {
        signal.status = anyOf(statuses);
        signal.roomId = anyOf(roomIds);
        signal.createdAt = std::to_string(*rc::gen::inRange(0, 9));
    });
}

std::vector<Room> anyRooms() {
    std::vector<Room> rooms;
    for (const std::string& id : roomIds) {
        if (!oneIn(4)) {
            rooms.push_back(oneIn(4) ? support::makeInactiveRoom(id) : support::makeRoom(id));
        }
    }
    return rooms;
}

records::Device anyDevice() {
    return support::makeDevice([](records::Device& device) {
        if (!oneIn(3)) {
            device.signedInMemberId = anyOf(memberIds);
        }
        if (oneIn(6)) {
            device.memberId = anyOf(memberIds);
        }
    });
}

StateSnapshot anySnapshot() {
    return support::makeSnapshot([](StateSnapshot& snapshot) {
        snapshot.office = support::makeOffice(oneIn(6) ? "office-2" : "office-1");
        snapshot.members.clear();
        for (const std::string& id : memberIds) {
            if (!oneIn(4)) {
                snapshot.members.push_back(support::makeMember(id));
            }
        }
        snapshot.rooms = anyRooms();
        snapshot.signals.clear();
        for (const std::string& id : signalIds) {
            if (oneIn(2)) {
                snapshot.signals.push_back(anySignal(id));
            }
        }
        snapshot.device = anyDevice();
    });
}

/// What must hold between any two turns of the main thread.
void checkInvariants(const Computer& computer, const std::optional<std::string>& lastConfirmedRoom) {
    const StoreState& state = computer.state();
    std::set<std::string> ids;
    for (const Signal& signal : state.signals) {
        RC_ASSERT(records::isActive(signal));
        RC_ASSERT(ids.insert(signal.id).second);
    }
    const auto& session = state.flexibleRoomSession;
    RC_ASSERT(!session.confirmedRoomId.has_value() || session.signedInMemberId.has_value());
    RC_ASSERT(state.role == records::DeviceRole::shared || session == FlexibleRoomSession{});
    if (const auto confirmed = confirmedFlexibleRoomId(state)) {
        RC_ASSERT(state.device.has_value());
        RC_ASSERT(state.device->signedInMemberId == session.signedInMemberId);
        const Room* room = roomById(state, *confirmed);
        RC_ASSERT(room != nullptr);
        RC_ASSERT(room->active.value_or(true));
    }
    if (state.hasAuthenticatedSnapshot) {
        RC_ASSERT(state.isPaired);
        RC_ASSERT(state.office.has_value());
        RC_ASSERT(state.device.has_value());
        // A sign-in never stands without the login in which it was made.
        const bool isStation = !state.device->memberId.has_value();
        const LoginScope login{.bootTime = computer.hostInfo.boot, .auditSessionId = computer.hostInfo.session};
        RC_ASSERT(!isStation || !state.device->signedInMemberId.has_value() ||
                  state.settings.stationSignIn.holdsIn(login));
        RC_ASSERT(isStation || state.settings.stationSignIn == LoginScope{});
    }
    if (!state.isPaired) {
        RC_ASSERT(!state.office.has_value());
        RC_ASSERT(!state.device.has_value());
        RC_ASSERT(state.members.empty());
        RC_ASSERT(state.rooms.empty());
        RC_ASSERT(state.signalTypes.empty());
        RC_ASSERT(state.signals.empty());
        RC_ASSERT(state.connectionState == server::ConnectionState::stopped);
        RC_ASSERT(computer.webSocketLoading.liveTasks() == 0U);
    }
    RC_ASSERT(computer.webSocketLoading.liveTasks() <= 1U);
    RC_ASSERT(computer.defaults.text("lastUsedRoomId") == lastConfirmedRoom);
}

/// One thing that may happen to a computer.
using Happening = std::function<void(Computer&)>;

void answerSomething(Computer& computer) {
    const auto open = computer.urlLoading.pending();
    if (open.empty()) {
        return;
    }
    Computer::Exchange& exchange = **rc::gen::elementOf(open);
    switch (*rc::gen::inRange(0, 6)) {
        case 0:
            exchange.fail(platform::TransportCause::interrupted);
            break;
        case 1:
            exchange.answer(500);
            break;
        case 2:
            exchange.answer(401, oneIn(3) ? R"({"error":"invalid_token"})" : R"({"error":"signin_required"})");
            break;
        default:
            if (exchange.request.url.ends_with("/state")) {
                exchange.answer(200, support::toJson(anySnapshot()));
            } else if (exchange.request.url.ends_with("/pair/redeem")) {
                exchange.answer(200, support::toJson(records::PairRedeemResponse{
                                         .deviceToken = "token-2",
                                         .device = anyDevice(),
                                         .office = support::makeOffice("office-1"),
                                         .role = *rc::gen::elementOf(records::allDeviceRoles),
                                         .room = support::makeRoom(anyOf(roomIds)),
                                         .member = support::makeMember(anyOf(memberIds))}));
            } else if (exchange.request.url.find("/signals") != std::string::npos) {
                exchange.answer(200, support::toJson(anySignal(anyOf(signalIds))));
            } else {
                exchange.answer(200, "{}");
            }
    }
}

/// What the server sends over the current connection.
const std::vector<Happening> serverEvents{
    [](Computer& computer) { computer.deliverSnapshot(anySnapshot()); },
    [](Computer& computer) { computer.deliverCreated(anySignal(anyOf(signalIds))); },
    [](Computer& computer) { computer.deliverUpdated(anySignal(anyOf(signalIds))); },
    [](Computer& computer) {
        computer.deliverRecord("member.updated", message::MemberUpdated{support::makeMember(anyOf(memberIds))});
    },
    [](Computer& computer) {
        computer.deliverRecord("office.updated",
                               message::OfficeUpdated{support::makeOffice(oneIn(4) ? "office-2" : "office-1")});
    },
    [](Computer& computer) { computer.deliverRecord("rooms.updated", message::RoomsUpdated{anyRooms()}); },
    [](Computer& computer) { computer.deliverRecord("types.updated", message::TypesUpdated{{}}); },
    [](Computer& computer) { computer.deliverSessionStarted(anyDevice(), support::makeMember(anyOf(memberIds))); },
    [](Computer& computer) { computer.deliver("session.ended", "{}"); },
    [](Computer& computer) {
        computer.socket().fail({.closeCode = oneIn(8) ? std::optional<std::uint16_t>{4001} : std::nullopt,
                                .httpStatus = oneIn(3) ? std::optional<int>{401} : std::nullopt});
    }};

const std::vector<Happening> personsActions{
    [](Computer& computer) {
        computer.run([](AppStore& app) { return app.sendSignal("type-ready", "note", anyOf(roomIds), {}, {}); });
    },
    [](Computer& computer) {
        computer.run([](AppStore& app) { return app.actOnSignal(anySignal(anyOf(signalIds)), "done"); });
    },
    [](Computer& computer) { computer.run([](AppStore& app) { return app.signOutStation(); }); },
    [](Computer& computer) {
        if (oneIn(3)) {
            computer.run([](AppStore& app) { return app.unlinkComputer(); });
        }
    },
    [](Computer& computer) {
        computer.run([](AppStore& app) -> platform::Awaitable<void> {
            static_cast<void>(co_await app.redeemPairingCode("CODE"));
        });
    },
    [](Computer& computer) { computer.powerOff.announce(); },
    [](Computer& computer) { computer.loop.advance(std::chrono::milliseconds{*rc::gen::inRange(1, 20'000)}); },
    answerSomething,
    answerSomething};

RC_GTEST_PROP(StorePropertyTest, whateverHappensTheInvariantsHold, ()) {
    Computer computer;
    computer.launchPaired(anyOf({"room", "shared", "shared", "member"}));
    std::optional<std::string> lastConfirmedRoom;
    const int steps = *rc::gen::inRange(1, 60);
    for (int step = 0; step < steps; ++step) {
        const int kind = *rc::gen::inRange(0, 5);
        if (kind == 0) {
            computer.store->confirmFlexibleRoom(anyOf(roomIds));
            if (const auto confirmed = computer.state().flexibleRoomSession.confirmedRoomId) {
                lastConfirmedRoom = confirmed;
            }
        } else {
            (*rc::gen::elementOf(kind <= 2 ? serverEvents : personsActions))(computer);
        }
        computer.settle();
        checkInvariants(computer, lastConfirmedRoom);
    }
}

/// Signals and members once more, by the plainest rules: the newest word on each id counts.
struct PlainOffice {
    std::map<std::string, std::string> statusBySignal;
    std::set<std::string> members;

    void take(const Signal& signal) {
        statusBySignal.erase(signal.id);
        if (signal.status == "waiting" || signal.status == "acknowledged") {
            statusBySignal[signal.id] = signal.status;
        }
    }
    void take(const StateSnapshot& snapshot) {
        statusBySignal.clear();
        members.clear();
        for (const Signal& signal : snapshot.signals) {
            take(signal);
        }
        for (const Member& member : snapshot.members) {
            members.insert(member.id);
        }
    }
};

RC_GTEST_PROP(StorePropertyTest, signalsAndMembersAreWhatTheNewestEventsSay, ()) {
    Computer computer;
    computer.launchPaired("room");
    PlainOffice office;
    const int steps = *rc::gen::inRange(1, 60);
    for (int step = 0; step < steps; ++step) {
        const int kind = *rc::gen::inRange(0, 10);
        if (kind == 0) {
            StateSnapshot snapshot = anySnapshot();
            snapshot.office.id = "office-1";
            office.take(snapshot);
            computer.deliverSnapshot(snapshot);
        } else if (kind == 1) {
            const std::string id = anyOf(memberIds);
            office.members.insert(id);
            computer.deliverRecord("member.updated", message::MemberUpdated{support::makeMember(id)});
        } else {
            const Signal signal = anySignal(anyOf(signalIds));
            office.take(signal);
            kind < 5 ? computer.deliverCreated(signal) : computer.deliverUpdated(signal);
        }
        std::map<std::string, std::string> shown;
        for (const Signal& signal : computer.state().signals) {
            shown[signal.id] = signal.status;
        }
        std::set<std::string> shownMembers;
        for (const Member& member : computer.state().members) {
            shownMembers.insert(member.id);
        }
        RC_ASSERT(shown == office.statusBySignal);
        RC_ASSERT(shownMembers == office.members);
    }
}

}  // namespace
}  // namespace zelkovanta::store
