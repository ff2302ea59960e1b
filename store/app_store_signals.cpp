#include "records/text.h"
#include "store/app_store.h"
#include "store/queues.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zelkovanta::store {

namespace {

constexpr std::size_t noteLimit = 200;

/// One recipient travels alone, several as a list; a department, or nobody, leaves both out.
void address(records::CreateSignalRequest& request, std::vector<std::string> providerIds) {
    if (request.toDepartment || providerIds.empty()) {
        return;
    }
    if (providerIds.size() == 1) {
        request.providerId = std::move(providerIds.front());
    } else {
        request.providerIds = std::move(providerIds);
    }
}

}  // namespace

platform::Awaitable<void> AppStore::sendSignal(std::string typeId, std::string note, std::optional<std::string> roomId,
                                               std::vector<std::string> providerIds,
                                               std::optional<std::string> toDepartment) {
    const auto self = shared_from_this();
    const std::string_view noteText = note;
    collaborators_.notes.setNotes({&noteText, 1}, note_key::sendingNote);
    const ReplyGuard guard = captureGuard();
    const auto clearSendingNotes = [&] {
        if (guard.generation == publicationGeneration_) {
            collaborators_.notes.clearSendingNotes();
        }
    };

    if (state_.role == records::DeviceRole::shared) {
        const auto confirmedRoomId = confirmedFlexibleRoomId(state_);
        if (!confirmedRoomId || roomId != confirmedRoomId) {
            setLastError(ports_.strings.localized("Choose a room for this sign-in before sending."));
            clearSendingNotes();
            co_return;
        }
    }
    if (!guard.client) {
        clearSendingNotes();
        co_return;
    }
    assign(StoreField::isSending, state_.isSending, true);

    records::CreateSignalRequest request{.roomId = std::move(roomId),
                                         .providerId = {},
                                         .providerIds = {},
                                         .toDepartment = std::move(toDepartment),
                                         .typeId = std::move(typeId),
                                         .note = records::scalarPrefix(noteLimit, note)};
    address(request, std::move(providerIds));
    if (!request.roomId && state_.device) {
        request.roomId = state_.device->roomId;
    }

    const auto reply = co_await guard.client->createSignal(std::move(request));
    conclude(guard, reply, [this](const records::Signal& signal) { mergeSignal(signal); });
    assign(StoreField::isSending, state_.isSending, false);
    clearSendingNotes();
}

platform::Awaitable<void> AppStore::actOnSignal(records::Signal signal, std::string action) {
    const auto self = shared_from_this();
    const ReplyGuard guard = captureGuard();
    if (!guard.client) {
        co_return;
    }
    records::SignalActionRequest request{.action = std::move(action)};
    const auto reply = co_await guard.client->actOnSignal(std::move(signal.id), std::move(request));
    conclude(guard, reply, [this](const records::Signal& changed) { mergeSignal(changed); });
}

platform::Awaitable<void> AppStore::setMemberStatus(records::MemberStatus status) {
    const auto self = shared_from_this();
    const ReplyGuard guard = captureGuard();
    if (!guard.client) {
        co_return;
    }
    records::MemberStatusRequest request{.status = std::string{records::rawValue(status)}};
    const auto reply = co_await guard.client->setMemberStatus(std::move(request));
    conclude(guard, reply, [this](const records::Member& changed) {
        // Unlike an update that the server sends of itself, the reply never adds a member.
        const auto found = std::ranges::find(state_.members, changed.id, &records::Member::id);
        if (found != state_.members.end()) {
            *found = changed;
            markChanged(StoreField::members);
        }
        refreshDerivedState();
    });
}

void AppStore::clearLastError() {
    if (state_.lastError) {
        setLastError(std::nullopt);
    }
}

platform::Awaitable<void> AppStore::enqueueNotificationAction(DesktopSignalNotificationAction action) {
    if (std::ranges::find(pendingNotificationActions_, action) == pendingNotificationActions_.end()) {
        pendingNotificationActions_.push_back(std::move(action));
    }
    co_await drainPendingNotificationActions();
}

/// Acts on the presses one after the other, each once. Before the first snapshot they wait; once it runs nothing stops
/// it, and what is pressed after a reset finds nobody to act for.
platform::Awaitable<void> AppStore::drainPendingNotificationActions() {
    const auto self = shared_from_this();
    if (!state_.hasAuthenticatedSnapshot || notificationActionInFlight_) {
        co_return;
    }
    notificationActionInFlight_ = true;
    while (!pendingNotificationActions_.empty()) {
        const DesktopSignalNotificationAction action = std::move(pendingNotificationActions_.front());
        pendingNotificationActions_.pop_front();
        const records::Member* member = activeMember(state_);
        const auto signal = std::ranges::find(state_.signals, action.signalId, &records::Signal::id);
        if (member && signal != state_.signals.end() && canApplyAction(action, *signal, *member)) {
            records::Signal target = *signal;
            std::string verb = action.action;
            co_await actOnSignal(std::move(target), std::move(verb));
        } else {
            refreshDerivedState();  // Takes a notification that is out of date away.
        }
    }
    notificationActionInFlight_ = false;
}

bool canApplyAction(const DesktopSignalNotificationAction& action, const records::Signal& signal,
                    const records::Member& member) {
    if (action.signalId != signal.id || action.memberId != member.id ||
        !isActionable(signal, member.id, shiftOf(member), providerOf(member))) {
        return false;
    }
    const bool isWaiting = signal.status == records::signal_status::waiting;
    return (action.action == records::signal_action::acknowledge && isWaiting) ||
           (action.action == records::signal_action::done &&
            (isWaiting || signal.status == records::signal_status::acknowledged));
}

}  // namespace zelkovanta::store
