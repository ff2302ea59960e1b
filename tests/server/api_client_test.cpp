#include "server/api_client.h"

#include "platform/simulated/event_loop.h"
#include "platform/simulated/fixed_information.h"
#include "platform/simulated/simulated_url_loading.h"
#include "server/app_check_pinning.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/asio/co_spawn.hpp>
#include <gmock/gmock.h>

namespace zelkovanta::server {
namespace {

using namespace std::chrono_literals;
using namespace platform::simulated;
using platform::TransportCause;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* signalBody =
    R"({"id":"s1","roomId":"r1","typeId":"t1","status":"waiting","createdAt":"2026-03-01T08:00:00Z"})";
constexpr const char* memberBody = R"({"id":"m1","name":"Ito","department":"provider"})";
constexpr const char* deviceBody = R"({"id":"d1","kind":"desktop_mac"})";
constexpr const char* qrBody =
    R"({"token":"q1","claimToken":"c1","qrData":"zvt:q1","qrPng":"","expiresAt":"2026-03-01T08:05:00Z"})";

std::string redeemedBody() {
    return std::string{R"({"deviceToken":"fresh","office":{"id":"o1","name":"Elm"},"role":"room","device":)"} +
           deviceBody + "}";
}

std::string snapshotBody() {
    return std::string{R"({"office":{"id":"o1","name":"Elm"},"members":[],"rooms":[],"signalTypes":[],"signals":[)"} +
           signalBody + R"(],"device":)" + deviceBody + "}";
}

/// What an operation gave, once it gave something.
template <class T>
using Outcome = std::shared_ptr<std::optional<std::expected<T, APIError>>>;

struct APIClientTest : testing::Test {
    EventLoop loop;
    EventLoop::Thread& main = loop.makeThread();
    EventLoop::Thread& background = loop.makeThread();
    ManualClock clock{loop};
    FixedInformation information;
    SimulatedUrlLoading urls{clock};
    std::shared_ptr<APIClient> client = makeClient("https://office.example/base", "secret");

    std::shared_ptr<APIClient> makeClient(const std::string& baseURL, std::optional<std::string> token) {
        return APIClient::make(records::Url::parse(baseURL).value(), std::move(token),
                               {.urlLoading = urls, .information = information, .background = background.executor()});
    }

    /// Begins an operation on the main thread.
    template <class T>
    Outcome<T> begin(APIClient::Result<T> operation) {
        auto outcome = std::make_shared<std::optional<std::expected<T, APIError>>>();
        boost::asio::co_spawn(main.executor(), std::move(operation),
                              [outcome](const std::exception_ptr& failure, std::expected<T, APIError> result) {
                                  ASSERT_FALSE(failure);
                                  *outcome = std::move(result);
                              });
        loop.runReady();
        return outcome;
    }

    /// The result of an operation that the server answers like this.
    template <class T>
    std::expected<T, APIError> answered(APIClient::Result<T> operation, int status, const std::string& body) {
        const auto outcome = begin<T>(std::move(operation));
        request().answer(status, body);
        loop.runReady();
        return outcome->value();
    }

    SimulatedUrlLoading::Exchange& request() { return *urls.exchanges().back(); }

