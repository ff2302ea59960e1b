#include "server/web_socket_machine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zelkovanta::server::web_socket {

using platform::Duration;
using platform::SteadyTime;

Duration retryDelay(int attempt, double jitter) {
    using Seconds = std::chrono::duration<double>;
    constexpr Seconds ceiling{30.0};
    const Seconds base = std::min(Seconds{std::exp2(std::max(attempt, 1) - 1)}, ceiling);
    // The ceiling comes after the jitter, so that late retries are exactly at it.
    return std::chrono::duration_cast<Duration>(std::min(base + base * jitter, ceiling));
}

struct Machine::Turn {
    SteadyTime now;
    std::vector<Command> commands;

    void operator+=(Command command) { commands.push_back(std::move(command)); }
};

struct Machine::Handler {
    Machine& machine;
    Turn& turn;

    void operator()(const Start&) const {
        machine.closed_ = false;
        machine.attempt_ = 0;
        if (!machine.watchdogRuns_) {
            machine.watchdogRuns_ = true;
            turn += SetWatchdogTimer{watchdogInterval};
        }
        machine.connect(turn);
    }

    void operator()(const Stop&) const { machine.close(turn); }

    void operator()(const FrameReceived& frame) const {
        if (!machine.isCurrent(frame.generation)) {
            turn += DropFrame{};
            return;
        }
        machine.lastInboundAt_ = turn.now;
        if (machine.state_ != ConnectionState::connected) {
            machine.attempt_ = 0;
            machine.setState(ConnectionState::connected, turn);
        }
        turn += AcceptFrame{};
    }

    void operator()(const ReceiveFailed& event) const {
        if (event.failure.closeCode == tokenRevoked && machine.isNewest(event.generation)) {
            machine.close(turn);
            turn += ReportRevoked{};
            return;
        }
        if (!machine.isCurrent(event.generation)) {
            return;
        }
        if (event.failure.httpStatus == 401) {
            turn += ReportUpgradeUnauthorized{};
        }
        machine.scheduleRetry(turn);
    }

    void operator()(const PingDue& ping) const {
        if (machine.isCurrent(ping.generation)) {
            turn += SendPing{ping.generation};
        }
    }

    void operator()(const PingSent& ping) const {
        if (machine.isCurrent(ping.generation)) {
            turn += SetPingTimer{ping.generation, pingInterval};
        }
    }

    void operator()(const PingSendFailed& ping) const {
        if (machine.isCurrent(ping.generation)) {
            machine.scheduleRetry(turn);
        }
    }

    void operator()(const RetryDue&) const {
        if (!machine.retryPending_) {
            return;
        }
        machine.retryPending_ = false;
        machine.connect(turn);
    }

    void operator()(const WatchdogDue&) const {
        if (!machine.watchdogRuns_) {
            return;
        }
        turn += SetWatchdogTimer{watchdogInterval};
        if (machine.isOverdue(turn.now)) {
            machine.tearDown(turn);
            turn += ReplaceSession{};
            machine.connect(turn);
        }
    }
};

std::vector<Command> Machine::handle(const Event& event, SteadyTime now) {
    Turn turn{now, {}};
    std::visit(Handler{*this, turn}, event);
    return std::move(turn.commands);
}

void Machine::connect(Turn& turn) {
    cancelRetry(turn);
    tearDown(turn);
    ++generation_;
    lastAttemptAt_ = turn.now;
    lastInboundAt_.reset();
    setState(ConnectionState::connecting, turn);
    socketLives_ = true;
    turn += OpenSocket{generation_};
    turn += SetPingTimer{generation_, pingInterval};
}

void Machine::tearDown(Turn& turn) {
    if (std::exchange(socketLives_, false)) {
        turn += CancelSocket{};
    }
}

void Machine::cancelRetry(Turn& turn) {
    if (std::exchange(retryPending_, false)) {
        turn += CancelRetryTimer{};
    }
}

void Machine::scheduleRetry(Turn& turn) {
    tearDown(turn);
    setState(ConnectionState::disconnected, turn);
    ++attempt_;
    cancelRetry(turn);
    retryPending_ = true;
    turn += SetRetryTimer{attempt_};
}

