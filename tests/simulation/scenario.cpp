#include "tests/simulation/scenario.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

constexpr std::array departments{"provider", "assistant", "frontdesk"};

std::string numbered(const std::string& practice, const char* what, std::size_t number) {
    return practice + '-' + what + std::to_string(number);
}

void addMembers(std::vector<office::Change>& changes, const std::string& practice, std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
        office::Member member;
        member.id = numbered(practice, "member", number);
        member.practiceId = practice;
        member.position = static_cast<std::int64_t>(number);
        member.name = "Member " + std::to_string(number);
        member.department = departments[number % departments.size()];
        member.color = "#5B7DB1";
        member.status = "available";
        changes.emplace_back(office::Put{member});
    }
}

void addRooms(std::vector<office::Change>& changes, const std::string& practice, std::size_t count) {
    for (std::size_t number = 0; number < count; ++number) {
        office::Room room;
        room.id = numbered(practice, "room", number);
        room.practiceId = practice;
        room.position = static_cast<std::int64_t>(number);
        room.name = "Room " + std::to_string(number);
        changes.emplace_back(office::Put{room});
    }
}

void addTypes(std::vector<office::Change>& changes, const std::string& practice, Chance& chance) {
    constexpr std::array keys{"ready", "seated", "stepout", "urgent", "supplies"};
    for (std::size_t number = 0; number < keys.size(); ++number) {
        office::SignalType type;
        type.id = numbered(practice, "type", number);
        type.practiceId = practice;
        type.position = static_cast<std::int64_t>(number);
        type.key = keys[number];
        type.label = keys[number];
        type.color = "#D9534F";
        type.priority = static_cast<std::int64_t>(chance.below(4)) - 1;
        changes.emplace_back(office::Put{type});
    }
}

}  // namespace

std::string practiceId(int number) {
    return "practice" + std::to_string(number);
}

void foundPractices(office::MemoryStorage& storage, Chance& chance) {
    std::vector<office::Change> changes;
    for (int number = 0; number < practiceCount; ++number) {
        office::Practice practice;
        practice.id = practiceId(number);
        practice.position = number;
        practice.name = "Practice " + std::to_string(number);
        for (const char* key : departments) {
            practice.departments.push_back({.key = key, .label = key, .labelPlural = std::nullopt});
        }
        if (chance.happens(0.7)) {
            practice.autoExpireMinutes = 2 + static_cast<std::int64_t>(chance.below(20));
        }
        practice.requireSignedInSender = chance.happens(0.5);
        changes.emplace_back(office::Put{practice});
        addMembers(changes, practice.id, 4 + chance.below(9));
        addRooms(changes, practice.id, 3 + chance.below(6));
        addTypes(changes, practice.id, chance);
    }
    // An empty memory takes everything.
    static_cast<void>(storage.commit(changes));
}

Scenario scenarioOf(std::uint64_t seed) {
    Chance chance{seed * 0x2545F4914F6CDD1DU + 1};
    constexpr std::array roughnesses{0.0, 0.002, 0.01, 0.03};
    Scenario scenario;
    scenario.seed = seed;
    scenario.computers = 1 + static_cast<int>(chance.below(12));
    scenario.span = chance.between(20min, 60min);
    scenario.meanBetweenActions = chance.between(4s, 25s);
    scenario.meanBetweenMischiefs = chance.between(90s, 10min);
    scenario.roughness = chance.pick(roughnesses);
    scenario.highestLatency = chance.happens(0.25) ? chance.between(500ms, 3s) : chance.between(5ms, 200ms);
    scenario.betweenLooks = 60s;
    return scenario;
}

Scenario dayOf(std::uint64_t seed) {
    Scenario scenario;
    scenario.seed = seed;
    scenario.computers = 12;
    scenario.span = 24h;
    scenario.meanBetweenActions = 10s;
    scenario.meanBetweenMischiefs = 20min;
    scenario.roughness = 0.002;
    scenario.highestLatency = 100ms;
    scenario.betweenLooks = 5min;
    scenario.followsTheDay = true;
    return scenario;
}

}  // namespace zelkovanta::simulation
