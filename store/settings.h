#pragma once

#include "platform/key_store.h"
#include "platform/user_defaults.h"
#include "store/store_state.h"

#include <string>
#include <string_view>

namespace zelkovanta::store {

/// Keys of the settings.
namespace settings_key {
inline constexpr std::string_view serverURL = "serverURL";
inline constexpr std::string_view deviceRole = "deviceRole";
inline constexpr std::string_view beaconEnabled = "beaconEnabled";
inline constexpr std::string_view launchAtLogin = "launchAtLogin";
inline constexpr std::string_view openAsWindow = "openAsWindow";
inline constexpr std::string_view stationSignInBootTime = "stationSignInBootTime";
inline constexpr std::string_view stationSignInAuditSessionId = "stationSignInAuditSessionId";
inline constexpr std::string_view didApplyDesktopDefaults = "didApplyDesktopDefaultsV1";
inline constexpr std::string_view lastUsedRoomId = "lastUsedRoomId";
}  // namespace settings_key

/// Posted when `launchAtLogin` was changed from outside the settings screen.
inline constexpr std::string_view launchAtLoginStatusDidChange = "ZelkoVantaLaunchAtLoginStatusDidChange";

[[nodiscard]] StoreSettings loadSettings(const platform::UserDefaults& defaults);

/// Where the device token is kept.
[[nodiscard]] platform::KeyStoreItem deviceTokenItem();

}  // namespace zelkovanta::store
