#include "tests/simulation/mischief.h"

#include <array>
#include <utility>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

constexpr auto meanBetweenOfficeMischiefs = 12min;
/// A connection that was not used for longer than this is forgotten on the way.
constexpr auto forgottenAfter = 60s;

}  // namespace

template <class Call>
void Mischief::later(platform::Duration delay, Call call) {
    surroundings_.loop.schedule(surroundings_.loop.now() + delay, [this, call = std::move(call)] {
        if (!hasStopped_) {
            call();
        }
    });
}

void Mischief::start() {
    for (const auto& computer : surroundings_.computers) {
        computer->link().highestLatency = surroundings_.scenario.highestLatency;
        computer->link().roughness = surroundings_.scenario.roughness;
        scheduleAt(*computer);
    }
    scheduleAtOffice();
}

void Mischief::stop() {
    hasStopped_ = true;
    if (!surroundings_.office.isUp()) {
        surroundings_.office.comeUp();
    }
    surroundings_.office.refuseCommits(false);
    for (const auto& computer : surroundings_.computers) {
        Link& link = computer->link();
        link.path = Link::Path::open;
        link.stalledUntil = {};
        link.roughness = 0;
        link.highestLatency = 50ms;
        computer->setKeyStoreLocked(false);
        computer->setMainBusy(false);
        computer->setOthersBusy(false);
        computer->resume();
        computer->launch();
    }
}

void Mischief::scheduleAt(Computer& computer) {
    later(chance_.untilNext(surroundings_.scenario.meanBetweenMischiefs), [this, &computer] {
        if (computer.isResponsive()) {
            strike(computer);
        }
        scheduleAt(computer);
    });
}

void Mischief::scheduleAtOffice() {
    later(chance_.untilNext(meanBetweenOfficeMischiefs), [this] {
        if (surroundings_.office.isUp()) {
            strikeOffice();
        }
        scheduleAtOffice();
    });
}

void Mischief::strike(Computer& computer) {
    const double what = chance_.unit();
    if (what < 0.35) {
        strikeLink(computer);
    } else if (what < 0.60) {
        strikeSocket(computer);
    } else if (what < 0.90) {
        strikeMachine(computer);
    } else {
        strikePairing(computer);
    }
}

void Mischief::strikeLink(Computer& computer) {
    Link& link = computer.link();
    const auto heal = [&link] { link.path = Link::Path::open; };
    switch (chance_.below(4)) {
        case 0:
            surroundings_.faults.add(Fault::linkDown);
            link.path = Link::Path::down;
            if (chance_.happens(0.7)) {
                computer.process().port().breakSockets();
            } else {
                computer.process().port().halfOpenSockets();
            }
            later(chance_.between(500ms, 2min), heal);
            break;
        case 1:
            surroundings_.faults.add(Fault::linkSilent);
            link.path = Link::Path::silent;
            later(chance_.between(1s, 3min), heal);
            break;
        case 2:
            surroundings_.faults.add(Fault::linkStalled);
            link.stalledUntil = surroundings_.loop.now() + chance_.between(200ms, 40s);
            break;
        default:
            surroundings_.faults.add(Fault::linkRough);
            link.roughness = 0.05 + 0.4 * chance_.unit();
            later(chance_.between(10s, 2min), [this, &link] { link.roughness = surroundings_.scenario.roughness; });
            break;
    }
}

void Mischief::strikeSocket(Computer& computer) {
    constexpr std::array<std::uint16_t, 4> codes{1000, 1001, 1006, 1011};
    NetworkPort& port = computer.process().port();
    switch (chance_.below(3)) {
        case 0:
            surroundings_.faults.add(Fault::socketReset);
            port.breakSockets();
            break;
        case 1:
            surroundings_.faults.add(Fault::socketClosed);
            port.closeSockets(chance_.pick(codes));
            break;
        default:
            surroundings_.faults.add(Fault::halfOpen);
            port.halfOpenSockets();
            break;
    }
}

void Mischief::relaunchAfter(Computer& computer, platform::Duration delay) {
    later(delay, [this, &computer] {
        computer.launch();
        // What an earlier run left can be pressed before the new one knows anything.
        surroundings_.people.useNotification(computer);
    });
}

