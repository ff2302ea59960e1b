#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zelkovanta::store {

/// Who is signed in at a shared workstation, and which room they said they are in. A room never stands without a
/// member.
struct FlexibleRoomSession {
    std::optional<std::string> signedInMemberId;
    std::optional<std::string> confirmedRoomId;

    /// Brings the session in line with who is signed in now and which rooms there are: another member starts without a
    /// room, and a room that is gone is confirmed no longer.
    void reconcile(const std::optional<std::string>& member, std::span<const std::string_view> validRoomIds);

    bool operator==(const FlexibleRoomSession&) const = default;
};

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
