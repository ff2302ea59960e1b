#pragma once

#include "store/collaborators.h"

namespace zelkovanta::benchmarks {

/// The services beside a store, doing nothing.
class IdleCollaborators final : public store::DesktopNotifications,
                                public store::NoteRegistry,
                                public store::CrashSession,
                                public store::UpdateService,
                                public store::RoomBeacon,
                                public store::MainWindow {
public:
    [[nodiscard]] store::StoreCollaborators all() { return {*this, *this, *this, *this, *this, *this}; }

    void setActionHandler(ActionHandler) override {}
    void registerCategories() override {}
    [[nodiscard]] bool permissionRequested() const override { return true; }
    void setPermissionRequested() override {}
    platform::Awaitable<void> requestPermission() override { co_return; }
    void notifyNewSignal(const store::StoreState&, const records::Signal&) override {}
    void notifySignalUpdate(const store::StoreState&, const records::Signal&, const records::Signal*) override {}
    void reconcile(std::span<const std::string_view>, std::optional<std::string_view>) override {}
    void setNotes(std::span<const std::string_view>, std::string_view) override {}
    void addNotesToHistory(std::span<const std::string_view>, std::string_view) override {}
    void retireNotes(std::string_view) override {}
    void clearSendingNotes() override {}
    void start() override {}
    void setSender(std::string_view, Sender) override {}
    void clearSender() override {}
    platform::Awaitable<void> flush() override { co_return; }
    void writeContext(store::PairedContext) override {}
    void setScreen(std::string_view) override {}
    void announce(const records::DesktopRelease&) override {}
    void stop() override {}
    void show() override {}
};

}  // namespace zelkovanta::benchmarks
