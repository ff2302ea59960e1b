#pragma once

#include "platform/async.h"

#include <cstdint>
#include <expected>
#include <string>

namespace zelkovanta::platform {

enum class LoginItemStatus : std::uint8_t {
    notRegistered = 0,
    enabled = 1,
    requiresApproval = 2,  ///< registered, and switched off by the person in the desktop's own settings
};

enum class RegistrationIntent : std::uint8_t {
    firstLaunch,  ///< leaves a `requiresApproval` as it is
    personsWish,  ///< switches it on again
};

/// Starts the program at login. Main thread; small files, no waiting on services.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    [[nodiscard]] virtual LoginItemStatus status() const = 0;
    /// The error is a sentence for the person.
    virtual std::expected<void, std::string> registerItem(RegistrationIntent intent) = 0;
    virtual std::expected<void, std::string> unregisterItem() = 0;
};

}  // namespace zelkovanta::platform
