#pragma once

#include "platform/async.h"
#include "platform/clock.h"
#include "platform/linux/sound_player.h"
#include "platform/user_notification_center.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zelkovanta::platform::linux_host {

/// The notification centre of this desktop, "org.freedesktop.Notifications" on the session bus. What it is to do says
/// `NotificationLedger`; this object talks to the bus, plays the clips and keeps the file.
///
/// The numbers of signal notifications are kept in a file, so that the next run can withdraw them: nothing that is
/// shown is written. A button of a notification of the last run works with daemons that tell everybody of a press.
///
/// Main thread; completions and the delegate are called there. Nothing waits for the bus: calls are answered later or
/// never. Without permission to ask for, permission is always granted.
class DesktopNotificationCenter final : public UserNotificationCenter {
public:
    struct Settings {
        std::filesystem::path file;    ///< what is kept between runs
        std::filesystem::path sounds;  ///< the folder of the clips
        std::vector<SoundPlayer::Player> players = SoundPlayer::hostPlayers();
    };
    /// What happens when a person clicks on a notification itself; `activationToken` is empty if the desktop gave none.
    using RaiseHandler = std::function<void(const std::string& activationToken)>;

    /// Connecting to the bus may wait, so it happens on `connecting`; `files` is a serial queue for what may block.
    DesktopNotificationCenter(const Settings& settings, Clock& clock, Executor main, const Executor& connecting,
                              Executor files);
    /// Ends, if that was not done before.
    ~DesktopNotificationCenter() override;
    DesktopNotificationCenter(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter& operator=(const DesktopNotificationCenter&) = delete;

    /// Brings what is to be kept to the disk, and lets go of everything else: what is shown stays, no completion and no
    /// delegate is called from here on.
    void end();

    void setRaiseHandler(RaiseHandler handler);

    void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) override;
    void setNotificationCategories(std::vector<NotificationCategory> categories) override;
    void requestAuthorization(AuthorizationOptions options, Completion<Authorization> completion) override;
    void add(NotificationRequest request, Completion<> completion) override;
    void getPendingRequests(Completion<NotificationRequests> completion) override;
    void getDeliveredNotifications(Completion<NotificationRequests> completion) override;
    void removePendingRequests(std::vector<std::string> identifiers) override;
    void removeDeliveredNotifications(std::vector<std::string> identifiers) override;

private:
    class State;
    std::shared_ptr<State> state_;
};

}  // namespace zelkovanta::platform::linux_host
