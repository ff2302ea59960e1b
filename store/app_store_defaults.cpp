#include "store/app_store.h"
#include "store/settings.h"

namespace zelkovanta::store {

using namespace std::chrono_literals;

namespace {

constexpr auto loginItemCheckInterval = 100ms;
constexpr int loginItemChecks = 20;
constexpr auto loginItemSecondRound = 250ms;

}  // namespace

/// Once for an installation: the window opens at start and the program starts at login, unless the person has decided.
void AppStore::applyDesktopDefaults() {
    if (ports_.defaults.boolean(settings_key::didApplyDesktopDefaults).value_or(false)) {
        return;
    }
    if (!ports_.defaults.hasValue(settings_key::openAsWindow)) {
        state_.settings.openAsWindow = true;
        ports_.defaults.setBoolean(settings_key::openAsWindow, true);
        markChanged(StoreField::settings);
    }
    if (ports_.defaults.hasValue(settings_key::launchAtLogin)) {
        ports_.defaults.setBoolean(settings_key::didApplyDesktopDefaults, true);
        return;
    }
    platform::startTask(ports_.main, [weak = weak_from_this()] { return registerAtFirstLaunch(weak); });
}

platform::Awaitable<void> AppStore::registerAtFirstLaunch(std::weak_ptr<AppStore> weak) {
    for (int round = 0; round < 2; ++round) {
        for (int check = 0; check <= loginItemChecks; ++check) {
            platform::Clock* clock = nullptr;
            if (const auto self = weak.lock()) {
                if (check == 0) {
                    // A failure shows in the status.
                    static_cast<void>(self->ports_.loginItem.registerItem(platform::RegistrationIntent::firstLaunch));
                }
                if (self->checkLoginItem() == LoginItemVerdict::settled) {
                    co_return;
                }
                clock = &self->ports_.clock;
            } else {
                co_return;
            }
            const bool isLastOfRound = check == loginItemChecks;
            if (!isLastOfRound) {
                co_await platform::sleepFor(*clock, loginItemCheckInterval);
            } else if (round == 0) {
                co_await platform::sleepFor(*clock, loginItemSecondRound);
            }
        }
    }
    // The mark stays unset, so that the next launch tries again.
}

AppStore::LoginItemVerdict AppStore::checkLoginItem() {
    if (ports_.defaults.hasValue(settings_key::launchAtLogin)) {
        ports_.defaults.setBoolean(settings_key::didApplyDesktopDefaults, true);
        return LoginItemVerdict::settled;  // The person has decided meanwhile.
    }
    if (ports_.loginItem.status() != platform::LoginItemStatus::enabled) {
        return LoginItemVerdict::open;
    }
    state_.settings.launchAtLogin = true;
    ports_.defaults.setBoolean(settings_key::launchAtLogin, true);
    markChanged(StoreField::settings);
    ports_.defaults.setBoolean(settings_key::didApplyDesktopDefaults, true);
    ports_.notificationCenter.post(launchAtLoginStatusDidChange);
    return LoginItemVerdict::settled;
}

}  // namespace zelkovanta::store
