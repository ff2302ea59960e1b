#pragma once

#include "platform/async.h"
#include "records/snapshot.h"
#include "server/api_error.h"
#include "store/store_state.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The services beside the store, as far as the store calls them. All of it on the main thread.
namespace zelkovanta::store {

/// A button that was pressed in a desktop notification.
struct DesktopSignalNotificationAction {
    std::string signalId;
    std::string memberId;  ///< the member to whom the notification was posted
    std::string action;    ///< one of `records::signal_action`
    bool operator==(const DesktopSignalNotificationAction&) const = default;
};

/// What this program puts into the desktop's notification centre.
class DesktopNotifications {
public:
    using ActionHandler = std::function<platform::Awaitable<void>(DesktopSignalNotificationAction)>;

    virtual ~DesktopNotifications() = default;

    virtual void setActionHandler(ActionHandler handler) = 0;
    virtual void registerCategories() = 0;

    virtual bool permissionRequested() const = 0;
    virtual void setPermissionRequested() = 0;
    virtual platform::Awaitable<void> requestPermission() = 0;

    virtual void notifyNewSignal(const StoreState& state, const records::Signal& signal) = 0;
    /// `previous` is the copy that the store held before, null if it had none.
    virtual void notifySignalUpdate(const StoreState& state, const records::Signal& signal,
                                    const records::Signal* previous) = 0;
    /// Takes back what is no longer open for the current member. The ids hold only during the call.
    virtual void reconcile(std::span<const std::string_view> activeSignalIds,
                           std::optional<std::string_view> activeMemberId) = 0;
};

/// Knows the notes that were typed or shown, so that none of them leaves the computer in a crash report. Under each key
/// are the notes that are there now, and a history of those that were there in this session: a crash may come a moment
/// after a note has gone. The texts hold only during a call.
class NoteRegistry {
public:
    virtual ~NoteRegistry() = default;
    /// What is there now under this key, in place of what was; the history stays as it is.
    virtual void setNotes(std::span<const std::string_view> notes, std::string_view key) = 0;
    /// Adds to the history; what is there now stays as it is.
    virtual void addNotesToHistory(std::span<const std::string_view> notes, std::string_view key) = 0;
    /// The session of these notes is over: the key is empty, and what it held, its history too, is known from now on as
    /// of an ended session, since the crash may be one of that session.
    virtual void retireNotes(std::string_view key) = 0;
    /// Forgets what is under `note_key::sendingNote`, its history too: a note that was sent is in the queue now, and
    /// one that was not is still in the form.
    virtual void clearSendingNotes() = 0;
};

namespace note_key {
inline constexpr std::string_view composeNote = "macos.compose-note";
inline constexpr std::string_view sendingNote = "macos.sending-note";
inline constexpr std::string_view activeQueueNotes = "macos.active-queue-notes";
}  // namespace note_key

enum class PairedContext : std::uint8_t { unpaired, paired };

/// Crash reporting, as far as it follows the session.
class CrashSession {
public:
    /// Sends encoded reports; gives how many the server took.
    using Sender =
        std::function<platform::Awaitable<std::expected<std::int64_t, server::APIError>>(std::vector<std::string>)>;

    virtual ~CrashSession() = default;
    virtual void start() = 0;
    virtual void setSender(std::string_view serverURL, Sender sender) = 0;
    virtual void clearSender() = 0;
    /// Sends what is pending, if there is a sender.
    virtual platform::Awaitable<void> flush() = 0;
    /// Keeps the last screen and launch date.
    virtual void writeContext(PairedContext context) = 0;
    virtual void setScreen(std::string_view name) = 0;
};

class UpdateService {
public:
    virtual ~UpdateService() = default;
    virtual void announce(const records::DesktopRelease& release) = 0;
};

class RoomBeacon {
public:
    virtual ~RoomBeacon() = default;
    /// At any time, any number of times.
    virtual void stop() = 0;
};

class MainWindow {
public:
    virtual ~MainWindow() = default;
    virtual void show() = 0;
};

/// What the store calls. The references must outlive it.
struct StoreCollaborators {
    DesktopNotifications& notifications;
    NoteRegistry& notes;
    CrashSession& crash;
    UpdateService& updates;
    RoomBeacon& beacon;
    MainWindow& mainWindow;
};

}  // namespace zelkovanta::store
