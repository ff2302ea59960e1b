#include "records/text.h"
#include "store/app_store.h"
#include "store/settings.h"

#include <utility>

#include <boost/asio/post.hpp>

namespace zelkovanta::store {

namespace asio = boost::asio;

using namespace std::chrono_literals;

namespace {

constexpr auto revalidationInterval = 10s;

constexpr std::string_view revokedNotice =
    platform::textKey("This computer is no longer linked. Scan the code to set it up again.");

records::DeviceRole roleFromStored(std::string_view word) {
    return records::deviceRoleFromRawValue(word).value_or(records::DeviceRole::room);
}

/// A server's root must name a host over HTTP; a relative reference parses as well, but nothing can be asked of it.
std::optional<records::Url> usableServerURL(std::string_view text) {
    auto url = records::Url::parse(records::trimmed(text));
    if (!url || url->host().empty()) {
        return std::nullopt;
    }
    const std::string scheme = records::lowercased(url->scheme());
    return scheme == "https" || scheme == "http" ? url : std::nullopt;
}

}  // namespace

platform::Awaitable<void> AppStore::resumeSavedSession(std::weak_ptr<AppStore> weak) {
    platform::KeyStore* keyStore = nullptr;
    SessionPublicationGeneration generation;
    if (const auto self = weak.lock(); self && !self->state_.isPaired) {
        keyStore = &self->ports_.keyStore;
        generation = self->publicationGeneration_;
    } else {
        co_return;
    }
    platform::KeyStoreItem item = deviceTokenItem();
    const std::optional<std::string> token = co_await keyStore->read(std::move(item));
    // A pairing made by hand while the key store was being read stands, and one that has ended since does not return.
    if (const auto self = weak.lock(); self && !self->state_.isPaired && self->publicationGeneration_ == generation) {
        self->resumeWithToken(token);
    }
}

void AppStore::resumeWithToken(const std::optional<std::string>& token) {
    const auto url = usableServerURL(state_.settings.serverURLString);
    if (!token || token->empty() || !url) {
        restartSetupQr();
        return;
    }
    // A code that was asked for by hand while the key store was locked must not replace the pairing.
    setupQrTask_.cancel();
    setupQrTask_ = {};
    assign(StoreField::isPaired, state_.isPaired, true);
    assign(StoreField::role, state_.role, roleFromStored(state_.settings.storedRole));
    collaborators_.crash.writeContext(PairedContext::paired);
    startSession(*url, *token);
}

void AppStore::startSession(const records::Url& baseURL, const std::string& token) {
    dropSocket();
    dropClient();
    collaborators_.crash.clearSender();

    sessionBaseURL_ = baseURL;
    sessionToken_ = token;
    state_.hasAuthenticatedSnapshot = false;
    publishActiveQueueNotes();

    apiClient_ = makeClient(baseURL, token);
    installUnauthorizedHandler();
    installCrashSender();
    platform::startTask(ports_.main, [weak = weak_from_this()]() -> platform::Awaitable<void> {
        if (const auto self = weak.lock()) {
            co_await self->collaborators_.crash.flush();
        }
    });
    fetchState();
    startSocket();
    restartSignInCode();
}

void AppStore::dropSocket() {
    if (socket_) {
        socket_->stop();
        socket_.reset();
    }
}

/// Requests under way keep the client until they end; what it says of the token then is nobody's concern.
void AppStore::dropClient() {
    if (apiClient_) {
        apiClient_->setOnDeviceTokenRevoked({});
        apiClient_.reset();
    }
}

void AppStore::startSocket() {
    socket_ = server::WebSocketClient::make(*sessionBaseURL_, *sessionToken_,
                                            {.webSocketLoading = ports_.webSocketLoading,
                                             .clock = ports_.clock,
                                             .random = ports_.random,
                                             .queue = ports_.background.makeSerialQueue(),
                                             .main = ports_.main});
    // An event counts only if it comes from the socket and the generation that are current when it arrives.
    const auto whileCurrent = [weak = weak_from_this(), weakSocket = std::weak_ptr(socket_),
                               generation = publicationGeneration_](auto&& act) {
        const auto self = weak.lock();
        const auto socket = weakSocket.lock();
        if (self && socket && self->socket_ == socket && self->publicationGeneration_ == generation) {
            act(*self);
        }
    };
    socket_->onMessage = [whileCurrent](server::ServerMessage message) {
        whileCurrent([&message](AppStore& self) { self.applyServerMessage(std::move(message)); });
    };
    socket_->onStateChange = [whileCurrent](server::ConnectionState state) {
        whileCurrent(
            [state](AppStore& self) { self.assign(StoreField::connectionState, self.state_.connectionState, state); });
    };
    socket_->onRevoked = [whileCurrent] { whileCurrent([](AppStore& self) { self.handleRevoked(); }); };
    socket_->onUpgradeUnauthorized = [whileCurrent] { whileCurrent([](AppStore& self) { self.revalidateState(); }); };
    socket_->start();
}

void AppStore::installUnauthorizedHandler() {
    apiClient_->setOnDeviceTokenRevoked([main = ports_.main, weak = weak_from_this(),
                                         weakClient = std::weak_ptr(apiClient_), generation = publicationGeneration_] {
        asio::post(main, [weak, weakClient, generation] {
            const auto self = weak.lock();
            if (self && self->holds({generation, weakClient.lock()})) {
                self->handleRevoked();
            }
        });
    });
}

void AppStore::installCrashSender() {
    collaborators_.crash.setSender(sessionBaseURL_->text(),
                                   [weak = weak_from_this(), weakClient = std::weak_ptr(apiClient_),
                                    generation = publicationGeneration_](std::vector<std::string> reports) {
                                       return sendReports(weak, {generation, weakClient.lock()}, std::move(reports));
                                   });
}

platform::Awaitable<std::expected<std::int64_t, server::APIError>> AppStore::sendReports(
    std::weak_ptr<AppStore> weak, ReplyGuard guard, std::vector<std::string> reports) {
    if (const auto self = weak.lock(); !self || !self->holds(guard)) {
        co_return std::unexpected(
            server::api_error::Transport{platform::TransportError{platform::TransportCause::cancelled}});
    }
    co_return co_await guard.client->sendCrashReports(std::move(reports));
}

void AppStore::restartRealtime(Refetch refetch) {
    if (!apiClient_ || !sessionBaseURL_ || !sessionToken_) {
        return;
    }
    installUnauthorizedHandler();
    installCrashSender();
    dropSocket();
    startSocket();
    restartSignInCode();
    if (refetch == Refetch::yes) {
        fetchState();
    }
}

/// Asks for the whole state. Where that fails, everything stays as it is and nothing is shown.
void AppStore::fetchState() {
    platform::startTask(ports_.main, [weak = weak_from_this(), guard = captureGuard()]() -> platform::Awaitable<void> {
        auto reply = co_await guard.client->fetchState();
        const auto self = weak.lock();
        if (self && reply && self->holds(guard)) {
            self->applySnapshot(std::move(*reply));
        }
    });
}

/// A refused upgrade alone does not prove that the token is dead, since a proxy or a clock can refuse as well. REST
/// decides: its 401 ends the pairing.
void AppStore::revalidateState() {
    if (!state_.isPaired || !apiClient_) {
        return;
    }
    const platform::SteadyTime now = ports_.clock.steadyNow();
    if (lastRevalidateAt_ && now - *lastRevalidateAt_ <= revalidationInterval) {
        return;
    }
    lastRevalidateAt_ = now;
    fetchState();
}

platform::Awaitable<void> AppStore::unlinkComputer() {
    const auto self = shared_from_this();
    const ReplyGuard guard = captureGuard();
    if (!guard.client) {
        co_return;
    }
    const auto reply = co_await guard.client->deleteDevice();
    if (!holds(guard)) {
        co_return;
    }
    // After a 401 the computer is gone from the server in any case.
    if (reply || server::isHttpStatus(reply.error(), 401)) {
        resetToUnpaired();
    } else {
        setLastError(describe(reply.error()));
    }
}

/// The one local end of a pairing; makes no request.
void AppStore::resetToUnpaired() {
    ++publicationGeneration_.current;  // First: every reply under way is void from here on.
    dropSocket();
    dropClient();
    stopSignInCode();
    sessionBaseURL_.reset();
    sessionToken_.reset();
    collaborators_.crash.clearSender();
    collaborators_.crash.writeContext(PairedContext::unpaired);
    collaborators_.beacon.stop();

    state_.settings.beaconEnabled = false;
    ports_.defaults.setBoolean(settings_key::beaconEnabled, false);
    ports_.keyStore.remove(deviceTokenItem());
    forgetSignIn();
    state_.settings.storedRole.clear();
    ports_.defaults.setText(settings_key::deviceRole, "");
    markChanged(StoreField::settings);

    assign(StoreField::isPaired, state_.isPaired, false);
    assign(StoreField::office, state_.office, {});
    assign(StoreField::members, state_.members, {});
    assign(StoreField::rooms, state_.rooms, {});
    assign(StoreField::signalTypes, state_.signalTypes, {});
    setSignals({});
    assign(StoreField::device, state_.device, {});
    assign(StoreField::connectionState, state_.connectionState, server::ConnectionState::stopped);
    state_.hasAuthenticatedSnapshot = false;
    pendingNotificationActions_.clear();
    refreshDerivedState();
    restartSetupQr();
}

void AppStore::handleRevoked() {
    if (!state_.isPaired) {
        return;
    }
    resetToUnpaired();
    // After the reset, which begins a new setup and so clears the notice.
    assign(StoreField::setupQrNotice, state_.setupQrNotice, ports_.strings.localized(revokedNotice));
}

}  // namespace zelkovanta::store
