#pragma once

#include "tests/simulation/computer.h"
#include "tests/simulation/fault.h"
#include "tests/simulation/mischief.h"
#include "tests/simulation/people.h"
#include "tests/simulation/scenario.h"
#include "tests/simulation/simulated_office.h"
#include "tests/simulation/trace.h"
#include "tests/simulation/verdict.h"
#include "tests/simulation/watch.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

namespace zelkovanta::simulation {

struct Report {
    std::optional<Violation> violation;
    platform::Duration simulated{};
    FaultCounts faults;
    OvertakenReplies overtaken;
    std::uint64_t traceHash = 0;
    std::uint64_t traceEntries = 0;
    std::uint64_t actions = 0;     ///< presses of people
    std::uint64_t accepted = 0;    ///< signals that the office accepted from computers
    std::uint64_t looks = 0;       ///< comparisons of a computer with the office
    std::uint64_t alertsSeen = 0;  ///< notifications that were found to be as they should, at all looks
};

/// One practice with its office, its computers and its people, in virtual time, within one thread. The same scenario
/// runs the same way every time.
class Simulation {
public:
    /// `traceFile` gets a line for everything that happens, if it is given; it must outlive the simulation.
    explicit Simulation(const Scenario& scenario, Sabotage sabotage = {}, std::FILE* traceFile = nullptr);
    ~Simulation();
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    /// The whole scenario; ends early at the first violation.
    [[nodiscard]] Report run();

private:
    void advance(platform::Duration span);
    void scheduleLook(Computer& computer, platform::Duration delay);
    void noteChange(Computer& computer, const store::StoreChanges& changes);

    // simulation_looks.cpp
    void look(Computer& computer);
    void lookAtPairing(Computer& computer);
    void lookAtSending(const Computer& computer);
    void lookAtView(Computer& computer);
    void lookAtNotifications(Computer& computer);
    void lookWhetherAllAreBack();
    void lookAtEverything();
    [[nodiscard]] const office::Device* deviceHeldFor(const Computer& computer) const;

    Scenario scenario_;
    Sabotage sabotage_;
    Verdict verdict_;
    FaultCounts faults_;
    OvertakenReplies overtaken_;
    Trace trace_;
    Chance chance_;
    office::MemoryStorage memory_;
    std::unique_ptr<office::Storage> wrappedStorage_;
    std::unique_ptr<Network> network_;
    std::vector<std::unique_ptr<Computer>> computers_;
    std::vector<std::optional<std::string>> pairedWith_;  ///< by computer: the token of its last pairing
    std::uint64_t looks_ = 0;
    std::uint64_t alertsSeen_ = 0;
    // The loop goes before the computers, since what it drops may still reach for them.
    platform::simulated::EventLoop loop_;
    std::unique_ptr<SimulatedOffice> office_;
    std::unique_ptr<People> people_;
    std::unique_ptr<Mischief> mischief_;
};

[[nodiscard]] inline Report runScenario(const Scenario& scenario, const Sabotage& sabotage = {},
                                        std::FILE* traceFile = nullptr) {
    return Simulation{scenario, sabotage, traceFile}.run();
}

}  // namespace zelkovanta::simulation
