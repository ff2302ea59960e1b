#pragma once

#include <functional>
#include <optional>
#include <string>

namespace zelkovanta::platform::linux_host {

/// Reads one variable; none if it is unset or empty, as the base directory rules want it.
using Environment = std::function<std::optional<std::string>(const std::string& name)>;

/// The variables of this process.
[[nodiscard]] Environment processEnvironment();

}  // namespace zelkovanta::platform::linux_host
