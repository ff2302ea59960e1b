#pragma once

#include "platform/clock.h"
#include "platform/linux/notification_events.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace zelkovanta::platform::linux_host {

/// The book of this program's desktop notifications, as a machine: fed with an event and the time at which it is
/// handled, it answers with what is to be done, in order. It has no bus, timer or file.
///
/// No daemon can be asked what it shows, and each has its own idea of numbers. So the ledger goes by these rules:
/// - A number is used with the daemon that gave it and with no other; the number of the answer counts, not the one that
///   was asked for.
/// - One call at most is under way for an identifier. What is added or removed meanwhile is done when it is answered.
/// - What is still due when a daemon comes is shown there once, and its sound, once played, is not played again.
/// - A request may move to the other list between the answer that lists it and the removal that follows from that, so a
///   removal from either list takes it wherever it is by then. What was added over a delivered one is another request.
/// - A daemon that says a notification expired may still list it, so it can still be withdrawn.
/// - A request without a category is a notice. Nobody but the person takes it back, so it is not remembered between
/// runs,
///   and one that has expired is forgotten: what becomes of it in the daemon's list is not told.
class NotificationLedger {
public:
    /// After this long without an answer a request is completed all the same, and a daemon counts as one without
    /// capabilities. The answer is still waited for, since only it tells the number by which to withdraw.
    static constexpr Duration answerLimit = std::chrono::seconds{2};
    /// A daemon that refused is asked again after these waits; some refuse what looks like the last second's.
    static constexpr Duration retryDelays[] = {std::chrono::milliseconds{1200}, std::chrono::seconds{5},
                                               std::chrono::seconds{30}};

    /// `kept` is what the last run left.
    NotificationLedger(ledger::KeptNotifications kept, SteadyTime now);

    [[nodiscard]] ledger::Commands handle(ledger::Event event, SteadyTime now);

    /// Whether it is known what the last run left on the desktop; the two lists are to be asked for only then.
    [[nodiscard]] bool isSettled() const { return phase_ != Phase::unknown; }
    [[nodiscard]] NotificationRequests pending() const;
    [[nodiscard]] NotificationRequests delivered() const;
    [[nodiscard]] ledger::KeptNotifications kept() const;
    /// When `TimeCame` is due, if nothing else happens before.
    [[nodiscard]] std::optional<SteadyTime> nextDue() const;

private:
    enum class Phase : std::uint8_t { unknown, absent, asking, ready };
    struct Call {
        ledger::CallNumber number = 0;
        std::uint64_t revision = 0;
        ledger::DaemonId replaces = 0;
        ledger::SharedRequest request;
        bool hasDaemonSound = false;
    };
    struct Entry {
        ledger::SharedRequest request;  ///< none: withdrawn while a call is under way
        std::vector<NotificationAction> actions;
        std::uint64_t revision = 0;  ///< in the order of all additions
        std::uint64_t shownRevision = 0;
        std::optional<ledger::DaemonId> live;
        std::optional<Call> call;
        std::vector<ledger::CompletionNumber> completions;
        bool isSoundDue = false;
        bool isInherited = false;     ///< from the last run: what it says is not known
        std::size_t attempts = 0;     ///< without success at this daemon
        std::size_t lostDaemons = 0;  ///< that went in the middle of a call for it
        bool isWaitingToRetry = false;

        [[nodiscard]] bool isWanted() const { return request != nullptr; }
        /// A daemon has shown what is wanted, be it one that has gone.
        [[nodiscard]] bool wasShown() const { return isWanted() && shownRevision == revision; }
        [[nodiscard]] bool isDelivered() const { return wasShown() && live; }
        [[nodiscard]] bool isPending() const { return isWanted() && !isDelivered(); }
    };
    using Entries = std::map<std::string, Entry, std::less<>>;
    struct Live {
        std::string identifier;
        ledger::SharedRequest request;
        std::string token;
    };
    enum class DueKind : std::uint8_t { bus, capabilities, answer, retry };
    struct Due {
        DueKind kind;
        std::string name;  ///< of the daemon, or the identifier
        std::uint64_t revision = 0;
    };
    class Handler;

    Phase phase_ = Phase::unknown;
    bool isStarting_ = false;
    bool hasBus_ = false;
    std::string bus_;
    std::string daemon_;
    ledger::Capabilities capabilities_;
    ledger::KeptNotifications inherited_;
    Entries entries_;
    std::unordered_map<ledger::DaemonId, Live> live_;
    std::unordered_map<ledger::CallNumber, std::string> calls_;
    /// Closed by the daemon a moment ago; a press may be told after the closing that it caused.
    std::map<ledger::DaemonId, Live> recentlyClosed_;
    /// Closed while calls are under way, whose answers may come later than that.
    std::set<ledger::DaemonId> closedUnknown_;
    std::set<std::string> unsettled_;
    std::multimap<SteadyTime, Due> due_;
    std::uint64_t revisions_ = 0;
    ledger::CallNumber callNumbers_ = 0;
};

}  // namespace zelkovanta::platform::linux_host
