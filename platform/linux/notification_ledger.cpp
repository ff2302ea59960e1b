#include "platform/linux/notification_ledger.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zelkovanta::platform::linux_host {

using namespace ledger;

namespace {

constexpr std::size_t mostRecentlyClosed = 64;
constexpr std::size_t mostClosedUnknown = 256;
constexpr std::size_t mostLostDaemons = 3;
constexpr std::uint32_t expired = 1;

SharedRequest requestOf(const Kept& kept) {
    NotificationRequest request;
    request.identifier = kept.identifier;
    request.content.categoryIdentifier = kept.categoryIdentifier;
    request.content.userInfo = kept.userInfo;
    return std::make_shared<const NotificationRequest>(std::move(request));
}

}  // namespace

/// One event's handling: the ledger, the time, and what is to be done so far.
class NotificationLedger::Handler {
public:
    Handler(NotificationLedger& ledger, SteadyTime now) : ledger_(ledger), now_(now) {}

    Commands commands;

    void operator()(BusAnswered& event) {
        ledger_.hasBus_ = true;
        ledger_.bus_ = event.bus;
        if (ledger_.phase_ == Phase::unknown) {
            ledger_.phase_ = Phase::absent;
        }
        changeDaemon(event.daemon);
        const auto forgotten = std::exchange(ledger_.inherited_, {});
        if (event.daemon && forgotten.bus == event.bus && forgotten.daemon == *event.daemon) {
            adopt(forgotten);
        } else if (!forgotten.notifications.empty()) {
            keep();
        }
        if (!event.daemon && std::ranges::any_of(ledger_.entries_, &Entry::isPending, &Entries::value_type::second)) {
            start();
        }
    }

    void operator()(BusMissing&) {
        if (ledger_.phase_ == Phase::unknown) {
            ledger_.phase_ = Phase::absent;
        }
        ledger_.isStarting_ = false;
        settleAll();
    }

    void operator()(DaemonChanged& event) {
        // What the bus says first counts all that came before.
        if (ledger_.hasBus_) {
            changeDaemon(event.daemon);
        }
    }

    void operator()(StartEnded&) {
        ledger_.isStarting_ = false;
        if (ledger_.phase_ == Phase::absent) {
            settleAll();
        }
    }

    void operator()(CapabilitiesKnown& event) {
        if (event.daemon != ledger_.daemon_ || ledger_.phase_ == Phase::absent) {
            return;
        }
        ledger_.capabilities_ = event.capabilities;
        if (ledger_.phase_ == Phase::asking) {
            becomeReady();
        }
    }

    void operator()(Add& event) {
        const std::string identifier = event.request.identifier;
        Entry& entry = ledger_.entries_[identifier];
        entry.isSoundDue = event.request.content.sound.has_value();
        entry.request = std::make_shared<const NotificationRequest>(std::move(event.request));
        entry.actions = std::move(event.actions);
        entry.revision = ++ledger_.revisions_;
        entry.completions.push_back(event.completion);
        entry.isInherited = false;
        entry.attempts = 0;
        entry.lostDaemons = 0;
        entry.isWaitingToRetry = false;
        ledger_.unsettled_.insert(identifier);
        if (ledger_.phase_ == Phase::absent && !ledger_.hasBus_) {
            settle(identifier, entry);
            return;
        }
        setDue(answerLimit, {DueKind::answer, identifier, entry.revision});
        if (ledger_.phase_ == Phase::absent) {
            start();
        }
        advance(identifier, entry);
    }

    void operator()(RemovePending& event) { withdrawEach(event.identifiers, &Entry::isWanted); }
    void operator()(RemoveDelivered& event) { withdrawEach(event.identifiers, &Entry::wasShown); }

