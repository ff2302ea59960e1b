#include "platform/simulated/scripted_random.h"
#include "server/web_socket_client.h"

#include <future>
#include <memory>
#include <vector>

#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <gmock/gmock.h>

namespace zelkovanta::server {
namespace {

/// Time stands still.
class StoppedClock final : public platform::Clock {
public:
    [[nodiscard]] platform::SteadyTime steadyNow() const override { return {}; }
    [[nodiscard]] platform::WallTime wallNow() const override { return {}; }
    [[nodiscard]] platform::Timer callAfter(platform::Duration, platform::Executor,
                                            std::move_only_function<void()>) override {
        return {};
    }
};

/// A server that always has something to say.
class TalkativeServer final : public platform::WebSocketLoading {
public:
    [[nodiscard]] std::unique_ptr<platform::WebSocketSession> makeSession(platform::Executor) override {
        return std::make_unique<Session>();
    }

private:
    class Task final : public platform::WebSocketTask {
    public:
        void resume() override {}
        platform::Awaitable<std::expected<platform::WebSocketFrame, platform::WebSocketFailure>> receive() override {
            if (cancelled_) {
                co_return std::unexpected{platform::WebSocketFailure{}};
            }
            co_return platform::WebSocketFrame{platform::WebSocketFrame::Kind::text, R"({"type":"pong"})"};
        }
        platform::Awaitable<bool> send(std::string) override { co_return !cancelled_; }
        void cancel(std::uint16_t) override { cancelled_ = true; }

    private:
        bool cancelled_ = false;
    };
    class Session final : public platform::WebSocketSession {
        std::shared_ptr<platform::WebSocketTask> makeTask(platform::WebSocketRequest) override {
            return std::make_shared<Task>();
        }
        void invalidateAndCancel() override {}
    };
};

TEST(WebSocketClientThreadsTest, clientsComeAndGoWhileTheirServerTalks) {
    TalkativeServer server;
    StoppedClock clock;
    platform::simulated::ScriptedRandom random;
    boost::asio::thread_pool network{2};
    boost::asio::thread_pool main{1};

    for (int session = 0; session < 100; ++session) {
        auto client = WebSocketClient::make(records::Url::parse("http://office.example").value(), "secret",
                                            {.webSocketLoading = server,
                                             .clock = clock,
                                             .random = random,
                                             .queue = boost::asio::make_strand(network),
                                             .main = main.executor()});
        int messages = 0;
        std::vector<ConnectionState> states;
        std::promise<void> talkedEnough;
        std::promise<void> stopped;
        client->onMessage = [&](const ServerMessage&) {
            if (++messages == 50) {
                talkedEnough.set_value();
            }
        };
        client->onStateChange = [&](ConnectionState state) {
            states.push_back(state);
            if (state == ConnectionState::stopped) {
                stopped.set_value();
            }
        };
        const std::weak_ptr<WebSocketClient> weak = client;
        client->start();
        talkedEnough.get_future().get();
        client->stop();
        stopped.get_future().get();
        client.reset();
        EXPECT_THAT(states, testing::ElementsAre(ConnectionState::connecting, ConnectionState::connected,
                                                 ConnectionState::stopped));
        // Its reading ends in a turn of its own, and the client with it.
        std::promise<void> gone;
        const std::function<void()> look = [&] {
            if (weak.expired()) {
                gone.set_value();
            } else {
                boost::asio::post(main, look);
            }
        };
        boost::asio::post(main, look);
        gone.get_future().get();
    }
    network.join();
    main.join();
}

}  // namespace
}  // namespace zelkovanta::server
