#pragma once

#include "platform/clock.h"
#include "platform/simulated/event_loop.h"
#include "platform/user_notification_center.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::platform::simulated {

/// A notification centre in memory, on a thread of its own, that works as slowly as it is told. It outlives the program
/// that posts to it, as a desktop's does.
class SimulatedNotificationCenter final : public UserNotificationCenter {
public:
    /// By identifier.
    using Requests = std::map<std::string, std::shared_ptr<const NotificationRequest>, std::less<>>;

    explicit SimulatedNotificationCenter(EventLoop& loop) : loop_(loop) {}

    // How it behaves, from the next call on.
    Duration showingDelay{};
    Duration pendingAnswerDelay{};
    Duration deliveredAnswerDelay{};
    Authorization authorization = Authorization::granted;  ///< whatever else it is, requests are discarded

    void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) override;
    void setNotificationCategories(std::vector<NotificationCategory> categories) override;
    void requestAuthorization(AuthorizationOptions options, Completion<Authorization> completion) override;
    void add(NotificationRequest request, Completion<> completion) override;
    void getPendingRequests(Completion<NotificationRequests> completion) override;
    void getDeliveredNotifications(Completion<NotificationRequests> completion) override;
    void removePendingRequests(std::vector<std::string> identifiers) override;
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;

    /// The person presses something in a notification, which goes away. False if it is not there.
    bool press(std::string_view identifier, std::string_view actionIdentifier);
    /// The person takes a notification away. False if it is not there.
    bool dismiss(std::string_view identifier);
    /// The session of the desktop ends, and everything that it showed.
    void clear();
    /// While held it shows and answers nothing.
    void setHeld(bool held) { thread_.setHeld(held); }

    [[nodiscard]] const Requests& delivered() const { return delivered_; }
    [[nodiscard]] std::size_t pendingCount() const { return pending_.size(); }
    /// Every request has been shown and every question answered.
    [[nodiscard]] bool isQuiet() const { return pending_.empty() && open_ == 0; }

    // What was asked of it.
    [[nodiscard]] const std::vector<NotificationCategory>& categories() const { return categories_; }
    [[nodiscard]] const std::vector<AuthorizationOptions>& authorizationRequests() const {
        return authorizationRequests_;
    }
    [[nodiscard]] std::uint64_t added() const { return added_; }
    [[nodiscard]] std::uint64_t removalCalls() const { return removalCalls_; }
    [[nodiscard]] int delegatesSet() const { return delegatesSet_; }
    [[nodiscard]] std::uint64_t responses() const { return responses_; }
    [[nodiscard]] std::uint64_t completedResponses() const { return *completedResponses_; }
    /// What the delegate said of the newest notification.
    [[nodiscard]] const std::optional<PresentationOptions>& presentation() const { return presentation_; }

private:
    /// Runs `call` on the centre's thread, `delay` later.
    void later(Duration delay, std::move_only_function<void()> call);
    void answer(Duration delay, const Requests& requests, Completion<NotificationRequests> completion);
    void show(const std::shared_ptr<const NotificationRequest>& request);

    EventLoop& loop_;
    EventLoop::Thread& thread_ = loop_.makeThread();
    std::weak_ptr<UserNotificationCenterDelegate> delegate_;
    std::vector<NotificationCategory> categories_;
    std::vector<AuthorizationOptions> authorizationRequests_;
    Requests pending_;
    Requests delivered_;
    std::optional<PresentationOptions> presentation_;
    std::uint64_t open_ = 0;
    std::uint64_t added_ = 0;
    std::uint64_t removalCalls_ = 0;
    std::uint64_t responses_ = 0;
    std::shared_ptr<std::uint64_t> completedResponses_ = std::make_shared<std::uint64_t>(0);
    int delegatesSet_ = 0;
};

}  // namespace zelkovanta::platform::simulated
