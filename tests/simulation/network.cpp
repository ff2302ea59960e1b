#include "tests/simulation/network.h"

#include "tests/simulation/exchange.h"
#include "tests/simulation/socket.h"

#include <algorithm>
#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::simulation {

namespace asio = boost::asio;

namespace {

using Handed = Exchange::Result;

platform::Awaitable<Handed> perform(NetworkPort& port, std::vector<std::shared_ptr<Exchange>>& exchanges, bool& isGone,
                                    platform::Duration idleLimit, platform::HttpRequest request) {
    const platform::Executor executor = co_await asio::this_coro::executor;
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<platform::Executor>, void(Handed)>(
        [&](auto handler) {
            if (isGone) {
                return;
            }
            auto exchange = std::make_shared<Exchange>(port, request, idleLimit, executor, std::move(handler));
            exchanges.push_back(exchange);
            exchange->begin();
        },
        asio::use_awaitable_t<platform::Executor>{});
}

}  // namespace

NetworkPort::NetworkPort(Network& network, Link& link, Watch& watch, int computer, std::string peer)
    : network_(network), link_(link), watch_(watch), computer_(computer), peer_(std::move(peer)) {}

NetworkPort::~NetworkPort() {
    letGo();
}

std::unique_ptr<platform::UrlSession> NetworkPort::makeSession(const platform::UrlSessionConfiguration& configuration) {
    class Session final : public platform::UrlSession {
    public:
        Session(NetworkPort& port, platform::Duration idleLimit) : port_(port), idleLimit_(idleLimit) {}
        platform::Awaitable<Handed> perform(platform::HttpRequest request) override {
            return simulation::perform(port_, port_.exchanges_, port_.isGone_, idleLimit_, std::move(request));
        }

    private:
        NetworkPort& port_;
        platform::Duration idleLimit_;
    };
    return std::make_unique<Session>(*this, configuration.idleTimeout);
}

std::unique_ptr<platform::WebSocketSession> NetworkPort::makeSession(platform::Executor executor) {
    class Session final : public platform::WebSocketSession {
    public:
        Session(NetworkPort& port, platform::Executor used) : port_(port), executor_(std::move(used)) {}
        std::shared_ptr<platform::WebSocketTask> makeTask(platform::WebSocketRequest request) override {
            auto socket = std::make_shared<Socket>(port_, std::move(request), executor_);
            port_.sockets_.push_back(socket);
            std::erase_if(mine_, [](const auto& weak) { return weak.expired(); });
            mine_.push_back(socket);
            return socket;
        }
        void invalidateAndCancel() override {
            for (const auto& weak : std::exchange(mine_, {})) {
                if (const auto socket = weak.lock()) {
                    socket->cancel(1001);
                }
            }
        }

    private:
        NetworkPort& port_;
        platform::Executor executor_;
        std::vector<std::weak_ptr<Socket>> mine_;
    };
    return std::make_unique<Session>(*this, std::move(executor));
}

void NetworkPort::letGo() {
    isGone_ = true;
    for (const auto& exchange : std::exchange(exchanges_, {})) {
        exchange->letGo();
    }
    for (const auto& socket : std::exchange(sockets_, {})) {
        socket->letGo();
    }
}

void NetworkPort::breakSockets() {
    const auto sockets = sockets_;
    for (const auto& socket : sockets) {
        socket->breakOff();
    }
}

void NetworkPort::halfOpenSockets() {
    for (const auto& socket : sockets_) {
        socket->makeHalfOpen();
    }
}

void NetworkPort::closeSockets(std::uint16_t code) {
    const auto sockets = sockets_;
    for (const auto& socket : sockets) {
        socket->closeOnTheWay(code);
    }
}

bool NetworkPort::isQuiet() const {
    return exchanges_.empty() && !sockets_.empty() && sockets_.back()->isQuiet();
}

std::size_t NetworkPort::exchangesInFlight() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(exchanges_, [](const auto& exchange) { return exchange->route() != Route::signInCode; }));
}

}  // namespace zelkovanta::simulation
