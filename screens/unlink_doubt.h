#pragma once

#include "platform/clock.h"

#include <chrono>
#include <optional>

namespace zelkovanta::screens {

/// Taking a computer out of its office takes two presses: one that asks, and one that means it. The second counts for a
/// while only, and never as the other half of a double click.
class UnlinkDoubt {
public:
    static constexpr platform::Duration patience = std::chrono::seconds{6};

    /// Presses that follow each other faster than `doubleClick` are one.
    explicit UnlinkDoubt(platform::Duration doubleClick) : doubleClick_(doubleClick) {}

    /// Whether the next press would be the second.
    [[nodiscard]] bool isAsking(platform::SteadyTime now) const { return left(now) > platform::Duration::zero(); }
    /// How long it asks yet; nothing while it does not.
    [[nodiscard]] platform::Duration left(platform::SteadyTime now) const;

    /// Whether this press means it; then nothing is asked any more.
    [[nodiscard]] bool press(platform::SteadyTime now);

private:
    platform::Duration doubleClick_;
    std::optional<platform::SteadyTime> askedAt_;
    std::optional<platform::SteadyTime> pressedAt_;
};

}  // namespace zelkovanta::screens
