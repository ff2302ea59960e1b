#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zelkovanta::office {

/// In lower case, if it is a letter of English.
[[nodiscard]] constexpr char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

[[nodiscard]] inline std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char letter) { return lowered(letter); });
    return result;
}

}  // namespace zelkovanta::office
