#include "tests/simulation/people.h"

#include "store/queues.h"

#include <array>
#include <string>
#include <utility>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

constexpr std::array notes{
    "",           "", "", "Zimmer frei", "Patient wartet seit 10 min", "needs \"both\" hands \\ now", "übermorgen 🙂",
    "line\nbreak"};

/// The rarer a person acts, the less there is to do.
constexpr int quietHoursFactor = 60;

}  // namespace

void People::start() {
    scheduleNext();
}

void People::scheduleNext() {
    auto mean = surroundings_.scenario.meanBetweenActions;
    if (surroundings_.scenario.followsTheDay) {
        const auto sinceMidnight = surroundings_.loop.wallNow().time_since_epoch() % std::chrono::days{1};
        if (sinceMidnight < 7h || sinceMidnight >= 19h) {
            mean *= quietHoursFactor;
        }
    }
    surroundings_.loop.schedule(surroundings_.loop.now() + chance_.untilNext(mean), [this] {
        if (!hasStopped_) {
            act();
            scheduleNext();
        }
    });
}

void People::act() {
    ++actions_;
    Computer& computer = *chance_.pick(surroundings_.computers);
    if (chance_.happens(0.15)) {
        administer();
    } else if (computer.isResponsive()) {
        if (computer.state().isPaired) {
            actAt(computer);
        } else {
            pair(computer);
        }
    }
}

void People::actAt(Computer& computer) {
    const store::StoreState& state = computer.state();
    if (store::needsSignIn(state)) {
        signInByPhone(computer);
        return;
    }
    if (state.role == records::DeviceRole::shared && chance_.happens(0.3)) {
        useStation(computer);
        return;
    }
    const double what = chance_.unit();
    if (what < 0.35) {
        send(computer);
    } else if (what < 0.80) {
        actOnQueue(computer);
    } else if (what < 0.88) {
        useNotification(computer);
        answerLate(computer);
    } else if (what < 0.95) {
        setStatus(computer);
    } else {
        useStation(computer);
    }
}

void People::send(Computer& computer) {
    const store::StoreState& state = computer.state();
    const auto types = store::activeSignalTypes(state);
    const auto rooms = store::activeRooms(state);
    if (types.empty() || rooms.empty()) {
        return;
    }
    std::optional<std::string> roomId = store::confirmedFlexibleRoomId(state);
    if (!roomId && !(state.device && state.device->roomId && chance_.happens(0.8))) {
        roomId = chance_.pick(rooms)->id;
    }
    std::vector<std::string> recipients;
    std::optional<std::string> department;
    const double whom = chance_.unit();
    const auto others = store::selectableRecipients(state);
    if (whom < 0.5 && !others.empty()) {
        const std::size_t count = 1 + chance_.below(3);
        for (std::size_t index = 0; index < count; ++index) {
            recipients.push_back(chance_.pick(others)->id);
        }
    } else if (whom < 0.7) {
        const auto departments = store::officeDepartments(state);
        if (!departments.empty()) {
            department = departments[chance_.below(departments.size())].key;
        }
    }
    computer.process().start([store = computer.process().store().shared_from_this(), type = chance_.pick(types)->id,
                              note = std::string{chance_.pick(notes)}, roomId, recipients,
                              department] { return store->sendSignal(type, note, roomId, recipients, department); });
}

void People::actOnQueue(Computer& computer) {
    const store::StoreState& state = computer.state();
    const bool ownCalls = chance_.happens(0.2);
    const auto queue = ownCalls ? store::sentSignals(state) : store::receivedSignals(state);
    if (queue.empty()) {
        send(computer);
        return;
    }
    const records::Signal& signal = *queue[chance_.below(queue.size())];
    const bool isWaiting = signal.status == records::signal_status::waiting;
    std::string action = ownCalls ? "cancel" : isWaiting && chance_.happens(0.7) ? "acknowledge" : "done";
    // Now and then somebody presses twice.
    const int presses = chance_.happens(0.1) ? 2 : 1;
    for (int press = 0; press < presses; ++press) {
        computer.process().start([store = computer.process().store().shared_from_this(), signal, action] {
            return store->actOnSignal(signal, action);
        });
    }
}

