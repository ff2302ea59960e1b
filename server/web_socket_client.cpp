#include "server/web_socket_client.h"

#include "platform/task.h"
#include "server/web_socket_machine.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::server {

namespace asio = boost::asio;
using platform::Awaitable;

namespace {

constexpr std::string_view pingText = R"({"type":"ping"})";

bool isScheme(std::string_view scheme, std::string_view lowerCaseName) {
    return std::ranges::equal(scheme, lowerCaseName, {}, [](unsigned char c) { return std::tolower(c); });
}

std::string socketUrl(const records::Url& baseURL) {
    const records::Url joined = baseURL.appendingPath("api/v1/ws");
    const bool secure = isScheme(baseURL.scheme(), "https");
    if (!secure && !isScheme(baseURL.scheme(), "http")) {
        return joined.text();
    }
    if (baseURL.host().empty()) {
        std::fputs("The base URL has no host, so no socket URL can be formed from it.\n", stderr);
        std::abort();
    }
    return joined.withScheme(secure ? "wss" : "ws").text();
}

}  // namespace

struct WebSocketClient::Private {};

/// Does on the client's queue what the machine says.
class WebSocketClient::Driver : public std::enable_shared_from_this<Driver> {
public:
    Driver(platform::WebSocketRequest request, WebSocketClientPorts ports)
        : request_(std::move(request)), ports_(std::move(ports)) {}

    void setClient(std::weak_ptr<WebSocketClient> client) { client_ = std::move(client); }

    /// Gives whether a frame was accepted. Nothing happens once the client is gone.
    bool feed(const web_socket::Event& event) {
        const auto client = client_.lock();
        if (!client) {
            return false;
        }
        const auto commands = machine_.handle(event, ports_.clock.steadyNow());
        for (const auto& command : commands) {
            std::visit([&](const auto& what) { perform(what, client); }, command);
        }
        return std::ranges::find(commands, web_socket::Command{web_socket::AcceptFrame{}}) != commands.end();
    }

private:
    using Client = std::shared_ptr<WebSocketClient>;

    static Awaitable<void> readFrames(Client client, std::shared_ptr<platform::WebSocketTask> task,
                                      web_socket::Generation generation, platform::CancellationToken token) {
        while (!token.isCancelled()) {
            const auto received = co_await task->receive();
            if (!received) {
                client->driver_->feed(web_socket::ReceiveFailed{generation, received.error()});
                co_return;
            }
            if (!client->driver_->feed(web_socket::FrameReceived{generation})) {
                co_return;
            }
            if (auto message = decodeServerMessage(received->payload); message && client->onMessage) {
                // The next frame waits until the owner is done with this one.
                co_await deliver(client, std::move(*message));
            }
        }
    }

    static Awaitable<void> deliver(Client client, ServerMessage message) {
        const platform::Executor queue = client->driver_->ports_.queue;
        co_await asio::async_initiate<const asio::use_awaitable_t<platform::Executor>, void()>(
            [&client, &message, &queue](auto handler) {
                asio::post(client->driver_->ports_.main,
                           [client, queue, message = std::move(message), done = std::move(handler)]() mutable {
                               client->onMessage(std::move(message));
                               asio::post(queue, std::move(done));
                           });
            },
            asio::use_awaitable_t<platform::Executor>{});
    }

    static Awaitable<void> sendPing(Client client, std::shared_ptr<platform::WebSocketTask> task,
                                    web_socket::Generation generation) {
        std::string text{pingText};
        const bool sent = co_await task->send(std::move(text));
        if (sent) {
            client->driver_->feed(web_socket::PingSent{generation});
        } else {
            client->driver_->feed(web_socket::PingSendFailed{generation});
        }
    }

    void perform(const web_socket::OpenSocket& open, const Client& client) {
        if (!session_) {
            session_ = ports_.webSocketLoading.makeSession(ports_.queue);
        }
        task_ = session_->makeTask(request_);
        task_->resume();
        reading_ = platform::startTask(
            ports_.queue, [client, task = task_, generation = open.generation](platform::CancellationToken token) {
                return readFrames(client, task, generation, std::move(token));
            });
    }

    void perform(const web_socket::CancelSocket&, const Client&) {
        reading_.cancel();
        pingTimer_.reset();
        std::exchange(task_, nullptr)->cancel(platform::goingAway);
    }

