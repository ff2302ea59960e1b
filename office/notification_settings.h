#pragma once

#include "office/refusal.h"

#include <optional>
#include <string_view>

namespace zelkovanta::office {

/// Whether the text is a settings object that every computer can read; what is wrong with it otherwise.
[[nodiscard]] std::optional<Refusal> faultOfNotificationSettings(std::string_view text);

}  // namespace zelkovanta::office
