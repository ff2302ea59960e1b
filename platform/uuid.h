#pragma once

#include "platform/random_source.h"

#include <string>

namespace zelkovanta::platform {

/// A new random UUID (RFC 9562, version 4), in lower case.
[[nodiscard]] std::string makeUUID(RandomSource& random);

}  // namespace zelkovanta::platform
