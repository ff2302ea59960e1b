#include "records/server_date.h"
#include "store/app_store.h"
#include "store/code_reply.h"

#include <chrono>
#include <utility>

namespace zelkovanta::store {

using namespace std::chrono_literals;

namespace {
constexpr auto signInRetryDelay = 10s;
}

std::shared_ptr<void> AppStore::showSignInCode() {
    if (auto viewer = signInCodeViewer_.lock()) {
        return viewer;
    }
    const std::shared_ptr<void> viewer(this, [weak = weak_from_this()](void*) {
        if (const auto self = weak.lock()) {
            self->stopSignInCode();
        }
    });
    signInCodeViewer_ = viewer;
    restartSignInCode();
    return viewer;
}

void AppStore::stopSignInCode() {
    signInCodeTask_.cancel();
    signInCodeTask_ = {};
    if (state_.signInCode != SignInCode{}) {
        assign(StoreField::signInCode, state_.signInCode, {});
    }
}

/// A code belongs to the session in which it was asked for, so each session begins with one of its own.
void AppStore::restartSignInCode() {
    stopSignInCode();
    if (apiClient_ && !signInCodeViewer_.expired()) {
        signInCodeTask_ =
            platform::startTask(ports_.main, [weak = weak_from_this()](platform::CancellationToken token) {
                return rotateSignInCode(weak, std::move(token));
            });
    }
}

platform::Awaitable<void> AppStore::rotateSignInCode(std::weak_ptr<AppStore> weak, platform::CancellationToken token) {
    while (!token.isCancelled()) {
        auto self = weak.lock();
        if (!self || !self->apiClient_) {
            co_return;
        }
        platform::Clock& clock = self->ports_.clock;
        const auto client = self->apiClient_;
        self.reset();

        const auto code = co_await client->requestSignInQr();
        if (token.isCancelled() || !(self = weak.lock())) {
            co_return;
        }
        platform::Duration wait = signInCodeLifetime;
        if (code) {
            self->assign(StoreField::signInCode, self->state_.signInCode,
                         {.image = imageFromDataURL(code->qrPng),
                          .expiresAt = records::formatServerDate(clock.wallNow() + signInCodeLifetime),
                          .error = std::nullopt});
        } else {
            SignInCode shown = self->state_.signInCode;
            shown.error = self->ports_.strings.localized("Reconnecting…");
            self->assign(StoreField::signInCode, self->state_.signInCode, std::move(shown));
            wait = retryDelay(code.error(), signInRetryDelay);
        }
        self.reset();
        co_await platform::sleepFor(clock, wait, token);
    }
}

}  // namespace zelkovanta::store