void Mischief::strikeMachine(Computer& computer) {
    switch (chance_.below(8)) {
        case 0: {
            surroundings_.faults.add(Fault::suspended);
            const auto span = chance_.happens(0.7) ? chance_.between(1s, 3min) : chance_.between(3min, 30min);
            computer.suspend();
            if (span > forgottenAfter || chance_.happens(0.5)) {
                computer.process().port().halfOpenSockets();
            }
            later(span, [&computer] { computer.resume(); });
            break;
        }
        case 1:
            surroundings_.faults.add(Fault::mainThreadBusy);
            computer.setMainBusy(true);
            later(chance_.between(50ms, 20s), [&computer] { computer.setMainBusy(false); });
            break;
        case 2:
            surroundings_.faults.add(Fault::otherThreadsBusy);
            computer.setOthersBusy(true);
            later(chance_.between(50ms, 20s), [&computer] { computer.setOthersBusy(false); });
            break;
        case 3:
            surroundings_.faults.add(Fault::processKilled);
            computer.kill();
            relaunchAfter(computer, chance_.between(0ms, 1min));
            break;
        case 4:
            surroundings_.faults.add(Fault::powerOff);
            computer.powerOff();
            relaunchAfter(computer, chance_.between(10s, 5min));
            break;
        case 5:
            surroundings_.faults.add(Fault::newLogin);
            computer.logOutAndIn();
            relaunchAfter(computer, chance_.between(1s, 1min));
            break;
        case 6:
            surroundings_.faults.add(Fault::keyStoreLocked);
            computer.kill();
            computer.setKeyStoreLocked(true);
            computer.launch();
            later(chance_.between(1s, 2min), [&computer] { computer.setKeyStoreLocked(false); });
            break;
        default:
            surroundings_.faults.add(Fault::clockSet);
            computer.setWallOffset(chance_.between(0s, 2h) - platform::Duration{1h});
            break;
    }
}

void Mischief::strikePairing(Computer& computer) {
    const auto token = computer.token();
    const auto deviceId = token ? surroundings_.office.deviceOf(*token) : std::nullopt;
    const office::Device* device = deviceId ? surroundings_.office.state().find<office::Device>(*deviceId) : nullptr;
    if (device == nullptr || !computer.state().isPaired) {
        return;
    }
    const double what = chance_.unit();
    if (what < 0.25) {
        surroundings_.faults.add(Fault::revoked);
        surroundings_.office.order("revoke",
                                   [&](office::Office& office, auto now) { return office.revoke(*deviceId, now); });
    } else if (what < 0.4) {
        surroundings_.people.unlink(computer);
    } else {
        const auto notice = chance_.happens(0.5) ? office::MoveNotice::snapshot : office::MoveNotice::officeUpdated;
        surroundings_.faults.add(notice == office::MoveNotice::snapshot ? Fault::movedBySnapshot
                                                                        : Fault::movedByOfficeUpdate);
        const std::string target = practiceId(device->practiceId == practiceId(0) ? 1 : 0);
        std::optional<std::string> room;
        std::optional<std::string> member;
        if (device->role == office::DeviceRole::member) {
            member = target + "-member" + std::to_string(chance_.below(4));
        } else {
            room = target + "-room" + std::to_string(chance_.below(3));
        }
        surroundings_.office.order("move", [&](office::Office& office, auto now) {
            return office.move(*deviceId, target, room, member, notice, now);
        });
    }
}

void Mischief::strikeOffice() {
    if (chance_.happens(0.7)) {
        surroundings_.faults.add(Fault::officeRestart);
        surroundings_.office.goDown();
        later(chance_.between(10ms, 90s), [this] { surroundings_.office.comeUp(); });
    } else {
        surroundings_.faults.add(Fault::storageRefuses);
        surroundings_.office.refuseCommits(true);
        later(chance_.between(1s, 60s), [this] { surroundings_.office.refuseCommits(false); });
    }
}

}  // namespace zelkovanta::simulation
