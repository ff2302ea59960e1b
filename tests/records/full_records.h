#pragma once

#include "records/requests.h"
#include "records/snapshot.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// Records in which every optional field, their own and of what they hold, has a value.
namespace zelkovanta::records::reference {

inline StateSnapshot fullSnapshot() {
    StateSnapshot snapshot;
    snapshot.office = {.id = "o1",
                       .name = "Practice",
                       .slug = "practice",
                       .vertical = "dental",
                       .settings = OfficeSettings{30, true, BLESettings{"done", -65, 5}, false},
                       .departments = std::vector<OfficeDepartment>{{"provider", "Provider", "Providers"}}};
    snapshot.members = {Member{"m1", "Alma", "provider", "#fff", "busy", true, false, "2026-01-01T00:00:00Z", "break",
                               "2025-01-01T00:00:00Z", true, DesktopAlerts{true, "chime"}}};
    snapshot.rooms = {Room{"r1", "Room 1", "b-1", true}};
    snapshot.signalTypes = {
        SignalType{"t1", "ready", "Ready", "#0f0", 10, 2, std::vector<std::string>{"assistant"}, "provider", true}};
    snapshot.signals = {Signal{"s1", "r1", "m2", "m1", std::vector<std::string>{"m1", "m2"}, "provider", "t1", "note",
                               "acknowledged", "2026-01-01T00:00:00Z", "2026-01-01T00:00:01Z", "m1",
                               "2026-01-01T00:00:02Z", "ble"}};
    snapshot.device = {
        .id = "d1",
        .kind = "desktop_mac",
        .name = "Front desk",
        .memberId = "m1",
        .roomId = "r1",
        .signedInMemberId = "m2",
        .notificationSettings =
            NotificationSettings{
                .enabled = true,
                .sound = "chime",
                .tone = "soft",
                .showNote = false,
                .repeatAfterMinutes = 3,
                .quiet = true,
                .escalation = EscalationSettings{true, 5, "m2"},
                .perType = std::map<std::string, PerTypeSettings>{{"ready", {false, "bell", "loud"}}, {"", {}}}},
        .lastSeenAt = "2026-01-01T00:00:03Z"};
    snapshot.desktopRelease =
        DesktopRelease{.macos = DesktopRelease::Mac{"1.4.0", 140, *Url::parse("https://updates.example/a.dmg"), "abc"},
                       .windows = DesktopRelease::Windows{"1.3"}};
    return snapshot;
}

inline PairRedeemResponse fullRedeemResponse() {
    const StateSnapshot snapshot = fullSnapshot();
    return {.deviceToken = "secret",
            .device = snapshot.device,
            .office = snapshot.office,
            .role = DeviceRole::shared,
            .room = snapshot.rooms.front(),
            .member = snapshot.members.front()};
}

inline PairRequestPoll fullPoll() {
    const StateSnapshot snapshot = fullSnapshot();
    return {.status = "approved",
            .deviceToken = "secret",
            .device = snapshot.device,
            .office = snapshot.office,
            .role = DeviceRole::member,
            .room = snapshot.rooms.front(),
            .member = snapshot.members.front()};
}

inline QrTokenResponse fullQrToken() {
    return {.token = "t1",
            .claimToken = "c1",
            .qrData = "zelkovanta:t1",
            .qrPng = "data:image/png;base64,aW1hZ2U=",
            .expiresAt = "2026-01-01T00:05:00Z"};
}

inline APIErrorEnvelope fullErrorEnvelope() {
    return {.error = "in_cooldown", .message = "Not yet.", .cooldownUntil = "2026-01-01T00:05:00Z"};
}

}  // namespace zelkovanta::records::reference
