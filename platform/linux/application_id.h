#pragma once

namespace zelkovanta::platform::linux_host {

/// By which the desktop knows this program: its name on the bus, its desktop file, its icon.
inline constexpr auto applicationId = "com.zelkovanta.Desktop";

}  // namespace zelkovanta::platform::linux_host
