#include "platform/linux/environment.h"

#include <cstdlib>

namespace zelkovanta::platform::linux_host {

Environment processEnvironment() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* value = std::getenv(name.c_str());
        if (value == nullptr || *value == '\0') {
            return std::nullopt;
        }
        return std::string{value};
    };
}

}  // namespace zelkovanta::platform::linux_host
