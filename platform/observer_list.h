#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace zelkovanta::platform {

/// Keep it for as long as a handler may be called; letting go of it ends the observation. May outlive what is observed.
using Observation = std::shared_ptr<void>;

/// Who is to be called when something happens, in the order in which they began to observe. One thread.
template <class... Arguments>
class ObserverList {
public:
    using Handler = std::function<void(Arguments...)>;

    [[nodiscard]] Observation add(Handler handler) {
        auto kept = std::make_shared<Handler>(std::move(handler));
        std::erase_if(handlers_, [](const auto& weak) { return weak.expired(); });
        handlers_.push_back(kept);
        return kept;
    }

    /// A handler may begin observations, which are not told yet, end its own or another's, which is not told any more,
    /// and destroy the list: whoever still observes is told all the same.
    void tell(const Arguments&... arguments) const {
        const auto told = handlers_;
        for (const auto& weak : told) {
            if (const auto handler = weak.lock()) {
                (*handler)(arguments...);
            }
        }
    }

    /// Nobody is told from the next `tell` on.
    void clear() { handlers_.clear(); }

    /// How many observe.
    [[nodiscard]] std::size_t size() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(handlers_, [](const auto& weak) { return !weak.expired(); }));
    }

private:
    std::list<std::weak_ptr<Handler>> handlers_;
};

}  // namespace zelkovanta::platform
