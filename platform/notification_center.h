#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

namespace zelkovanta::platform {

/// Names that one part of the program posts and another hears; the desktop's notifications are
/// `user_notification_center.h`. Main thread; observers hear a name within `post`, in the
/// order in which they began to observe.
class NotificationCenter {
    struct Entry {
        std::string name;
        std::function<void()> handler;
    };

public:
    /// Ends its observation when it is destroyed. May outlive the centre.
    class Observer {
    public:
        Observer() = default;
        explicit Observer(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}

    private:
        std::shared_ptr<Entry> entry_;
    };

    void post(std::string_view name) {
        entries_.remove_if([](const auto& entry) { return entry.expired(); });
        const auto heard = entries_;
        for (const auto& weak : heard) {
            if (const auto entry = weak.lock(); entry && entry->name == name) {
                entry->handler();
            }
        }
    }

    [[nodiscard]] Observer observe(std::string name, std::function<void()> handler) {
        auto entry = std::make_shared<Entry>(Entry{std::move(name), std::move(handler)});
        entries_.push_back(entry);
        return Observer{std::move(entry)};
    }

private:
    std::list<std::weak_ptr<Entry>> entries_;
};

}  // namespace zelkovanta::platform
