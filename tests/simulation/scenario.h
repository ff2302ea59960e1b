#pragma once

#include "office/memory_storage.h"
#include "platform/clock.h"
#include "tests/simulation/chance.h"

#include <cstdint>
#include <string>

namespace zelkovanta::simulation {

/// What one run is like.
struct Scenario {
    std::uint64_t seed = 0;
    int computers = 1;
    /// How long people act and things go wrong, before all is well and the rest is looked at.
    platform::Duration span{};
    platform::Duration meanBetweenActions{};    ///< of the whole practice, in working hours
    platform::Duration meanBetweenMischiefs{};  ///< of one computer
    double roughness = 0;                       ///< of every link, at all times
    platform::Duration highestLatency{};
    platform::Duration betweenLooks{};  ///< at one computer
    bool followsTheDay = false;         ///< people act from 7 to 19 h and hardly ever otherwise
};

/// The scenario of a seed: 1 to 12 computers, three quarters of an hour on the average, and much goes wrong.
[[nodiscard]] Scenario scenarioOf(std::uint64_t seed);
/// A full day of a practice with 12 computers, with the faults of a bad network all day long.
[[nodiscard]] Scenario dayOf(std::uint64_t seed);

/// Puts the two practices of every run into an empty storage.
void foundPractices(office::MemoryStorage& storage, Chance& chance);

inline constexpr int practiceCount = 2;
[[nodiscard]] std::string practiceId(int number);

}  // namespace zelkovanta::simulation
