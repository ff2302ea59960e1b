#pragma once

#include "platform/linux/beast_web_socket.h"
#include "platform/linux/network_thread.h"
#include "platform/task.h"
#include "tests/platform/linux/scripted_server.h"
#include "tests/platform/linux/scripted_web_socket.h"

#include <expected>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>

#include <boost/asio/post.hpp>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {

using namespace std::chrono_literals;

using Outcome = std::expected<WebSocketFrame, WebSocketFailure>;

/// The outcome as a failed test shows it best.
inline std::string shown(const Outcome& outcome) {
    if (outcome) {
        return (outcome->kind == WebSocketFrame::Kind::text ? "text " : "binary ") + outcome->payload;
    }
    return "failed, close code " + (outcome.error().closeCode ? std::to_string(*outcome.error().closeCode) : "none") +
           ", status " + (outcome.error().httpStatus ? std::to_string(*outcome.error().httpStatus) : "none");
}

inline const std::string lost = "failed, close code none, status none";

struct BeastWebSocketTest : testing::Test {
    NetworkThread network;
    Executor queue = network.makeSerialQueue();
    TransportSettings settings;
    std::unique_ptr<BeastWebSocketLoading> loading;
    std::unique_ptr<WebSocketSession> session;

    ~BeastWebSocketTest() override {
        if (loading) {
            loading->cancelAll();
        }
        onQueue([this] { session.reset(); });
        network.runAndWait([]() -> Awaitable<void> { co_return; }, 10s);
    }

    void onQueue(const std::function<void()>& work) {
        std::promise<void> done;
        boost::asio::post(queue, [&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }

    std::shared_ptr<WebSocketTask> open(WebSocketRequest request) {
        std::shared_ptr<WebSocketTask> task;
        onQueue([&] {
            if (!session) {
                loading = std::make_unique<BeastWebSocketLoading>(settings);
                session = loading->makeSession(queue);
            }
            task = session->makeTask(std::move(request));
            task->resume();
        });
        return task;
    }
    std::shared_ptr<WebSocketTask> open(const std::string& url) { return open(WebSocketRequest{.url = url}); }

    std::future<Outcome> beginReceive(std::shared_ptr<WebSocketTask> task) {
        auto promise = std::make_shared<std::promise<Outcome>>();
        startTask(queue, [promise, task]() -> Awaitable<void> { promise->set_value(co_await task->receive()); });
        return promise->get_future();
    }
    std::string receive(const std::shared_ptr<WebSocketTask>& task) { return shown(beginReceive(task).get()); }

    bool send(std::shared_ptr<WebSocketTask> task, const std::string& text) {
        auto promise = std::make_shared<std::promise<bool>>();
        startTask(queue, [promise, task, text]() -> Awaitable<void> { promise->set_value(co_await task->send(text)); });
        return promise->get_future().get();
    }
};

}  // namespace zelkovanta::platform::linux_host
