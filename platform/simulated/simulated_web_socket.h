#pragma once

#include "platform/clock.h"
#include "platform/web_socket.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::platform::simulated {

/// One socket of a `SimulatedWebSocketLoading`; the test plays the server. Opening without an answer fails once the
/// request's time-out has passed. One thread, that of the event loop; completions are posted.
class SimulatedWebSocketTask final : public WebSocketTask {
public:
    using Received = std::expected<WebSocketFrame, WebSocketFailure>;

    SimulatedWebSocketTask(WebSocketRequest made, std::size_t sessionNumber, Executor executor, Clock& clock);

    const WebSocketRequest request;
    const std::size_t session;  ///< index of the session that made it

    // What the client did.
    [[nodiscard]] std::optional<std::string> header(std::string_view name) const;
    [[nodiscard]] bool isResumed() const { return resumed_; }
    /// Texts handed to the connection.
    [[nodiscard]] const std::vector<std::string>& sent() const { return sent_; }
    [[nodiscard]] std::optional<std::uint16_t> cancelledWith() const { return cancelledWith_; }
    /// Resumed, and neither failed nor cancelled.
    [[nodiscard]] bool isLive() const { return resumed_ && !failure_ && !cancelledWith_; }
    /// Whether the client waits for a frame.
    [[nodiscard]] bool isReceiving() const { return receiving_ != nullptr; }

    // What the server does.
    /// The opening succeeds. Delivering a frame implies it.
    void accept();
    void deliver(WebSocketFrame frame);
    void deliver(std::string text) { deliver(WebSocketFrame{WebSocketFrame::Kind::text, std::move(text)}); }
    /// The socket ends: a close frame, a refused opening, or a broken connection. Frames delivered before are read
    /// first.
    void fail(WebSocketFailure failure);
    /// From here on a send under way and every later one fails, while receiving goes on: a connection whose own side
    /// is broken.
    void breakSending();
    /// From here on sends wait for ever: a connection whose peer takes nothing.
    void stallSending() { sendsStall_ = true; }
    /// From here on `cancel` is only recorded: what was on its way still comes, and the end comes late or never.
    void outliveCancellation() { outlivesCancellation_ = true; }

    void resume() override;
    Awaitable<Received> receive() override;
    Awaitable<bool> send(std::string text) override;
    void cancel(std::uint16_t closeCode) override;

private:
    friend class SimulatedWebSocketLoading;
    struct Sending {
        std::string text;
        std::move_only_function<void(bool)> complete;
    };
    void open();
    void end(WebSocketFailure failure);
    void completeReceive();
    void completeSend();
    void letGo();

    Executor executor_;
    Clock& clock_;
    bool resumed_ = false;
    bool opened_ = false;
    bool sendsBroken_ = false;
    bool sendsStall_ = false;
    bool outlivesCancellation_ = false;
    std::optional<std::uint16_t> cancelledWith_;
    std::optional<WebSocketFailure> failure_;
    std::deque<WebSocketFrame> inbox_;
    std::vector<std::string> sent_;
    std::move_only_function<void(Received)> receiving_;
    std::optional<Sending> sending_;
    Timer openingTimeout_;
};

/// Sockets without a network. Keeps every task made so far.
class SimulatedWebSocketLoading final : public WebSocketLoading {
public:
    using Server = std::function<void(SimulatedWebSocketTask&)>;

    explicit SimulatedWebSocketLoading(Clock& clock) : state_(std::make_shared<State>(clock)) {}
    ~SimulatedWebSocketLoading() override;

    [[nodiscard]] std::unique_ptr<WebSocketSession> makeSession(Executor executor) override;

    /// Called with each task as it is made; it may accept, refuse or deliver at once.
    void setServer(Server server) { state_->server = std::move(server); }

    [[nodiscard]] const std::vector<std::shared_ptr<SimulatedWebSocketTask>>& tasks() const { return state_->tasks; }
    /// The newest task; there must be one.
    [[nodiscard]] SimulatedWebSocketTask& current() const { return *state_->tasks.back(); }
    [[nodiscard]] std::size_t liveTasks() const;
    [[nodiscard]] std::size_t sessionsMade() const { return state_->sessionsMade; }
    [[nodiscard]] std::size_t sessionsInvalidated() const { return state_->sessionsInvalidated; }

private:
    class Session;
    struct State {
        explicit State(Clock& used) : clock(used) {}
        Clock& clock;
        Server server;
        std::vector<std::shared_ptr<SimulatedWebSocketTask>> tasks;
        std::size_t sessionsMade = 0;
        std::size_t sessionsInvalidated = 0;
    };
    std::shared_ptr<State> state_;
};

}  // namespace zelkovanta::platform::simulated