    void perform(const web_socket::ReplaceSession&, const Client&) {
        session_->invalidateAndCancel();
        session_ = ports_.webSocketLoading.makeSession(ports_.queue);
    }

    void perform(const web_socket::SetPingTimer& set, const Client&) {
        pingTimer_ = feedAfter(set.delay, web_socket::PingDue{set.generation});
    }

    void perform(const web_socket::SendPing& ping, const Client& client) {
        platform::startTask(ports_.queue, [client, task = task_, generation = ping.generation] {
            return sendPing(client, task, generation);
        });
    }

    void perform(const web_socket::SetRetryTimer& set, const Client&) {
        const double jitter = ports_.random.uniform(0, web_socket::highestJitter);
        retryTimer_ = feedAfter(web_socket::retryDelay(set.attempt, jitter), web_socket::RetryDue{});
    }

    void perform(const web_socket::CancelRetryTimer&, const Client&) { retryTimer_.reset(); }

    void perform(const web_socket::SetWatchdogTimer& set, const Client&) {
        watchdogTimer_ = feedAfter(set.delay, web_socket::WatchdogDue{});
    }

    void perform(const web_socket::CancelWatchdogTimer&, const Client&) { watchdogTimer_.reset(); }

    // The reading loop sees from what `feed` gives whether its frame was accepted.
    void perform(const web_socket::AcceptFrame&, const Client&) {}
    void perform(const web_socket::DropFrame&, const Client&) {}

    void perform(const web_socket::DeliverState& deliver, const Client& client) {
        asio::post(ports_.main, [weak = std::weak_ptr(client), deliver] {
            const auto owner = weak.lock();
            if (owner && owner->driver_->deliveredSequence_ < deliver.sequence) {
                owner->driver_->deliveredSequence_ = deliver.sequence;
                if (owner->onStateChange) {
                    owner->onStateChange(deliver.state);
                }
            }
        });
    }

    void perform(const web_socket::ReportRevoked&, const Client& client) {
        asio::post(ports_.main, [client] {
            if (client->onRevoked) {
                client->onRevoked();
            }
        });
    }

    void perform(const web_socket::ReportUpgradeUnauthorized&, const Client& client) {
        asio::post(ports_.main, [client] {
            if (client->onUpgradeUnauthorized) {
                client->onUpgradeUnauthorized();
            }
        });
    }

    platform::Timer feedAfter(platform::Duration delay, web_socket::Event event) {
        return ports_.clock.callAfter(delay, ports_.queue, [weak = weak_from_this(), event] {
            if (const auto self = weak.lock()) {
                self->feed(event);
            }
        });
    }

    const platform::WebSocketRequest request_;
    const WebSocketClientPorts ports_;
    std::weak_ptr<WebSocketClient> client_;

    // On the queue.
    web_socket::Machine machine_;
    std::unique_ptr<platform::WebSocketSession> session_;
    std::shared_ptr<platform::WebSocketTask> task_;
    platform::TaskHandle reading_;
    platform::Timer pingTimer_;
    platform::Timer retryTimer_;
    platform::Timer watchdogTimer_;

    // On the main executor.
    std::uint64_t deliveredSequence_ = 0;
};

std::shared_ptr<WebSocketClient> WebSocketClient::make(const records::Url& baseURL, std::string token,
                                                       const WebSocketClientPorts& ports) {
    auto client = std::make_shared<WebSocketClient>(Private{}, socketUrl(baseURL), std::move(token), ports);
    client->driver_->setClient(client);
    return client;
}

WebSocketClient::WebSocketClient(const Private&, std::string url, std::string token, const WebSocketClientPorts& ports)
    : queue_(ports.queue),
      driver_(std::make_shared<Driver>(
          platform::WebSocketRequest{.url = std::move(url),
                                     .headers = {{"Authorization", "Bearer " + std::move(token)}},
                                     .openingTimeout = web_socket::openingTimeout},
          ports)) {}

WebSocketClient::~WebSocketClient() {
    // Timers and sessions end where they are used.
    asio::post(queue_, [driver = std::move(driver_)]() mutable { driver.reset(); });
}

void WebSocketClient::start() {
    asio::post(queue_, [client = shared_from_this()] { client->driver_->feed(web_socket::Start{}); });
}

void WebSocketClient::stop() {
    asio::post(queue_, [client = shared_from_this()] { client->driver_->feed(web_socket::Stop{}); });
}

}  // namespace zelkovanta::server
