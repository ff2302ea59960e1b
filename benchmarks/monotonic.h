#pragma once

#include <cstdint>
#include <ctime>

namespace zelkovanta::benchmarks {

/// A time that all processes of one computer share, in nanoseconds.
[[nodiscard]] inline std::int64_t monotonicNow() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace zelkovanta::benchmarks
