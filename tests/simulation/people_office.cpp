#include "tests/simulation/people.h"

#include <array>
#include <string>
#include <utility>

namespace zelkovanta::simulation {

namespace {

constexpr std::array statuses{"available", "busy", "dnd"};
constexpr std::size_t mostMembers = 20;
constexpr std::size_t mostRooms = 14;

}  // namespace

/// Any record of a practice, or null if it has none.
template <class T>
const T* People::anyOf(std::string_view practice) {
    std::vector<const T*> found;
    for (const auto& [id, record] : surroundings_.office.state().all<T>()) {
        if (record.practiceId == practice) {
            found.push_back(&record);
        }
    }
    return found.empty() ? nullptr : chance_.pick(found);
}

office::Placement People::placementFor(const Computer& computer) {
    constexpr std::array roles{office::DeviceRole::member, office::DeviceRole::room, office::DeviceRole::shared};
    office::Placement placement;
    placement.practice = practiceId(chance_.happens(0.9) ? 0 : 1);
    // A computer mostly is what it was.
    placement.role =
        chance_.happens(0.9) ? roles[static_cast<std::size_t>(computer.number()) % roles.size()] : chance_.pick(roles);
    placement.computerName = computer.name();
    if (placement.role == office::DeviceRole::member) {
        placement.member = anyOf<office::Member>(placement.practice)->id;
    } else if (placement.role == office::DeviceRole::room || chance_.happens(0.5)) {
        placement.room = anyOf<office::Room>(placement.practice)->id;
    }
    return placement;
}

void People::signInByPhone(Computer& computer) {
    const auto& device = computer.state().device;
    if (!device || !surroundings_.office.isUp()) {
        return;
    }
    const office::Device* kept = surroundings_.office.state().find<office::Device>(device->id);
    const office::Member* member = kept == nullptr ? nullptr : anyOf<office::Member>(kept->practiceId);
    if (member == nullptr) {
        return;
    }
    if (chance_.happens(0.6)) {
        // Fails where the computer shows no code that the office knows.
        surroundings_.office.order("scan", [id = device->id, who = member->id](office::Office& office, auto now) {
            return office.scanSignInCode(id, who, now);
        });
    } else {
        surroundings_.office.order("sign in", [id = device->id, who = member->id](office::Office& office, auto now) {
            return office.signIn(id, who, now);
        });
    }
}

void People::administer() {
    if (!surroundings_.office.isUp()) {
        return;
    }
    const std::string practice = practiceId(chance_.happens(0.8) ? 0 : 1);
    const double what = chance_.unit();
    if (what < 0.4) {
        actByPhone(practice);
    } else if (what < 0.75) {
        changeStaff(practice);
    } else {
        changeFurniture(practice);
    }
}

void People::actByPhone(const std::string& practice) {
    const office::Member* member = anyOf<office::Member>(practice);
    if (chance_.happens(0.4)) {
        office::SendOrder order{.practice = practice,
                                .room = anyOf<office::Room>(practice)->id,
                                .type = anyOf<office::SignalType>(practice)->id,
                                .from = member->id,
                                .to = {},
                                .toDepartment = {},
                                .note = "from a phone"};
        surroundings_.office.order("send", [&](office::Office& office, auto now) { return office.send(order, now); });
        return;
    }
    constexpr std::array actions{office::SignalAction::acknowledge, office::SignalAction::done,
                                 office::SignalAction::cancel, office::SignalAction::arrived};
    if (const office::Signal* signal = anyOf<office::Signal>(practice)) {
        const auto action = chance_.pick(actions);
        surroundings_.office.order("act", [&, id = signal->id](office::Office& office, auto now) {
            return office.act(id, action, member->id, now);
        });
    }
}

void People::changeStaff(const std::string& practice) {
    const office::Member* member = anyOf<office::Member>(practice);
    const std::size_t members = surroundings_.office.state().all<office::Member>().size();
    if (chance_.happens(0.05) && members < mostMembers * practiceCount) {
        surroundings_.office.order("add member", [&](office::Office& office, auto now) {
            return office.addMember(practice, "Newcomer " + std::to_string(members), "provider", now);
        });
        return;
    }
    office::MemberChange change;
    const double what = chance_.unit();
    if (what < 0.4) {
        change.onShift = chance_.happens(0.7);
    } else if (what < 0.6) {
        change.cooldownMinutes = static_cast<std::int64_t>(chance_.below(4));
        change.offShiftReason = "moved";
    } else if (what < 0.8) {
        change.status = chance_.pick(statuses);
    } else {
        change.active = chance_.happens(0.8);
    }
    surroundings_.office.order("change member", [&, id = member->id](office::Office& office, auto now) {
        return office.changeMember(practice, id, change, now);
    });
}

void People::changeFurniture(const std::string& practice) {
    SimulatedOffice& office = surroundings_.office;
    const double what = chance_.unit();
    if (what < 0.3) {
        const std::string id = anyOf<office::Room>(practice)->id;
        const office::RoomChange change{.name = {}, .active = chance_.happens(0.7), .beaconUuid = {}};
        office.order("change room",
                     [&](office::Office& desk, auto now) { return desk.changeRoom(practice, id, change, now); });
    } else if (what < 0.35) {
        const std::size_t rooms = office.state().all<office::Room>().size();
        if (rooms < mostRooms * practiceCount) {
            office.order("add room", [&](office::Office& desk, auto now) {
                return desk.addRoom(practice, "New room " + std::to_string(rooms), now);
            });
        }
    } else if (what < 0.55) {
        const std::string id = anyOf<office::SignalType>(practice)->id;
        office::TypeChange change;
        change.priority = static_cast<std::int64_t>(chance_.below(5));
        change.active = chance_.happens(0.8);
        office.order("change type",
                     [&](office::Office& desk, auto now) { return desk.changeType(practice, id, change, now); });
    } else if (what < 0.75) {
        office::PracticeChange change;
        change.autoExpireMinutes = static_cast<std::int64_t>(chance_.below(15));
        change.requireSignedInSender = chance_.happens(0.5);
        office.order("change practice",
                     [&](office::Office& desk, auto now) { return desk.changePractice(practice, change, now); });
    } else if (what < 0.9) {
        if (const office::Device* device = anyOf<office::Device>(practice)) {
            const std::string settings = chance_.happens(0.7) ? R"({"enabled":true,"repeatAfterMinutes":2})" : "";
            office.order("notification settings", [&, id = device->id](office::Office& desk, auto now) {
                return desk.setNotificationSettings(id, settings, now);
            });
        }
    } else if (what < 0.97) {
        if (const office::Device* device = anyOf<office::Device>(practice)) {
            office.order("sign out",
                         [id = device->id](office::Office& desk, auto now) { return desk.signOut(id, now); });
        }
    } else {
        office::Release release;
        release.windowsVersion = "1.0." + std::to_string(chance_.below(10));
        office.order("announce", [&](office::Office& desk, auto now) { return desk.announce(release, now); });
    }
}

}  // namespace zelkovanta::simulation
