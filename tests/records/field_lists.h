#pragma once

#include "records/requests.h"
#include "records/snapshot.h"

#include <optional>
#include <string>

/// The wire form of every record, written out by hand: `list(archive, record)` names each field once to an archive that
/// writes, reads or invents. Shares nothing with the descriptions that the program's own codec follows.
namespace zelkovanta::records::reference {

template <class Archive>
void list(Archive& archive, OfficeDepartment& record) {
    archive.required("key", record.key);
    archive.required("label", record.label);
    archive.optional("labelPlural", record.labelPlural);
}

template <class Archive>
void list(Archive& archive, BLESettings& record) {
    archive.optional("autoClearAction", record.autoClearAction);
    archive.optional("rssiThreshold", record.rssiThreshold);
    archive.optional("dwellSeconds", record.dwellSeconds);
}

template <class Archive>
void list(Archive& archive, OfficeSettings& record) {
    archive.optional("autoExpireMinutes", record.autoExpireMinutes);
    archive.optional("allowAnyProvider", record.allowAnyProvider);
    archive.optional("ble", record.ble);
    archive.optional("requireSignedInSender", record.requireSignedInSender);
}

template <class Archive>
void list(Archive& archive, Office& record) {
    archive.required("id", record.id);
    archive.required("name", record.name);
    archive.optional("slug", record.slug);
    archive.optional("vertical", record.vertical);
    archive.optional("settings", record.settings);
    archive.optional("departments", record.departments);
}

template <class Archive>
void list(Archive& archive, Room& record) {
    archive.required("id", record.id);
    archive.required("name", record.name);
    archive.optional("beaconUuid", record.beaconUuid);
    archive.optional("active", record.active);
}

template <class Archive>
void list(Archive& archive, DesktopAlerts& record) {
    archive.optional("enabled", record.enabled);
    archive.optional("sound", record.sound);
}

template <class Archive>
void list(Archive& archive, Member& record) {
    archive.required("id", record.id);
    archive.required("name", record.name);
    archive.required("department", record.department);
    archive.optional("color", record.color);
    archive.optional("status", record.status);
    archive.optional("active", record.active);
    archive.optional("onShift", record.onShift);
    archive.optional("cooldownUntil", record.cooldownUntil);
    archive.optional("offShiftReason", record.offShiftReason);
    archive.optional("registeredAt", record.registeredAt);
    archive.optional("isAdmin", record.isAdmin);
    archive.optional("desktopAlerts", record.desktopAlerts);
}

template <class Archive>
void list(Archive& archive, SignalType& record) {
    archive.required("id", record.id);
    archive.required("key", record.key);
    archive.required("label", record.label);
    archive.required("color", record.color);
    archive.required("priority", record.priority);
    archive.optional("sortOrder", record.sortOrder);
    archive.optional("senderDepartments", record.senderDepartments);
    archive.optional("targetDepartment", record.targetDepartment);
    archive.optional("active", record.active);
}

template <class Archive>
void list(Archive& archive, Signal& record) {
    archive.required("id", record.id);
    archive.required("roomId", record.roomId);
    archive.optional("requesterId", record.requesterId);
    archive.optional("providerId", record.providerId);
    archive.optional("providerIds", record.providerIds);
    archive.optional("toDepartment", record.toDepartment);
    archive.required("typeId", record.typeId);
    archive.optional("note", record.note);
    archive.required("status", record.status);
    archive.required("createdAt", record.createdAt);
    archive.optional("acknowledgedAt", record.acknowledgedAt);
    archive.optional("acknowledgedBy", record.acknowledgedBy);
    archive.optional("clearedAt", record.clearedAt);
    archive.optional("clearedBy", record.clearedBy);
}

template <class Archive>
void list(Archive& archive, EscalationSettings& record) {
    archive.optional("enabled", record.enabled);
    archive.optional("afterMinutes", record.afterMinutes);
    archive.optional("notifyMemberId", record.notifyMemberId);
}

template <class Archive>
void list(Archive& archive, PerTypeSettings& record) {
    archive.optional("enabled", record.enabled);
    archive.optional("sound", record.sound);
    archive.optional("tone", record.tone);
}

template <class Archive>
void list(Archive& archive, NotificationSettings& record) {
    archive.optional("enabled", record.enabled);
    archive.optional("sound", record.sound);
    archive.optional("tone", record.tone);
    archive.optional("showNote", record.showNote);
    archive.optional("repeatAfterMinutes", record.repeatAfterMinutes);
    archive.optional("quiet", record.quiet);
    archive.optional("escalation", record.escalation);
    archive.optional("perType", record.perType);
}

template <class Archive>
void list(Archive& archive, Device& record) {
    archive.required("id", record.id);
    archive.required("kind", record.kind);
    archive.optional("name", record.name);
    archive.optional("memberId", record.memberId);
    archive.optional("roomId", record.roomId);
    archive.optional("signedInMemberId", record.signedInMemberId);
    archive.optional("notificationSettings", record.notificationSettings);
    archive.optional("lastSeenAt", record.lastSeenAt);
}

template <class Archive>
void list(Archive& archive, DesktopRelease::Mac& record) {
    archive.required("version", record.version);
    archive.required("build", record.build);
    archive.required("url", record.url);
    archive.optional("sha256", record.sha256);
}

template <class Archive>
void list(Archive& archive, DesktopRelease::Windows& record) {
    archive.required("version", record.version);
}

template <class Archive>
void list(Archive& archive, DesktopRelease& record) {
    archive.optional("macos", record.macos);
    archive.optional("windows", record.windows);
}

template <class Archive>
void list(Archive& archive, StateSnapshot& record) {
    archive.required("office", record.office);
    archive.required("members", record.members);
    archive.required("rooms", record.rooms);
    archive.required("signalTypes", record.signalTypes);
    archive.required("signals", record.signals);
    archive.required("device", record.device);
    archive.optional("desktopRelease", record.desktopRelease);
}

template <class Archive>
void list(Archive& archive, PairDeviceInfo& record) {
    archive.required("kind", record.kind);
    archive.required("name", record.name);
    archive.required("model", record.model);
    archive.required("appVersion", record.appVersion);
    archive.optional("locale", record.locale);
}

template <class Archive>
void list(Archive& archive, PairRedeemRequest& record) {
    archive.required("code", record.code);
    archive.required("device", record.device);
}

template <class Archive>
void list(Archive& archive, PairRequestBody& record) {
    archive.required("device", record.device);
}

template <class Archive>
void list(Archive& archive, PairRedeemResponse& record) {
    archive.required("deviceToken", record.deviceToken);
    archive.required("device", record.device);
    archive.required("office", record.office);
    archive.required("role", record.role);
    archive.optional("room", record.room);
    archive.optional("member", record.member);
}

template <class Archive>
void list(Archive& archive, QrTokenResponse& record) {
    archive.required("token", record.token);
    archive.optional("claimToken", record.claimToken);
    archive.required("qrData", record.qrData);
    archive.required("qrPng", record.qrPng);
    archive.required("expiresAt", record.expiresAt);
}

template <class Archive>
void list(Archive& archive, PairRequestPoll& record) {
    archive.required("status", record.status);
    archive.optional("deviceToken", record.deviceToken);
    archive.optional("device", record.device);
    archive.optional("office", record.office);
    archive.optional("role", record.role);
    archive.optional("room", record.room);
    archive.optional("member", record.member);
}

template <class Archive>
void list(Archive& archive, CreateSignalRequest& record) {
    archive.optional("roomId", record.roomId);
    archive.optional("providerId", record.providerId);
    archive.optional("providerIds", record.providerIds);
    archive.optional("toDepartment", record.toDepartment);
    archive.required("typeId", record.typeId);
    archive.required("note", record.note);
}

template <class Archive>
void list(Archive& archive, SignalActionRequest& record) {
    archive.required("action", record.action);
}

template <class Archive>
void list(Archive& archive, MemberStatusRequest& record) {
    archive.required("status", record.status);
}

template <class Archive>
void list(Archive& archive, APIErrorEnvelope& record) {
    archive.required("error", record.error);
    archive.optional("message", record.message);
    archive.optional("cooldownUntil", record.cooldownUntil);
}

template <class Archive>
void list(Archive& /*archive*/, EmptyResponse& /*record*/) {}

template <class Archive>
void list(Archive& archive, Accepted& record) {
    archive.required("accepted", record.accepted);
}

}  // namespace zelkovanta::records::reference
