#pragma once

#include "platform/appearance.h"
#include "platform/async.h"

#include <memory>

namespace zelkovanta::platform::linux_host {

/// The colour scheme of the desktop portal's settings, followed live. Without a session bus or a portal it stays
/// unknown, and a portal that comes later, or comes back, is asked then. Main thread; nothing here waits.
class PortalAppearance final : public Appearance {
public:
    /// Connecting to the session bus may wait, so it happens on `connecting`.
    PortalAppearance(Executor mainThread, Executor connecting);
    ~PortalAppearance() override;
    PortalAppearance(const PortalAppearance&) = delete;
    PortalAppearance& operator=(const PortalAppearance&) = delete;

    /// No handler is called from here on.
    void stop();

    [[nodiscard]] ColorScheme colorScheme() const override;
    [[nodiscard]] Observation observe(std::function<void()> handler) override;

private:
    class State;
    std::shared_ptr<State> state_;
};

}  // namespace zelkovanta::platform::linux_host
