#include "records/server_date.h"
#include "records/text.h"
#include "store/app_store.h"
#include "store/code_reply.h"
#include "store/settings.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace zelkovanta::store {

using namespace std::chrono_literals;

namespace {

constexpr auto setupCodeLifetime = 270s;
constexpr auto setupPollInterval = 2s;
constexpr auto setupRetryDelay = 8s;

constexpr std::size_t deviceNameLimit = 32;
constexpr std::string_view unnamedComputer = "Mac";
constexpr std::string_view fallbackVersion = "1.0.1";

std::string orFallback(std::string text, std::string_view fallback) {
    return text.empty() ? std::string{fallback} : std::move(text);
}

/// The result of an approved setup request; none while anything is missing.
std::optional<records::PairRedeemResponse> approvedResponse(const records::PairRequestPoll& poll) {
    if (poll.status != "approved" || !poll.deviceToken || !poll.device || !poll.office || !poll.role) {
        return std::nullopt;
    }
    return records::PairRedeemResponse{.deviceToken = *poll.deviceToken,
                                       .device = *poll.device,
                                       .office = *poll.office,
                                       .role = *poll.role,
                                       .room = poll.room,
                                       .member = poll.member};
}

}  // namespace

records::PairDeviceInfo AppStore::currentPairDeviceInfo() const {
    return {
        .kind = "desktop_mac",
        .name = orFallback(records::scalarPrefix(deviceNameLimit, ports_.hostInfo.localizedName()), unnamedComputer),
        .model = orFallback(ports_.hostInfo.hardwareModel(), unnamedComputer),
        .appVersion = ports_.information.text("CFBundleShortVersionString").value_or(std::string{fallbackVersion}),
        .locale = ports_.hostInfo.localeIdentifier()};
}

platform::Awaitable<std::expected<void, PairingFailure>> AppStore::redeemPairingCode(std::string code) {
    const auto self = shared_from_this();
    const SessionPublicationGeneration generation = publicationGeneration_;
    const auto client = makeClient(ports_.defaultServerURL, std::nullopt);
    records::PairRedeemRequest request{.code = std::move(code), .device = currentPairDeviceInfo()};
    auto reply = co_await client->redeemPairingCode(std::move(request));
    if (!reply) {
        co_return std::unexpected(std::move(reply.error()));
    }
    // The setup code may have won the race.
    if (state_.isPaired || generation != publicationGeneration_) {
        co_return std::unexpected(PairingCancelled{});
    }
    completePairing(*reply, ports_.defaultServerURL);
    co_return std::expected<void, PairingFailure>{};
}

void AppStore::restartSetupQr() {
    setupQrTask_.cancel();
    assign(StoreField::setupQrImage, state_.setupQrImage, {});
    assign(StoreField::setupQrExpiresAt, state_.setupQrExpiresAt, {});
    assign(StoreField::setupQrError, state_.setupQrError, {});
    assign(StoreField::setupQrNotice, state_.setupQrNotice, {});
    setupQrTask_ = platform::startTask(ports_.main, [weak = weak_from_this()](platform::CancellationToken token) {
        return runSetupQr(weak, std::move(token));
    });
}

/// Shows a code and polls until an admin has approved this computer; a code that lapsed gives way to a new one. Holds
/// the store only between waits, and looks at the token after each of them.
platform::Awaitable<void> AppStore::runSetupQr(std::weak_ptr<AppStore> weak, platform::CancellationToken token) {
    while (!token.isCancelled()) {
        auto self = weak.lock();
        if (!self) {
            co_return;
        }
        platform::Clock& clock = self->ports_.clock;
        const auto requestClient = self->makeClient(self->ports_.defaultServerURL, std::nullopt);
        records::PairRequestBody request{.device = self->currentPairDeviceInfo()};
        self.reset();

        const auto code = co_await requestClient->requestPairing(std::move(request));
        if (token.isCancelled() || !(self = weak.lock())) {
            co_return;
        }
        if (!code || !code->claimToken || code->claimToken->empty()) {
            self->assign(StoreField::setupQrError, self->state_.setupQrError,
                         self->ports_.strings.localized("Reconnecting…"));
            self.reset();
            const platform::Duration wait = code ? setupRetryDelay : retryDelay(code.error(), setupRetryDelay);
            co_await platform::sleepFor(clock, wait, token);
            continue;
        }
        self->assign(StoreField::setupQrImage, self->state_.setupQrImage, imageFromDataURL(code->qrPng));
        self->assign(StoreField::setupQrError, self->state_.setupQrError, {});
        const platform::SteadyTime deadline = clock.steadyNow() + setupCodeLifetime;
        self->assign(StoreField::setupQrExpiresAt, self->state_.setupQrExpiresAt,
                     records::formatServerDate(clock.wallNow() + setupCodeLifetime));

        while (clock.steadyNow() < deadline) {
            self.reset();
            co_await platform::sleepFor(clock, setupPollInterval, token);
            if (token.isCancelled() || !(self = weak.lock())) {
                co_return;
            }
            const auto pollClient = self->makeClient(self->ports_.defaultServerURL, std::nullopt);
            self.reset();
            std::string claimToken = *code->claimToken;
            const auto poll = co_await pollClient->pollPairing(std::move(claimToken));
            if (token.isCancelled() || !(self = weak.lock())) {
                co_return;
            }
            if (const auto response = poll ? approvedResponse(*poll) : std::nullopt) {
                self->completePairing(*response, self->ports_.defaultServerURL);
                co_return;
            }
        }
    }
}

/// May run within the setup task, which it cancels: the task ends at its next check, this goes on to its end.
void AppStore::completePairing(const records::PairRedeemResponse& response, const records::Url& baseURL) {
    setupQrTask_.cancel();
    setupQrTask_ = {};
    ports_.keyStore.write(deviceTokenItem(), response.deviceToken);
    state_.settings.serverURLString = baseURL.text();
    ports_.defaults.setText(settings_key::serverURL, baseURL.text());
    state_.settings.storedRole = records::rawValue(response.role);
    ports_.defaults.setText(settings_key::deviceRole, state_.settings.storedRole);
    markChanged(StoreField::settings);

    assign(StoreField::role, state_.role, response.role);
    assign(StoreField::office, state_.office, response.office);
    assign(StoreField::device, state_.device, response.device);
    if (response.room) {
        assign(StoreField::rooms, state_.rooms, {*response.room});
    }
    if (response.member) {
        assign(StoreField::members, state_.members, {*response.member});
    }
    reconcileFlexibleRoomSession();
    assign(StoreField::isPaired, state_.isPaired, true);
    collaborators_.crash.writeContext(PairedContext::paired);
    if (!collaborators_.notifications.permissionRequested()) {
        collaborators_.notifications.setPermissionRequested();
        platform::startTask(ports_.main, [weak = weak_from_this()]() -> platform::Awaitable<void> {
            if (const auto self = weak.lock()) {
                co_await self->collaborators_.notifications.requestPermission();
            }
        });
    }
    startSession(baseURL, response.deviceToken);
}

}  // namespace zelkovanta::store
