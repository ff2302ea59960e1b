#include "server/api_client.h"

#include "records/json_codec.h"
#include "server/app_check_pinning.h"

#include <string_view>
#include <type_traits>
#include <utility>

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::server {

namespace asio = boost::asio;

namespace {

enum class AppCheck : std::uint8_t { left, sent };

template <class T>
std::expected<T, records::DecodingError> decodeAnswer(std::string_view body) {
    if constexpr (std::is_same_v<T, records::EmptyResponse>) {
        if (body.empty()) {
            return T{};
        }
    }
    return records::decodeJson<T>(body);
}

std::string crashReportBatch(const std::vector<std::string>& reports) {
    std::string body = R"({"reports":[)";
    for (std::size_t index = 0; index < reports.size(); ++index) {
        if (index > 0) {
            body += ',';
        }
        body += reports[index];
    }
    body += "]}";
    return body;
}

}  // namespace

struct APIClient::Private {};

struct APIClient::Operation {
    std::string_view method;
    std::string path;  ///< below "api/v1"
    std::optional<std::string> body = std::nullopt;
    AppCheck appCheck = AppCheck::left;
};

std::shared_ptr<APIClient> APIClient::make(records::Url baseURL, std::optional<std::string> token,
                                           const APIClientPorts& ports) {
    return std::make_shared<APIClient>(Private{}, std::move(baseURL), std::move(token), ports);
}

APIClient::APIClient(const Private&, records::Url baseURL, std::optional<std::string> token,
                     const APIClientPorts& ports)
    : baseURL_(std::move(baseURL)),
      token_(std::move(token)),
      information_(ports.information),
      background_(ports.background),
      session_(ports.urlLoading.makeSession(
          {.delegate = std::make_shared<const AppCheckPinningDelegate>(ports.information)})) {}

APIClient::~APIClient() = default;

void APIClient::setOnDeviceTokenRevoked(std::function<void()> handler) {
    // The old handler is destroyed after the lock is gone.
    const std::scoped_lock lock(handlerMutex_);
    onDeviceTokenRevoked_.swap(handler);
}

void APIClient::reportRevokedToken() const {
    std::function<void()> handler;
    {
        const std::scoped_lock lock(handlerMutex_);
        handler = onDeviceTokenRevoked_;
    }
    if (handler) {
        handler();
    }
}

platform::HttpRequest APIClient::makeRequest(Operation operation) const {
    platform::HttpRequest request{.method = std::string{operation.method},
                                  .url = baseURL_.appendingPath("api/v1").appendingPath(operation.path).text(),
                                  .headers = {},
                                  .body = std::move(operation.body)};
    if (token_) {
        request.headers.push_back({"Authorization", "Bearer " + *token_});
    }
    if (request.body) {
        request.headers.push_back({"Content-Type", "application/json"});
    }
    if (operation.appCheck == AppCheck::sent) {
        if (std::string token = appCheckToken(information_); !token.empty()) {
            request.headers.push_back({"X-ZVT-AppCheck-Token", std::move(token)});
        }
    }
    return request;
}

APIError APIClient::failure(const platform::HttpResponse& response) const {
    auto envelope = records::decodeJson<records::APIErrorEnvelope>(response.body);
    if (!envelope) {
        return api_error::BadStatus{response.status, "http_" + std::to_string(response.status), std::nullopt};
    }
    // Before the test for a revoked token: a cooldown is no revocation, whatever its status.
    if (envelope->error == "in_cooldown") {
        return api_error::InCooldown{std::move(envelope->message).value_or(std::string{api_error::cooldownSentence}),
                                     std::move(envelope->cooldownUntil)};
    }
    if (response.status == 401 && envelope->error == "invalid_token") {
        reportRevokedToken();
    }
    return api_error::BadStatus{response.status, std::move(envelope->error), std::move(envelope->message)};
}

template <class T>
APIClient::Result<T> APIClient::send(std::shared_ptr<const APIClient> client, Operation operation) {
    platform::HttpRequest request = client->makeRequest(std::move(operation));
    const auto response = co_await client->session_->perform(std::move(request));
    if (!response) {
        co_return std::unexpected{APIError{api_error::Transport{response.error()}}};
    }
    if (response->status < 200 || response->status > 299) {
        co_return std::unexpected{client->failure(*response)};
    }
    auto decoded = decodeAnswer<T>(response->body);
    if (!decoded) {
        co_return std::unexpected{APIError{api_error::Decoding{std::move(decoded).error()}}};
    }
    co_return std::move(*decoded);
}

template <class T>
APIClient::Result<T> APIClient::perform(std::shared_ptr<const APIClient> client, Operation operation) {
    const platform::Executor background = client->background_;
    co_return co_await asio::co_spawn(background, send<T>(std::move(client), std::move(operation)),
                                      asio::use_awaitable_t<platform::Executor>{});
}

APIClient::Result<std::int64_t> APIClient::performCounting(std::shared_ptr<const APIClient> client,
                                                           Operation operation) {
    const auto accepted = co_await perform<records::Accepted>(std::move(client), std::move(operation));
    if (!accepted) {
        co_return std::unexpected{accepted.error()};
    }
    co_return accepted->accepted;
}

APIClient::Result<records::PairRedeemResponse> APIClient::redeemPairingCode(records::PairRedeemRequest request) {
    return perform<records::PairRedeemResponse>(shared_from_this(),
                                                {"POST", "pair/redeem", records::encodeJson(request), AppCheck::sent});
}

APIClient::Result<records::QrTokenResponse> APIClient::requestPairing(records::PairRequestBody request) {
    return perform<records::QrTokenResponse>(shared_from_this(),
                                             {"POST", "pair/request", records::encodeJson(request), AppCheck::sent});
}

APIClient::Result<records::PairRequestPoll> APIClient::pollPairing(std::string claimToken) {
    return perform<records::PairRequestPoll>(shared_from_this(), {"GET", "pair/request/" + claimToken});
}

APIClient::Result<records::StateSnapshot> APIClient::fetchState() {
    return perform<records::StateSnapshot>(shared_from_this(), {"GET", "state"});
}

APIClient::Result<records::Signal> APIClient::createSignal(records::CreateSignalRequest request) {
    return perform<records::Signal>(shared_from_this(), {"POST", "signals", records::encodeJson(request)});
}

APIClient::Result<records::Signal> APIClient::actOnSignal(std::string signalId, records::SignalActionRequest request) {
    return perform<records::Signal>(shared_from_this(), {"PATCH", "signals/" + signalId, records::encodeJson(request)});
}

APIClient::Result<records::Member> APIClient::setMemberStatus(records::MemberStatusRequest request) {
    return perform<records::Member>(shared_from_this(), {"POST", "members/me/status", records::encodeJson(request)});
}

APIClient::Result<records::QrTokenResponse> APIClient::requestSignInQr() {
    return perform<records::QrTokenResponse>(shared_from_this(), {"POST", "devices/me/signin-qr"});
}

APIClient::Result<records::EmptyResponse> APIClient::signOutDevice() {
    return perform<records::EmptyResponse>(shared_from_this(), {"POST", "devices/me/signout"});
}

APIClient::Result<records::EmptyResponse> APIClient::deleteDevice() {
    return perform<records::EmptyResponse>(shared_from_this(), {"DELETE", "devices/me"});
}

APIClient::Result<std::int64_t> APIClient::sendCrashReports(std::vector<std::string> reports) {
    return performCounting(shared_from_this(), {"POST", "crash-reports", crashReportBatch(reports)});
}

}  // namespace zelkovanta::server
