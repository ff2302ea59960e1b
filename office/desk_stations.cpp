#include "office/desk.h"
#include "office/notification_settings.h"
#include "office/secrets.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

constexpr std::chrono::seconds signInCodeLife{90};

}  // namespace

/// Shared workstations, and room computers whose practice wants to know who sends.
bool Office::Desk::isStation(const Device& device) const {
    if (device.memberId) {
        return false;
    }
    return device.role == DeviceRole::shared ||
           (device.role == DeviceRole::room &&
            ledger_.find<Practice>(device.practiceId)->requireSignedInSender.value_or(false));
}

std::string Office::Desk::qrToken(std::string_view token, std::string_view claimToken, std::string_view data,
                                  Timestamp expiresAt) const {
    JsonText json;
    json.object().field("token", token);
    if (!claimToken.empty()) {
        json.field("claimToken", claimToken);
    }
    json.field("qrData", data).field("qrPng", qrPicture_(data)).field("expiresAt", isoText(expiresAt)).endObject();
    return json.take();
}

void Office::Desk::forgetSignInCodes(std::string_view deviceId) {
    std::vector<std::string> codes;
    for (const auto& [hash, code] : state().all<SignInCode>()) {
        if (code.deviceId == deviceId) {
            codes.push_back(hash);
        }
    }
    for (std::string& hash : codes) {
        ledger_.erase<SignInCode>(std::move(hash));
    }
}

Office::Desk::Outcome Office::Desk::makeSignInCode(const Device& device, Timestamp now) {
    if (!isStation(device)) {
        return std::unexpected(refusals::notAStation());
    }
    if (signInCodes_.exhausted(device.id, now)) {
        return std::unexpected(refusals::tooManyAttempts());
    }
    signInCodes_.add(device.id, now);

    const std::string token = newToken(random_, "zvq_");
    const Timestamp expiresAt = now + signInCodeLife;
    ledger_.put(SignInCode{.id = secretHash(token), .deviceId = device.id, .expiresAt = expiresAt});
    return qrToken(token, {}, "zelkovanta://signin?token=" + token, expiresAt);
}

Office::Desk::Outcome Office::Desk::signIn(const Device& device, std::string_view name) {
    if (!isStation(device)) {
        return std::unexpected(refusals::notAStation());
    }
    const auto member = memberNamed(device.practiceId, name);
    if (!member) {
        return std::unexpected(member.error());
    }
    if (!(*member)->active.value_or(true)) {
        return std::unexpected(refusals::conflict("member_inactive", "This member is not active."));
    }
    // A picture of an older code is worth nothing once somebody has come.
    forgetSignInCodes(device.id);
    Device station = device;
    station.signedInMemberId = (*member)->id;
    tellDevice(station.id, sessionStartedFrame(station, **member));

    JsonText json;
    json.object().key("device");
    write(json, station);
    json.key("member");
    write(json, **member);
    json.endObject();
    ledger_.put(std::move(station));
    return json.take();
}

Office::Desk::Outcome Office::Desk::signInWithCode(std::string_view code, std::string_view member, Timestamp now) {
    const SignInCode* found = ledger_.find<SignInCode>(secretHash(code));
    if (found == nullptr) {
        return std::unexpected(refusals::invalidCode());
    }
    if (found->expiresAt <= now) {
        return std::unexpected(refusals::expiredCode());
    }
    const Device device = *ledger_.find<Device>(found->deviceId);
    return signIn(device, member);
}

Office::Desk::Outcome Office::Desk::scanSignInCode(const Device& device, std::string_view member, Timestamp now) {
    const auto& codes = state().all<SignInCode>();
    const bool shown = std::ranges::any_of(
        codes, [&](const auto& entry) { return entry.second.deviceId == device.id && now < entry.second.expiresAt; });
    if (!shown && isStation(device)) {
        return std::unexpected(refusals::conflict("no_code_shown", "That computer shows no sign-in code right now."));
    }
    return signIn(device, member);
}

Office::Desk::Outcome Office::Desk::signOut(Device device) {
    if (device.signedInMemberId) {
        device.signedInMemberId.reset();
        tellDevice(device.id, sessionEndedFrame());
        ledger_.put(device);
    }
    return jsonOf(device);
}

Office::Desk::Outcome Office::Desk::revoke(const Device& device) {
    forgetSignInCodes(device.id);
    effects_.emplace_back(CloseSockets{device.id, revokedCloseCode});
    std::string body = jsonOf(device);
    ledger_.erase<Device>(device.id);
    return body;
}

Office::Desk::Outcome Office::Desk::move(Device device, const Practice& practice, std::optional<std::string> room,
                                         std::optional<std::string> member, MoveNotice notice) {
    if (device.practiceId == practice.id) {
        return std::unexpected(refusals::conflict("already_there", "The computer already belongs to this practice."));
    }
    const auto sameName = [&]<class T>(const std::optional<std::string>& id) -> std::optional<std::string> {
        const T* old = id ? ledger_.find<T>(*id) : nullptr;
        for (const T* candidate : inOrder<T>(practice.id)) {
            if (old != nullptr && candidate->name == old->name) {
                return candidate->id;
            }
        }
        return std::nullopt;
    };

    std::string where = practice.id;
    Placement placement{.practice = where, .role = device.role, .room = room, .member = member, .computerName = {}};
    if (!room && device.roomId) {
        placement.room = sameName.operator()<Room>(device.roomId);
        const auto rooms = inOrder<Room>(practice.id);
        const auto first = std::ranges::find_if(rooms, [](const Room* each) { return each->active.value_or(true); });
        if (!placement.room && device.role == DeviceRole::room && first != rooms.end()) {
            placement.room = (*first)->id;
        }
    }
    if (!member && device.role == DeviceRole::member) {
        placement.member = sameName.operator()<Member>(device.memberId);
    }
    device.roomId.reset();
    device.memberId.reset();
    device.signedInMemberId.reset();
    auto placed = place(placement, std::move(device));
    if (!placed) {
        return std::unexpected(placed.error());
    }
    // They were shown to the people of the practice that it leaves.
    forgetSignInCodes(placed->id);
    ledger_.put(*placed);
    tellDevice(placed->id, notice == MoveNotice::snapshot ? snapshotFrame(snapshot(*placed))
                                                          : frameOf("office.updated", "office", practice));
    return jsonOf(*placed);
}

Office::Desk::Outcome Office::Desk::setNotificationSettings(Device device, std::string_view settings) {
    if (settings.empty()) {
        device.notificationSettings.reset();
    } else if (const auto fault = faultOfNotificationSettings(settings)) {
        return std::unexpected(*fault);
    } else {
        device.notificationSettings = settings;
    }
    ledger_.put(device);
    tellDevice(device.id, snapshotFrame(snapshot(device)));
    return jsonOf(device);
}

}  // namespace zelkovanta::office
