#include "store/flexible_room.h"

#include <algorithm>

namespace zelkovanta::store {

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

}  // namespace zelkovanta::store