void People::useNotification(Computer& computer) {
    const auto& shown = computer.notifications().delivered();
    if (shown.empty()) {
        return;
    }
    const std::string identifier =
        std::next(shown.begin(), static_cast<std::ptrdiff_t>(chance_.below(shown.size())))->first;
    const double what = chance_.unit();
    if (what < 0.45) {
        computer.pressNotification(identifier, "ONMYWAY");
    } else if (what < 0.75) {
        computer.pressNotification(identifier, "DONE");
    } else if (what < 0.85) {
        computer.pressNotification(identifier, platform::notification_action::defaultAction);
    } else {
        computer.dismissNotification(identifier);
    }
}

/// A press in a notification that should be gone by now.
void People::answerLate(Computer& computer) {
    const store::StoreState& state = computer.state();
    const records::Member* member = store::activeMember(state);
    if (member == nullptr || state.signals.empty()) {
        return;
    }
    store::DesktopSignalNotificationAction action{.signalId = chance_.pick(state.signals).id,
                                                  .memberId = member->id,
                                                  .action = chance_.happens(0.5) ? "acknowledge" : "done"};
    computer.process().start([store = computer.process().store().shared_from_this(), action] {
        return store->enqueueNotificationAction(action);
    });
}

void People::setStatus(Computer& computer) {
    const auto status = records::allMemberStatuses[chance_.below(records::allMemberStatuses.size())];
    computer.process().start(
        [store = computer.process().store().shared_from_this(), status] { return store->setMemberStatus(status); });
}

void People::useStation(Computer& computer) {
    const store::StoreState& state = computer.state();
    const bool isSignedIn = state.device && state.device->signedInMemberId;
    if (!isSignedIn) {
        return;
    }
    if (chance_.happens(0.15)) {
        computer.watch().personAsked(Route::signOut);
        computer.process().start(
            [store = computer.process().store().shared_from_this()] { return store->signOutStation(); });
        return;
    }
    const auto rooms = store::activeRooms(state);
    if (!rooms.empty()) {
        computer.process().store().confirmFlexibleRoom(chance_.pick(rooms)->id);
    }
}

void People::unlink(Computer& computer) {
    surroundings_.faults.add(Fault::unlinked);
    computer.process().start(
        [store = computer.process().store().shared_from_this()] { return store->unlinkComputer(); });
}

void People::pair(Computer& computer) {
    if (chance_.happens(0.1)) {
        computer.watch().personAsked(Route::requestSetup);
        computer.process().store().restartSetupQr();
        return;
    }
    const office::Placement placement = placementFor(computer);
    if (chance_.happens(0.5)) {
        const office::SetupRequest* newest = nullptr;
        for (const auto& [id, request] : surroundings_.office.state().all<office::SetupRequest>()) {
            const bool isOurs = request.name == computer.name() && !request.deviceId;
            if (isOurs && (newest == nullptr || newest->createdAt < request.createdAt)) {
                newest = &request;
            }
        }
        if (newest != nullptr) {
            const std::string id = newest->id;
            surroundings_.office.order(
                "approve", [&](office::Office& office, auto now) { return office.approve(id, placement, now); });
        }
        return;
    }
    const bool made = surroundings_.office.order(
        "code", [&](office::Office& office, auto now) { return office.makePairingCode(placement, now); });
    if (!made) {
        return;
    }
    std::string code{jsonText(surroundings_.office.lastBody(), "code")};
    if (chance_.happens(0.1)) {
        code.front() = code.front() == 'A' ? 'B' : 'A';  // Mistyped.
    }
    computer.process().start(
        [store = computer.process().store().shared_from_this(), code]() -> platform::Awaitable<void> {
            static_cast<void>(co_await store->redeemPairingCode(code));
        });
}

}  // namespace zelkovanta::simulation
