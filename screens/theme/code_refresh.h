#pragma once

#include "platform/string_table.h"

#include <chrono>
#include <optional>
#include <string>

namespace zelkovanta::screens::theme {

/// The line below a code that expires, with minutes and seconds to go, to the nearest second and never below zero; none
/// for a code without a readable end.
[[nodiscard]] std::optional<std::string> codeRefreshText(const std::optional<std::string>& expiresAt,
                                                         std::chrono::sys_time<std::chrono::microseconds> now,
                                                         const platform::StringTable& strings);

}  // namespace zelkovanta::screens::theme
