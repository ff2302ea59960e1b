#include "office/desk.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

constexpr std::size_t longestName = 100;
constexpr std::string_view defaultColor = "#5B7DB1";

bool isStatusWord(std::string_view word) {
    return word == "available" || word == "busy" || word == "dnd";
}

std::optional<Refusal> badName(std::string_view name) {
    if (name.empty() || scalarCount(name) > longestName) {
        return refusals::badRequest("A name has 1 to 100 characters.");
    }
    return std::nullopt;
}

template <class T>
void take(T& field, const std::optional<T>& change) {
    if (change) {
        field = *change;
    }
}

template <class T>
void take(std::optional<T>& field, const std::optional<T>& change) {
    if (change) {
        field = change;
    }
}

void take(std::optional<std::string>& field, const std::optional<std::string>& change) {
    if (change) {
        field = change->empty() ? std::nullopt : change;
    }
}

template <class T>
std::int64_t positionAfter(const std::vector<const T*>& records) {
    return records.empty() ? 0 : records.back()->position + 1;
}

bool hasDepartment(const Practice& practice, std::string_view key) {
    return std::ranges::find(practice.departments, key, &Department::key) != practice.departments.end();
}

}  // namespace

Office::Desk::Outcome Office::Desk::setStatus(const Device& device, std::string_view body, Timestamp now) {
    RequestBody in(body);
    const std::string status = in.requiredText("status", longestName);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }
    const Member* found = memberAt(device);
    return found == nullptr ? std::unexpected(refusals::signInRequired()) : setStatus(*found, status, now);
}

Office::Desk::Outcome Office::Desk::setStatus(Member member, std::string_view status, Timestamp now) {
    if (!isStatusWord(status)) {
        return std::unexpected(refusals::badRequest("\"status\" must be available, busy or dnd."));
    }
    if (member.cooldownUntil && now < *member.cooldownUntil) {
        return std::unexpected(Refusal{403, "in_cooldown", {}, member.cooldownUntil});
    }
    if (member.status != status) {
        member.status = status;
        tell(member.practiceId, frameOf("member.updated", "member", member));
        ledger_.put(member);
    }
    return jsonOf(member);
}

Office::Desk::Outcome Office::Desk::changeMember(Member member, const MemberChange& change, Timestamp now) {
    if (change.status && !change.status->empty() && !isStatusWord(*change.status)) {
        return std::unexpected(refusals::badRequest("The status must be available, busy or dnd."));
    }
    if (change.name) {
        if (const auto fault = badName(*change.name)) {
            return std::unexpected(*fault);
        }
    }
    if (change.department && !hasDepartment(*ledger_.find<Practice>(member.practiceId), *change.department)) {
        return std::unexpected(refusals::notFound("unknown_department", "There is no such department."));
    }
    if (change.cooldownMinutes && (*change.cooldownMinutes < 0 || *change.cooldownMinutes > 24 * 60)) {
        return std::unexpected(refusals::badRequest("A cooldown has 0 to 1440 minutes."));
    }
    take(member.name, change.name);
    take(member.department, change.department);
    take(member.color, change.color);
    take(member.status, change.status);
    take(member.active, change.active);
    if (change.onShift) {
        member.onShift = change.onShift;
        if (*change.onShift) {
            member.cooldownUntil.reset();
            member.offShiftReason.reset();
        }
    }
    take(member.offShiftReason, change.offShiftReason);
    if (change.cooldownMinutes) {
        member.cooldownUntil = *change.cooldownMinutes == 0
                                   ? std::nullopt
                                   : std::optional(now + std::chrono::minutes{*change.cooldownMinutes});
    }
    take(member.isAdmin, change.isAdmin);
    take(member.alertsEnabled, change.alertsEnabled);
    take(member.alertSound, change.alertSound);

    tell(member.practiceId, frameOf("member.updated", "member", member));
    std::string body = jsonOf(member);
    if (!member.active.value_or(true)) {
        // Nobody stays signed in who is not with the practice any more.
        std::vector<Device> stations;
        for (const auto& [id, device] : state().all<Device>()) {
            if (device.signedInMemberId == member.id) {
                stations.push_back(device);
            }
        }
        for (Device& station : stations) {
            (void)signOut(std::move(station));
        }
    }
    ledger_.put(std::move(member));
    return body;
}

