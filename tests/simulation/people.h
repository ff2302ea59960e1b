#pragma once

#include "tests/simulation/computer.h"
#include "tests/simulation/scenario.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace zelkovanta::simulation {

/// Everybody who presses something: staff at the computers, staff with phones, and the admin. They see what the screens
/// would show them and act on that.
class People {
public:
    struct Surroundings {
        platform::simulated::EventLoop& loop;
        SimulatedOffice& office;
        std::vector<std::unique_ptr<Computer>>& computers;
        FaultCounts& faults;
        const Scenario& scenario;
    };
    People(const Surroundings& surroundings, Chance chance) : surroundings_(surroundings), chance_(chance) {}

    /// They act from now on, until `stop`.
    void start();
    void stop() { hasStopped_ = true; }
    [[nodiscard]] std::uint64_t actions() const { return actions_; }

    /// Gives a computer a place in a practice, by an admin's approval of its setup code or by a pairing code.
    void pair(Computer& computer);
    void unlink(Computer& computer);
    /// Presses a notification of the computer, or takes it away, if there is one.
    void useNotification(Computer& computer);

private:
    void scheduleNext();
    void act();

    // people.cpp
    void actAt(Computer& computer);
    void send(Computer& computer);
    void actOnQueue(Computer& computer);
    void answerLate(Computer& computer);
    void setStatus(Computer& computer);
    void useStation(Computer& computer);

    // people_office.cpp
    void administer();
    void changeStaff(const std::string& practice);
    void changeFurniture(const std::string& practice);
    void actByPhone(const std::string& practice);
    void signInByPhone(Computer& computer);
    [[nodiscard]] office::Placement placementFor(const Computer& computer);

    template <class T>
    [[nodiscard]] const T* anyOf(std::string_view practice);

    Surroundings surroundings_;
    Chance chance_;
    bool hasStopped_ = false;
    std::uint64_t actions_ = 0;
};

}  // namespace zelkovanta::simulation