    void operator()(PostAnswered& event) {
        const auto found = entryOfCall(event.call);
        if (found == ledger_.entries_.end()) {
            return;
        }
        if (event.id == 0) {
            refused(found);
            return;
        }
        auto& [identifier, entry] = *found;
        const Call call = *std::exchange(entry.call, std::nullopt);
        if (entry.live && *entry.live != event.id) {
            commands.emplace_back(Withdraw{ledger_.daemon_, *entry.live});
            ledger_.live_.erase(*entry.live);
        }
        releaseFromOther(event.id, identifier);
        entry.live = event.id;
        ledger_.live_[event.id] = Live{identifier, call.request, {}};
        ledger_.recentlyClosed_.erase(event.id);
        entry.attempts = 0;
        entry.lostDaemons = 0;
        entry.shownRevision = call.revision;
        if (call.hasDaemonSound && call.revision == entry.revision) {
            entry.isSoundDue = false;
        }
        keep();
        const bool wasClosedBefore = ledger_.closedUnknown_.contains(event.id) && call.replaces != event.id;
        forgetClosedUnknown();
        if (!entry.request) {
            withdraw(found);
        } else if (wasClosedBefore) {
            closed(event.id);
        } else if (entry.isDelivered()) {
            settle(identifier, entry);
        } else {
            advance(identifier, entry);
        }
    }

    void operator()(PostRefused& event) {
        if (const auto found = entryOfCall(event.call); found != ledger_.entries_.end()) {
            refused(found);
        }
    }

    void operator()(Closed& event) {
        if (const auto live = ledger_.live_.find(event.id); live != ledger_.live_.end()) {
            if (event.reason != expired || isNotice(live->second.request)) {
                closed(event.id);
            }
        } else if (event.reason != expired && !ledger_.calls_.empty() &&
                   ledger_.closedUnknown_.size() < mostClosedUnknown) {
            ledger_.closedUnknown_.insert(event.id);
        }
    }

    void operator()(TokenGiven& event) {
        if (const auto found = ledger_.live_.find(event.id); found != ledger_.live_.end()) {
            found->second.token = std::move(event.token);
        }
    }

    void operator()(Invoked& event) {
        if (const auto found = ledger_.live_.find(event.id); found != ledger_.live_.end()) {
            const Live pressed = found->second;
            found->second.token.clear();
            respond(event.action, pressed);
            const auto entry = ledger_.entries_.find(pressed.identifier);
            if (event.action != notification_action::defaultAction && entry->second.isDelivered()) {
                withdraw(entry);
            }
        } else if (const auto late = ledger_.recentlyClosed_.find(event.id); late != ledger_.recentlyClosed_.end()) {
            const Live pressed = std::move(late->second);
            ledger_.recentlyClosed_.erase(late);
            respond(event.action, pressed);
        }
    }

    void operator()(TimeCame&) {
        while (!ledger_.due_.empty() && ledger_.due_.begin()->first <= now_) {
            const Due due = ledger_.due_.extract(ledger_.due_.begin()).mapped();
            comeDue(due);
        }
    }

private:
    void keep() {
        if (!std::ranges::any_of(commands, [](const auto& one) { return std::holds_alternative<Keep>(one); })) {
            commands.emplace_back(Keep{});
        }
    }

    void setDue(Duration wait, Due due) { ledger_.due_.emplace(now_ + wait, std::move(due)); }

    void comeDue(const Due& due) {
        if (due.kind == DueKind::bus) {
            if (ledger_.phase_ == Phase::unknown) {
                ledger_.phase_ = Phase::absent;
                settleAll();
            }
            return;
        }
        if (due.kind == DueKind::capabilities) {
            if (ledger_.phase_ == Phase::asking && ledger_.daemon_ == due.name) {
                becomeReady();
            }
            return;
        }
        const auto found = ledger_.entries_.find(due.name);
        if (found == ledger_.entries_.end() || found->second.revision != due.revision) {
            return;
        }
        if (due.kind == DueKind::answer) {
            settle(found->first, found->second);
        } else if (std::exchange(found->second.isWaitingToRetry, false)) {
            advance(found->first, found->second);
        }
    }

    void start() {
        if (!std::exchange(ledger_.isStarting_, true)) {
            commands.emplace_back(StartDaemon{});
        }
    }

