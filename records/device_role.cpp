#include "records/device_role.h"

#include <algorithm>

namespace zelkovanta::records {
namespace {

template <class Value, std::size_t count>
std::optional<Value> withRawValue(const std::array<Value, count>& all, std::string_view word) {
    const auto* found = std::ranges::find_if(all, [word](Value value) { return rawValue(value) == word; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

std::string_view rawValue(DeviceRole role) {
    switch (role) {
        case DeviceRole::room:
            return "room";
        case DeviceRole::member:
            return "member";
        case DeviceRole::shared:
            return "shared";
    }
    return {};
}

std::optional<DeviceRole> deviceRoleFromRawValue(std::string_view word) {
    return withRawValue(allDeviceRoles, word);
}

std::string_view rawValue(MemberStatus status) {
    switch (status) {
        case MemberStatus::available:
            return "available";
        case MemberStatus::busy:
            return "busy";
        case MemberStatus::dnd:
            return "dnd";
    }
    return {};
}

std::optional<MemberStatus> memberStatusFromRawValue(std::string_view word) {
    return withRawValue(allMemberStatuses, word);
}

}  // namespace zelkovanta::records
