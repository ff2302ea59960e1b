#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// The desktop's own notifications. (Names that parts of this program post to each other: `notification_center.h`.)
namespace zelkovanta::platform {

/// A value in `NotificationUserInfo` that is not a text. This program posts none; what was kept since the last run may
/// have been written by anybody.
struct NoText {
    bool operator==(const NoText&) const = default;
};

/// What a notification carries for the program that posted it. It is not shown.
using NotificationUserInfo = std::map<std::string, std::variant<std::string, NoText>, std::less<>>;

/// The sound that the host plays for a message of any program.
struct DefaultSound {
    bool operator==(const DefaultSound&) const = default;
};
/// One of the program's own clips, by the name of its file.
struct SoundFile {
    std::string name;  ///< such as "chime.caf", without a folder
    bool operator==(const SoundFile&) const = default;
};
using NotificationSound = std::variant<DefaultSound, SoundFile>;

/// Plain text throughout: what a host would read as markup must be shown literally.
struct NotificationContent {
    std::string title;
    std::string body;
    std::optional<NotificationSound> sound;  ///< none: silent
    std::string threadIdentifier;            ///< notifications of one thread belong together; empty: none
    std::string categoryIdentifier;          ///< names the buttons; empty: no buttons
    NotificationUserInfo userInfo;
    bool operator==(const NotificationContent&) const = default;
};

/// Shown at once. A request replaces an earlier one of the same identifier, pending or delivered.
struct NotificationRequest {
    std::string identifier;  ///< chosen by the program, valid across its runs
    NotificationContent content;
    bool operator==(const NotificationRequest&) const = default;
};
/// Requests are shared, since a reconciliation asks for all of them and changes none.
using NotificationRequests = std::vector<std::shared_ptr<const NotificationRequest>>;

/// A button. Pressing it neither raises the program nor asks who the person is, and it is not drawn as a warning.
struct NotificationAction {
    std::string identifier;
    std::string title;  ///< in the person's language
    bool operator==(const NotificationAction&) const = default;
};

struct NotificationCategory {
    std::string identifier;
    std::vector<NotificationAction> actions;  ///< from the first to the last
    bool operator==(const NotificationCategory&) const = default;
};

/// Identifiers of what a person can do to every notification.
namespace notification_action {
inline constexpr std::string_view defaultAction = "default";  ///< a click on the notification itself
inline constexpr std::string_view dismissal = "dismiss";
}  // namespace notification_action

struct NotificationResponse {
    std::string actionIdentifier;  ///< of an action of the category, or one of `notification_action`
    std::shared_ptr<const NotificationRequest> request;
};

struct AuthorizationOptions {
    bool alert = false;
    bool sound = false;
    bool badge = false;
    bool operator==(const AuthorizationOptions&) const = default;
};

enum class Authorization : std::uint8_t { granted, refused, failed };

/// How a notification appears while a window of the program is in front.
struct PresentationOptions {
    bool banner = false;
    bool list = false;
    bool sound = false;
    bool badge = false;
    bool operator==(const PresentationOptions&) const = default;
};

/// Called on a thread of the centre's choosing.
class UserNotificationCenterDelegate {
public:
    using Completion = std::move_only_function<void()>;

    virtual ~UserNotificationCenterDelegate() = default;
    [[nodiscard]] virtual PresentationOptions willPresent(const NotificationRequest& request) = 0;
    /// The person did something to a notification. `completion` is called once, on any thread, when that is dealt with;
    /// until then the host keeps the process alive as far as it can.
    virtual void didReceive(NotificationResponse response, Completion completion) = 0;
};

/// The host's notification centre, as far as it holds this program's notifications: those of this run, and those that
/// an earlier run left behind.
///
/// Operations are called on the main thread and return at once, whatever the host does; a host without notifications,
/// or one that refuses or never answers, is no failure of theirs. They take effect in the order of their calls: an
/// answer that is asked for after an `add` or a removal counts it in. Completions are called once, later than the call
/// and on any thread. They may be dropped only when the process ends, with the centre.
///
/// A request is pending from its `add` until the host has shown it, and then delivered until the person or the program
/// takes it away, or the host lets go of it. What stands in the centre is a hint for the person and no more: only a
/// response is a person's doing.
class UserNotificationCenter {
public:
    template <class... Values>
    using Completion = std::move_only_function<void(Values...)>;

    virtual ~UserNotificationCenter() = default;

    /// Replaces the earlier delegate. While there is none, a response is completed and dropped.
    virtual void setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) = 0;
    /// Replaces all categories; counts for requests that are added from here on.
    virtual void setNotificationCategories(std::vector<NotificationCategory> categories) = 0;
    virtual void requestAuthorization(AuthorizationOptions options, Completion<Authorization> completion) = 0;

    /// Completes when the request is shown, or certainly will not be: which of both is not told. Without permission it
    /// is discarded.
    virtual void add(NotificationRequest request, Completion<> completion) = 0;
    virtual void getPendingRequests(Completion<NotificationRequests> completion) = 0;
    virtual void getDeliveredNotifications(Completion<NotificationRequests> completion) = 0;
    /// A pending request that is removed is not shown, or is withdrawn as soon as it is. Unknown identifiers are
    /// ignored.
    virtual void removePendingRequests(std::vector<std::string> identifiers) = 0;
    virtual void removeDeliveredNotifications(std::vector<std::string> identifiers) = 0;
};

}  // namespace zelkovanta::platform
