#include "platform/uuid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zelkovanta::platform {

namespace {

/// Sixteen bits from one draw. The highest value of a draw is shared between the last two numbers.
std::uint16_t draw(RandomSource& random) {
    constexpr double count = 65'536;
    const double value = random.uniform(0, count);
    return value >= count ? 0xFFFFU : static_cast<std::uint16_t>(value);
}

}  // namespace

std::string makeUUID(RandomSource& random) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<std::uint16_t, 8> parts{};
    for (std::uint16_t& part : parts) {
        part = draw(random);
    }
    parts[3] = static_cast<std::uint16_t>((parts[3] & 0x0FFFU) | 0x4000U);  // Version 4.
    parts[4] = static_cast<std::uint16_t>((parts[4] & 0x3FFFU) | 0x8000U);  // The variant of the RFC.
    std::string text;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (index >= 2 && index <= 5) {
            text += '-';
        }
        for (int shift = 12; shift >= 0; shift -= 4) {
            text += digits[(static_cast<unsigned>(parts[index]) >> static_cast<unsigned>(shift)) & 0xFU];
        }
    }
    return text;
}

}  // namespace zelkovanta::platform
