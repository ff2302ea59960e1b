#pragma once

#include "alerts/signal_notification.h"
#include "platform/async.h"
#include "platform/random_source.h"
#include "platform/string_table.h"
#include "platform/user_notification_center.h"
#include "store/collaborators.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zelkovanta::alerts {

/// What the service needs of its host. The references must outlive the service.
struct NotificationPorts {
    platform::Executor main;
    platform::UserNotificationCenter& center;
    platform::RandomSource& random;
    const platform::StringTable& strings;
};

/// The one owner of everything that this program puts into the notification centre. It posts what is worth it, and it
/// takes back what is no longer open for the current member: a signal's notification lives as long as the signal is
/// open for the member to whom it was posted. Notices to a room stay until the person takes them away.
///
/// Main thread only. No failure of the centre is shown, told or tried again.
class NotificationService final : public store::DesktopNotifications,
                                  public std::enable_shared_from_this<NotificationService> {
    struct Private {};

public:
    /// A service that is the centre's delegate and has named its buttons.
    [[nodiscard]] static std::shared_ptr<NotificationService> start(const NotificationPorts& ports);
    NotificationService(Private, NotificationPorts ports) : ports_(std::move(ports)) {}
    ~NotificationService() override;
    NotificationService(const NotificationService&) = delete;
    NotificationService& operator=(const NotificationService&) = delete;

    /// The handler gets every press of a button from here on. A press before is lost.
    void setActionHandler(ActionHandler handler) override;
    void registerCategories() override;

    [[nodiscard]] bool permissionRequested() const override { return permissionRequested_; }
    void setPermissionRequested() override { permissionRequested_ = true; }
    /// Asks, and leaves the answer to the host.
    platform::Awaitable<void> requestPermission() override;

    void notifyNewSignal(const store::StoreState& state, const records::Signal& signal) override;
    void notifySignalUpdate(const store::StoreState& state, const records::Signal& signal,
                            const records::Signal* previous) override;
    void reconcile(std::span<const std::string_view> activeSignalIds,
                   std::optional<std::string_view> activeMemberId) override;

    /// Takes back what is out of date by the ids that were given last. The centre answers later; an answer that finds a
    /// newer reconciliation begun is dropped.
    void reconcile();
    void postOnTheWay(const std::optional<std::string>& providerName, std::string_view typeLabel);
    void postAllSet(std::string_view roomName, const std::optional<std::string>& clearedBy);

private:
    class CenterDelegate;

    /// What is open for whom, as the store told it last.
    struct ActiveSignals {
        ExpectedIdentifiers identifiers;
        std::optional<std::string> memberId;
    };
    struct Pass {
        const std::int64_t generation;
        const std::shared_ptr<const ActiveSignals> active;
        std::optional<StaleNotifications> stale = std::nullopt;  ///< made for the first list with something in it
    };
    using Removal = void (platform::UserNotificationCenter::*)(std::vector<std::string>);

    void post(platform::NotificationRequest request);
    void postNotice(platform::NotificationContent content);
    [[nodiscard]] platform::UserNotificationCenter::Completion<platform::NotificationRequests> takeBackStale(
        std::shared_ptr<Pass> pass, Removal removal);

    const NotificationPorts ports_;
    std::shared_ptr<CenterDelegate> delegate_;
    ActionHandler actionHandler_;
    std::int64_t reconciliationGeneration_ = 0;
    std::shared_ptr<const ActiveSignals> latestActive_ = std::make_shared<const ActiveSignals>();
    bool permissionRequested_ = false;
};

}  // namespace zelkovanta::alerts
