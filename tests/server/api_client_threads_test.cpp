#include "platform/simulated/fixed_information.h"
#include "server/api_client.h"

#include <atomic>
#include <exception>
#include <expected>
#include <future>
#include <memory>
#include <utility>
#include <vector>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/thread_pool.hpp>
#include <gmock/gmock.h>

namespace zelkovanta::server {
namespace {

/// A server that says at once that the token is dead.
class RevokingServer final : public platform::UrlLoading {
public:
    [[nodiscard]] std::unique_ptr<platform::UrlSession> makeSession(const platform::UrlSessionConfiguration&) override {
        class Session final : public platform::UrlSession {
            platform::Awaitable<std::expected<platform::HttpResponse, platform::TransportError>> perform(
                platform::HttpRequest) override {
                co_return platform::HttpResponse{401, R"({"error":"invalid_token"})"};
            }
        };
        return std::make_unique<Session>();
    }
};

using Outcome = std::expected<records::StateSnapshot, APIError>;

std::future<Outcome> begin(boost::asio::thread_pool& caller, APIClient::Result<records::StateSnapshot> operation) {
    auto promise = std::make_shared<std::promise<Outcome>>();
    boost::asio::co_spawn(
        platform::Executor{caller.executor()}, std::move(operation),
        [promise](const std::exception_ptr&, Outcome outcome) { promise->set_value(std::move(outcome)); });
    return promise->get_future();
}

TEST(APIClientThreadsTest, theHandlerMayChangeWhileRequestsRunOnSeveralThreads) {
    constexpr int requests = 2000;
    RevokingServer server;
    const platform::simulated::FixedInformation information;
    boost::asio::thread_pool background{3};
    boost::asio::thread_pool caller{1};
    const auto client =
        APIClient::make(records::Url::parse("https://office.example").value(), "secret",
                        {.urlLoading = server, .information = information, .background = background.executor()});
    std::atomic<int> odd = 0;
    std::atomic<int> even = 0;
    client->setOnDeviceTokenRevoked([&even] { ++even; });

    std::vector<std::future<Outcome>> outcomes;
    for (int index = 0; index < requests; ++index) {
        outcomes.push_back(begin(caller, client->fetchState()));
        auto& counter = index % 2 == 0 ? even : odd;
        client->setOnDeviceTokenRevoked([&counter] { ++counter; });
    }
    for (auto& outcome : outcomes) {
        EXPECT_EQ(outcome.get().error(), APIError(api_error::BadStatus{401, "invalid_token", std::nullopt}));
    }
    EXPECT_EQ(odd + even, requests) << "each failure reached exactly one handler";

    client->setOnDeviceTokenRevoked({});
    EXPECT_FALSE(begin(caller, client->fetchState()).get());
    EXPECT_EQ(odd + even, requests);
    caller.join();
    background.join();
}

}  // namespace
}  // namespace zelkovanta::server