    APIError failureOfState(int status, const std::string& body) {
        return answered(client->fetchState(), status, body).error();
    }
};

using Headers = std::vector<platform::HttpHeader>;
const platform::HttpHeader authorization{"Authorization", "Bearer secret"};
const platform::HttpHeader jsonContent{"Content-Type", "application/json"};
const platform::HttpHeader appCheck{"X-ZVT-AppCheck-Token", "built here"};

TEST_F(APIClientTest, eachOperationIsOneRequest) {
    const records::PairDeviceInfo device{
        .kind = "desktop_mac", .name = "Desk", .model = "X1", .appVersion = "1.0.1", .locale = {}};
    const records::CreateSignalRequest signal{
        .roomId = "r1", .providerId = {}, .providerIds = {}, .toDepartment = {}, .typeId = "t1", .note = ""};
    information.set("ZVTDesktopBuildSecret", "built here");
    const std::string api = "https://office.example/base/api/v1/";
    const std::string deviceText = R"({"kind":"desktop_mac","name":"Desk","model":"X1","appVersion":"1.0.1"})";
    struct Row {
        std::function<void()> begin;
        platform::HttpRequest expected;
    };
    const std::vector<Row> rows{
        {[&] { begin(client->redeemPairingCode({"ABCD", device})); },
         {"POST",
          api + "pair/redeem",
          {authorization, jsonContent, appCheck},
          R"({"code":"ABCD","device":)" + deviceText + "}"}},
        {[&] { begin(client->requestPairing({device})); },
         {"POST", api + "pair/request", {authorization, jsonContent, appCheck}, R"({"device":)" + deviceText + "}"}},
        {[&] { begin(client->pollPairing("c1")); }, {"GET", api + "pair/request/c1", {authorization}, std::nullopt}},
        {[&] { begin(client->fetchState()); }, {"GET", api + "state", {authorization}, std::nullopt}},
        {[&] { begin(client->createSignal(signal)); },
         {"POST", api + "signals", {authorization, jsonContent}, R"({"roomId":"r1","typeId":"t1","note":""})"}},
        {[&] { begin(client->actOnSignal("s1", {"acknowledge"})); },
         {"PATCH", api + "signals/s1", {authorization, jsonContent}, R"({"action":"acknowledge"})"}},
        {[&] { begin(client->actOnSignal("s2", {"done"})); },
         {"PATCH", api + "signals/s2", {authorization, jsonContent}, R"({"action":"done"})"}},
        {[&] { begin(client->actOnSignal("..", {"cancel"})); },
         {"PATCH", api + "signals/..", {authorization, jsonContent}, R"({"action":"cancel"})"}},
        {[&] { begin(client->setMemberStatus({"dnd"})); },
         {"POST", api + "members/me/status", {authorization, jsonContent}, R"({"status":"dnd"})"}},
        {[&] { begin(client->requestSignInQr()); },
         {"POST", api + "devices/me/signin-qr", {authorization}, std::nullopt}},
        {[&] { begin(client->signOutDevice()); }, {"POST", api + "devices/me/signout", {authorization}, std::nullopt}},
        {[&] { begin(client->deleteDevice()); }, {"DELETE", api + "devices/me", {authorization}, std::nullopt}},
        {[&] { begin(client->sendCrashReports({R"({"a":1})", R"({ "b" : 2 })"})); },
         {"POST", api + "crash-reports", {authorization, jsonContent}, R"({"reports":[{"a":1},{ "b" : 2 }]})"}},
    };
    for (const auto& row : rows) {
        const auto before = urls.exchanges().size();
        row.begin();
        ASSERT_THAT(urls.exchanges(), SizeIs(before + 1));
        EXPECT_EQ(request().request, row.expected) << row.expected.method << " " << row.expected.url;
    }
    ASSERT_THAT(urls.sessions(), SizeIs(1)) << "one session for the client's whole life";
    EXPECT_EQ(urls.sessions()[0].idleTimeout, 15s);
    EXPECT_EQ(urls.sessions()[0].maximumBodySize, 67'108'864U);
}

TEST_F(APIClientTest, noReportsMakeAnEmptyBatch) {
    begin(client->sendCrashReports({}));
    EXPECT_EQ(request().request.body, R"({"reports":[]})");
}

TEST_F(APIClientTest, eachOperationGivesWhatTheServerSaid) {
    const auto redeemed = answered(client->redeemPairingCode({}), 200, redeemedBody());
    ASSERT_TRUE(redeemed);
    EXPECT_EQ(redeemed->deviceToken, "fresh");
    EXPECT_EQ(redeemed->role, records::DeviceRole::room);
    EXPECT_EQ(answered(client->requestPairing({}), 201, qrBody).value().claimToken, "c1");
    EXPECT_EQ(answered(client->pollPairing("c1"), 200, R"({"status":"pending"})").value().status, "pending");
    EXPECT_THAT(answered(client->fetchState(), 200, snapshotBody()).value().signals, SizeIs(1));
    EXPECT_EQ(answered(client->createSignal({}), 201, signalBody).value().id, "s1");
    EXPECT_EQ(answered(client->actOnSignal("s1", {"done"}), 200, signalBody).value().status, "waiting");
    EXPECT_EQ(answered(client->setMemberStatus({"busy"}), 200, memberBody).value().name, "Ito");
    EXPECT_EQ(answered(client->requestSignInQr(), 200, qrBody).value().token, "q1");
    EXPECT_TRUE(answered(client->signOutDevice(), 204, ""));
    EXPECT_TRUE(answered(client->deleteDevice(), 200, R"({"ok":true})"));
    EXPECT_EQ(answered(client->sendCrashReports({"{}", "{}"}), 299, R"({"accepted":2})").value(), 2);
}

TEST_F(APIClientTest, aSlashAtTheEndOfTheBaseUrlMakesNoDifference) {
    for (const char* base : {"https://office.example", "https://office.example/"}) {
        client = makeClient(base, "secret");
        begin(client->fetchState());
        EXPECT_EQ(request().request.url, "https://office.example/api/v1/state");
    }
}

TEST_F(APIClientTest, anIdentifierIsPlainTextInItsPath) {
    begin(client->actOnSignal("a b?c#d%e", {"done"}));
    EXPECT_EQ(request().request.url, "https://office.example/base/api/v1/signals/a%20b%3Fc%23d%25e");
}

TEST_F(APIClientTest, withoutATokenThereIsNoAuthorizationAtAll) {
    client = makeClient("https://office.example", std::nullopt);
    begin(client->pollPairing("c1"));
    EXPECT_EQ(request().request.headers, Headers{});
}

TEST_F(APIClientTest, onlyTheCallsThatCreateADeviceCarryTheAppCheckToken) {
    client = makeClient("https://office.example", std::nullopt);
    information.set("ZVTDesktopBuildSecret", "built here");
    begin(client->redeemPairingCode({}));
    EXPECT_EQ(request().request.headers, (Headers{jsonContent, appCheck}));
    begin(client->requestPairing({}));
    EXPECT_EQ(request().request.headers, (Headers{jsonContent, appCheck}));
    begin(client->pollPairing("c1"));
    EXPECT_EQ(request().request.headers, Headers{});
}

TEST_F(APIClientTest, theAppCheckTokenIsReadAfreshAndLeftOutWhenEmpty) {
    EXPECT_EQ(appCheckToken(information), "");
    begin(client->requestPairing({}));
    EXPECT_FALSE(request().header("X-ZVT-AppCheck-Token"));
    information.set("ZVTDesktopBuildSecret", "one");
    begin(client->requestPairing({}));
    EXPECT_EQ(request().header("X-ZVT-AppCheck-Token"), "one");
    information.set("ZVTDesktopBuildSecret", " two\n");
    EXPECT_EQ(appCheckToken(information), " two\n");
    information.set("ZVTDesktopBuildSecret", "");
    begin(client->requestPairing({}));
    EXPECT_FALSE(request().header("X-ZVT-AppCheck-Token"));
}

TEST_F(APIClientTest, aFailureThatIsNotJsonIsNamedByItsStatus) {
    EXPECT_EQ(failureOfState(500, "<html>oops</html>"), APIError(api_error::BadStatus{500, "http_500", std::nullopt}));
    EXPECT_EQ(failureOfState(502, ""), APIError(api_error::BadStatus{502, "http_502", std::nullopt}));
    EXPECT_EQ(failureOfState(404, R"({"message":"no code"})"),
              APIError(api_error::BadStatus{404, "http_404", std::nullopt}));
    EXPECT_EQ(failureOfState(401, R"({"error":"invalid_token","message":5})"),
              APIError(api_error::BadStatus{401, "http_401", std::nullopt}));
}

TEST_F(APIClientTest, aStatusOutsideTheTwoHundredsIsAFailureEvenWithAGoodBody) {
    for (const int status : {199, 300, 302, 304, 400}) {
        EXPECT_EQ(failureOfState(status, snapshotBody()),
                  APIError(api_error::BadStatus{status, "http_" + std::to_string(status), std::nullopt}));
    }
}

TEST_F(APIClientTest, theServersCodeAndMessageArePassedOn) {
    EXPECT_EQ(failureOfState(409, R"({"error":"already_cleared","message":"Too late."})"),
              APIError(api_error::BadStatus{409, "already_cleared", "Too late."}));
    EXPECT_EQ(failureOfState(400, R"({"error":"room_required","message":""})"),
              APIError(api_error::BadStatus{400, "room_required", ""}));
}

TEST_F(APIClientTest, aCooldownIsItsOwnFailureWhateverItsStatus) {
    int revocations = 0;
    client->setOnDeviceTokenRevoked([&] { ++revocations; });
    EXPECT_EQ(failureOfState(403, R"({"error":"in_cooldown"})"),
              APIError(api_error::InCooldown{"You're on a short cooldown after being moved off shift.", std::nullopt}));
    EXPECT_EQ(
        failureOfState(401, R"({"error":"in_cooldown","message":"Soon.","cooldownUntil":"2026-03-01T09:00:00Z"})"),
        APIError(api_error::InCooldown{"Soon.", "2026-03-01T09:00:00Z"}));
    for (const int status : {302, 429, 500}) {
        EXPECT_EQ(failureOfState(status, R"({"error":"in_cooldown","message":"Later."})"),
                  APIError(api_error::InCooldown{"Later.", std::nullopt}))
            << status;
    }
    EXPECT_EQ(revocations, 0);
}

TEST_F(APIClientTest, aCooldownsEmptyMessageStaysEmptyAndOnlyAMissingOneIsReplaced) {
    EXPECT_EQ(failureOfState(403, R"({"error":"in_cooldown","message":""})"),
              APIError(api_error::InCooldown{"", std::nullopt}));
    EXPECT_EQ(failureOfState(403, R"({"error":"in_cooldown","message":null,"cooldownUntil":null})"),
              APIError(api_error::InCooldown{"You're on a short cooldown after being moved off shift.", std::nullopt}));
}

TEST_F(APIClientTest, aDeadTokenIsReportedOnceBeforeTheOperationFails) {
    const auto outcome = begin(client->fetchState());
    bool hadEnded = true;
    int revocations = 0;
    client->setOnDeviceTokenRevoked([&] {
        ++revocations;
        hadEnded = outcome->has_value();
    });
    main.setHeld(true);
    request().answer(401, R"({"error":"invalid_token"})");
    loop.runReady();
    EXPECT_EQ(revocations, 1) << "on the background executor, while the main thread is busy";
    EXPECT_FALSE(hadEnded);
    main.setHeld(false);
    loop.runReady();
    EXPECT_EQ(outcome->value().error(), APIError(api_error::BadStatus{401, "invalid_token", std::nullopt}));
}

TEST_F(APIClientTest, onlyA401WithInvalidTokenSaysThatTheTokenIsDead) {
    int revocations = 0;
    client->setOnDeviceTokenRevoked([&] { ++revocations; });
    failureOfState(401, "");
    failureOfState(401, "unauthorized");
    failureOfState(401, R"({"error":"signin_required"})");
    failureOfState(401, R"({"error":"invalid_token","message":5})");
    failureOfState(401, R"([{"error":"invalid_token"}])");
    failureOfState(401, R"({"error":"invalid_token "})");
    failureOfState(403, R"({"error":"invalid_token"})");
    failureOfState(500, R"({"error":"invalid_token"})");
    EXPECT_EQ(revocations, 0);
    failureOfState(401, R"({"error":"invalid_token","message":"Gone."})");
    EXPECT_EQ(revocations, 1);
}

TEST_F(APIClientTest, aHandlerIsReplacedAndCleared) {
    std::vector<std::string> told;
    client->setOnDeviceTokenRevoked([&] { told.emplace_back("first"); });
    client->setOnDeviceTokenRevoked([&] { told.emplace_back("second"); });
    failureOfState(401, R"({"error":"invalid_token"})");
    client->setOnDeviceTokenRevoked({});
    failureOfState(401, R"({"error":"invalid_token"})");
    EXPECT_THAT(told, ElementsAre("second"));
}

TEST_F(APIClientTest, aHandlerMayReplaceItself) {
    int revocations = 0;
    client->setOnDeviceTokenRevoked([&] {
        ++revocations;
        client->setOnDeviceTokenRevoked({});
    });
    failureOfState(401, R"({"error":"invalid_token"})");
    failureOfState(401, R"({"error":"invalid_token"})");
    EXPECT_EQ(revocations, 1);
}

TEST_F(APIClientTest, aSuccessThatDoesNotDecodeIsAFailure) {
    const auto isDecoding = [](const auto& result) {
        return !result && std::holds_alternative<api_error::Decoding>(result.error());
    };
    EXPECT_TRUE(isDecoding(answered(client->createSignal({}), 200, "")));
    EXPECT_TRUE(isDecoding(answered(client->createSignal({}), 200, R"({"id":"s1"})")));
    EXPECT_TRUE(isDecoding(answered(client->fetchState(), 200, "<html>login</html>")));
    EXPECT_TRUE(isDecoding(answered(client->fetchState(), 200, snapshotBody().substr(0, 40))));
    EXPECT_TRUE(isDecoding(answered(client->sendCrashReports({}), 200, R"({"accepted":"2"})")));
}

TEST_F(APIClientTest, successWithoutContentNeedsNoBodyButABodyMustBeAnObject) {
    EXPECT_TRUE(answered(client->signOutDevice(), 200, ""));
    EXPECT_TRUE(answered(client->signOutDevice(), 204, ""));
    EXPECT_TRUE(answered(client->signOutDevice(), 200, "{}"));
    EXPECT_FALSE(answered(client->signOutDevice(), 200, "[]"));
    EXPECT_FALSE(answered(client->signOutDevice(), 200, " "));
    EXPECT_FALSE(answered(client->signOutDevice(), 200, "OK"));
}

TEST_F(APIClientTest, aFailedExchangeIsPassedOnWithItsCauseAndNotRepeated) {
    for (const auto cause : {TransportCause::noNetwork, TransportCause::refused, TransportCause::certificateRefused,
                             TransportCause::badServerResponse, TransportCause::interrupted}) {
        const auto outcome = begin(client->fetchState());
        request().fail(cause);
        loop.advance(1h);
        EXPECT_EQ(outcome->value().error(), APIError(api_error::Transport{{cause}}));
    }
    EXPECT_THAT(urls.exchanges(), SizeIs(5));
}

TEST_F(APIClientTest, aServerThatNeverAnswersIsGivenUpAfterFifteenSeconds) {
    const auto outcome = begin(client->fetchState());
    loop.advance(14'999ms);
    EXPECT_FALSE(outcome->has_value());
    loop.advance(1ms);
    EXPECT_EQ(outcome->value().error(), APIError(api_error::Transport{{TransportCause::timedOut}}));
}

TEST_F(APIClientTest, operationsRunSideBySideAndEndInAnyOrder) {
    const auto state = begin(client->fetchState());
    const auto signal = begin(client->createSignal({}));
    const auto second = begin(client->actOnSignal("s1", {"done"}));
    ASSERT_THAT(urls.pending(), SizeIs(3));
    urls.pending("PATCH", "signals/s1")->answer(200, signalBody);
    loop.runReady();
    EXPECT_TRUE(second->has_value());
    EXPECT_FALSE(signal->has_value());
    urls.pending("POST", "signals")->answerAfter(2s, 200, signalBody);
    urls.pending("GET", "state")->answerAfter(1s, 200, snapshotBody());
    loop.advance(1s);
    EXPECT_TRUE(state->has_value());
    EXPECT_FALSE(signal->has_value());
    loop.advance(1s);
    EXPECT_TRUE(signal->has_value());
}

TEST_F(APIClientTest, anOperationKeepsItsClientAlive) {
    const std::weak_ptr<APIClient> weak = client;
    const auto outcome = begin(client->fetchState());
    client.reset();
    EXPECT_FALSE(weak.expired());
    request().answer(200, snapshotBody());
    loop.runReady();
    EXPECT_TRUE(outcome->value());
    EXPECT_TRUE(weak.expired());
}

TEST_F(APIClientTest, theExchangeRunsInTheBackgroundAndTheCallerResumesWhereItWas) {
    background.setHeld(true);
    const auto outcome = begin(client->fetchState());
    EXPECT_THAT(urls.exchanges(), IsEmpty()) << "nothing of it happens on the caller's thread";
    background.setHeld(false);
    loop.runReady();
    main.setHeld(true);
    request().answer(200, snapshotBody());
    loop.runReady();
    EXPECT_FALSE(outcome->has_value());
    main.setHeld(false);
    loop.runReady();
    EXPECT_TRUE(outcome->value());
}

}  // namespace
}  // namespace zelkovanta::server
