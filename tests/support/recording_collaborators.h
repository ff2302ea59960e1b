#pragma once

#include "platform/simulated/memory_stores.h"
#include "store/collaborators.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Stand-ins for what stands beside the store. They do nothing but write down, in one order, what was asked of them.
namespace zelkovanta::support {

/// The calls, one line each.
class Journal {
public:
    void add(std::string line) { lines_.push_back(std::move(line)); }
    [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
    /// The lines so far; the journal begins anew.
    std::vector<std::string> take() { return std::exchange(lines_, {}); }

private:
    std::vector<std::string> lines_;
};

class RecordingNotifications final : public store::DesktopNotifications {
public:
    explicit RecordingNotifications(Journal& journal) : journal_(journal) {}

    ActionHandler actionHandler;
    bool permissionWasRequested = false;
    /// Looks at the state that comes with a notification.
    std::function<void(const store::StoreState&)> onNotify = [](const auto&) {};

    void setActionHandler(ActionHandler handler) override;
    void registerCategories() override { journal_.add("notifications.registerCategories"); }
    bool permissionRequested() const override { return permissionWasRequested; }
    void setPermissionRequested() override;
    platform::Awaitable<void> requestPermission() override;
    void notifyNewSignal(const store::StoreState& state, const records::Signal& signal) override;
    void notifySignalUpdate(const store::StoreState& state, const records::Signal& signal,
                            const records::Signal* previous) override;
    void reconcile(std::span<const std::string_view> activeSignalIds,
                   std::optional<std::string_view> activeMemberId) override;

private:
    Journal& journal_;
};

/// Keys are written without their common beginning, "macos.".
class RecordingNotes final : public store::NoteRegistry {
public:
    explicit RecordingNotes(Journal& journal) : journal_(journal) {}

    void setNotes(std::span<const std::string_view> notes, std::string_view key) override;
    void addNotesToHistory(std::span<const std::string_view> notes, std::string_view key) override;
    void retireNotes(std::string_view key) override;
    void clearSendingNotes() override { journal_.add("notes.clearSending"); }

private:
    Journal& journal_;
};

class RecordingCrashSession final : public store::CrashSession {
public:
    explicit RecordingCrashSession(Journal& journal) : journal_(journal) {}

    Sender sender;  ///< the current one, empty if there is none

    void start() override { journal_.add("crash.start"); }
    void setSender(std::string_view serverURL, Sender to) override;
    void clearSender() override;
    platform::Awaitable<void> flush() override;
    void writeContext(store::PairedContext context) override;
    void setScreen(std::string_view name) override { journal_.add("crash.setScreen " + std::string{name}); }

private:
    Journal& journal_;
};

class RecordingUpdates final : public store::UpdateService {
public:
    explicit RecordingUpdates(Journal& journal) : journal_(journal) {}
    void announce(const records::DesktopRelease& release) override;

private:
    Journal& journal_;
};

class RecordingBeacon final : public store::RoomBeacon {
public:
    explicit RecordingBeacon(Journal& journal) : journal_(journal) {}
    void stop() override { journal_.add("beacon.stop"); }

private:
    Journal& journal_;
};

class RecordingMainWindow final : public store::MainWindow {
public:
    explicit RecordingMainWindow(Journal& journal) : journal_(journal) {}
    void show() override { journal_.add("window.show"); }

private:
    Journal& journal_;
};

/// Settings in memory whose writes stand in the journal.
class RecordingDefaults final : public platform::UserDefaults {
public:
    explicit RecordingDefaults(Journal& journal) : journal_(journal) {}

    platform::simulated::MemoryUserDefaults memory;

    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const override { return memory.boolean(key); }
    [[nodiscard]] std::optional<double> number(std::string_view key) const override { return memory.number(key); }
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override { return memory.text(key); }
    [[nodiscard]] bool hasValue(std::string_view key) const override { return memory.hasValue(key); }
    void setBoolean(std::string_view key, bool value) override;
    void setNumber(std::string_view key, double value) override;
    void setText(std::string_view key, std::string_view value) override;
    void remove(std::string_view key) override;

private:
    Journal& journal_;
};

/// A key store in memory whose operations stand in the journal.
class RecordingKeyStore final : public platform::KeyStore {
public:
    explicit RecordingKeyStore(Journal& journal) : journal_(journal) {}

    platform::simulated::MemoryKeyStore memory;

    platform::Awaitable<std::optional<std::string>> read(platform::KeyStoreItem item) override;
    void write(platform::KeyStoreItem item, std::string value) override;
    void remove(platform::KeyStoreItem item) override;

private:
    Journal& journal_;
};

}  // namespace zelkovanta::support
