#include "platform/simulated/simulated_url_loading.h"

#include <utility>

#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform::simulated {

namespace asio = boost::asio;

class SimulatedUrlLoading::Session final : public UrlSession {
public:
    Session(std::shared_ptr<Log> log, Duration idleLimit) : log_(std::move(log)), idleLimit_(idleLimit) {}

    Awaitable<Result> perform(HttpRequest request) override {
        return SimulatedUrlLoading::perform(log_, idleLimit_, std::move(request));
    }

private:
    std::shared_ptr<Log> log_;
    Duration idleLimit_;
};

std::optional<std::string> SimulatedUrlLoading::Exchange::header(std::string_view name) const {
    for (const auto& header : request.headers) {
        if (header.name == name) {
            return header.value;
        }
    }
    return std::nullopt;
}

void SimulatedUrlLoading::Exchange::answer(int status, std::string body) {
    finish(HttpResponse{status, std::move(body)});
}

void SimulatedUrlLoading::Exchange::fail(TransportCause cause) {
    finish(std::unexpected{TransportError{cause}});
}

void SimulatedUrlLoading::Exchange::answerAfter(Duration delay, int status, std::string body) {
    finishAfter(delay, HttpResponse{status, std::move(body)});
}

void SimulatedUrlLoading::Exchange::failAfter(Duration delay, TransportCause cause) {
    finishAfter(delay, std::unexpected{TransportError{cause}});
}

void SimulatedUrlLoading::Exchange::finishAfter(Duration delay, Result result) {
    delayed_ =
        clock_.callAfter(delay, executor_, [this, result = std::move(result)]() mutable { finish(std::move(result)); });
}

void SimulatedUrlLoading::Exchange::finish(Result result) {
    if (result_) {
        return;
    }
    result_ = std::move(result);
    timeout_.reset();
    delayed_.reset();
    asio::post(executor_,
               [complete = std::move(complete_), result = *result_]() mutable { complete(std::move(result)); });
}

SimulatedUrlLoading::SimulatedUrlLoading(Clock& clock) : log_(std::make_shared<Log>(clock)) {}

SimulatedUrlLoading::~SimulatedUrlLoading() {
    // A coroutine let go with its exchange may hold the session, and with it the log.
    log_->responder = nullptr;
    const auto dropped = std::exchange(log_->exchanges, {});
}

std::unique_ptr<UrlSession> SimulatedUrlLoading::makeSession(const UrlSessionConfiguration& configuration) {
    sessions_.push_back(configuration);
    return std::make_unique<Session>(log_, configuration.idleTimeout);
}

Awaitable<SimulatedUrlLoading::Result> SimulatedUrlLoading::perform(std::shared_ptr<Log> log, Duration idleLimit,
                                                                    HttpRequest request) {
    Exchange& exchange = *log->exchanges.emplace_back(std::make_unique<Exchange>(std::move(request), log->clock));
    exchange.executor_ = co_await asio::this_coro::executor;
    co_return co_await asio::async_initiate<const asio::use_awaitable_t<Executor>, void(Result)>(
        [&exchange, &log, idleLimit](auto handler) {
            exchange.complete_ = std::move(handler);
            exchange.timeout_ = log->clock.callAfter(idleLimit, exchange.executor_,
                                                     [&exchange] { exchange.fail(TransportCause::timedOut); });
            if (log->responder) {
                log->responder(exchange);
            }
        },
        asio::use_awaitable_t<Executor>{});
}

void SimulatedUrlLoading::setResponder(Responder responder) {
    log_->responder = std::move(responder);
}

std::vector<SimulatedUrlLoading::Exchange*> SimulatedUrlLoading::exchanges() const {
    std::vector<Exchange*> all;
    for (const auto& exchange : log_->exchanges) {
        all.push_back(exchange.get());
    }
    return all;
}

std::vector<SimulatedUrlLoading::Exchange*> SimulatedUrlLoading::pending() const {
    std::vector<Exchange*> waiting = exchanges();
    std::erase_if(waiting, [](const Exchange* exchange) { return !exchange->isPending(); });
    return waiting;
}

SimulatedUrlLoading::Exchange* SimulatedUrlLoading::pending(std::string_view method, std::string_view urlEnd) const {
    for (Exchange* exchange : pending()) {
        if (exchange->request.method == method && exchange->request.url.ends_with(urlEnd)) {
            return exchange;
        }
    }
    return nullptr;
}

std::vector<std::string> SimulatedUrlLoading::requestLines() const {
    std::vector<std::string> lines;
    for (const auto& exchange : log_->exchanges) {
        lines.push_back(exchange->request.method + " " + exchange->request.url);
    }
    return lines;
}

}  // namespace zelkovanta::platform::simulated