    void changeDaemon(const std::optional<std::string>& daemon) {
        if (ledger_.phase_ != Phase::absent && ledger_.daemon_ == daemon) {
            return;
        }
        loseDaemon();
        if (daemon) {
            ledger_.isStarting_ = false;
            ledger_.daemon_ = *daemon;
            ledger_.capabilities_ = {};
            ledger_.phase_ = Phase::asking;
            commands.emplace_back(AskCapabilities{*daemon});
            setDue(answerLimit, {DueKind::capabilities, *daemon});
        }
    }

    void loseDaemon() {
        ledger_.phase_ = Phase::absent;
        ledger_.daemon_.clear();
        if (!ledger_.live_.empty()) {
            keep();
        }
        ledger_.live_.clear();
        ledger_.calls_.clear();
        ledger_.recentlyClosed_.clear();
        ledger_.closedUnknown_.clear();
        for (auto next = ledger_.entries_.begin(); next != ledger_.entries_.end();) {
            Entry& entry = next->second;
            entry.live.reset();
            entry.isWaitingToRetry = false;
            entry.attempts = 0;
            // It may be what the daemon did not survive, and no text shall end one daemon after the other.
            entry.lostDaemons += std::exchange(entry.call, std::nullopt) ? 1U : 0U;
            // What an earlier run said is not known here, so it cannot be said again.
            if (!entry.request || entry.isInherited) {
                ledger_.unsettled_.erase(next->first);
                next = ledger_.entries_.erase(next);
            } else {
                ++next;
            }
        }
    }

    void adopt(const KeptNotifications& inherited) {
        for (const auto& one : inherited.notifications) {
            if (one.id == 0 || ledger_.live_.contains(one.id)) {
                continue;
            }
            const SharedRequest request = requestOf(one);
            Entry& entry = ledger_.entries_[one.identifier];
            if (entry.live) {
                continue;
            }
            if (!entry.request) {
                entry.request = request;
                entry.isInherited = true;
                entry.revision = entry.shownRevision = ++ledger_.revisions_;
            }
            entry.live = one.id;
            ledger_.live_[one.id] = Live{one.identifier, request, {}};
        }
    }

    void becomeReady() {
        ledger_.phase_ = Phase::ready;
        std::vector<Entries::iterator> waiting;
        for (auto next = ledger_.entries_.begin(); next != ledger_.entries_.end(); ++next) {
            if (next->second.isPending()) {
                waiting.push_back(next);
            }
        }
        std::ranges::sort(waiting, {}, [](const auto& entry) { return entry->second.revision; });
        for (const auto& entry : waiting) {
            advance(entry->first, entry->second);
        }
    }

    void advance(const std::string& identifier, Entry& entry) {
        if (ledger_.phase_ != Phase::ready || entry.call || entry.isWaitingToRetry || !entry.isPending() ||
            entry.attempts > std::size(retryDelays) || entry.lostDaemons > mostLostDaemons) {
            return;
        }
        const auto& sound = entry.request->content.sound;
        const bool hasDaemonSound =
            entry.isSoundDue && sound && std::holds_alternative<DefaultSound>(*sound) && ledger_.capabilities_.sound;
        ++entry.attempts;
        entry.call = Call{.number = ++ledger_.callNumbers_,
                          .revision = entry.revision,
                          .replaces = entry.live.value_or(0),
                          .request = entry.request,
                          .hasDaemonSound = hasDaemonSound};
        ledger_.calls_[entry.call->number] = identifier;
        commands.emplace_back(Post{.daemon = ledger_.daemon_,
                                   .call = entry.call->number,
                                   .replaces = entry.call->replaces,
                                   .request = entry.request,
                                   .actions = entry.actions,
                                   .capabilities = ledger_.capabilities_,
                                   .hasDaemonSound = hasDaemonSound});
    }

    [[nodiscard]] Entries::iterator entryOfCall(CallNumber call) {
        const auto node = ledger_.calls_.extract(call);
        return node ? ledger_.entries_.find(node.mapped()) : ledger_.entries_.end();
    }

