#pragma once

#include "records/json_encoder.h"
#include "records/requests.h"
#include "records/snapshot.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Records of a small practice, as short as they can be. Each builder takes what a test cares about and a function that
/// adjusts the rest.
namespace zelkovanta::support {

inline constexpr auto asItIs = [](auto&) {};

template <class Adjust = decltype(asItIs)>
records::Signal makeSignal(std::string id, Adjust adjust = asItIs) {
    records::Signal signal;
    signal.id = std::move(id);
    signal.roomId = "room-1";
    signal.typeId = "type-ready";
    signal.status = "waiting";
    signal.createdAt = "2026-01-02T08:00:00Z";
    adjust(signal);
    return signal;
}

/// A signal in another status.
inline records::Signal makeSignalThatIs(std::string status, std::string id) {
    return makeSignal(std::move(id), [&](records::Signal& signal) { signal.status = std::move(status); });
}

/// A signal that names its recipient.
inline records::Signal makeSignalTo(std::string memberId, std::string id) {
    return makeSignal(std::move(id), [&](records::Signal& signal) { signal.providerId = std::move(memberId); });
}

inline records::Signal makeSignalWithNote(std::string note, std::string id) {
    return makeSignal(std::move(id), [&](records::Signal& signal) { signal.note = std::move(note); });
}

template <class Adjust = decltype(asItIs)>
records::Member makeMember(std::string id, Adjust adjust = asItIs) {
    records::Member member;
    member.id = std::move(id);
    member.name = "Name of " + member.id;
    member.department = "provider";
    adjust(member);
    return member;
}

template <class Adjust = decltype(asItIs)>
records::Room makeRoom(std::string id, Adjust adjust = asItIs) {
    records::Room room;
    room.id = std::move(id);
    room.name = "Name of " + room.id;
    adjust(room);
    return room;
}

inline records::Room makeInactiveRoom(std::string id) {
    return makeRoom(std::move(id), [](records::Room& room) { room.active = false; });
}

template <class Adjust = decltype(asItIs)>
records::SignalType makeType(std::string id, std::int64_t priority, Adjust adjust = asItIs) {
    records::SignalType type;
    type.id = std::move(id);
    type.key = "key of " + type.id;
    type.label = "Label of " + type.id;
    type.color = "#336699";
    type.priority = priority;
    adjust(type);
    return type;
}

template <class Adjust = decltype(asItIs)>
records::Office makeOffice(std::string id, Adjust adjust = asItIs) {
    records::Office office;
    office.id = std::move(id);
    office.name = "Name of " + office.id;
    adjust(office);
    return office;
}

inline records::Office makeOfficeThatRequiresSignIn(std::string id) {
    return makeOffice(std::move(id), [](records::Office& office) {
        office.settings = records::OfficeSettings{
            .autoExpireMinutes = {}, .allowAnyProvider = {}, .ble = {}, .requireSignedInSender = true};
    });
}

template <class Adjust = decltype(asItIs)>
records::Device makeDevice(Adjust adjust = asItIs) {
    records::Device device;
    device.id = "device-1";
    device.kind = "desktop_mac";
    adjust(device);
    return device;
}

/// The computer of a room.
inline records::Device makeDeviceOfRoom(std::string roomId) {
    return makeDevice([&](records::Device& device) { device.roomId = std::move(roomId); });
}

/// The personal computer of a member.
inline records::Device makeDeviceOfMember(std::string memberId) {
    return makeDevice([&](records::Device& device) { device.memberId = std::move(memberId); });
}

/// A computer at which a member is signed in.
inline records::Device makeDeviceWithSignIn(std::string memberId) {
    return makeDevice([&](records::Device& device) { device.signedInMemberId = std::move(memberId); });
}

/// A practice with two rooms, two providers and an assistant, one type, no signals.
template <class Adjust = decltype(asItIs)>
records::StateSnapshot makeSnapshot(Adjust adjust = asItIs) {
    records::StateSnapshot snapshot;
    snapshot.office = makeOffice("office-1");
    snapshot.members = {makeMember("member-1"), makeMember("member-2"),
                        makeMember("member-3", [](records::Member& member) { member.department = "assistant"; })};
    snapshot.rooms = {makeRoom("room-1"), makeRoom("room-2")};
    snapshot.signalTypes = {makeType("type-ready", 10)};
    snapshot.device = makeDeviceOfRoom("room-1");
    adjust(snapshot);
    return snapshot;
}

inline records::DesktopRelease makeRelease(std::string version, std::int64_t build) {
    return {.macos = records::DesktopRelease::Mac{.version = std::move(version),
                                                  .build = build,
                                                  .url = *records::Url::parse("https://updates.example/desktop.dmg"),
                                                  .sha256 = {}},
            .windows = {}};
}

template <class Record>
std::string toJson(const Record& record) {
    std::string text;
    records::json::encode(record, text);
    return text;
}

/// One frame of the real-time connection.
inline std::string frame(std::string_view type, std::string_view data) {
    return R"({"type":")" + std::string{type} + R"(","data":)" + std::string{data} + "}";
}

}  // namespace zelkovanta::support
