#pragma once

#include <functional>
#include <memory>

namespace zelkovanta::platform {

/// The computer, or the person's session on it, is about to end.
class PowerOffNotifications {
public:
    /// Destroying it ends the observation.
    class Observer {
    public:
        virtual ~Observer() = default;
    };

    virtual ~PowerOffNotifications() = default;
    /// Calls `handler` on the main thread. The host may go on with ending as soon as the handler has returned.
    [[nodiscard]] virtual std::unique_ptr<Observer> observe(std::function<void()> handler) = 0;
};

}  // namespace zelkovanta::platform
