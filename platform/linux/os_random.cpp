#include "platform/linux/os_random.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace zelkovanta::platform::linux_host {

double OsRandom::uniform(double lowest, double highest) {
    std::random_device device;
    // As many bits as a double holds exactly; the largest value maps to 1, so that both ends are reached.
    constexpr std::uint64_t largest = (std::uint64_t{1} << 53U) - 1;
    const std::uint64_t bits = (std::uint64_t{device()} << 32U | device()) & largest;
    const double fraction = static_cast<double>(bits) / static_cast<double>(largest);
    return std::clamp(lowest + (highest - lowest) * fraction, lowest, highest);
}

}  // namespace zelkovanta::platform::linux_host
