#include "benchmarks/sample_office.h"

#include "records/json_encoder.h"

#include <array>
#include <cstdio>
#include <string_view>
#include <vector>

namespace zelkovanta::benchmarks {
namespace {

std::string identifier(char kind, std::size_t number) {
    std::array<char, 40> text{};
    const auto length = std::snprintf(text.data(), text.size(), "%08zx-%c7c2-4d1e-9b35-%012zx",
                                      number * 2654435761U % 0xFFFFFFFFU, kind, number + 1);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string timestamp(std::size_t number) {
    std::array<char, 40> text{};
    const auto length =
        std::snprintf(text.data(), text.size(), "2026-03-%02zuT%02zu:%02zu:%02zu.%03zuZ", 1 + number % 28,
                      7 + number % 12, number % 60, number * 7 % 60, number * 37 % 1000);
    return {text.data(), static_cast<std::size_t>(length)};
}

constexpr std::array<std::string_view, 8> names{"Alma Berg",   "Jonas Feld",     "Mira Östlund", "Teo Marchetti",
                                                "Ines Duarte", "Dr. Hanna Voss", "Pál Szabó",    "Noor van Dijk"};
constexpr std::array<std::string_view, 4> departments{"provider", "assistant", "hygiene", "frontdesk"};
constexpr std::array<std::string_view, 4> notes{
    "Patient is seated, x-ray on screen", "Needs a second opinion on the upper left molar \"26\"",
    "Begleitperson wartet draußen", "Anaesthesia has set in; ready when you are, the tray is prepared"};

records::Member member(std::size_t number) {
    records::Member member;
    member.id = identifier('a', number);
    member.name = names[number % names.size()];
    member.department = departments[number % departments.size()];
    member.color = "#4F8EF7";
    member.status = number % 3 == 0 ? "busy" : "available";
    member.active = true;
    member.onShift = number % 5 != 0;
    if (number % 5 == 0)
        member.offShiftReason = "break";
    member.registeredAt = timestamp(number);
    member.isAdmin = number % 20 == 0;
    member.desktopAlerts = records::DesktopAlerts{true, "chime"};
    return member;
}

records::Room room(std::size_t number) {
    records::Room room;
    room.id = identifier('b', number);
    room.name = "Room " + std::to_string(number + 1);
    room.beaconUuid = identifier('c', number);
    room.active = true;
    return room;
}

records::SignalType signalType(std::size_t number) {
    constexpr std::array<std::string_view, 6> keys{"ready", "seated", "stepOut", "urgent", "coffee", "lab"};
    records::SignalType type;
    type.id = identifier('d', number);
    type.key = keys[number % keys.size()];
    type.label = "Label of " + type.key;
    type.color = "#E5484D";
    type.priority = static_cast<std::int64_t>(number * 10);
    type.sortOrder = static_cast<std::int64_t>(number);
    type.senderDepartments = std::vector<std::string>{"assistant", "frontdesk"};
    type.targetDepartment = "provider";
    type.active = true;
    return type;
}

records::Signal signal(std::size_t number, SampleSize size) {
    records::Signal signal;
    signal.id = identifier('e', number);
    signal.roomId = identifier('b', number % size.rooms);
    signal.requesterId = identifier('a', number % size.members);
    if (number % 4 == 0)
        signal.providerIds =
            std::vector{identifier('a', number * 3 % size.members), identifier('a', number * 7 % size.members)};
    else
        signal.providerId = identifier('a', number * 5 % size.members);
    signal.typeId = identifier('d', number % 6);
    signal.note = notes[number % notes.size()];
    signal.status = number % 3 == 0 ? "acknowledged" : "waiting";
    signal.createdAt = timestamp(number);
    if (number % 3 == 0) {
        signal.acknowledgedAt = timestamp(number + 1);
        signal.acknowledgedBy = identifier('a', number * 5 % size.members);
    }
    return signal;
}

template <class Record>
std::string withIgnoredKey(const Record& record) {
    std::string own;
    records::json::encode(record, own);
    return R"({"officeId":")" + identifier('f', 0) + "\"," + own.substr(1);
}

template <class Record>
std::string list(const std::vector<Record>& values) {
    std::string json = "[";
    for (const Record& value : values) {
        if (json.size() > 1)
            json += ',';
        json += withIgnoredKey(value);
    }
    return json + "]";
}

}  // namespace

records::StateSnapshot sampleSnapshot(SampleSize size) {
    records::StateSnapshot snapshot;
    snapshot.office.id = identifier('f', 0);
    snapshot.office.name = "Practice at the Mill Pond";
    snapshot.office.vertical = "dental";
    snapshot.office.settings = records::OfficeSettings{.autoExpireMinutes = 30,
                                                       .allowAnyProvider = true,
                                                       .ble = records::BLESettings{"done", -65, 5},
                                                       .requireSignedInSender = false};
    for (std::size_t number = 0; number < size.members; ++number)
        snapshot.members.push_back(member(number));
    for (std::size_t number = 0; number < size.rooms; ++number)
        snapshot.rooms.push_back(room(number));
    for (std::size_t number = 0; number < 6; ++number)
        snapshot.signalTypes.push_back(signalType(number));
    for (std::size_t number = 0; number < size.signals; ++number)
        snapshot.signals.push_back(signal(number, size));
    snapshot.device.id = identifier('9', 0);
    snapshot.device.kind = "desktop_mac";
    snapshot.device.name = "Front desk";
    snapshot.device.memberId = snapshot.members.front().id;
    snapshot.desktopRelease = records::DesktopRelease{
        .macos = records::DesktopRelease::Mac{.version = "1.4.0",
                                              .build = 140,
                                              .url = *records::Url::parse("https://updates.example/client-1.4.0.dmg"),
                                              .sha256 = std::string(64, 'a')},
        .windows = std::nullopt};
    return snapshot;
}

std::string sampleSnapshotJson(const records::StateSnapshot& snapshot) {
    std::string release;
    records::json::encode(*snapshot.desktopRelease, release);
    return "{\"office\":" + withIgnoredKey(snapshot.office) + ",\"members\":" + list(snapshot.members) +
           ",\"rooms\":" + list(snapshot.rooms) + ",\"signalTypes\":" + list(snapshot.signalTypes) +
           ",\"signals\":" + list(snapshot.signals) + ",\"device\":" + withIgnoredKey(snapshot.device) +
           ",\"desktopRelease\":" + release + "}";
}

std::string sampleSignalFrame() {
    return R"({"type":"signal.updated","data":{"signal":)" + withIgnoredKey(signal(1, smallSample)) + "}}";
}

}  // namespace zelkovanta::benchmarks
