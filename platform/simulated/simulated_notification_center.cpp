#include "platform/simulated/simulated_notification_center.h"

#include <utility>

namespace zelkovanta::platform::simulated {

void SimulatedNotificationCenter::later(Duration delay, std::move_only_function<void()> call) {
    ++open_;
    auto work = [this, call = std::move(call)]() mutable {
        --open_;
        call();
    };
    if (delay <= Duration::zero()) {
        thread_.post(std::move(work));
    } else {
        loop_.schedule(loop_.now() + delay,
                       [this, work = std::move(work)]() mutable { thread_.post(std::move(work)); });
    }
}

void SimulatedNotificationCenter::setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) {
    ++delegatesSet_;
    delegate_ = std::move(delegate);
}

void SimulatedNotificationCenter::setNotificationCategories(std::vector<NotificationCategory> categories) {
    categories_ = std::move(categories);
}

void SimulatedNotificationCenter::requestAuthorization(AuthorizationOptions options,
                                                       Completion<Authorization> completion) {
    authorizationRequests_.push_back(options);
    later({}, [completion = std::move(completion), result = authorization]() mutable { completion(result); });
}

void SimulatedNotificationCenter::add(NotificationRequest request, Completion<> completion) {
    ++added_;
    std::shared_ptr<const NotificationRequest> shared;
    if (authorization == Authorization::granted) {
        shared = std::make_shared<const NotificationRequest>(std::move(request));
        pending_.insert_or_assign(shared->identifier, shared);
    }
    later(showingDelay, [this, shared, completion = std::move(completion)]() mutable {
        show(shared);
        completion();
    });
}

/// Unless it was removed or replaced on the way.
void SimulatedNotificationCenter::show(const std::shared_ptr<const NotificationRequest>& request) {
    const auto found = request ? pending_.find(request->identifier) : pending_.end();
    if (found == pending_.end() || found->second != request) {
        return;
    }
    pending_.erase(found);
    delivered_.insert_or_assign(request->identifier, request);
    if (const auto delegate = delegate_.lock()) {
        presentation_ = delegate->willPresent(*request);
    }
}

void SimulatedNotificationCenter::answer(Duration delay, const Requests& requests,
                                         Completion<NotificationRequests> completion) {
    NotificationRequests list;
    list.reserve(requests.size());
    for (const auto& [identifier, request] : requests) {
        list.push_back(request);
    }
    later(delay,
          [list = std::move(list), completion = std::move(completion)]() mutable { completion(std::move(list)); });
}

void SimulatedNotificationCenter::getPendingRequests(Completion<NotificationRequests> completion) {
    answer(pendingAnswerDelay, pending_, std::move(completion));
}

void SimulatedNotificationCenter::getDeliveredNotifications(Completion<NotificationRequests> completion) {
    answer(deliveredAnswerDelay, delivered_, std::move(completion));
}

void SimulatedNotificationCenter::removePendingRequests(std::vector<std::string> identifiers) {
    ++removalCalls_;
    for (const std::string& identifier : identifiers) {
        pending_.erase(identifier);
    }
}

void SimulatedNotificationCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    ++removalCalls_;
    for (const std::string& identifier : identifiers) {
        delivered_.erase(identifier);
    }
}

bool SimulatedNotificationCenter::press(std::string_view identifier, std::string_view actionIdentifier) {
    const auto found = delivered_.find(identifier);
    if (found == delivered_.end()) {
        return false;
    }
    ++responses_;
    NotificationResponse response{.actionIdentifier = std::string{actionIdentifier}, .request = found->second};
    delivered_.erase(found);
    later({}, [this, response = std::move(response)]() mutable {
        auto complete = [completed = completedResponses_] { ++*completed; };
        if (const auto delegate = delegate_.lock()) {
            delegate->didReceive(std::move(response), std::move(complete));
        } else {
            complete();
        }
    });
    return true;
}

bool SimulatedNotificationCenter::dismiss(std::string_view identifier) {
    const auto found = delivered_.find(identifier);
    if (found == delivered_.end()) {
        return false;
    }
    delivered_.erase(found);
    return true;
}

void SimulatedNotificationCenter::clear() {
    pending_.clear();
    delivered_.clear();
}

}  // namespace zelkovanta::platform::simulated
