#pragma once

#include "platform/linux/environment.h"

#include <string>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// The locale in which the person reads: LC_ALL, else LC_MESSAGES, else LANG. Empty if none of them is set.
[[nodiscard]] std::string messageLocale(const Environment& environment);

/// A locale's name in its parts, "de_AT.UTF-8@euro". A missing part is empty, and nothing is checked. The parts hold as
/// long as the text.
struct LocaleName {
    std::string_view language;
    std::string_view territory;
    std::string_view modifier;
};

[[nodiscard]] LocaleName localeName(std::string_view text);

}  // namespace zelkovanta::platform::linux_host
