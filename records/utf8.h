#pragma once

#include <cstddef>
#include <string_view>

namespace zelkovanta::records {

/// One step through a text that is meant to be UTF-8.
struct Utf8Step {
    std::size_t length = 0;   ///< bytes of the scalar, or of the longest ill-formed piece that counts as one
    bool wellFormed = false;  ///< shortest form, no surrogate, at most U+10FFFF
};

/// The step at the start of `text`, which must not be empty.
[[nodiscard]] inline Utf8Step firstScalar(std::string_view text) {
    const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80)
        return {1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {1, false};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte has a narrower range behind some leads; this excludes long forms, surrogates and what lies above.
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    for (std::size_t index = 1; index < length; ++index) {
        if (index >= text.size())
            return {index, false};
        const bool fits = index == 1 ? byteAt(1) >= low && byteAt(1) <= high : (byteAt(index) & 0xC0) == 0x80;
        if (!fits)
            return {index, false};
    }
    return {length, true};
}

}  // namespace zelkovanta::records
