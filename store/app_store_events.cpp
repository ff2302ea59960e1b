#include "store/app_store.h"
#include "store/queues.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zelkovanta::store {

namespace {

std::vector<std::string_view> notesOfActiveSignals(const std::vector<records::Signal>& signals) {
    std::vector<std::string_view> notes;
    for (const auto& signal : signals) {
        if (records::isActive(signal) && signal.note && !signal.note->empty()) {
            notes.emplace_back(*signal.note);
        }
    }
    return notes;
}

}  // namespace

void AppStore::applyServerMessage(server::ServerMessage message) {
    std::visit([this](auto& payload) { apply(std::move(payload)); }, message);
}

void AppStore::apply(records::StateSnapshot&& snapshot) {
    applySnapshot(std::move(snapshot));
}

void AppStore::apply(const server::server_message::SignalCreated& message) {
    mergeSignal(message.signal);
    collaborators_.notifications.notifyNewSignal(state_, message.signal);
}

void AppStore::apply(const server::server_message::SignalUpdated& message) {
    const auto held = std::ranges::find(state_.signals, message.signal.id, &records::Signal::id);
    // A copy, since the merge writes over the element.
    const auto previous = held == state_.signals.end() ? std::nullopt : std::optional{*held};
    mergeSignal(message.signal);
    collaborators_.notifications.notifySignalUpdate(state_, message.signal, previous ? &*previous : nullptr);
}

void AppStore::apply(const server::server_message::MemberUpdated& message) {
    upsertMember(message.member);
    refreshDerivedState();
}

void AppStore::apply(const server::server_message::OfficeUpdated& message) {
    if (state_.office && state_.office->id != message.office.id) {
        moveToOffice(message.office);
        return;
    }
    assign(StoreField::office, state_.office, message.office);
    refreshDerivedState();
}

void AppStore::apply(const server::server_message::RoomsUpdated& message) {
    assign(StoreField::rooms, state_.rooms, message.rooms);
    reconcileFlexibleRoomSession();
    collaborators_.beacon.stop();
}

void AppStore::apply(const server::server_message::TypesUpdated& message) {
    assign(StoreField::signalTypes, state_.signalTypes, message.signalTypes);
}

void AppStore::apply(const records::DesktopRelease& release) {
    collaborators_.updates.announce(release);
}

void AppStore::apply(const server::server_message::Pong&) {}

/// A snapshot is authoritative: nothing of the office's data is merged with what was held before.
void AppStore::applySnapshot(records::StateSnapshot snapshot) {
    const bool officeChanged = state_.office && state_.office->id != snapshot.office.id;
    if (officeChanged) {
        ++publicationGeneration_.current;
    }
    assign(StoreField::office, state_.office, std::move(snapshot.office));
    assign(StoreField::members, state_.members, std::move(snapshot.members));
    assign(StoreField::rooms, state_.rooms, std::move(snapshot.rooms));
    assign(StoreField::signalTypes, state_.signalTypes, std::move(snapshot.signalTypes));
    std::erase_if(snapshot.signals, [](const records::Signal& signal) { return !records::isActive(signal); });
    setSignals(std::move(snapshot.signals));
    if (officeChanged) {
        // The old office's notes must not stay in the lists of open notes.
        collaborators_.notes.retireNotes(note_key::activeQueueNotes);
    }
    assign(StoreField::device, state_.device, std::move(snapshot.device));
    reconcileFlexibleRoomSession();
    collaborators_.beacon.stop();
    verifyLoginScope();
    state_.hasAuthenticatedSnapshot = true;
    refreshDerivedState();
    platform::startTask(ports_.main, [weak = weak_from_this()]() -> platform::Awaitable<void> {
        if (const auto self = weak.lock()) {
            co_await self->drainPendingNotificationActions();
        }
    });
    if (snapshot.desktopRelease) {
        collaborators_.updates.announce(*snapshot.desktopRelease);
    }
    if (officeChanged) {
        restartRealtime(Refetch::no);
    }
}

/// The newest copy to arrive wins; an element keeps its position.
void AppStore::mergeSignal(const records::Signal& signal) {
    const auto found = std::ranges::find(state_.signals, signal.id, &records::Signal::id);
    const bool isHeld = found != state_.signals.end();
    if (!isHeld && !records::isActive(signal)) {
        return;
    }
    const auto index = found - state_.signals.begin();
    changeSignals([&](std::vector<records::Signal>& signals) {
        if (!isHeld) {
            signals.push_back(signal);
        } else if (records::isActive(signal)) {
            signals[static_cast<std::size_t>(index)] = signal;
        } else {
            signals.erase(signals.begin() + index);
        }
    });
    refreshDerivedState();
}

void AppStore::setSignals(std::vector<records::Signal> list) {
    changeSignals([&list](std::vector<records::Signal>& signals) { signals = std::move(list); });
}

/// Notes go to the history on both sides of the change, so that a note which has just
/// left the store can still be taken out of a report of a crash a moment ago.
void AppStore::changeSignals(const std::function<void(std::vector<records::Signal>&)>& change) {
    collaborators_.notes.addNotesToHistory(notesOfActiveSignals(state_.signals), note_key::activeQueueNotes);
    change(state_.signals);
    markChanged(StoreField::signals);
    collaborators_.notes.addNotesToHistory(notesOfActiveSignals(state_.signals), note_key::activeQueueNotes);
}

void AppStore::upsertMember(const records::Member& member) {
    const auto found = std::ranges::find(state_.members, member.id, &records::Member::id);
    if (found != state_.members.end()) {
        *found = member;
    } else {
        state_.members.push_back(member);
    }
    markChanged(StoreField::members);
}

/// This computer was moved to another office, and everything of the old one goes.
void AppStore::moveToOffice(const records::Office& office) {
    ++publicationGeneration_.current;
    state_.hasAuthenticatedSnapshot = false;
    assign(StoreField::members, state_.members, {});
    assign(StoreField::rooms, state_.rooms, {});
    assign(StoreField::signalTypes, state_.signalTypes, {});
    setSignals({});
    assign(StoreField::device, state_.device, {});
    assign(StoreField::office, state_.office, office);
    collaborators_.notes.retireNotes(note_key::activeQueueNotes);
    refreshDerivedState();
    restartRealtime(Refetch::yes);
}

void AppStore::refreshDerivedState() {
    publishActiveQueueNotes();
    const records::Member* member = activeMember(state_);
    if (member) {
        collaborators_.notifications.reconcile(personalSignalIds(state_, member->id), std::string_view{member->id});
    } else {
        collaborators_.notifications.reconcile({}, std::nullopt);
    }
}

/// A workstation at its sign-in prompt shows no queue, so no note is to be attached to its crash reports.
void AppStore::publishActiveQueueNotes() {
    if (!state_.isPaired || !state_.hasAuthenticatedSnapshot || needsSignIn(state_)) {
        collaborators_.notes.retireNotes(note_key::activeQueueNotes);
        return;
    }
    const auto notes = notesOfActiveSignals(state_.signals);
    collaborators_.notes.addNotesToHistory(notes, note_key::activeQueueNotes);
    collaborators_.notes.setNotes(notes, note_key::activeQueueNotes);
}

}  // namespace zelkovanta::store
