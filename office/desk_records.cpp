#include "office/ascii.h"
#include "office/desk.h"
#include "office/secrets.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

bool sameName(std::string_view left, std::string_view right) {
    return lowered(left) == lowered(right);
}

template <class T>
bool answersTo(const T& record, std::string_view name) {
    return sameName(record.name, name);
}
bool answersTo(const Practice& practice, std::string_view name) {
    return sameName(practice.name, name) || (practice.slug && sameName(*practice.slug, name));
}
bool answersTo(const SignalType& type, std::string_view name) {
    return sameName(type.key, name) || sameName(type.label, name);
}

template <class T>
bool belongsTo(const T& record, std::string_view practiceId) {
    return practiceId.empty() || record.practiceId == practiceId;
}
bool belongsTo(const Practice&, std::string_view) {
    return true;
}

/// The one record with this id or this name.
template <class T>
std::expected<const T*, Refusal> named(const State& state, std::string_view practiceId, std::string_view name,
                                       std::string_view what) {
    if (const T* record = state.find<T>(name); record != nullptr && belongsTo(*record, practiceId)) {
        return record;
    }
    const T* found = nullptr;
    for (const auto& [id, record] : state.all<T>()) {
        if (belongsTo(record, practiceId) && answersTo(record, name)) {
            if (found != nullptr) {
                return std::unexpected(refusals::conflict(
                    "ambiguous_" + std::string(what),
                    "More than one " + std::string(what) + " is called \"" + std::string(name) + "\"; use its id."));
            }
            found = &record;
        }
    }
    if (found == nullptr) {
        return std::unexpected(refusals::notFound(
            "unknown_" + std::string(what), "There is no " + std::string(what) + " \"" + std::string(name) + "\"."));
    }
    return found;
}

}  // namespace

Office::Desk::Found<Practice> Office::Desk::practiceNamed(std::string_view name) const {
    if (!name.empty()) {
        return named<Practice>(state(), {}, name, "practice");
    }
    const auto& practices = state().all<Practice>();
    const auto first = std::ranges::min_element(practices, {}, [](const auto& entry) { return entry.second.position; });
    if (first == practices.end()) {
        return std::unexpected(refusals::notFound("unknown_practice", "This office holds no practice yet."));
    }
    return &first->second;
}

Office::Desk::Found<Member> Office::Desk::memberNamed(std::string_view practiceId, std::string_view name) const {
    return named<Member>(state(), practiceId, name, "member");
}

Office::Desk::Found<Room> Office::Desk::roomNamed(std::string_view practiceId, std::string_view name) const {
    return named<Room>(state(), practiceId, name, "room");
}

Office::Desk::Found<SignalType> Office::Desk::typeNamed(std::string_view practiceId, std::string_view name) const {
    return named<SignalType>(state(), practiceId, name, "type");
}

Office::Desk::Found<Device> Office::Desk::deviceNamed(std::string_view name) const {
    return named<Device>(state(), {}, name, "computer");
}

Office::Desk::Found<Signal> Office::Desk::signalNamed(std::string_view id) const {
    if (const Signal* signal = ledger_.find<Signal>(id)) {
        return signal;
    }
    return std::unexpected(refusals::notFound("unknown_signal", "There is no such signal."));
}

template <class T>
std::vector<const T*> Office::Desk::inOrder(std::string_view practiceId) const {
    std::vector<const T*> records;
    for (const auto& [id, record] : state().all<T>()) {
        if (belongsTo(record, practiceId)) {
            records.push_back(&record);
        }
    }
    std::ranges::stable_sort(records, {}, &T::position);
    return records;
}
template std::vector<const Practice*> Office::Desk::inOrder(std::string_view) const;
template std::vector<const Member*> Office::Desk::inOrder(std::string_view) const;
template std::vector<const Room*> Office::Desk::inOrder(std::string_view) const;
template std::vector<const SignalType*> Office::Desk::inOrder(std::string_view) const;

template <class T>
std::string Office::Desk::unusedIdentifier(std::string_view prefix) {
    std::string id = newIdentifier(random_, prefix);
    while (ledger_.find<T>(id) != nullptr) {
        id = newIdentifier(random_, prefix);
    }
    return id;
}
template std::string Office::Desk::unusedIdentifier<Practice>(std::string_view);
template std::string Office::Desk::unusedIdentifier<Member>(std::string_view);
template std::string Office::Desk::unusedIdentifier<Room>(std::string_view);
template std::string Office::Desk::unusedIdentifier<SignalType>(std::string_view);
template std::string Office::Desk::unusedIdentifier<Signal>(std::string_view);
template std::string Office::Desk::unusedIdentifier<Device>(std::string_view);
template std::string Office::Desk::unusedIdentifier<CrashReport>(std::string_view);

const Member* Office::Desk::memberAt(const Device& device) const {
    const std::optional<std::string>& id = device.memberId ? device.memberId : device.signedInMemberId;
    return id ? ledger_.find<Member>(*id) : nullptr;
}

void Office::Desk::tell(std::string_view practiceId, std::string frame) {
    const std::set<std::string>& devices = ledger_.devicesOf(practiceId);
    if (!devices.empty()) {
        effects_.emplace_back(SendFrame{{devices.begin(), devices.end()}, std::move(frame)});
    }
}

void Office::Desk::tellAll(std::string frame) {
    SendFrame send{{}, std::move(frame)};
    for (const auto& [id, device] : state().all<Device>()) {
        send.deviceIds.push_back(id);
    }
    if (!send.deviceIds.empty()) {
        effects_.emplace_back(std::move(send));
    }
}

void Office::Desk::tellDevice(std::string_view deviceId, std::string frame) {
    effects_.emplace_back(SendFrame{{std::string(deviceId)}, std::move(frame)});
}

void Office::Desk::tellRooms(std::string_view practiceId) {
    tell(practiceId, frameOf("rooms.updated", "rooms", inOrder<Room>(practiceId)));
}

void Office::Desk::tellTypes(std::string_view practiceId) {
    tell(practiceId, frameOf("types.updated", "signalTypes", inOrder<SignalType>(practiceId)));
}

void Office::Desk::writePractice(JsonText& json, const Practice& practice) const {
    json.key("office");
    write(json, practice);
    json.key("members");
    write(json, inOrder<Member>(practice.id));
    json.key("rooms");
    write(json, inOrder<Room>(practice.id));
    json.key("signalTypes");
    write(json, inOrder<SignalType>(practice.id));
}

std::string Office::Desk::snapshot(const Device& device) {
    PracticeText& kept = practiceTexts_[device.practiceId];
    if (kept.json.empty() || kept.revision != ledger_.revision()) {
        JsonText json;
        json.object();
        writePractice(json, *ledger_.find<Practice>(device.practiceId));
        kept = {ledger_.revision(), json.take()};
    }

    JsonText rest;
    rest.object().key("signals").array();
    for (const auto& [createdAt, id] : ledger_.activeSignals(device.practiceId)) {
        write(rest, *ledger_.find<Signal>(id));
    }
    rest.endArray().key("device");
    write(rest, device);
    if (const Release* release = ledger_.find<Release>("current")) {
        rest.key("desktopRelease");
        write(rest, *release);
    }
    rest.endObject();
    // Two halves of one object.
    std::string text = rest.take();
    text.front() = ',';
    return kept.json + text;
}

}  // namespace zelkovanta::office
