#pragma once

#include "platform/simulated/event_loop.h"
#include "platform/url_session.h"
#include "platform/web_socket.h"
#include "tests/simulation/chance.h"
#include "tests/simulation/fault.h"
#include "tests/simulation/simulated_office.h"
#include "tests/simulation/trace.h"
#include "tests/simulation/watch.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::simulation {

/// One computer's way to the office, and what it does at the moment to whatever passes.
struct Link {
    enum class Path : std::uint8_t {
        open,
        down,    ///< connecting fails at once
        silent,  ///< everything disappears
    };
    Path path = Path::open;
    platform::SteadyTime stalledUntil{};  ///< until then nothing moves, and then all of it, in order
    double roughness = 0;                 ///< probability that one exchange, opening or frame meets a mishap
    platform::Duration lowestLatency = std::chrono::milliseconds{2};
    platform::Duration highestLatency = std::chrono::milliseconds{40};
};

/// What every link shares.
struct Network {
    platform::simulated::EventLoop& loop;
    Trace& trace;
    FaultCounts& faults;
    Chance chance{0};
    SimulatedOffice& office;

    [[nodiscard]] platform::Duration latency(const Link& link) {
        return chance.between(link.lowestLatency, link.highestLatency);
    }
    /// One of `mishaps`, or nothing, by the link's roughness.
    [[nodiscard]] std::optional<Fault> mishap(const Link& link, std::span<const Fault> mishaps) {
        if (link.roughness <= 0 || !chance.happens(link.roughness)) {
            return std::nullopt;
        }
        return mishaps[chance.below(mishaps.size())];
    }
};

class Exchange;
class Socket;

/// The network as one process sees it: its requests and sockets reach the simulated office, late, in pieces, or never.
/// What belongs to a socket that was given up, or to a session that is over, is now and then handed over all the same,
/// with poison in place of its content: the word `poison` must never show up in a store.
class NetworkPort final : public platform::UrlLoading, public platform::WebSocketLoading {
public:
    NetworkPort(Network& network, Link& link, Watch& watch, int computer, std::string peer);
    ~NetworkPort() override;

    [[nodiscard]] std::unique_ptr<platform::UrlSession> makeSession(
        const platform::UrlSessionConfiguration& configuration) override;
    [[nodiscard]] std::unique_ptr<platform::WebSocketSession> makeSession(platform::Executor executor) override;

    /// The process is gone: nothing is handed over any more, and the office hears of it.
    void letGo();

    /// Breaks every socket, or makes it half open.
    void breakSockets();
    void halfOpenSockets();
    /// The office closes the sockets with this code.
    void closeSockets(std::uint16_t code);

    /// Nothing is on its way, and the newest socket is open at both ends.
    [[nodiscard]] bool isQuiet() const;
    /// Of those that bring news of the practice: a station asks for its next sign-in code at any time.
    [[nodiscard]] std::size_t exchangesInFlight() const;

private:
    friend class Exchange;
    friend class Socket;

    Network& network_;
    Link& link_;
    Watch& watch_;
    int computer_;
    std::string peer_;
    bool isGone_ = false;
    std::vector<std::shared_ptr<Exchange>> exchanges_;
    std::vector<std::shared_ptr<Socket>> sockets_;
};

namespace poison {
inline constexpr std::string_view word = "poison";
/// A frame of any kind that changes what a store holds.
[[nodiscard]] std::string frame(Chance& chance);
/// The body of a success of this kind; empty for those that would leave no trace.
[[nodiscard]] std::string body(Route route);
}  // namespace poison

}  // namespace zelkovanta::simulation
