#include "platform/linux/locale_name.h"

#include <algorithm>

namespace zelkovanta::platform::linux_host {

namespace {

/// Takes away what stands behind the separator; empty if there is none.
std::string_view takeBehind(std::string_view& name, std::string_view separators) {
    const auto at = std::min(name.find_first_of(separators), name.size());
    const auto behind = name.substr(std::min(at + 1, name.size()));
    name = name.substr(0, at);
    return behind;
}

}  // namespace

std::string messageLocale(const Environment& environment) {
    for (const auto* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = environment(variable)) {
            return *value;
        }
    }
    return {};
}

LocaleName localeName(std::string_view text) {
    const auto modifier = takeBehind(text, "@");
    takeBehind(text, ".");
    const auto territory = takeBehind(text, "_-");
    return {.language = text, .territory = territory, .modifier = modifier};
}

}  // namespace zelkovanta::platform::linux_host
