#pragma once

#include "platform/appearance.h"

#include <list>
#include <utility>

namespace zelkovanta::platform::simulated {

/// An appearance that changes when a test says so.
class SimulatedAppearance final : public Appearance {
public:
    explicit SimulatedAppearance(ColorScheme scheme = ColorScheme::unknown) : scheme_(scheme) {}

    /// Tells the observers, within the call.
    void become(ColorScheme scheme) {
        scheme_ = scheme;
        for (const auto& weak : std::list{handlers_}) {
            if (const auto handler = weak.lock()) {
                (*handler)();
            }
        }
    }

    [[nodiscard]] ColorScheme colorScheme() const override { return scheme_; }
    [[nodiscard]] std::unique_ptr<Observer> observe(std::function<void()> handler) override {
        auto shared = std::make_shared<std::function<void()>>(std::move(handler));
        handlers_.push_back(shared);
        return std::make_unique<Registration>(std::move(shared));
    }

private:
    struct Registration final : Observer {
        explicit Registration(std::shared_ptr<std::function<void()>> kept) : handler(std::move(kept)) {}
        std::shared_ptr<std::function<void()>> handler;
    };

    ColorScheme scheme_;
    std::list<std::weak_ptr<std::function<void()>>> handlers_;
};

}  // namespace zelkovanta::platform::simulated
