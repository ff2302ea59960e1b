#pragma once

#include "store/collaborators.h"
#include "tests/simulation/notification_watch.h"
#include "tests/simulation/watch.h"

#include <utility>

namespace zelkovanta::simulation {

/// The real alerts, with a watch that hears what they hear.
class WatchedNotifications final : public store::DesktopNotifications {
public:
    WatchedNotifications(store::DesktopNotifications& notifications, NotificationWatch& watch)
        : notifications_(notifications), watch_(watch) {}

    void setActionHandler(ActionHandler handler) override { notifications_.setActionHandler(std::move(handler)); }
    void registerCategories() override { notifications_.registerCategories(); }
    [[nodiscard]] bool permissionRequested() const override { return notifications_.permissionRequested(); }
    void setPermissionRequested() override { notifications_.setPermissionRequested(); }
    platform::Awaitable<void> requestPermission() override { return notifications_.requestPermission(); }
    void notifyNewSignal(const store::StoreState& state, const records::Signal& signal) override {
        watch_.created(state, signal);
        notifications_.notifyNewSignal(state, signal);
    }
    void notifySignalUpdate(const store::StoreState& state, const records::Signal& signal,
                            const records::Signal* previous) override {
        watch_.updated(state, signal, previous);
        notifications_.notifySignalUpdate(state, signal, previous);
    }
    void reconcile(std::span<const std::string_view> activeSignalIds,
                   std::optional<std::string_view> activeMemberId) override {
        watch_.reconciled(activeSignalIds, activeMemberId);
        notifications_.reconcile(activeSignalIds, activeMemberId);
    }

private:
    store::DesktopNotifications& notifications_;
    NotificationWatch& watch_;
};

/// The other services beside a simulated store. They do nothing, but tell the watch which session is the current one.
class QuietCollaborators final : public store::NoteRegistry,
                                 public store::CrashSession,
                                 public store::UpdateService,
                                 public store::RoomBeacon,
                                 public store::MainWindow {
public:
    explicit QuietCollaborators(Watch& watch) : watch_(watch) {}

    [[nodiscard]] store::StoreCollaborators with(store::DesktopNotifications& notifications) {
        return {notifications, *this, *this, *this, *this, *this};
    }

    void setNotes(std::span<const std::string_view>, std::string_view) override {}
    void addNotesToHistory(std::span<const std::string_view>, std::string_view) override {}
    void retireNotes(std::string_view) override {}
    void clearSendingNotes() override {}

    // The store names the sender anew with each session and generation that it begins, before it asks anything.
    void start() override {}
    void setSender(std::string_view, Sender) override { watch_.sessionBegan(); }
    void clearSender() override { watch_.sessionEnded(); }
    platform::Awaitable<void> flush() override { co_return; }
    void writeContext(store::PairedContext) override {}
    void setScreen(std::string_view) override {}

    void announce(const records::DesktopRelease&) override {}
    void stop() override {}
    void show() override {}

private:
    Watch& watch_;
};

}  // namespace zelkovanta::simulation
