#pragma once

#include "tests/simulation/network.h"

#include <cstdint>
#include <deque>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace zelkovanta::simulation {

/// One real-time connection, both of its ends and what is on its way between them.
class Socket final : public platform::WebSocketTask,
                     public OfficeConnection,
                     public std::enable_shared_from_this<Socket> {
public:
    using Received = std::expected<platform::WebSocketFrame, platform::WebSocketFailure>;

    Socket(NetworkPort& port, platform::WebSocketRequest request, platform::Executor executor);

    // The computer's end.
    void resume() override;
    platform::Awaitable<Received> receive() override;
    platform::Awaitable<bool> send(std::string text) override;
    void cancel(std::uint16_t closeCode) override;
    /// The process is gone, and its end of the socket with it.
    void letGo();

    // The office's end.
    void send(OfficeFramePointer frame) override;
    void closeFromOffice(std::uint16_t code) override;
    void officeDied() override;

    // What happens to it on the way.
    void breakOff();
    void makeHalfOpen();
    /// As `closeFromOffice`, begun by whatever stands before the office.
    void closeOnTheWay(std::uint16_t code);

    /// Open at both ends, nothing on its way.
    [[nodiscard]] bool isQuiet() const;
    [[nodiscard]] bool isLive() const { return !isCancelled_ && !failure_; }

private:
    struct InFlight {
        platform::SteadyTime due;
        std::variant<OfficeFramePointer, platform::WebSocketFailure> what;
    };

    void after(platform::Duration delay, void (Socket::*step)());
    void arriveAtOffice();
    void failOpening(platform::WebSocketFailure failure, platform::Duration delay);
    void openingTimedOut();
    void pingArrives();
    void leaveOffice();
    void push(std::variant<OfficeFramePointer, platform::WebSocketFailure> what);
    void armPump();
    void pump();
    void reach(const OfficeFramePointer& frame);
    void end(platform::WebSocketFailure failure);
    void completeReceive();
    void handOver(Received received);
    void completeSend();
    void countFailure();

    NetworkPort& port_;
    platform::WebSocketRequest request_;
    platform::Executor executor_;
    std::uint64_t session_;

    bool isOpen_ = false;
    bool isCancelled_ = false;
    bool isHalfOpen_ = false;
    bool isOpenAtOffice_ = false;
    bool isFailureCounted_ = false;
    std::optional<platform::WebSocketFailure> failure_;
    std::deque<OfficeFramePointer> inbox_;
    std::move_only_function<void(Received)> receiving_;
    std::move_only_function<void(bool)> sending_;
    platform::WebSocketFailure openingFailure_;

    std::deque<InFlight> down_;
    bool pumpArmed_ = false;
    platform::SteadyTime lastDue_{};
};

}  // namespace zelkovanta::simulation
