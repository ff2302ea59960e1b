#pragma once

#include "platform/appearance.h"

#include <utility>

namespace zelkovanta::platform::simulated {

/// An appearance that changes when a test says so.
class SimulatedAppearance final : public Appearance {
public:
    explicit SimulatedAppearance(ColorScheme scheme = ColorScheme::unknown) : scheme_(scheme) {}

    /// Tells the observers, within the call.
    void become(ColorScheme scheme) {
        scheme_ = scheme;
        observers_.tell();
    }

    [[nodiscard]] ColorScheme colorScheme() const override { return scheme_; }
    [[nodiscard]] Observation observe(std::function<void()> handler) override {
        return observers_.add(std::move(handler));
    }

private:
    ColorScheme scheme_;
    ObserverList<> observers_;
};

}  // namespace zelkovanta::platform::simulated
