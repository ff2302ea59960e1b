#pragma once

#include <cstdint>
#include <functional>
#include <memory>

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
    /// Destroying it ends the observation; it may outlive the appearance.
    class Observer {
    public:
        virtual ~Observer() = default;
    };

    virtual ~Appearance() = default;
    /// Never waits: unknown until the desktop has answered.
    [[nodiscard]] virtual ColorScheme colorScheme() const = 0;
    /// Calls `handler` after each change.
    [[nodiscard]] virtual std::unique_ptr<Observer> observe(std::function<void()> handler) = 0;
};

}  // namespace zelkovanta::platform
