#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zelkovanta::records {

/// What a computer is. On the wire a closed set: another word fails the record that holds it.
enum class DeviceRole : std::uint8_t {
    room,    ///< fixed computer of a room
    member,  ///< personal computer of one member
    shared,  ///< workstation where staff sign in
};
inline constexpr std::array allDeviceRoles{DeviceRole::room, DeviceRole::member, DeviceRole::shared};

[[nodiscard]] std::string_view rawValue(DeviceRole role);
[[nodiscard]] std::optional<DeviceRole> deviceRoleFromRawValue(std::string_view word);

/// The choices of the status control. `Member::status` itself stays a text.
enum class MemberStatus : std::uint8_t { available, busy, dnd };
inline constexpr std::array allMemberStatuses{MemberStatus::available, MemberStatus::busy, MemberStatus::dnd};

[[nodiscard]] std::string_view rawValue(MemberStatus status);
[[nodiscard]] std::optional<MemberStatus> memberStatusFromRawValue(std::string_view word);

}  // namespace zelkovanta::records