    void refused(Entries::iterator found) {
        auto& [identifier, entry] = *found;
        entry.call.reset();
        forgetClosedUnknown();
        if (!entry.request) {
            withdraw(found);
            return;
        }
        settle(identifier, entry);
        if (entry.attempts == 0) {
            // Something newer was asked for during the call.
            advance(identifier, entry);
        } else if (entry.attempts <= std::size(retryDelays)) {
            entry.isWaitingToRetry = true;
            setDue(retryDelays[entry.attempts - 1], {DueKind::retry, identifier, entry.revision});
        }
    }

    void withdrawEach(const std::vector<std::string>& identifiers, bool (Entry::*isMeant)() const) {
        for (const auto& identifier : identifiers) {
            const auto found = ledger_.entries_.find(identifier);
            if (found != ledger_.entries_.end() && (found->second.*isMeant)()) {
                withdraw(found);
            }
        }
    }

    /// The program wants it gone.
    void withdraw(Entries::iterator found) {
        auto& [identifier, entry] = *found;
        entry.request = nullptr;
        settle(identifier, entry);
        if (entry.call) {
            return;
        }
        if (entry.live) {
            commands.emplace_back(Withdraw{ledger_.daemon_, *entry.live});
            ledger_.live_.erase(*entry.live);
            keep();
        }
        ledger_.entries_.erase(found);
    }

    /// The daemon took it away.
    void closed(DaemonId id) {
        auto node = ledger_.live_.extract(id);
        const auto found = ledger_.entries_.find(node.mapped().identifier);
        auto& [identifier, entry] = *found;
        const bool wasDelivered = entry.isDelivered();
        entry.live.reset();
        if (wasDelivered) {
            settle(identifier, entry);
            ledger_.entries_.erase(found);
        } else {
            advance(identifier, entry);
        }
        if (ledger_.recentlyClosed_.size() == mostRecentlyClosed) {
            ledger_.recentlyClosed_.erase(ledger_.recentlyClosed_.begin());
        }
        ledger_.recentlyClosed_[id] = std::move(node.mapped());
        keep();
    }

    /// A daemon that gives a number a second time shows nothing else under it.
    void releaseFromOther(DaemonId id, const std::string& identifier) {
        if (const auto found = ledger_.live_.find(id);
            found != ledger_.live_.end() && found->second.identifier != identifier) {
            closed(id);
        }
    }

    void forgetClosedUnknown() {
        if (ledger_.calls_.empty()) {
            ledger_.closedUnknown_.clear();
        }
    }

    void settleAll() {
        const auto identifiers = ledger_.unsettled_;
        for (const auto& identifier : identifiers) {
            settle(identifier, ledger_.entries_.at(identifier));
        }
    }

    /// It is shown, or no longer waited for: who asked is told, and the sound is heard.
    void settle(const std::string& identifier, Entry& entry) {
        ledger_.unsettled_.erase(identifier);
        for (const auto completion : std::exchange(entry.completions, {})) {
            commands.emplace_back(Complete{completion});
        }
        const bool daemonPlays = entry.call && entry.call->hasDaemonSound && entry.call->revision == entry.revision;
        if (std::exchange(entry.isSoundDue, false) && entry.request && !daemonPlays) {
            commands.emplace_back(Play{*entry.request->content.sound});
        }
    }

    void respond(const std::string& action, const Live& pressed) {
        if (action == notification_action::defaultAction) {
            commands.emplace_back(Raise{pressed.token});
        }
        commands.emplace_back(Respond{action, pressed.request});
    }

    NotificationLedger& ledger_;
    SteadyTime now_;
};

NotificationLedger::NotificationLedger(KeptNotifications kept, SteadyTime now) : inherited_(std::move(kept)) {
    due_.emplace(now + answerLimit, Due{DueKind::bus, {}});
}

Commands NotificationLedger::handle(Event event, SteadyTime now) {
    Handler handler(*this, now);
    std::visit(handler, event);
    return std::move(handler.commands);
}

}  // namespace zelkovanta::platform::linux_host
