#include "store/flexible_room.h"

#include <algorithm>
#include <cmath>

namespace zelkovanta::store {

namespace {
constexpr double bootTimeTolerance = 5.0;
}

void FlexibleRoomSession::reconcile(const std::optional<std::string>& member,
                                    std::span<const std::string_view> validRoomIds) {
    if (member != signedInMemberId) {
        signedInMemberId = member;
        confirmedRoomId.reset();
    }
    if (!member) {
        confirmedRoomId.reset();
        return;
    }
    if (confirmedRoomId && std::ranges::find(validRoomIds, *confirmedRoomId) == validRoomIds.end()) {
        confirmedRoomId.reset();
    }
}

bool LoginScope::holdsIn(const LoginScope& current) const {
    return bootTime > 0 && std::abs(bootTime - current.bootTime) <= bootTimeTolerance && !auditSessionId.empty() &&
           !current.auditSessionId.empty() && auditSessionId == current.auditSessionId;
}

}  // namespace zelkovanta::store
