#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>
#include <utility>

namespace zelkovanta::simulation {

/// The first thing in a run that must never be.
struct Violation {
    platform::SteadyTime when;
    int who = -1;  ///< a computer's number, or -1 for the office
    std::string what;
};

class Verdict {
public:
    void fail(platform::SteadyTime when, int who, std::string what) {
        if (!violation_) {
            violation_ = Violation{when, who, std::move(what)};
        }
    }
    [[nodiscard]] bool holds() const { return !violation_.has_value(); }
    [[nodiscard]] const std::optional<Violation>& violation() const { return violation_; }

private:
    std::optional<Violation> violation_;
};

}  // namespace zelkovanta::simulation
