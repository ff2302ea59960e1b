#pragma once

#include "platform/clock.h"
#include "server/api_error.h"

#include <optional>
#include <string>
#include <string_view>

/// What the loops that show a code do with the server's answers.
namespace zelkovanta::store {

/// The bytes of the image in a data URL; none if it is no such URL, or longer than any picture of a code.
[[nodiscard]] std::optional<std::string> imageFromDataURL(std::string_view dataURL);

/// How long to wait after a failure before a code is asked for again: `usual`, and longer where the server says that it
/// is asked too often.
[[nodiscard]] platform::Duration retryDelay(const server::APIError& error, platform::Duration usual);

}  // namespace zelkovanta::store
