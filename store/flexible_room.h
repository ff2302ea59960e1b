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

}  // namespace zelkovanta::store
