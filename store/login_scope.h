#pragma once

#include <string>

namespace zelkovanta::store {

/// The login of this computer in which a sign-in was made. A sign-in must not outlive it: the next person at the
/// machine must not inherit it.
struct LoginScope {
    double bootTime = 0;         ///< seconds since 1970, 0 for none
    std::string auditSessionId;  ///< empty for none

    /// Whether a sign-in recorded in this scope still holds in the login that runs now. The kernel's boot time moves a
    /// little with corrections of the clock.
    [[nodiscard]] bool holdsIn(const LoginScope& current) const;

    bool operator==(const LoginScope&) const = default;
};

}  // namespace zelkovanta::store
