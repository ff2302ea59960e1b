#include "tests/simulation/simulation.h"

#include <set>

#include <gtest/gtest.h>

namespace zelkovanta::simulation {
namespace {

using namespace std::chrono_literals;

TEST(Simulation, oneSeedGivesOneTrace) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        const Report first = runScenario(scenarioOf(seed));
        const Report second = runScenario(scenarioOf(seed));
        EXPECT_EQ(first.traceHash, second.traceHash) << "seed " << seed;
        EXPECT_EQ(first.traceEntries, second.traceEntries) << "seed " << seed;
        EXPECT_EQ(first.simulated, second.simulated) << "seed " << seed;
    }
}

TEST(Simulation, aScenarioReplaysTheSameWayTimeAndAgain) {
    Scenario scenario = scenarioOf(3);
    scenario.span = 5min;
    const Report first = runScenario(scenario);
    for (int replay = 0; replay < 50; ++replay) {
        ASSERT_EQ(runScenario(scenario).traceHash, first.traceHash) << "replay " << replay;
    }
}

TEST(Simulation, seedsDiffer) {
    std::set<std::uint64_t> traces;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        traces.insert(runScenario(scenarioOf(seed)).traceHash);
    }
    EXPECT_EQ(traces.size(), 20U);
}

TEST(Simulation, seedsCoverOneToTwelveComputers) {
    std::set<int> counts;
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        const Scenario scenario = scenarioOf(seed);
        counts.insert(scenario.computers);
        EXPECT_GE(scenario.span, 20min);
        EXPECT_LE(scenario.span, 60min);
    }
    EXPECT_EQ(counts.size(), 12U);
    EXPECT_EQ(*counts.begin(), 1);
    EXPECT_EQ(*counts.rbegin(), 12);
}

TEST(Simulation, manySeedsLetEveryFaultHappenAndNothingBreak) {
    FaultCounts faults;
    OvertakenReplies overtaken;
    std::uint64_t accepted = 0;
    std::uint64_t looks = 0;
    std::uint64_t alertsSeen = 0;
    for (std::uint64_t seed = 10'001; seed <= 10'060; ++seed) {
        const Report report = runScenario(scenarioOf(seed));
        ASSERT_FALSE(report.violation) << "seed " << seed << ": " << report.violation->what;
        faults += report.faults;
        overtaken += report.overtaken;
        accepted += report.accepted;
        looks += report.looks;
        alertsSeen += report.alertsSeen;
    }
    for (std::size_t index = 0; index < faultCount; ++index) {
        EXPECT_GT(faults.of(static_cast<Fault>(index)), 0U) << name(static_cast<Fault>(index));
    }
    EXPECT_GT(accepted, 1000U);
    EXPECT_GT(looks, 1000U);
    EXPECT_GT(alertsSeen, 1000U);
    EXPECT_GT(overtaken.total(), 0U);
    EXPECT_LT(overtaken.total(), overtaken.merged);
}

TEST(Chance, isTheSameOnEveryMachine) {
    Chance chance{42};
    EXPECT_EQ(chance.next(), 13679457532755275413U);
    EXPECT_EQ(chance.next(), 2949826092126892291U);
    EXPECT_EQ(chance.next(), 5139283748462763858U);
}

TEST(Trace, tellsEverythingThatDiffersApart) {
    const auto hashOf = [](platform::SteadyTime when, int who, std::string_view what, std::string_view detail) {
        Trace trace;
        trace.note(when, who, what, detail);
        return trace.hash();
    };
    const platform::SteadyTime now{1s};
    const std::set<std::uint64_t> hashes{
        hashOf(now, 1, "frame", "text"),          hashOf(now + 1ns, 1, "frame", "text"),
        hashOf(now, 2, "frame", "text"),          hashOf(now, 1, "frame!", "text"),
        hashOf(now, 1, "frame", "texts"),         hashOf(now, 1, "framet", "ext"),
        hashOf(now, 1, "frame", "a longer text"), hashOf(now, 1, "frame", "")};
    EXPECT_EQ(hashes.size(), 8U);
}

}  // namespace
}  // namespace zelkovanta::simulation
