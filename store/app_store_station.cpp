#include "store/app_store.h"
#include "store/queues.h"
#include "store/settings.h"

#include <algorithm>
#include <utility>

namespace zelkovanta::store {

using namespace std::chrono_literals;

namespace {

constexpr auto powerOffSignOutLimit = 2s;

}  // namespace

void AppStore::reconcileFlexibleRoomSession() {
    FlexibleRoomSession session = reconciledFlexibleRoomSession(state_);
    if (session != state_.flexibleRoomSession) {
        assign(StoreField::flexibleRoomSession, state_.flexibleRoomSession, std::move(session));
    }
}

void AppStore::clearFlexibleRoomSession() {
    if (state_.flexibleRoomSession != FlexibleRoomSession{}) {
        assign(StoreField::flexibleRoomSession, state_.flexibleRoomSession, {});
    }
}

/// A sign-in of somebody new always asks for the room anew.
void AppStore::adoptSignedInMember(const std::string& memberId) {
    const std::optional<std::string> target =
        state_.role == records::DeviceRole::shared ? std::optional{memberId} : std::nullopt;
    if (state_.flexibleRoomSession.signedInMemberId != target) {
        assign(StoreField::flexibleRoomSession, state_.flexibleRoomSession,
               {.signedInMemberId = target, .confirmedRoomId = std::nullopt});
    }
}

const records::Room* AppStore::lastUsedFlexibleRoom() const {
    if (state_.role != records::DeviceRole::shared) {
        return nullptr;
    }
    const auto roomId = ports_.defaults.text(settings_key::lastUsedRoomId);
    const RoomList rooms = activeRooms(state_);
    const auto found = std::ranges::find_if(rooms, [&](const records::Room* room) { return room->id == roomId; });
    return found == rooms.end() ? nullptr : *found;
}

void AppStore::confirmFlexibleRoom(const std::string& roomId) {
    if (state_.role != records::DeviceRole::shared || !state_.device || !state_.device->signedInMemberId) {
        return;
    }
    const RoomList rooms = activeRooms(state_);
    if (std::ranges::find(rooms, roomId, &records::Room::id) == rooms.end()) {
        return;
    }
    assign(StoreField::flexibleRoomSession, state_.flexibleRoomSession,
           {.signedInMemberId = state_.device->signedInMemberId, .confirmedRoomId = roomId});
    ports_.defaults.setText(settings_key::lastUsedRoomId, roomId);
    setLastError(std::nullopt);
}

void AppStore::setSignInScope(const LoginScope& scope) {
    state_.settings.stationSignIn = scope;
    ports_.defaults.setNumber(settings_key::stationSignInBootTime, scope.bootTime);
    ports_.defaults.setText(settings_key::stationSignInAuditSessionId, scope.auditSessionId);
    markChanged(StoreField::settings);
}

void AppStore::clearSignInScope() {
    if (state_.settings.stationSignIn != LoginScope{}) {
        setSignInScope({});
    }
}

/// Whatever the device says, nobody's sign-in of this login is known from here on.
void AppStore::forgetSignIn() {
    clearSignInScope();
    clearFlexibleRoomSession();
}

void AppStore::clearSignedInMember() {
    if (state_.device) {
        state_.device->signedInMemberId.reset();
        markChanged(StoreField::device);
    }
    refreshDerivedState();
}

void AppStore::endSignIn() {
    forgetSignIn();
    clearSignedInMember();
}

LoginScope AppStore::currentLogin() const {
    return {.bootTime = ports_.hostInfo.bootTime(), .auditSessionId = ports_.hostInfo.auditSessionId()};
}

void AppStore::apply(const server::server_message::SessionStarted& message) {
    adoptSignedInMember(message.device.signedInMemberId.value_or(message.member.id));
    assign(StoreField::device, state_.device, message.device);
    upsertMember(message.member);
    setSignInScope(currentLogin());
    verifyLoginScope();
    refreshDerivedState();
    setLastError(std::nullopt);
}

void AppStore::apply(const server::server_message::SessionEnded&) {
    endSignIn();
    if (apiClient_) {
        fetchState();  // The server says what this computer may see now.
    }
}

/// Drops a sign-in that was made in an earlier login of this computer, and tells the server.
void AppStore::verifyLoginScope() {
    if (state_.device && state_.device->memberId) {
        forgetSignIn();
        return;
    }
    if (!state_.device || !state_.device->signedInMemberId || state_.settings.stationSignIn.holdsIn(currentLogin())) {
        return;
    }
    endSignIn();
    if (std::exchange(loginScopeSignOutInFlight_, true)) {
        return;  // A burst of snapshots makes one request.
    }
    platform::startTask(ports_.main, [weak = weak_from_this(), client = apiClient_]() -> platform::Awaitable<void> {
        if (client) {
            // Ignored: a snapshot that still names the member begins the check anew.
            static_cast<void>(co_await client->signOutDevice());
        }
        if (const auto self = weak.lock()) {
            self->loginScopeSignOutInFlight_ = false;
        }
    });
}

platform::Awaitable<void> AppStore::signOutStation() {
    const auto self = shared_from_this();
    const ReplyGuard guard = captureGuard();
    if (!guard.client) {
        co_return;
    }
    const auto reply = co_await guard.client->signOutDevice();
    conclude(guard, reply, [this](const records::EmptyResponse&) { endSignIn(); });
}

void AppStore::handlePowerOff() {
    forgetSignIn();
    if (!state_.device || state_.device->memberId || !state_.device->signedInMemberId || !apiClient_) {
        return;
    }
    // The computer may go down as soon as this returns, so the request is waited for, within bounds.
    ports_.background.runAndWait(
        [client = apiClient_]() -> platform::Awaitable<void> { co_await client->signOutDevice(); },
        powerOffSignOutLimit);
    clearSignedInMember();
}

}  // namespace zelkovanta::store
