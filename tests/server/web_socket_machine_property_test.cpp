#include "server/web_socket_machine.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::server::web_socket {
namespace {

using platform::Duration;
using platform::SteadyTime;

/// One random happening. `generationsBack` is counted from the generation current at that moment; -1 is one that does
/// not exist yet.
struct Happening {
    int kind = 0;
    int generationsBack = 0;
    int closeCode = 0;
    int status = 0;
    std::int64_t milliseconds = 0;
};

std::ostream& operator<<(std::ostream& out, const Happening& happening) {
    return out << "{kind " << happening.kind << ", back " << happening.generationsBack << ", code "
               << happening.closeCode << ", status " << happening.status << ", after " << happening.milliseconds
               << " ms}";
}

rc::Gen<Happening> arbitraryHappening() {
    return rc::gen::build<Happening>(
        rc::gen::set(&Happening::kind, rc::gen::weightedElement<int>(
                                           {{1, 0}, {1, 1}, {6, 2}, {6, 3}, {3, 4}, {3, 5}, {2, 6}, {6, 7}, {8, 8}})),
        rc::gen::set(&Happening::generationsBack, rc::gen::weightedElement<int>({{8, 0}, {3, 1}, {1, 2}, {1, -1}})),
        rc::gen::set(&Happening::closeCode, rc::gen::weightedElement<int>({{6, 0}, {3, 1000}, {1, 4001}})),
        rc::gen::set(&Happening::status, rc::gen::weightedElement<int>({{6, 0}, {2, 401}, {2, 500}})),
        rc::gen::set(&Happening::milliseconds, rc::gen::inRange<std::int64_t>(0, 40'000)));
}

Event toEvent(const Happening& happening, Generation current) {
    const auto signedGeneration = static_cast<std::int64_t>(current) - happening.generationsBack;
    const auto generation = static_cast<Generation>(std::max<std::int64_t>(0, signedGeneration));
    switch (happening.kind) {
        case 0:
            return Start{};
        case 1:
            return Stop{};
        case 2:
            return FrameReceived{generation};
        case 3: {
            platform::WebSocketFailure failure;
            if (happening.closeCode != 0) {
                failure.closeCode = static_cast<std::uint16_t>(happening.closeCode);
            }
            if (happening.status != 0) {
                failure.httpStatus = happening.status;
            }
            return ReceiveFailed{generation, failure};
        }
        case 4:
            return PingDue{generation};
        case 5:
            return PingSent{generation};
        case 6:
            return PingSendFailed{generation};
        case 7:
            return RetryDue{};
        default:
            return WatchdogDue{};
    }
}

std::optional<Generation> generationOf(const Event& event) {
    return std::visit(
        [](const auto& what) -> std::optional<Generation> {
            if constexpr (requires { what.generation; }) {
                return what.generation;
            } else {
                return std::nullopt;
            }
        },
        event);
}

template <class T>
bool is(const Event& event) {
    return std::holds_alternative<T>(event);
}

/// Obeys the commands as a driver would, and checks that each makes sense where it comes.
struct Obedience {
    std::optional<Generation> socket;
    Generation newest = 0;
    std::optional<int> retryOfAttempt;
    bool watchdog = false;
    std::uint64_t told = 0;
    ConnectionState state = ConnectionState::stopped;

    void operator()(const OpenSocket& open) {
        RC_ASSERT(!socket);
        RC_ASSERT(open.generation == newest + 1);
        newest = open.generation;
        socket = open.generation;
    }
    void operator()(const CancelSocket&) {
        RC_ASSERT(socket.has_value());
        socket.reset();
    }
    void operator()(const ReplaceSession&) const { RC_ASSERT(!socket); }
    void operator()(const SetPingTimer& set) const {
        RC_ASSERT(socket == set.generation);
        RC_ASSERT(set.delay == pingInterval);
    }
    void operator()(const SendPing& ping) const { RC_ASSERT(socket == ping.generation); }
    void operator()(const SetRetryTimer& set) {
        RC_ASSERT(!socket);
        RC_ASSERT(!retryOfAttempt);
        RC_ASSERT(set.attempt >= 1);
        retryOfAttempt = set.attempt;
    }
    void operator()(const CancelRetryTimer&) {
        RC_ASSERT(retryOfAttempt.has_value());
        retryOfAttempt.reset();
    }
    void operator()(const SetWatchdogTimer& set) {
        RC_ASSERT(set.delay == watchdogInterval);
        watchdog = true;
    }
    void operator()(const CancelWatchdogTimer&) {
        RC_ASSERT(watchdog);
        watchdog = false;
    }
    void operator()(const AcceptFrame&) const { RC_ASSERT(state == ConnectionState::connected); }
    void operator()(const DropFrame&) const {}
    void operator()(const DeliverState& deliver) {
        RC_ASSERT(deliver.sequence == told + 1);
        RC_ASSERT(deliver.state != state);
        told = deliver.sequence;
        state = deliver.state;
    }
    void operator()(const ReportRevoked&) const { RC_ASSERT(state == ConnectionState::stopped); }
    void operator()(const ReportUpgradeUnauthorized&) const { RC_ASSERT(socket.has_value()); }

    void checkShape(bool running) const {
        RC_ASSERT(watchdog == running);
        if (!running) {
            RC_ASSERT(state == ConnectionState::stopped);
            RC_ASSERT(!socket);
            RC_ASSERT(!retryOfAttempt);
            return;
        }
        // Either a socket lives or a retry is on its way: the client never rests.
        RC_ASSERT(socket.has_value() != retryOfAttempt.has_value());
        RC_ASSERT((state == ConnectionState::disconnected) == retryOfAttempt.has_value());
        RC_ASSERT(state != ConnectionState::stopped);
    }
};

RC_GTEST_PROP(WebSocketMachineProperties, whateverHappensTheRulesHold, ()) {
    Machine machine;
    Obedience driver;
    bool running = false;
    int failures = 0;
    SteadyTime now{};

    auto happenings = *rc::gen::resize(400, rc::gen::container<std::vector<Happening>>(arbitraryHappening()));
    // What comes before the first start is a case of its own, and a rare one.
    if (*rc::gen::inRange(0, 10) > 0) {
        happenings.insert(happenings.begin(), Happening{});
    }
    for (const Happening& happening : happenings) {
        now += std::chrono::milliseconds{happening.milliseconds};
        const Event event = toEvent(happening, machine.generation());
        const auto generation = generationOf(event);
        const auto* const failed = std::get_if<ReceiveFailed>(&event);
        const bool revokes = running && failed != nullptr && failed->failure.closeCode == tokenRevoked &&
                             failed->generation == driver.newest;
        const bool isVoid = generation && generation != driver.socket && !revokes;
        const bool wasSilent = !running && !is<Start>(event);
        const bool retryWasDue = is<RetryDue>(event) && driver.retryOfAttempt;
        const int failuresBefore = failures;
        if (is<RetryDue>(event)) {
            driver.retryOfAttempt.reset();
        }

        const auto commands = machine.handle(event, now);
        for (const Command& command : commands) {
            std::visit(driver, command);
        }

        const auto contains = [&](const Command& command) {
            return std::ranges::find(commands, command) != commands.end();
        };
        if (wasSilent || isVoid) {
            RC_ASSERT(commands ==
                      (is<FrameReceived>(event) ? std::vector<Command>{DropFrame{}} : std::vector<Command>{}));
        }
        if (is<FrameReceived>(event)) {
            RC_ASSERT(contains(AcceptFrame{}) == !isVoid);
            failures = isVoid ? failures : 0;
        }
        if (is<Start>(event)) {
            running = true;
            failures = 0;
            RC_ASSERT(driver.socket.has_value());
        }
        if (is<Stop>(event) || contains(ReportRevoked{})) {
            running = false;
        }
        if (retryWasDue) {
            RC_ASSERT(driver.socket.has_value());
        }
        const bool fails = !isVoid && running && (failed != nullptr || is<PingSendFailed>(event));
        if (fails) {
            failures = failuresBefore + 1;
            RC_ASSERT(driver.retryOfAttempt == failures);
        }
        RC_ASSERT(contains(ReportRevoked{}) == revokes);
        RC_ASSERT(contains(ReportUpgradeUnauthorized{}) ==
                  (fails && failed != nullptr && failed->failure.httpStatus == 401));
        driver.checkShape(running);
        RC_ASSERT(driver.state == machine.state());
    }
}

RC_GTEST_PROP(WebSocketMachineProperties, retryDelaysStayWithinTheCurve, ()) {
    const int attempt = *rc::gen::inRange(-3, 5000);
    const double jitter = *rc::gen::inRange(0, 2501) / 10'000.0;
    const Duration delay = retryDelay(attempt, jitter);
    const Duration lowest = retryDelay(attempt, 0);
    RC_ASSERT(delay >= lowest);
    RC_ASSERT(delay <= retryDelay(attempt, highestJitter));
    RC_ASSERT(lowest >= std::chrono::seconds{1});
    RC_ASSERT(delay <= std::chrono::seconds{30});
    if (attempt >= 6) {
        RC_ASSERT(delay == std::chrono::seconds{30});
    }
}

RC_GTEST_PROP(WebSocketMachineProperties, anAttemptIsGivenUpExactlyWhenItsTimeIsOver, ()) {
    Machine machine;
    const auto begun = SteadyTime{std::chrono::milliseconds{*rc::gen::inRange(0, 1000)}};
    const auto waited = std::chrono::milliseconds{*rc::gen::inRange(0, 100'000)};
    const bool answered = *rc::gen::arbitrary<bool>();
    static_cast<void>(machine.handle(Start{}, begun));
    if (answered) {
        static_cast<void>(machine.handle(FrameReceived{1}, begun));
    }
    const auto commands = machine.handle(WatchdogDue{}, begun + waited);
    const bool givenUp = std::ranges::find(commands, Command{ReplaceSession{}}) != commands.end();
    RC_ASSERT(givenUp == (waited >= (answered ? connectedLimit : connectingLimit)));
}

}  // namespace
}  // namespace zelkovanta::server::web_socket
