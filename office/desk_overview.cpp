#include "office/desk.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

/// How many of a practice's signals that are over are shown.
constexpr std::size_t mostCleared = 20;
/// How many are looked at for them: other practices' signals lie between.
constexpr std::size_t mostLookedAt = 1000;

/// Until when the computer shows a sign-in code.
std::optional<Timestamp> codeShownUntil(const State& state, std::string_view deviceId, Timestamp now) {
    std::optional<Timestamp> until;
    for (const auto& [hash, code] : state.all<SignInCode>()) {
        if (code.deviceId == deviceId && now < code.expiresAt) {
            until = std::max(until, std::optional(code.expiresAt));
        }
    }
    return until;
}

void writeCodes(JsonText& json, const State& state, std::string_view practiceId, Timestamp now) {
    json.key("codes").array();
    for (const auto& [hash, code] : state.all<PairingCode>()) {
        if (code.practiceId == practiceId && !code.deviceId && now < code.expiresAt) {
            // The hash is no secret: it opens nothing.
            json.object()
                .field("id", code.id)
                .field("role", roleWord(code.role))
                .field("roomId", code.roomId)
                .field("memberId", code.memberId)
                .field("name", code.computerName)
                .field("expiresAt", isoText(code.expiresAt))
                .endObject();
        }
    }
    json.endArray();
}

}  // namespace

std::string Office::Desk::overview(Timestamp now) const {
    std::map<std::string_view, std::vector<const Signal*>> cleared;
    const Ledger::SignalsByAge& ended = ledger_.clearedSignals();
    std::size_t looked = 0;
    for (auto entry = ended.rbegin(); entry != ended.rend() && looked < mostLookedAt; ++entry, ++looked) {
        const Signal* signal = ledger_.find<Signal>(entry->second);
        auto& ofPractice = cleared[signal->practiceId];
        if (ofPractice.size() < mostCleared) {
            ofPractice.push_back(signal);
        }
    }

    JsonText json;
    json.object().key("practices").array();
    for (const Practice* practice : inOrder<Practice>({})) {
        json.object();
        writePractice(json, *practice);
        json.key("signals").array();
        for (const auto& [createdAt, id] : ledger_.activeSignals(practice->id)) {
            write(json, *ledger_.find<Signal>(id));
        }
        json.endArray().key("cleared");
        write(json, cleared[practice->id]);
        json.key("devices").array();
        for (const std::string& id : ledger_.devicesOf(practice->id)) {
            const Device& device = *ledger_.find<Device>(id);
            json.object()
                .field("role", roleWord(device.role))
                .field("collected", !device.tokenHash.empty())
                .field("station", isStation(device));
            if (const auto until = codeShownUntil(state(), id, now)) {
                json.field("codeShownUntil", isoText(*until));
            }
            json.field("model", device.model).field("appVersion", device.appVersion).key("device");
            write(json, device);
            json.endObject();
        }
        json.endArray();
        writeCodes(json, state(), practice->id, now);
        json.endObject();
    }
    json.endArray();
    json.key("waiting").raw(waitingList(now));
    if (const Release* release = ledger_.find<Release>("current")) {
        json.key("desktopRelease");
        write(json, *release);
    }
    json.endObject();
    return json.take();
}

}  // namespace zelkovanta::office
