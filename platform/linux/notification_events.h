#pragma once

#include "platform/user_notification_center.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

/// What the ledger of desktop notifications hears, and what it answers with.
namespace zelkovanta::platform::linux_host::ledger {

/// A number that one daemon gave; it means nothing to any other.
using DaemonId = std::uint32_t;
/// Counts the calls that post; an answer to a call that the ledger has given up changes nothing.
using CallNumber = std::uint64_t;
/// Counts the `Add`s whose completion is to be called.
using CompletionNumber = std::uint64_t;

using SharedRequest = std::shared_ptr<const NotificationRequest>;

/// Without buttons: it tells what has happened, and stays until the person takes it away.
[[nodiscard]] inline bool isNotice(const SharedRequest& request) {
    return request->content.categoryIdentifier.empty();
}

/// What a daemon says it can do, as far as it changes what it is sent.
struct Capabilities {
    bool actions = false;
    bool bodyMarkup = false;
    bool persistence = false;  ///< keeps what has left the screen in a list
    bool sound = false;        ///< plays sounds by itself
    bool operator==(const Capabilities&) const = default;
};

/// A notification that stands on the desktop, as far as it is remembered between runs: nothing that was shown.
struct Kept {
    DaemonId id = 0;
    std::string identifier;
    std::string categoryIdentifier;
    NotificationUserInfo userInfo;
    bool operator==(const Kept&) const = default;
};
/// Numbers hold for one daemon on one bus, so both are named. Bus names begin again with each bus.
struct KeptNotifications {
    std::string bus;
    std::string daemon;
    std::vector<Kept> notifications;
    bool operator==(const KeptNotifications&) const = default;
};

// Events.

/// The bus and its daemon, if one runs, are known for the first time.
struct BusAnswered {
    std::string bus;
    std::optional<std::string> daemon;
};
struct BusMissing {};
/// The service changed hands; none if it has vanished.
struct DaemonChanged {
    std::optional<std::string> daemon;
};
/// The attempt to start one is over, with or without success.
struct StartEnded {};
struct CapabilitiesKnown {
    std::string daemon;
    Capabilities capabilities;
};
struct Add {
    NotificationRequest request;
    std::vector<NotificationAction> actions;  ///< of its category
    CompletionNumber completion = 0;
};
struct RemovePending {
    std::vector<std::string> identifiers;
};
struct RemoveDelivered {
    std::vector<std::string> identifiers;
};
struct PostAnswered {
    CallNumber call = 0;
    DaemonId id = 0;
};
struct PostRefused {
    CallNumber call = 0;
};
/// `reason` is the daemon's: 1 expired, 2 dismissed, 3 closed by a call, 4 anything else.
struct Closed {
    DaemonId id = 0;
    std::uint32_t reason = 0;
};
/// Leave to raise a window, which comes before the press that it belongs to.
struct TokenGiven {
    DaemonId id = 0;
    std::string token;
};
struct Invoked {
    DaemonId id = 0;
    std::string action;
};
struct TimeCame {};

using Event = std::variant<BusAnswered, BusMissing, DaemonChanged, StartEnded, CapabilitiesKnown, Add, RemovePending,
                           RemoveDelivered, PostAnswered, PostRefused, Closed, TokenGiven, Invoked, TimeCame>;

// Commands.

struct StartDaemon {};
struct AskCapabilities {
    std::string daemon;
};
/// Show it, in the place of `replaces` unless that is 0.
struct Post {
    std::string daemon;
    CallNumber call = 0;
    DaemonId replaces = 0;
    SharedRequest request;
    std::vector<NotificationAction> actions;
    Capabilities capabilities;
    bool hasDaemonSound = false;  ///< the daemon is to play the host's sound for messages
};
struct Withdraw {
    std::string daemon;
    DaemonId id = 0;
};
struct Play {
    NotificationSound sound;
};
struct Complete {
    CompletionNumber completion = 0;
};
struct Respond {
    std::string action;
    SharedRequest request;
};
/// The person wants to see the program.
struct Raise {
    std::string token;  ///< empty: the desktop gave none
};
/// What is to be kept for the next run differs from what it was.
struct Keep {};

using Command = std::variant<StartDaemon, AskCapabilities, Post, Withdraw, Play, Complete, Respond, Raise, Keep>;
using Commands = std::vector<Command>;

/// For the messages of tests.
std::ostream& operator<<(std::ostream& out, const Command& command);

}  // namespace zelkovanta::platform::linux_host::ledger
