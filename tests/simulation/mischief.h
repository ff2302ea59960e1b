#pragma once

#include "tests/simulation/computer.h"
#include "tests/simulation/people.h"
#include "tests/simulation/scenario.h"

#include <memory>
#include <vector>

namespace zelkovanta::simulation {

/// Lets things go wrong, at any time, each for a while, until it is told to stop.
class Mischief {
public:
    struct Surroundings {
        platform::simulated::EventLoop& loop;
        SimulatedOffice& office;
        std::vector<std::unique_ptr<Computer>>& computers;
        FaultCounts& faults;
        const Scenario& scenario;
        People& people;
    };
    Mischief(const Surroundings& surroundings, Chance chance) : surroundings_(surroundings), chance_(chance) {}

    void start();
    /// Everything is well from here on: links are open, computers run, the office is up. What has died stays dead.
    void stop();

private:
    void scheduleAt(Computer& computer);
    void scheduleAtOffice();
    void strike(Computer& computer);
    void strikeLink(Computer& computer);
    void strikeSocket(Computer& computer);
    void strikeMachine(Computer& computer);
    void strikePairing(Computer& computer);
    void strikeOffice();
    void relaunchAfter(Computer& computer, platform::Duration delay);
    /// Runs `call` after `delay`, unless all is well by then.
    template <class Call>
    void later(platform::Duration delay, Call call);

    Surroundings surroundings_;
    Chance chance_;
    bool hasStopped_ = false;
};

}  // namespace zelkovanta::simulation
