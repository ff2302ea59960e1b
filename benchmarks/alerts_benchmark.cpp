#include "alerts/notification_service.h"
#include "benchmarks/contest.h"
#include "benchmarks/results.h"
#include "platform/simulated/event_loop.h"
#include "platform/simulated/scripted_random.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <malloc.h>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace zelkovanta;

constexpr std::string_view memberId = "7f9c24e5-2f31-4f6a-9b1e-31c0f6a5d201";

/// As long as a server's ids are.
std::string signalId(std::size_t number) {
    const std::string digits = std::to_string(number);
    return "3d1f9a60-5b7c-4e22-8a10-" + std::string(12 - digits.size(), '0') + digits;
}

/// Holds what it was given, and answers at once and on the asking thread: whatever is timed is the alerts' own work.
class PromptCenter final : public platform::UserNotificationCenter {
public:
    /// The notifications must outlive the centre.
    void deliver(const platform::NotificationRequests& requests) { delivered_ = &requests; }
    [[nodiscard]] std::size_t takeRemoved() { return std::exchange(removed_, 0); }

    void setDelegate(std::weak_ptr<platform::UserNotificationCenterDelegate>) override {}
    void setNotificationCategories(std::vector<platform::NotificationCategory>) override {}
    void requestAuthorization(platform::AuthorizationOptions, Completion<platform::Authorization>) override {}
    void add(platform::NotificationRequest, Completion<>) override {}
    void getPendingRequests(Completion<platform::NotificationRequests> completion) override { completion({}); }
    void getDeliveredNotifications(Completion<platform::NotificationRequests> completion) override {
        completion(*delivered_);
    }
    void removePendingRequests(std::vector<std::string>) override {}
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override { removed_ += identifiers.size(); }

private:
    const platform::NotificationRequests* delivered_ = nullptr;
    std::size_t removed_ = 0;
};

/// The alerts of one computer whose centre shows some of many notifications, half of which are of signals that are
/// over.
class Reconciliation {
public:
    explicit Reconciliation(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            ids_.push_back(signalId(number));
        }
        for (const std::string& id : ids_) {
            platform::NotificationContent content;
            content.title = "Room 3 · Ready";
            content.body = "Dr. Example · Patient has been waiting";
            content.userInfo = alerts::signalUserInfo(id, memberId);
            requests_.push_back(std::make_shared<const platform::NotificationRequest>(platform::NotificationRequest{
                .identifier = alerts::signalIdentifier(id), .content = std::move(content)}));
        }
        for (std::size_t number = 0; number < count; number += 2) {
            open_.emplace_back(ids_[number]);
        }
    }

    /// Divides them into portions of `count` notifications, which is even.
    void divide(std::size_t count) {
        portions_.clear();
        for (std::size_t first = 0; first < requests_.size(); first += count) {
            const auto portion = std::span{requests_}.subspan(first, count);
            portions_.push_back({{portion.begin(), portion.end()}, std::span{open_}.subspan(first / 2, count / 2)});
        }
    }
    /// The next portion alone stands in the centre.
    void showNext() {
        next_ = (next_ + 1) % portions_.size();
        center_.deliver(portions_[next_].requests);
    }
    /// One pass, from the store's call to the last removal; gives how many were taken back.
    std::size_t run() {
        service_->reconcile(portions_[next_].open, memberId);
        loop_.runReady();
        return center_.takeRemoved();
    }

private:
    struct Portion {
        platform::NotificationRequests requests;
        std::span<const std::string_view> open;
    };

    std::vector<std::string> ids_;
    std::vector<std::string_view> open_;
    platform::NotificationRequests requests_;
    std::vector<Portion> portions_;
    std::size_t next_ = 0;
    platform::simulated::EventLoop loop_;
    platform::simulated::EventLoop::Thread& main_ = loop_.makeThread();
    platform::simulated::ScriptedRandom random_;
    platform::KeysAsTexts texts_;
    PromptCenter center_;
    std::shared_ptr<alerts::NotificationService> service_ = alerts::NotificationService::start(
        {.main = main_.executor(), .center = center_, .random = random_, .strings = texts_});
};

bool measurePass(benchmarks::Results& results) {
    constexpr std::size_t count = 500;
    Reconciliation reconciliation{count};
    reconciliation.divide(count);
    reconciliation.showNext();
    if (reconciliation.run() != count / 2) {
        std::cerr << "alert.reconcile.500: the stale notifications were not taken back" << std::endl;
        return false;
    }
    benchmarks::Contest contest;
    contest.join([&] { benchmarks::keep(reconciliation.run()); });
    results.add("alert.reconcile.500", contest.run().front() * 1e3, "ms");
    return true;
}

/// Has the heap keep what it was given. By itself it gives a great deal back to the system when it can, so that the
/// largest size, and no other, would have its memory made anew and cleared for every pass: a third of that time.
void keepHeap() {
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
}

/// The same notifications in portions of each size, one portion after the other: every size finds its records equally
/// far away in memory. What grows is the work.
void measureScaling(benchmarks::Results& results) {
    constexpr std::size_t all = 50'000;
    Reconciliation reconciliation{all};
    std::vector<double> microseconds;
    for (const std::size_t count : {std::size_t{50}, std::size_t{500}, std::size_t{5'000}, all}) {
        reconciliation.divide(count);
        benchmarks::Contest contest;
        contest.join([&] {
            reconciliation.showNext();
            benchmarks::keep(reconciliation.run());
        });
        microseconds.push_back(contest.run().front() * 1e6);
    }
    results.add("alert.scaling", microseconds, "µs");
}

}  // namespace

/// Argument: the file of results.
int main(int count, char** arguments) {
    keepHeap();
    benchmarks::Results results(count > 1 ? arguments[1] : "");
    const bool measured = measurePass(results);
    measureScaling(results);
    return measured && results.write() ? 0 : 1;
}
