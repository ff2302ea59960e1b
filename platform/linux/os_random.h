#pragma once

#include "platform/random_source.h"

namespace zelkovanta::platform::linux_host {

/// The system's own chance.
class OsRandom final : public RandomSource {
public:
    [[nodiscard]] double uniform(double lowest, double highest) override;
};

}  // namespace zelkovanta::platform::linux_host
