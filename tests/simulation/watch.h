#pragma once

#include "platform/simulated/event_loop.h"
#include "tests/simulation/simulated_office.h"
#include "tests/simulation/verdict.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zelkovanta::simulation {

enum class Route : std::uint8_t {
    redeem,
    requestSetup,
    pollSetup,
    state,
    createSignal,
    act,
    status,
    signOut,
    signInCode,
    unlink,
    other,
};
[[nodiscard]] Route routeOf(std::string_view method, std::string_view path);

/// How often a REST reply reached a computer behind a newer event about the same thing, and was merged all the same.
struct OvertakenReplies {
    std::uint64_t merged = 0;  ///< replies merged in all
    std::uint64_t signals = 0;
    std::uint64_t members = 0;
    std::uint64_t states = 0;
    std::uint64_t signOuts = 0;
    std::uint64_t diverged = 0;  ///< looks at which a computer still differed from the office for that reason

    [[nodiscard]] std::uint64_t total() const { return signals + members + states + signOuts; }
    OvertakenReplies& operator+=(const OvertakenReplies& other);
};

/// Looks on at what goes to and from one computer: whether it asks too often, whether it may differ from the office for
/// the moment, and which session is its current one.
class Watch {
public:
    Watch(int number, platform::simulated::EventLoop& loop, Verdict& verdict, OvertakenReplies& overtaken)
        : number_(number), loop_(loop), verdict_(verdict), overtaken_(overtaken) {}

    /// A process was started, in the login with this number.
    void launched(int login);
    /// The store began a session, or a new generation of it.
    void sessionBegan();
    void sessionEnded() { ++session_; }
    /// Number of the current session; what belongs to an older one must have no effect.
    [[nodiscard]] std::uint64_t session() const { return session_; }

    // What the computer asks.
    void requestBegan(Route route);
    void openingBegan();
    void openingFailed() { ++failuresSinceFrame_; }
    /// A person did something that makes one request of this kind.
    void personAsked(Route route);

    // What the computer gets, while its session is the current one.
    void replyHanded(Route route, std::string_view recordId, std::uint64_t sequence, bool succeeded);
    void frameHanded(const OfficeFrame& frame);
    /// While the threads beside the main thread are held, the order in which things arrive is not the order in which
    /// they are handed over.
    void setOrderUncertain(bool uncertain) { orderUncertain_ = uncertain; }

    /// An overtaken reply was merged since the last snapshot.
    [[nodiscard]] bool mayDiffer() const { return mayDiffer_; }
    /// A sign-out failed since the last snapshot, so that the office may still count somebody as signed in.
    [[nodiscard]] bool mayDifferInSignIn() const { return mayDifferInSignIn_; }
    void divergenceSeen() { ++overtaken_.diverged; }

    /// The login in which somebody last signed in here.
    [[nodiscard]] int signInLogin() const { return signInLogin_; }
    /// An unlinking was answered in a way that ends the pairing on this side.
    [[nodiscard]] bool unlinkAnswered() const { return unlinkAnswered_; }
    void setUnlinkAnswered(bool answered) { unlinkAnswered_ = answered; }

private:
    /// Moments of the last minute.
    class LastMinute {
    public:
        void add(platform::SteadyTime now) { moments_.push_back(now); }
        [[nodiscard]] std::size_t count(platform::SteadyTime now);

    private:
        std::deque<platform::SteadyTime> moments_;
    };

    void limit(LastMinute& requests, LastMinute& causes, std::size_t most, std::string_view what);
    void overtaken(std::uint64_t& count);

    int number_;
    platform::simulated::EventLoop& loop_;
    Verdict& verdict_;
    OvertakenReplies& overtaken_;

    std::uint64_t session_ = 0;
    int login_ = 0;
    int signInLogin_ = -1;
    bool unlinkAnswered_ = false;

    std::uint64_t newestFrame_ = 0;
    std::uint64_t newestSnapshot_ = 0;
    std::uint64_t newestSignIn_ = 0;
    std::unordered_map<std::string, std::uint64_t> newestOf_;  ///< since the newest snapshot
    bool mayDiffer_ = false;
    bool mayDifferInSignIn_ = false;
    bool orderUncertain_ = false;

    platform::SteadyTime lastOpening_{};
    std::uint64_t openingSession_ = 0;
    int failuresSinceFrame_ = 0;
    LastMinute stateRequests_, stateCauses_;
    LastMinute setupRequests_, setupCauses_;
    LastMinute polls_, pollCauses_;
    LastMinute signOuts_, signOutCauses_;
    LastMinute signInCodes_, signInCodeCauses_;
};

}  // namespace zelkovanta::simulation
