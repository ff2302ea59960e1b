#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>

namespace zelkovanta::screens {

/// How long somebody has waited: "4:09", from an hour on "1:04:09". Zero without a beginning, or for one that lies in
/// the future because the clocks differ.
[[nodiscard]] std::string waitTimeText(std::optional<platform::WallTime> since, platform::WallTime now);

/// From five minutes on a wait is drawn as a warning.
[[nodiscard]] bool isLongWait(std::optional<platform::WallTime> since, platform::WallTime now);

}  // namespace zelkovanta::screens
