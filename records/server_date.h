#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::records {

/// A moment as the server writes it: ISO 8601 internet date-time (RFC 3339) with or without fractional seconds, the
/// zone as "Z" or as an offset with colon. None for anything else, a bare date included.
[[nodiscard]] std::optional<std::chrono::sys_time<std::chrono::microseconds>> parseServerDate(std::string_view text);

/// The same format in UTC with whole seconds: "2026-01-02T03:04:05Z".
[[nodiscard]] std::string formatServerDate(std::chrono::sys_time<std::chrono::microseconds> moment);

}  // namespace zelkovanta::records
