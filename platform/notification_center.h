#pragma once

#include "platform/observer_list.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace zelkovanta::platform {

/// Names that one part of the program posts and another hears; the desktop's notifications are
/// `user_notification_center.h`. Main thread; observers hear a name within `post`, in the
/// order in which they began to observe.
class NotificationCenter {
public:
    void post(std::string_view name) const {
        if (const auto found = observers_.find(name); found != observers_.end()) {
            found->second.tell();
        }
    }

    [[nodiscard]] Observation observe(const std::string& name, std::function<void()> handler) {
        return observers_[name].add(std::move(handler));
    }

private:
    std::map<std::string, ObserverList<>, std::less<>> observers_;
};

}  // namespace zelkovanta::platform
