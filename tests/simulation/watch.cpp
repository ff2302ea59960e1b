#include "tests/simulation/watch.h"

#include <algorithm>
#include <cmath>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

// What the rules of the client allow in a minute, with nobody pressing anything. A refused upgrade asks for the state
// again after 10 s at the earliest; a failed setup request is repeated after 8 s; a setup is polled every 2 s;
// a failed request for a sign-in code is repeated after 10 s.
constexpr std::size_t mostStateRequests = 7;
constexpr std::size_t mostSetupRequests = 8;
constexpr std::size_t mostPolls = 31;
constexpr std::size_t mostSignOuts = 1;
constexpr std::size_t mostSignInCodes = 7;

constexpr auto longestEnforcedGap = 15s;

}  // namespace

Route routeOf(std::string_view method, std::string_view path) {
    if (path.ends_with("/pair/redeem")) {
        return Route::redeem;
    }
    if (path.ends_with("/pair/request")) {
        return Route::requestSetup;
    }
    if (path.find("/pair/request/") != std::string_view::npos) {
        return Route::pollSetup;
    }
    if (path.ends_with("/state")) {
        return Route::state;
    }
    if (path.ends_with("/signals")) {
        return Route::createSignal;
    }
    if (path.find("/signals/") != std::string_view::npos) {
        return Route::act;
    }
    if (path.ends_with("/members/me/status")) {
        return Route::status;
    }
    if (path.ends_with("/devices/me/signout")) {
        return Route::signOut;
    }
    if (path.ends_with("/devices/me/signin-qr")) {
        return Route::signInCode;
    }
    return method == "DELETE" && path.ends_with("/devices/me") ? Route::unlink : Route::other;
}

OvertakenReplies& OvertakenReplies::operator+=(const OvertakenReplies& other) {
    merged += other.merged;
    signals += other.signals;
    members += other.members;
    states += other.states;
    signOuts += other.signOuts;
    diverged += other.diverged;
    return *this;
}

std::size_t Watch::LastMinute::count(platform::SteadyTime now) {
    while (!moments_.empty() && now - moments_.front() > 60s) {
        moments_.pop_front();
    }
    return moments_.size();
}

void Watch::launched(int login) {
    login_ = login;
    ++session_;
    const auto now = loop_.now();
    setupCauses_.add(now);
    pollCauses_.add(now);
}

void Watch::sessionBegan() {
    ++session_;
    stateCauses_.add(loop_.now());
    setupCauses_.add(loop_.now());
    pollCauses_.add(loop_.now());
    signInCodeCauses_.add(loop_.now());
}

void Watch::limit(LastMinute& requests, LastMinute& causes, std::size_t most, std::string_view what) {
    const auto now = loop_.now();
    requests.add(now);
    if (requests.count(now) > most + causes.count(now)) {
        verdict_.fail(
            now, number_,
            "hammers: " + std::to_string(requests.count(now)) + ' ' + std::string{what} + " requests within a minute");
    }
}

void Watch::requestBegan(Route route) {
    switch (route) {
        case Route::state:
            limit(stateRequests_, stateCauses_, mostStateRequests, "state");
            break;
        case Route::requestSetup:
            limit(setupRequests_, setupCauses_, mostSetupRequests, "setup");
            break;
        case Route::pollSetup:
            limit(polls_, pollCauses_, mostPolls, "poll");
            break;
        case Route::signOut:
            limit(signOuts_, signOutCauses_, mostSignOuts, "sign-out");
            break;
        case Route::signInCode:
            limit(signInCodes_, signInCodeCauses_, mostSignInCodes, "sign-in code");
            break;
        default:
            break;  // Made by a press each.
    }
}

void Watch::personAsked(Route route) {
    const auto now = loop_.now();
    if (route == Route::signOut) {
        signOutCauses_.add(now);
    } else if (route == Route::signInCode) {
        signInCodeCauses_.add(now);
    } else if (route == Route::requestSetup) {
        setupCauses_.add(now);
        pollCauses_.add(now);
    }
}

/// Between two attempts of one client lies the wait of the retry curve for as many failures as there were in a row, or,
/// where the watchdog gave an attempt up, its limit.
void Watch::openingBegan() {
    const auto now = loop_.now();
    if (openingSession_ == session_) {
        const auto required = failuresSinceFrame_ == 0
                                  ? platform::Duration{longestEnforcedGap}
                                  : std::min(platform::Duration{longestEnforcedGap},
                                             platform::Duration{std::chrono::seconds{
                                                 std::int64_t{1} << std::min(failuresSinceFrame_ - 1, 10)}});
        if (now - lastOpening_ < required) {
            verdict_.fail(now, number_,
                          "hammers: an attempt to connect comes after " +
                              std::to_string(std::chrono::duration<double>(now - lastOpening_).count()) + " s and " +
                              std::to_string(failuresSinceFrame_) + " failures");
        }
    } else {
        failuresSinceFrame_ = 0;
    }
    openingSession_ = session_;
    lastOpening_ = now;
}

void Watch::overtaken(std::uint64_t& count) {
    ++count;
    mayDiffer_ = true;
}

void Watch::replyHanded(Route route, std::string_view recordId, std::uint64_t sequence, bool succeeded) {
    if (!succeeded) {
        mayDifferInSignIn_ = mayDifferInSignIn_ || route == Route::signOut;
        return;
    }
    mayDiffer_ = mayDiffer_ || orderUncertain_;
    switch (route) {
        case Route::createSignal:
        case Route::act:
        case Route::status: {
            ++overtaken_.merged;
            const auto known = newestOf_.find(std::string{recordId});
            const std::uint64_t newest = known == newestOf_.end() ? 0 : known->second;
            if (std::max(newest, newestSnapshot_) > sequence) {
                overtaken(route == Route::status ? overtaken_.members : overtaken_.signals);
            }
            break;
        }
        case Route::state:
            ++overtaken_.merged;
            if (newestFrame_ > sequence) {
                overtaken(overtaken_.states);
            } else if (!orderUncertain_) {
                newestSnapshot_ = sequence;
                mayDiffer_ = false;
                mayDifferInSignIn_ = false;
                newestOf_.clear();
            }
            signOutCauses_.add(loop_.now());
            break;
        case Route::signOut:
            ++overtaken_.merged;
            if (std::max(newestSignIn_, newestSnapshot_) > sequence) {
                overtaken(overtaken_.signOuts);
            }
            break;
        default:
            break;
    }
}

void Watch::frameHanded(const OfficeFrame& frame) {
    failuresSinceFrame_ = 0;
    if (frame.sequence == 0) {
        return;
    }
    newestFrame_ = std::max(newestFrame_, frame.sequence);
    if (frame.type == "snapshot") {
        newestSnapshot_ = std::max(newestSnapshot_, frame.sequence);
        mayDiffer_ = orderUncertain_;
        mayDifferInSignIn_ = false;
        newestOf_.clear();
        signOutCauses_.add(loop_.now());
    } else if (!frame.recordId.empty()) {
        newestOf_.insert_or_assign(frame.recordId, frame.sequence);
    } else if (frame.type == "session.started") {
        newestSignIn_ = frame.sequence;
        signInLogin_ = login_;
        signOutCauses_.add(loop_.now());
    } else if (frame.type == "session.ended") {
        stateCauses_.add(loop_.now());
    }
}

}  // namespace zelkovanta::simulation
