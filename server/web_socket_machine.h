#pragma once

#include "platform/clock.h"
#include "platform/web_socket.h"
#include "server/connection_state.h"

#include <chrono>
#include <concepts>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

/// The rules of the live connection, as a machine: fed with an event and the time at which it is handled, it answers
/// with what is to be done, in order. It has no socket, timer, clock or chance of its own.
///
/// Each attempt to connect has a generation, counted from 1. What comes from an attempt that is not the current one, or
/// whose socket was cancelled, changes nothing; only a revoked token that the newest socket tells of counts even after
/// that socket was cancelled, until the next attempt begins.
namespace zelkovanta::server::web_socket {

using Generation = std::uint64_t;

inline constexpr platform::Duration pingInterval = std::chrono::seconds{30};
inline constexpr platform::Duration watchdogInterval = std::chrono::seconds{5};
inline constexpr platform::Duration connectedLimit = std::chrono::seconds{75};     ///< since the last frame
inline constexpr platform::Duration connectingLimit = std::chrono::seconds{15};    ///< since the attempt began
inline constexpr platform::Duration disconnectedLimit = std::chrono::seconds{30};  ///< since the attempt began
inline constexpr std::chrono::milliseconds openingTimeout{15'000};
inline constexpr std::uint16_t tokenRevoked = 4001;  ///< close code of the server that ends the session for good
inline constexpr double highestJitter = 0.25;

/// The wait before the retry that follows the `attempt`-th failure in a row: 1, 2, 4, 8, 16, 30, 30, … seconds plus
/// `jitter` (0 to `highestJitter`) of that, together at most 30 s.
[[nodiscard]] platform::Duration retryDelay(int attempt, double jitter);

// Events.

struct Start {
    bool operator==(const Start&) const = default;
};
struct Stop {
    bool operator==(const Stop&) const = default;
};
struct FrameReceived {
    Generation generation = 0;
    bool operator==(const FrameReceived&) const = default;
};
struct ReceiveFailed {
    Generation generation = 0;
    platform::WebSocketFailure failure;
    bool operator==(const ReceiveFailed&) const = default;
};
struct PingDue {
    Generation generation = 0;
    bool operator==(const PingDue&) const = default;
};
struct PingSent {
    Generation generation = 0;
    bool operator==(const PingSent&) const = default;
};
struct PingSendFailed {
    Generation generation = 0;
    bool operator==(const PingSendFailed&) const = default;
};
struct RetryDue {
    bool operator==(const RetryDue&) const = default;
};
struct WatchdogDue {
    bool operator==(const WatchdogDue&) const = default;
};

using Event =
    std::variant<Start, Stop, FrameReceived, ReceiveFailed, PingDue, PingSent, PingSendFailed, RetryDue, WatchdogDue>;

// Commands.

/// Make a socket in the current session, begin its opening and read its frames.
struct OpenSocket {
    Generation generation = 0;
    bool operator==(const OpenSocket&) const = default;
};
/// Give up the current socket with `platform::goingAway`; its reading and its pings end with it.
struct CancelSocket {
    bool operator==(const CancelSocket&) const = default;
};
/// Invalidate the session and make a new one.
struct ReplaceSession {
    bool operator==(const ReplaceSession&) const = default;
};
struct SetPingTimer {
    Generation generation = 0;
    platform::Duration delay{};
    bool operator==(const SetPingTimer&) const = default;
};
struct SendPing {
    Generation generation = 0;
    bool operator==(const SendPing&) const = default;
};
/// Set the timer of the retry that follows the `attempt`-th failure in a row, to `retryDelay` with a fresh jitter.
struct SetRetryTimer {
    int attempt = 0;
    bool operator==(const SetRetryTimer&) const = default;
};
struct CancelRetryTimer {
    bool operator==(const CancelRetryTimer&) const = default;
};
struct SetWatchdogTimer {
    platform::Duration delay{};
    bool operator==(const SetWatchdogTimer&) const = default;
};
struct CancelWatchdogTimer {
    bool operator==(const CancelWatchdogTimer&) const = default;
};
/// The frame just reported belongs to the current socket: decode it and hand it on.
struct AcceptFrame {
    bool operator==(const AcceptFrame&) const = default;
};
/// The frame just reported is void, and so is its socket: drop it and read no further.
struct DropFrame {
    bool operator==(const DropFrame&) const = default;
};
/// Tell the owner, unless a state with a higher number was told before.
struct DeliverState {
    std::uint64_t sequence = 0;
    ConnectionState state = ConnectionState::stopped;
    bool operator==(const DeliverState&) const = default;
};
struct ReportRevoked {
    bool operator==(const ReportRevoked&) const = default;
};
struct ReportUpgradeUnauthorized {
    bool operator==(const ReportUpgradeUnauthorized&) const = default;
};

using Command = std::variant<OpenSocket, CancelSocket, ReplaceSession, SetPingTimer, SendPing, SetRetryTimer,
                             CancelRetryTimer, SetWatchdogTimer, CancelWatchdogTimer, AcceptFrame, DropFrame,
                             DeliverState, ReportRevoked, ReportUpgradeUnauthorized>;

[[nodiscard]] std::string describe(const Event& event);
[[nodiscard]] std::string describe(const Command& command);

template <class Alternative>
    requires std::constructible_from<Event, Alternative> || std::constructible_from<Command, Alternative>
std::ostream& operator<<(std::ostream& out, const Alternative& alternative) {
    if constexpr (std::constructible_from<Event, Alternative>) {
        return out << describe(Event{alternative});
    } else {
        return out << describe(Command{alternative});
    }
}

class Machine {
public:
    /// `now` must not run backwards.
    [[nodiscard]] std::vector<Command> handle(const Event& event, platform::SteadyTime now);

    [[nodiscard]] ConnectionState state() const { return state_; }
    [[nodiscard]] Generation generation() const { return generation_; }
    [[nodiscard]] int attempt() const { return attempt_; }
    [[nodiscard]] bool isClosed() const { return closed_; }

private:
    struct Turn;
    struct Handler;

    [[nodiscard]] bool isNewest(Generation generation) const { return generation == generation_ && !closed_; }
    [[nodiscard]] bool isCurrent(Generation generation) const { return isNewest(generation) && socketLives_; }
    void connect(Turn& turn);
    void tearDown(Turn& turn);
    void cancelRetry(Turn& turn);
    void scheduleRetry(Turn& turn);
    void close(Turn& turn);
    void setState(ConnectionState state, Turn& turn);
    [[nodiscard]] bool isOverdue(platform::SteadyTime now) const;

    bool closed_ = true;
    bool socketLives_ = false;
    bool retryPending_ = false;
    bool watchdogRuns_ = false;
    int attempt_ = 0;  ///< failures since the last frame
    ConnectionState state_ = ConnectionState::stopped;
    Generation generation_ = 0;
    std::uint64_t issuedSequence_ = 0;
    platform::SteadyTime lastAttemptAt_{};
    std::optional<platform::SteadyTime> lastInboundAt_;  ///< of the current socket
};

}  // namespace zelkovanta::server::web_socket
