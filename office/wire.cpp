#include "office/wire.h"

namespace zelkovanta::office {
namespace {

std::optional<std::string> isoText(const std::optional<Timestamp>& time) {
    return time ? std::optional(office::isoText(*time)) : std::nullopt;
}

}  // namespace

std::optional<SignalAction> actionNamed(std::string_view word) {
    if (word == "acknowledge") {
        return SignalAction::acknowledge;
    }
    if (word == "done") {
        return SignalAction::done;
    }
    if (word == "cancel") {
        return SignalAction::cancel;
    }
    if (word == "arrived") {
        return SignalAction::arrived;
    }
    return std::nullopt;
}

std::string_view roleWord(DeviceRole role) {
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

std::string_view statusWord(SignalStatus status) {
    switch (status) {
        case SignalStatus::waiting:
            return "waiting";
        case SignalStatus::acknowledged:
            return "acknowledged";
        case SignalStatus::done:
            return "done";
        case SignalStatus::canceled:
            return "canceled";
        case SignalStatus::expired:
            return "expired";
    }
    return {};
}

void write(JsonText& json, const Practice& practice) {
    json.object()
        .field("id", practice.id)
        .field("name", practice.name)
        .field("slug", practice.slug)
        .field("vertical", practice.vertical);
    json.key("settings")
        .object()
        .field("autoExpireMinutes", practice.autoExpireMinutes)
        .field("allowAnyProvider", practice.allowAnyProvider);
    if (practice.beaconAutoClearAction || practice.beaconRssiThreshold || practice.beaconDwellSeconds) {
        json.key("ble")
            .object()
            .field("autoClearAction", practice.beaconAutoClearAction)
            .field("rssiThreshold", practice.beaconRssiThreshold)
            .field("dwellSeconds", practice.beaconDwellSeconds)
            .endObject();
    }
    json.field("requireSignedInSender", practice.requireSignedInSender).endObject();
    json.key("departments").array();
    for (const Department& department : practice.departments) {
        json.object()
            .field("key", department.key)
            .field("label", department.label)
            .field("labelPlural", department.labelPlural)
            .endObject();
    }
    json.endArray().endObject();
}

void write(JsonText& json, const Member& member) {
    json.object()
        .field("id", member.id)
        .field("name", member.name)
        .field("department", member.department)
        .field("color", member.color)
        .field("status", member.status)
        .field("active", member.active)
        .field("onShift", member.onShift)
        .field("cooldownUntil", isoText(member.cooldownUntil))
        .field("offShiftReason", member.offShiftReason)
        .field("registeredAt", isoText(member.registeredAt))
        .field("isAdmin", member.isAdmin);
    if (member.alertsEnabled || member.alertSound) {
        json.key("desktopAlerts")
            .object()
            .field("enabled", member.alertsEnabled)
            .field("sound", member.alertSound)
            .endObject();
    }
    json.endObject();
}

void write(JsonText& json, const Room& room) {
    json.object()
        .field("id", room.id)
        .field("name", room.name)
        .field("beaconUuid", room.beaconUuid)
        .field("active", room.active)
        .endObject();
}

void write(JsonText& json, const SignalType& type) {
    json.object()
        .field("id", type.id)
        .field("key", type.key)
        .field("label", type.label)
        .field("color", type.color)
        .field("priority", type.priority)
        .field("sortOrder", type.sortOrder)
        .field("senderDepartments", type.senderDepartments)
        .field("targetDepartment", type.targetDepartment)
        .field("active", type.active)
        .endObject();
}

void write(JsonText& json, const Signal& signal) {
    json.object()
        .field("id", signal.id)
        .field("roomId", signal.roomId)
        .field("requesterId", signal.requesterId)
        .field("providerId", signal.providerId)
        .field("providerIds", signal.providerIds)
        .field("toDepartment", signal.toDepartment)
        .field("typeId", signal.typeId)
        .field("note", signal.note)
        .field("status", statusWord(signal.status))
        .field("createdAt", office::isoText(signal.createdAt))
        .field("acknowledgedAt", isoText(signal.acknowledgedAt))
        .field("acknowledgedBy", signal.acknowledgedBy)
        .field("clearedAt", isoText(signal.clearedAt))
        .field("clearedBy", signal.clearedBy)
        .endObject();
}

void write(JsonText& json, const Device& device) {
    json.object()
        .field("id", device.id)
        .field("kind", device.kind)
        .field("name", device.name)
        .field("memberId", device.memberId)
        .field("roomId", device.roomId)
        .field("signedInMemberId", device.signedInMemberId);
    if (device.notificationSettings) {
        json.key("notificationSettings").raw(*device.notificationSettings);
    }
    json.field("lastSeenAt", isoText(device.lastSeenAt)).endObject();
}

void write(JsonText& json, const Release& release) {
    json.object();
    if (release.macosVersion && release.macosBuild && release.macosUrl) {
        json.key("macos")
            .object()
            .field("version", release.macosVersion)
            .field("build", release.macosBuild)
            .field("url", release.macosUrl)
            .field("sha256", release.macosSha256)
            .endObject();
    }
    if (release.windowsVersion) {
        json.key("windows").object().field("version", release.windowsVersion).endObject();
    }
    json.endObject();
}

std::string snapshotFrame(std::string_view snapshot) {
    JsonText json;
    json.object().field("type", "snapshot").key("data").raw(snapshot).endObject();
    return json.take();
}

std::string sessionStartedFrame(const Device& device, const Member& member) {
    JsonText json;
    json.object().field("type", "session.started").key("data").object().key("device");
    write(json, device);
    json.key("member");
    write(json, member);
    json.endObject().endObject();
    return json.take();
}

std::string sessionEndedFrame() {
    return R"({"type":"session.ended","data":{}})";
}

}  // namespace zelkovanta::office