Office::Desk::Outcome Office::Desk::addMember(const Practice& practice, std::string_view name,
                                              std::string_view department, Timestamp now) {
    if (const auto fault = badName(name)) {
        return std::unexpected(*fault);
    }
    if (!hasDepartment(practice, department)) {
        return std::unexpected(refusals::notFound("unknown_department", "There is no such department."));
    }
    Member member;
    member.id = unusedIdentifier<Member>("mem_");
    member.practiceId = practice.id;
    member.position = positionAfter(inOrder<Member>(practice.id));
    member.name = name;
    member.department = department;
    member.color = defaultColor;
    member.status = "available";
    member.active = true;
    member.onShift = true;
    member.registeredAt = now;
    tell(practice.id, frameOf("member.updated", "member", member));
    std::string body = jsonOf(member);
    ledger_.put(std::move(member));
    return body;
}

Office::Desk::Outcome Office::Desk::changeRoom(Room room, const RoomChange& change) {
    if (change.name) {
        if (const auto fault = badName(*change.name)) {
            return std::unexpected(*fault);
        }
    }
    take(room.name, change.name);
    take(room.active, change.active);
    take(room.beaconUuid, change.beaconUuid);
    ledger_.put(room);
    tellRooms(room.practiceId);
    return jsonOf(room);
}

Office::Desk::Outcome Office::Desk::addRoom(const Practice& practice, std::string_view name) {
    if (const auto fault = badName(name)) {
        return std::unexpected(*fault);
    }
    const Room room{.id = unusedIdentifier<Room>("room_"),
                    .practiceId = practice.id,
                    .position = positionAfter(inOrder<Room>(practice.id)),
                    .name = std::string(name),
                    .beaconUuid = std::nullopt,
                    .active = true};
    ledger_.put(room);
    tellRooms(practice.id);
    return jsonOf(room);
}

Office::Desk::Outcome Office::Desk::changeType(SignalType type, const TypeChange& change) {
    if (change.label) {
        if (const auto fault = badName(*change.label)) {
            return std::unexpected(*fault);
        }
    }
    take(type.label, change.label);
    take(type.color, change.color);
    take(type.priority, change.priority);
    take(type.sortOrder, change.sortOrder);
    take(type.active, change.active);
    ledger_.put(type);
    tellTypes(type.practiceId);
    return jsonOf(type);
}

Office::Desk::Outcome Office::Desk::changePractice(Practice practice, const PracticeChange& change) {
    if (change.name) {
        if (const auto fault = badName(*change.name)) {
            return std::unexpected(*fault);
        }
    }
    if (change.autoExpireMinutes && (*change.autoExpireMinutes < 0 || *change.autoExpireMinutes > 7 * 24 * 60)) {
        return std::unexpected(refusals::badRequest("Signals expire after 0 (never) to 10080 minutes."));
    }
    take(practice.name, change.name);
    take(practice.vertical, change.vertical);
    take(practice.autoExpireMinutes, change.autoExpireMinutes);
    take(practice.allowAnyProvider, change.allowAnyProvider);
    take(practice.requireSignedInSender, change.requireSignedInSender);
    ledger_.put(practice);
    tell(practice.id, frameOf("office.updated", "office", practice));
    return jsonOf(practice);
}

Office::Desk::Outcome Office::Desk::announce(Release release) {
    if (release.macosVersion.has_value() != release.macosBuild.has_value() ||
        release.macosVersion.has_value() != release.macosUrl.has_value() ||
        (release.macosSha256 && !release.macosVersion)) {
        return std::unexpected(refusals::badRequest("A release needs its version, its build and its address."));
    }
    if (release.macosUrl) {
        const std::string_view url = *release.macosUrl;
        const bool schemed = url.starts_with("https://") || url.starts_with("http://");
        const bool plain = std::ranges::all_of(url, [](char letter) {
            return letter > ' ' && letter < 0x7F && !std::string_view("\"<>\\^`{|}").contains(letter);
        });
        if (!schemed || !plain || url.ends_with("://")) {
            return std::unexpected(refusals::badRequest("The release's address is no http or https URL."));
        }
    }
    if (!release.macosVersion && !release.windowsVersion) {
        ledger_.erase<Release>("current");
        return "{}";
    }
    release.id = "current";
    ledger_.put(release);
    tellAll(frameOf("desktop.release", "desktopRelease", release));
    return jsonOf(release);
}

}  // namespace zelkovanta::office
