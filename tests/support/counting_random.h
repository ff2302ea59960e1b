#pragma once

#include "platform/random_source.h"

#include <cmath>

namespace zelkovanta::support {

/// Another number at each draw, spread over the interval, the same in every run.
class CountingRandom final : public platform::RandomSource {
public:
    [[nodiscard]] double uniform(double lowest, double highest) override {
        constexpr double goldenPart = 0.6180339887498949;
        part_ = std::fmod(part_ + goldenPart, 1.0);
        return lowest + (highest - lowest) * part_;
    }

private:
    double part_ = 0;
};

}  // namespace zelkovanta::support
