#pragma once

namespace zelkovanta::platform {

/// Chance. From any thread.
class RandomSource {
public:
    virtual ~RandomSource() = default;
    /// Uniform in [lowest, highest], both included.
    [[nodiscard]] virtual double uniform(double lowest, double highest) = 0;
};

}  // namespace zelkovanta::platform
