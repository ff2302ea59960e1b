#include "store/settings.h"

namespace zelkovanta::store {

StoreSettings loadSettings(const platform::UserDefaults& defaults) {
    return {
        .serverURLString = defaults.text(settings_key::serverURL).value_or(""),
        .storedRole = defaults.text(settings_key::deviceRole).value_or(""),
        .beaconEnabled = defaults.boolean(settings_key::beaconEnabled).value_or(false),
        .launchAtLogin = defaults.boolean(settings_key::launchAtLogin).value_or(false),
        .openAsWindow = defaults.boolean(settings_key::openAsWindow).value_or(false),
        .stationSignIn = {.bootTime = defaults.number(settings_key::stationSignInBootTime).value_or(0),
                          .auditSessionId = defaults.text(settings_key::stationSignInAuditSessionId).value_or("")},
    };
}

platform::KeyStoreItem deviceTokenItem() {
    return {.service = "com.zelkovanta.macos", .account = "deviceToken"};
}

}  // namespace zelkovanta::store
