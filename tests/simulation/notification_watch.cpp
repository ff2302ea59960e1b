#include "tests/simulation/notification_watch.h"

#include "store/queues.h"

#include <algorithm>
#include <iterator>

namespace zelkovanta::simulation {

namespace {

constexpr std::string_view prefix = "zelkovanta.signal.";

const records::Member* personHere(const store::StoreState& state) {
    if (!state.device) {
        return nullptr;
    }
    const auto& id = state.device->memberId ? state.device->memberId : state.device->signedInMemberId;
    const auto found =
        std::ranges::find_if(state.members, [&id](const records::Member& member) { return id && member.id == *id; });
    return found == state.members.end() ? nullptr : &*found;
}

/// Whether a new signal is worth a notification for this person.
bool isAlerted(const store::StoreState& state, const records::Signal& signal, const records::Member& person) {
    if (state.role == records::DeviceRole::shared && store::confirmedFlexibleRoomId(state) != signal.roomId) {
        return false;
    }
    bool isMeant = person.department == "provider" && person.onShift != false;
    if (signal.providerIds) {
        isMeant = std::ranges::count(*signal.providerIds, person.id) > 0;
    } else if (signal.providerId) {
        isMeant = person.id == *signal.providerId;
    }
    const bool wantsAlerts = !person.desktopAlerts || person.desktopAlerts->enabled != false;
    return isMeant && wantsAlerts && person.status != "dnd" && signal.requesterId != person.id;
}

}  // namespace

void NotificationWatch::created(const store::StoreState& state, const records::Signal& signal) {
    const records::Member* person = personHere(state);
    if (person != nullptr && isAlerted(state, signal, *person)) {
        posted_.insert_or_assign(signal.id, Posted{person->id, !open_.contains(signal.id)});
    }
}

void NotificationWatch::updated(const store::StoreState& state, const records::Signal& signal,
                                const records::Signal* previous) {
    if (state.role != records::DeviceRole::room || !state.device || state.device->roomId != signal.roomId) {
        return;
    }
    const bool isTaken = signal.status == "acknowledged" && previous != nullptr && previous->status == "waiting";
    if (isTaken || signal.status == "done") {
        ++notices_;
    }
}

void NotificationWatch::reconciled(std::span<const std::string_view> openIds,
                                   std::optional<std::string_view> memberId) {
    hasReconciled_ = true;
    open_ = {openIds.begin(), openIds.end()};
    for (auto& [id, posted] : posted_) {
        posted.wasClosed = posted.wasClosed || memberId != posted.memberId || !open_.contains(id);
    }
}

void NotificationWatch::takenAway(std::string_view identifier) {
    if (!identifier.starts_with(prefix)) {
        --notices_;
        return;
    }
    const auto found = posted_.find(identifier.substr(prefix.size()));
    if (found != posted_.end()) {
        posted_.erase(found);
    }
}

void NotificationWatch::cleared() {
    posted_.clear();
    notices_ = 0;
}

std::optional<std::string> NotificationWatch::complaintOf(const store::StoreState& state,
                                                          const platform::NotificationRequest& shown) const {
    const std::string id = shown.identifier.substr(prefix.size());
    const auto posted = posted_.find(id);
    if (posted == posted_.end()) {
        return "alerts of " + id + ", which no event created, or again of what was dealt with";
    }
    const platform::NotificationUserInfo expected{{"signalId", id}, {"memberId", posted->second.memberId}};
    if (shown.content.userInfo != expected || shown.content.categoryIdentifier != "READY_SIGNAL") {
        return "alerts of " + id + " with other marks than it was posted with";
    }
    const records::Member* person = personHere(state);
    if (person == nullptr || person->id != posted->second.memberId) {
        return "alerts of " + id + " for somebody who is not here";
    }
    const auto queue = store::personalQueue(state, person->id);
    if (std::ranges::find(queue, id, &records::Signal::id) == queue.end()) {
        return "alerts of " + id + ", which is over";
    }
    return std::nullopt;
}

std::optional<std::string> NotificationWatch::complaint(
    const store::StoreState& state, const platform::simulated::SimulatedNotificationCenter& center) {
    if (!hasReconciled_) {
        return std::nullopt;
    }
    std::int64_t notices = 0;
    for (const auto& [identifier, request] : center.delivered()) {
        if (!identifier.starts_with(prefix)) {
            ++notices;
        } else if (auto wrong = complaintOf(state, *request)) {
            return wrong;
        }
    }
    if (notices != notices_) {
        return "shows " + std::to_string(notices) + " notices to the room and not " + std::to_string(notices_);
    }
    for (auto posted = posted_.begin(); posted != posted_.end();) {
        const bool isShown = center.delivered().contains(std::string{prefix} + posted->first);
        if (!isShown && !posted->second.wasClosed) {
            return "alerts no more of " + posted->first + ", which is open";
        }
        // What is not there now comes back only with another event.
        posted = isShown ? std::next(posted) : posted_.erase(posted);
    }
    return std::nullopt;
}

}  // namespace zelkovanta::simulation
