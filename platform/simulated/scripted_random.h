#pragma once

#include "platform/random_source.h"

#include <deque>
#include <initializer_list>

namespace zelkovanta::platform::simulated {

/// Chance by a script. Each draw takes the next number, a fraction of the interval asked for: 0 is its lowest end and 1
/// its highest. When the script is used up the last number stays, at first 0.
class ScriptedRandom final : public RandomSource {
public:
    ScriptedRandom() = default;
    ScriptedRandom(std::initializer_list<double> fractions) : fractions_(fractions) {}

    [[nodiscard]] double uniform(double lowest, double highest) override {
        if (!fractions_.empty()) {
            last_ = fractions_.front();
            fractions_.pop_front();
        }
        return lowest + (highest - lowest) * last_;
    }

    void push(double fraction) { fractions_.push_back(fraction); }

private:
    std::deque<double> fractions_;
    double last_ = 0;
};

}  // namespace zelkovanta::platform::simulated
