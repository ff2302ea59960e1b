#pragma once

#include "store/store_state.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Who sees which signal, in which order, and who this computer is. Pure reads of the state, computed at each call;
/// results point into the state and hold until it changes.
namespace zelkovanta::store {

using SignalList = std::vector<const records::Signal*>;
using RoomList = std::vector<const records::Room*>;
using MemberList = std::vector<const records::Member*>;
using SignalTypeList = std::vector<const records::SignalType*>;

// Lookups: the first match, or null.
[[nodiscard]] const records::Room* roomById(const StoreState& state, std::string_view id);
[[nodiscard]] const records::SignalType* signalTypeById(const StoreState& state, std::string_view id);
/// No id gives null.
[[nodiscard]] const records::Member* memberById(const StoreState& state, std::optional<std::string_view> id);

// Who the computer is.
[[nodiscard]] const records::Room* pairedRoom(const StoreState& state);
[[nodiscard]] const records::Member* pairedMember(const StoreState& state);
[[nodiscard]] const records::Member* signedInMember(const StoreState& state);
/// The member bound to this computer, else the one signed in at it.
[[nodiscard]] const records::Member* activeMember(const StoreState& state);
/// Whether a person must be signed in before this computer sends.
[[nodiscard]] bool requiresSignedInSender(const StoreState& state);
[[nodiscard]] bool needsSignIn(const StoreState& state);

/// Active signals by priority of their type, highest first (an unknown type counts as 0), then oldest first, then in
/// the order given. Two types with one id are a programming fault and end the process; so they do in all that counts or
/// lists signals below.
[[nodiscard]] SignalList sortedActiveSignals(std::span<const records::SignalType> types,
                                             std::span<const records::Signal> signals);

enum class Shift : bool { off, on };
enum class Provider : bool { no, yes };

/// The one rule of what a member receives: whether it is a signal that this member could act on.
[[nodiscard]] bool isActionable(const records::Signal& signal, std::string_view memberId, Shift shift,
                                Provider provider);
[[nodiscard]] Shift shiftOf(const records::Member& member);        ///< none counts as on
[[nodiscard]] Provider providerOf(const records::Member& member);  ///< by department

/// What is waiting for a member, in queue order. An unknown member receives only what names its id.
[[nodiscard]] SignalList personalQueue(const StoreState& state, std::string_view memberId);
/// The ids of the same signals, unsorted: for those who only ask which signals are open.
[[nodiscard]] std::vector<std::string_view> personalSignalIds(const StoreState& state, std::string_view memberId);

/// The active member's queue, within one room if one is given; empty without an active member.
[[nodiscard]] SignalList receivedSignals(const StoreState& state,
                                         const std::optional<std::string>& roomId = std::nullopt);
/// What the active member sent, and what was sent from this computer's room, whoever sent it.
[[nodiscard]] SignalList sentSignals(const StoreState& state, const std::optional<std::string>& roomId = std::nullopt);
/// Place in the queue of the whole office, from 1.
[[nodiscard]] std::optional<std::size_t> queuePosition(const StoreState& state, std::string_view signalId);
/// The count on the badges. A room's computer counts the office's open calls.
[[nodiscard]] std::size_t activeQueueCount(const StoreState& state);

[[nodiscard]] RoomList activeRooms(const StoreState& state);
[[nodiscard]] MemberList onShiftMembers(const StoreState& state);
[[nodiscard]] MemberList selectableRecipients(const StoreState& state);  ///< on shift, without the active member
[[nodiscard]] std::span<const records::OfficeDepartment> officeDepartments(const StoreState& state);
[[nodiscard]] SignalTypeList activeSignalTypes(const StoreState& state);  ///< by `sortOrder`, then `key`

/// The session as it would be after reconciling it with the state: empty unless this is a shared workstation.
[[nodiscard]] FlexibleRoomSession reconciledFlexibleRoomSession(const StoreState& state);
/// The active room that the signed-in member confirmed; none unless this is a shared workstation.
[[nodiscard]] std::optional<std::string> confirmedFlexibleRoomId(const StoreState& state);

}  // namespace zelkovanta::store
