#pragma once

#include "platform/simulated/event_loop.h"
#include "platform/simulated/scripted_random.h"
#include "platform/simulated/simulated_web_socket.h"
#include "server/web_socket_client.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace zelkovanta::server {

/// A client in virtual time whose server the test plays.
struct WebSocketClientTest : testing::Test {
    using Told = std::pair<std::chrono::milliseconds, ConnectionState>;

    static constexpr const char* pong = R"({"type":"pong"})";

    platform::simulated::EventLoop loop;
    platform::simulated::EventLoop::Thread& main = loop.makeThread();
    platform::simulated::EventLoop::Thread& queue = loop.makeThread();
    platform::simulated::ManualClock clock{loop};
    platform::simulated::ScriptedRandom random;
    platform::simulated::SimulatedWebSocketLoading sockets{clock};

    std::vector<ServerMessage> messages;
    std::vector<Told> states;
    int revocations = 0;
    int unauthorized = 0;
    /// Everything told, in order.
    std::vector<std::string> told;

    std::shared_ptr<WebSocketClient> client = makeClient("https://office.example/base");

    [[nodiscard]] std::shared_ptr<WebSocketClient> makeClient(const std::string& baseURL) {
        return makeClient(baseURL, main.executor());
    }
    [[nodiscard]] std::shared_ptr<WebSocketClient> makeClient(const std::string& baseURL,
                                                              platform::Executor mainExecutor);

    [[nodiscard]] std::chrono::milliseconds now() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(loop.now().time_since_epoch());
    }
    [[nodiscard]] std::optional<ConnectionState> lastState() const {
        return states.empty() ? std::nullopt : std::optional{states.back().second};
    }

    void start();
    /// Starts, and lets the server say its first word.
    void connect();
    void deliver(const std::string& text);
    void failCurrent(const platform::WebSocketFailure& failure);
};

}  // namespace zelkovanta::server
