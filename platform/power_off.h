#pragma once

#include "platform/observer_list.h"

#include <functional>

namespace zelkovanta::platform {

/// The computer, or the person's session on it, is about to end.
class PowerOffNotifications {
public:
    virtual ~PowerOffNotifications() = default;
    /// Calls `handler` on the main thread. The host may go on with ending as soon as the handler has returned.
    [[nodiscard]] virtual Observation observe(std::function<void()> handler) = 0;
};

}  // namespace zelkovanta::platform
