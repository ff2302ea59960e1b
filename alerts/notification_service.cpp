#include "alerts/notification_service.h"

#include "alerts/new_signal.h"
#include "alerts/notification_action.h"
#include "alerts/room_notice.h"
#include "platform/task.h"
#include "platform/uuid.h"

#include <ranges>
#include <utility>
#include <variant>
#include <vector>

#include <boost/asio/post.hpp>

namespace zelkovanta::alerts {

namespace asio = boost::asio;

class NotificationService::CenterDelegate final : public platform::UserNotificationCenterDelegate {
public:
    CenterDelegate(std::weak_ptr<NotificationService> service, platform::Executor main)
        : service_(std::move(service)), main_(std::move(main)) {}

    platform::PresentationOptions willPresent(const platform::NotificationRequest&) override {
        return {.banner = true, .list = true, .sound = true, .badge = false};
    }

    void didReceive(platform::NotificationResponse response, Completion completion) override {
        const auto& content = response.request->content;
        auto action = actionFromResponse(content.categoryIdentifier, response.actionIdentifier, content.userInfo);
        if (!action) {
            completion();
            return;
        }
        platform::startTask(main_, [service = service_, action = std::move(*action),
                                    completion = std::make_shared<Completion>(std::move(completion))] {
            return handle(service, action, completion);
        });
    }

private:
    static platform::Awaitable<void> handle(std::weak_ptr<NotificationService> weak,
                                            store::DesktopSignalNotificationAction action,
                                            std::shared_ptr<Completion> completion) {
        // A copy, since another handler may come while this one works.
        ActionHandler handler;
        if (const auto service = weak.lock()) {
            handler = service->actionHandler_;
        }
        if (handler) {
            co_await handler(std::move(action));
        }
        (*completion)();
    }

    const std::weak_ptr<NotificationService> service_;
    const platform::Executor main_;
};

std::shared_ptr<NotificationService> NotificationService::start(const NotificationPorts& ports) {
    auto service = std::make_shared<NotificationService>(Private{}, ports);
    service->delegate_ = std::make_shared<CenterDelegate>(service, ports.main);
    ports.center.setDelegate(service->delegate_);
    service->registerCategories();
    return service;
}

NotificationService::~NotificationService() = default;

void NotificationService::setActionHandler(ActionHandler handler) {
    actionHandler_ = std::move(handler);
    ports_.center.setDelegate(delegate_);
}

void NotificationService::registerCategories() {
    std::vector<platform::NotificationCategory> categories{readySignalButtons(ports_.strings)};
    ports_.center.setNotificationCategories(std::move(categories));
}

platform::Awaitable<void> NotificationService::requestPermission() {
    ports_.center.requestAuthorization({.alert = true, .sound = true, .badge = true}, [](platform::Authorization) {});
    co_return;
}

void NotificationService::notifyNewSignal(const store::StoreState& state, const records::Signal& signal) {
    if (auto request = requestForNewSignal(state, signal, ports_.strings)) {
        post(std::move(*request));
    }
}

void NotificationService::notifySignalUpdate(const store::StoreState& state, const records::Signal& signal,
                                             const records::Signal* previous) {
    const auto notice = noticeOfUpdate(state, signal, previous, ports_.strings);
    if (!notice) {
        return;
    }
    if (const auto* onTheWay = std::get_if<OnTheWay>(&*notice)) {
        postOnTheWay(onTheWay->providerName, onTheWay->typeLabel);
    } else if (const auto* allSet = std::get_if<AllSet>(&*notice)) {
        postAllSet(allSet->roomName, allSet->clearedBy);
    }
}

void NotificationService::postOnTheWay(const std::optional<std::string>& providerName, std::string_view typeLabel) {
    postNotice(onTheWayContent(providerName, typeLabel, ports_.strings));
}

void NotificationService::postAllSet(std::string_view roomName, const std::optional<std::string>& clearedBy) {
    postNotice(allSetContent(roomName, clearedBy, ports_.strings));
}

void NotificationService::postNotice(platform::NotificationContent content) {
    post({.identifier = platform::makeUUID(ports_.random), .content = std::move(content)});
}

/// A signal may end while its notification is on the way; then the pass after the arrival takes it back.
void NotificationService::post(platform::NotificationRequest request) {
    const bool isSignal = request.identifier.starts_with(signalIdentifierPrefix);
    ports_.center.add(std::move(request), [weak = weak_from_this(), main = ports_.main, isSignal] {
        if (!isSignal) {
            return;
        }
        asio::post(main, [weak] {
            if (const auto self = weak.lock()) {
                self->reconcile();
            }
        });
    });
}

void NotificationService::reconcile(std::span<const std::string_view> activeSignalIds,
                                    std::optional<std::string_view> activeMemberId) {
    latestActive_ = std::make_shared<const ActiveSignals>(
        ActiveSignals{.identifiers = expectedIdentifiers(activeSignalIds),
                      .memberId = activeMemberId ? std::optional<std::string>{*activeMemberId} : std::nullopt});
    reconcile();
}

void NotificationService::reconcile() {
    const auto pass = std::make_shared<Pass>(Pass{.generation = ++reconciliationGeneration_, .active = latestActive_});
    auto& center = ports_.center;
    center.getPendingRequests(takeBackStale(pass, &platform::UserNotificationCenter::removePendingRequests));
    center.getDeliveredNotifications(
        takeBackStale(pass, &platform::UserNotificationCenter::removeDeliveredNotifications));
}

platform::UserNotificationCenter::Completion<platform::NotificationRequests> NotificationService::takeBackStale(
    std::shared_ptr<Pass> pass, Removal removal) {
    return [weak = weak_from_this(), main = ports_.main, pass = std::move(pass),
            removal](platform::NotificationRequests requests) {
        asio::post(main, [weak, pass, removal, requests = std::move(requests)] {
            const auto self = weak.lock();
            if (!self || requests.empty() || self->reconciliationGeneration_ != pass->generation) {
                return;
            }
            const auto identities =
                std::views::transform(requests, [](const auto& request) { return identityOf(*request); });
            if (!pass->stale) {
                pass->stale.emplace(pass->active->identifiers, pass->active->memberId);
            }
            auto stale = staleIdentifiers(identities, *pass->stale);
            if (!stale.empty()) {
                (self->ports_.center.*removal)(std::move(stale));
            }
        });
    };
}

}  // namespace zelkovanta::alerts
