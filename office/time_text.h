#pragma once

#include <chrono>
#include <string>

namespace zelkovanta::office {

/// The time of day, UTC, as the host gives it.
using WallTime = std::chrono::sys_time<std::chrono::microseconds>;

/// A time as the office keeps and sends it. Milliseconds always have three digits in text, so that the order of texts
/// is the order of times.
using Timestamp = std::chrono::sys_time<std::chrono::milliseconds>;

[[nodiscard]] inline Timestamp timestamp(WallTime time) {
    return std::chrono::floor<std::chrono::milliseconds>(time);
}

/// ISO 8601, for example "2026-03-09T08:15:30.250Z". Years 0000 to 9999.
[[nodiscard]] std::string isoText(Timestamp time);

}  // namespace zelkovanta::office
