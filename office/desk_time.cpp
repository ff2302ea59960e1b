#include "office/desk.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

// A lapsed code is remembered for a while, so that whoever brings it hears that it has lapsed.
constexpr std::chrono::hours lapsedCodeKept{24};
constexpr std::chrono::minutes lapsedSetupKept{10};
constexpr std::chrono::minutes lapsedSignInKept{2};
// Notes are about patients: what is over is forgotten.
constexpr std::chrono::days clearedSignalKept{7};
constexpr std::string_view clearedByTimeout = "timeout";

Timestamp forgottenAt(const PairingCode& code) {
    return code.expiresAt + lapsedCodeKept;
}
Timestamp forgottenAt(const SetupRequest& setup) {
    return setup.expiresAt + lapsedSetupKept;
}
Timestamp forgottenAt(const SignInCode& code) {
    return code.expiresAt + lapsedSignInKept;
}

template <class T>
std::vector<std::string> due(const State& state, Timestamp now) {
    std::vector<std::string> ids;
    for (const auto& [id, record] : state.all<T>()) {
        if (forgottenAt(record) <= now) {
            ids.push_back(id);
        }
    }
    return ids;
}

std::optional<std::chrono::minutes> signalLife(const Practice& practice) {
    const std::int64_t minutes = practice.autoExpireMinutes.value_or(0);
    return minutes > 0 ? std::optional(std::chrono::minutes{minutes}) : std::nullopt;
}

}  // namespace

std::vector<Effect> Office::Desk::tick(Timestamp now) {
    for (const auto& [practiceId, practice] : state().all<Practice>()) {
        const auto life = signalLife(practice);
        const auto& active = ledger_.activeSignals(practiceId);
        while (life && !active.empty() && active.begin()->first + *life <= now) {
            end(*ledger_.find<Signal>(active.begin()->second), SignalStatus::expired, std::string(clearedByTimeout),
                now);
        }
    }
    std::vector<Member> rested;
    for (const auto& [id, member] : state().all<Member>()) {
        if (member.cooldownUntil && *member.cooldownUntil <= now) {
            rested.push_back(member);
        }
    }
    for (Member& member : rested) {
        member.cooldownUntil.reset();
        tell(member.practiceId, frameOf("member.updated", "member", member));
        ledger_.put(std::move(member));
    }
    while (!ledger_.clearedSignals().empty() && ledger_.clearedSignals().begin()->first + clearedSignalKept <= now) {
        ledger_.erase<Signal>(ledger_.clearedSignals().begin()->second);
    }
    for (std::string& id : due<PairingCode>(state(), now)) {
        ledger_.erase<PairingCode>(std::move(id));
    }
    for (std::string& id : due<SetupRequest>(state(), now)) {
        ledger_.erase<SetupRequest>(std::move(id));
    }
    for (std::string& id : due<SignInCode>(state(), now)) {
        ledger_.erase<SignInCode>(std::move(id));
    }
    return finish("{}").effects;
}

std::optional<Timestamp> Office::Desk::nextDeadline() const {
    std::optional<Timestamp> next;
    const auto consider = [&next](Timestamp time) { next = next ? std::min(*next, time) : time; };

    for (const auto& [id, practice] : state().all<Practice>()) {
        const auto life = signalLife(practice);
        const auto& active = ledger_.activeSignals(id);
        if (life && !active.empty()) {
            consider(active.begin()->first + *life);
        }
    }
    for (const auto& [id, member] : state().all<Member>()) {
        if (member.cooldownUntil) {
            consider(*member.cooldownUntil);
        }
    }
    if (!ledger_.clearedSignals().empty()) {
        consider(ledger_.clearedSignals().begin()->first + clearedSignalKept);
    }
    const auto considerAll = [&]<class T>() {
        for (const auto& [id, record] : state().all<T>()) {
            consider(forgottenAt(record));
        }
    };
    considerAll.operator()<PairingCode>();
    considerAll.operator()<SetupRequest>();
    considerAll.operator()<SignInCode>();
    return next;
}

}  // namespace zelkovanta::office
