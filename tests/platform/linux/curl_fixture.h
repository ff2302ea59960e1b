#pragma once

#include "platform/linux/curl_url_session.h"
#include "platform/linux/network_thread.h"
#include "platform/task.h"

#include <chrono>
#include <expected>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {

using namespace std::chrono_literals;
using Result = std::expected<HttpResponse, TransportError>;

inline std::string answer(std::string_view body, std::string_view status = "200 OK") {
    return "HTTP/1.1 " + std::string{status} + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           std::string{body};
}

/// The outcome as a failed test shows it best.
inline std::string shown(const Result& result) {
    return result ? std::to_string(result->status) + " " + result->body
                  : "failed with cause " + std::to_string(static_cast<int>(result.error().cause));
}

struct CurlUrlSessionTest : testing::Test {
    NetworkThread network;
    TransportSettings settings{.acceptLanguage = "de-DE"};
    UrlSessionConfiguration configuration{.idleTimeout = 10s};
    std::unique_ptr<CurlUrlLoading> loading;
    std::unique_ptr<UrlSession> session;

    ~CurlUrlSessionTest() override {
        session.reset();
        if (loading) {
            loading->cancelAll();
        }
        network.runAndWait([]() -> Awaitable<void> { co_return; }, 10s);
    }

    std::future<Result> begin(HttpRequest request) {
        if (!session) {
            loading = std::make_unique<CurlUrlLoading>(network, settings);
            session = loading->makeSession(configuration);
        }
        auto promise = std::make_shared<std::promise<Result>>();
        startTask(network.makeSerialQueue(), [this, promise, request = std::move(request)]() -> Awaitable<void> {
            promise->set_value(co_await session->perform(request));
        });
        return promise->get_future();
    }

    Result perform(HttpRequest request) { return begin(std::move(request)).get(); }
    Result get(const std::string& url) { return perform({.method = "GET", .url = url}); }
    TransportCause causeOfGetting(const std::string& url) {
        const Result result = get(url);
        if (result) {
            ADD_FAILURE() << "answered with " << result->status;
            return {};
        }
        return result.error().cause;
    }
};

}  // namespace zelkovanta::platform::linux_host
