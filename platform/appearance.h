#pragma once

#include "platform/observer_list.h"

#include <cstdint>
#include <functional>

namespace zelkovanta::platform {

/// What the person wants windows to look like.
enum class ColorScheme : std::uint8_t {
    unknown,  ///< nobody has said so, or nobody can be asked
    light,
    dark,
};

/// The desktop's appearance, as it is now and as it changes. Main thread.
class Appearance {
public:
    virtual ~Appearance() = default;
    /// Never waits: unknown until the desktop has answered.
    [[nodiscard]] virtual ColorScheme colorScheme() const = 0;
    /// Calls `handler` after each change.
    [[nodiscard]] virtual Observation observe(std::function<void()> handler) = 0;
};

}  // namespace zelkovanta::platform
