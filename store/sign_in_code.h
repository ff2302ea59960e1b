#pragma once

#include "platform/clock.h"

#include <chrono>
#include <optional>
#include <string>

namespace zelkovanta::store {

/// How long a sign-in code is shown before a new one takes its place. The server's codes live longer, so that one which
/// was scanned in its last second still counts.
inline constexpr std::chrono::seconds signInCodeLifetime{50};

/// The code with which a person signs in at this computer, while it is shown.
struct SignInCode {
    std::optional<std::string> image;      ///< bytes of the image file
    std::optional<std::string> expiresAt;  ///< ISO 8601, by this computer's own clock
    std::optional<std::string> error;
    bool operator==(const SignInCode&) const = default;
};

}  // namespace zelkovanta::store
