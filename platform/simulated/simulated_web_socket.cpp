#include "platform/simulated/simulated_web_socket.h"

#include <algorithm>
#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform::simulated {

namespace asio = boost::asio;

SimulatedWebSocketTask::SimulatedWebSocketTask(WebSocketRequest made, std::size_t sessionNumber, Executor executor,
                                               Clock& clock)
    : request(std::move(made)), session(sessionNumber), executor_(std::move(executor)), clock_(clock) {}

std::optional<std::string> SimulatedWebSocketTask::header(std::string_view name) const {
    const auto found = std::ranges::find(request.headers, name, &HttpHeader::name);
    return found == request.headers.end() ? std::nullopt : std::optional{found->value};
}

void SimulatedWebSocketTask::accept() {
    if (!failure_) {
        open();
    }
}

void SimulatedWebSocketTask::open() {
    opened_ = true;
    openingTimeout_.reset();
    completeSend();
}

void SimulatedWebSocketTask::deliver(WebSocketFrame frame) {
    if (failure_) {
        return;
    }
    open();
    inbox_.push_back(std::move(frame));
    completeReceive();
}

void SimulatedWebSocketTask::fail(WebSocketFailure failure) {
    if (!failure_) {
        end(failure);
    }
}

void SimulatedWebSocketTask::breakSending() {
    sendsBroken_ = true;
    completeSend();
}

void SimulatedWebSocketTask::resume() {
    resumed_ = true;
    if (opened_ || failure_) {
        return;
    }
    openingTimeout_ = clock_.callAfter(request.openingTimeout, executor_, [this] { fail({}); });
}

void SimulatedWebSocketTask::cancel(std::uint16_t closeCode) {
    if (cancelledWith_) {
        return;
    }
    cancelledWith_ = closeCode;
    if (!outlivesCancellation_ && !failure_) {
        inbox_.clear();
        end({});
    }
}

void SimulatedWebSocketTask::end(WebSocketFailure failure) {
    failure_ = failure;
    openingTimeout_.reset();
    completeReceive();
    completeSend();
}

void SimulatedWebSocketTask::completeReceive() {
    if (!receiving_) {
        return;
    }
    std::optional<Received> received;
    if (!inbox_.empty()) {
        received = std::move(inbox_.front());
        inbox_.pop_front();
    } else if (failure_) {
        received = std::unexpected{*failure_};
    } else {
        return;
    }
    asio::post(executor_, [complete = std::exchange(receiving_, nullptr), received = std::move(*received)]() mutable {
        complete(std::move(received));
    });
}

void SimulatedWebSocketTask::completeSend() {
    if (!sending_) {
        return;
    }
    bool succeeded = false;
    if (!failure_ && !sendsBroken_) {
        if (!opened_ || sendsStall_) {
            return;
        }
        sent_.push_back(std::move(sending_->text));
        succeeded = true;
    }
    auto complete = std::move(sending_->complete);
    sending_.reset();
    asio::post(executor_, [complete = std::move(complete), succeeded]() mutable { complete(succeeded); });
}

void SimulatedWebSocketTask::letGo() {
    openingTimeout_.reset();
    const auto receiving = std::exchange(receiving_, nullptr);
    const auto sending = std::exchange(sending_, std::nullopt);
}

Awaitable<SimulatedWebSocketTask::Received> SimulatedWebSocketTask::receive() {
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<Executor>, void(Received)>(
        [this](auto handler) {
            receiving_ = std::move(handler);
            completeReceive();
        },
        asio::use_awaitable_t<Executor>{});
}

Awaitable<bool> SimulatedWebSocketTask::send(std::string text) {
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<Executor>, void(bool)>(
        [this, &text](auto handler) {
            sending_ = Sending{std::move(text), std::move(handler)};
            completeSend();
        },
        asio::use_awaitable_t<Executor>{});
}

class SimulatedWebSocketLoading::Session final : public WebSocketSession {
public:
    Session(std::shared_ptr<State> state, Executor executor)
        : state_(std::move(state)), executor_(std::move(executor)), number_(state_->sessionsMade++) {}

    std::shared_ptr<WebSocketTask> makeTask(WebSocketRequest request) override {
        auto task = std::make_shared<SimulatedWebSocketTask>(std::move(request), number_, executor_, state_->clock);
        state_->tasks.push_back(task);
        if (state_->server) {
            state_->server(*task);
        }
        return task;
    }

    void invalidateAndCancel() override {
        ++state_->sessionsInvalidated;
        const auto tasks = state_->tasks;
        for (const auto& task : tasks) {
            if (task->session == number_) {
                task->cancel(goingAway);
            }
        }
    }

private:
    std::shared_ptr<State> state_;
    Executor executor_;
    std::size_t number_;
};

SimulatedWebSocketLoading::~SimulatedWebSocketLoading() {
    state_->server = nullptr;
    // A loop that waits on a task holds that task.
    for (const auto& task : std::exchange(state_->tasks, {})) {
        task->letGo();
    }
}

std::unique_ptr<WebSocketSession> SimulatedWebSocketLoading::makeSession(Executor executor) {
    return std::make_unique<Session>(state_, std::move(executor));
}

std::size_t SimulatedWebSocketLoading::liveTasks() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(state_->tasks, [](const auto& task) { return task->isLive(); }));
}

}  // namespace zelkovanta::platform::simulated