void Machine::close(Turn& turn) {
    closed_ = true;
    if (std::exchange(watchdogRuns_, false)) {
        turn += CancelWatchdogTimer{};
    }
    cancelRetry(turn);
    tearDown(turn);
    setState(ConnectionState::stopped, turn);
}

void Machine::setState(ConnectionState state, Turn& turn) {
    if (state_ != state) {
        state_ = state;
        turn += DeliverState{++issuedSequence_, state};
    }
}

bool Machine::isOverdue(SteadyTime now) const {
    switch (state_) {
        case ConnectionState::stopped:
            return false;
        case ConnectionState::connected:
            return lastInboundAt_ && now - *lastInboundAt_ >= connectedLimit;
        case ConnectionState::connecting:
            return now - lastAttemptAt_ >= connectingLimit;
        case ConnectionState::disconnected:
            return now - lastAttemptAt_ >= disconnectedLimit;
    }
    std::unreachable();
}

namespace {

std::string inSeconds(Duration duration) {
    return std::to_string(std::chrono::duration<double>(duration).count()) + " s";
}

std::string numbered(const char* name, std::uint64_t number) {
    return name + (" " + std::to_string(number));
}

std::string stateName(ConnectionState state) {
    switch (state) {
        case ConnectionState::disconnected:
            return "disconnected";
        case ConnectionState::connecting:
            return "connecting";
        case ConnectionState::connected:
            return "connected";
        case ConnectionState::stopped:
            return "stopped";
    }
    std::unreachable();
}

struct EventText {
    std::string operator()(const Start&) const { return "start"; }
    std::string operator()(const Stop&) const { return "stop"; }
    std::string operator()(const FrameReceived& event) const { return numbered("frame received", event.generation); }
    std::string operator()(const ReceiveFailed& event) const {
        std::string text = numbered("receive failed", event.generation);
        if (event.failure.closeCode) {
            text += numbered(", close code", *event.failure.closeCode);
        }
        if (event.failure.httpStatus) {
            text += ", status " + std::to_string(*event.failure.httpStatus);
        }
        return text;
    }
    std::string operator()(const PingDue& event) const { return numbered("ping due", event.generation); }
    std::string operator()(const PingSent& event) const { return numbered("ping sent", event.generation); }
    std::string operator()(const PingSendFailed& event) const { return numbered("ping failed", event.generation); }
    std::string operator()(const RetryDue&) const { return "retry due"; }
    std::string operator()(const WatchdogDue&) const { return "watchdog due"; }
};

struct CommandText {
    std::string operator()(const OpenSocket& command) const { return numbered("open socket", command.generation); }
    std::string operator()(const CancelSocket&) const { return "cancel socket"; }
    std::string operator()(const ReplaceSession&) const { return "replace session"; }
    std::string operator()(const SetPingTimer& command) const {
        return numbered("set ping timer", command.generation) + " to " + inSeconds(command.delay);
    }
    std::string operator()(const SendPing& command) const { return numbered("send ping", command.generation); }
    std::string operator()(const SetRetryTimer& command) const {
        return "set retry timer after failure " + std::to_string(command.attempt);
    }
    std::string operator()(const CancelRetryTimer&) const { return "cancel retry timer"; }
    std::string operator()(const SetWatchdogTimer& command) const {
        return "set watchdog timer to " + inSeconds(command.delay);
    }
    std::string operator()(const CancelWatchdogTimer&) const { return "cancel watchdog timer"; }
    std::string operator()(const AcceptFrame&) const { return "accept frame"; }
    std::string operator()(const DropFrame&) const { return "drop frame"; }
    std::string operator()(const DeliverState& command) const {
        return numbered("deliver state", command.sequence) + ": " + stateName(command.state);
    }
    std::string operator()(const ReportRevoked&) const { return "report revoked"; }
    std::string operator()(const ReportUpgradeUnauthorized&) const { return "report upgrade unauthorized"; }
};

}  // namespace

std::string describe(const Event& event) {
    return std::visit(EventText{}, event);
}

std::string describe(const Command& command) {
    return std::visit(CommandText{}, command);
}

}  // namespace zelkovanta::server::web_socket
