#pragma once

#include "platform/async.h"
#include "platform/information_dictionary.h"
#include "platform/url_session.h"
#include "records/requests.h"
#include "records/snapshot.h"
#include "server/api_error.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::server {

/// What a client needs of its host. The references must outlive the client and every exchange that it began.
struct APIClientPorts {
    platform::UrlLoading& urlLoading;
    const platform::InformationDictionary& information;
    platform::Executor background;  ///< where exchanges run and answers are decoded
};

/// The one road by which this program changes anything on the server: one operation, one request. It never retries,
/// never queues, and keeps no state between calls. Two clients are the same only if they are the same object.
///
/// Operations may be called from any executor, at the same time, and resume on their caller's. An operation under way
/// keeps the client alive.
class APIClient : public std::enable_shared_from_this<APIClient> {
public:
    template <class T>
    using Result = platform::Awaitable<std::expected<T, APIError>>;

    /// Without a token for the calls that pair a computer. Operations go to "api/v1" below `baseURL`.
    [[nodiscard]] static std::shared_ptr<APIClient> make(records::Url baseURL, std::optional<std::string> token,
                                                         const APIClientPorts& ports);
    ~APIClient();

    /// Called, on `background`, when the server says that the token is dead, before the operation fails. Replaces the
    /// handler before it; an empty one clears it. Any thread; a call that has already begun may end after this returns.
    void setOnDeviceTokenRevoked(std::function<void()> handler);

    // The two that create a device carry the app-check token.
    Result<records::PairRedeemResponse> redeemPairingCode(records::PairRedeemRequest request);
    Result<records::QrTokenResponse> requestPairing(records::PairRequestBody request);
    Result<records::PairRequestPoll> pollPairing(std::string claimToken);
    Result<records::StateSnapshot> fetchState();
    Result<records::Signal> createSignal(records::CreateSignalRequest request);
    Result<records::Signal> actOnSignal(std::string signalId, records::SignalActionRequest request);
    Result<records::Member> setMemberStatus(records::MemberStatusRequest request);
    Result<records::QrTokenResponse> requestSignInQr();
    Result<records::EmptyResponse> signOutDevice();
    Result<records::EmptyResponse> deleteDevice();
    /// The reports are JSON texts and go out byte for byte. Gives how many the server took.
    Result<std::int64_t> sendCrashReports(std::vector<std::string> reports);

private:
    struct Private;
    struct Operation;

public:
    APIClient(const Private&, records::Url baseURL, std::optional<std::string> token, const APIClientPorts& ports);
    APIClient(const APIClient&) = delete;
    APIClient& operator=(const APIClient&) = delete;

private:
    template <class T>
    static Result<T> perform(std::shared_ptr<const APIClient> client, Operation operation);
    template <class T>
    static Result<T> send(std::shared_ptr<const APIClient> client, Operation operation);
    static Result<std::int64_t> performCounting(std::shared_ptr<const APIClient> client, Operation operation);

    [[nodiscard]] platform::HttpRequest makeRequest(Operation operation) const;
    [[nodiscard]] APIError failure(const platform::HttpResponse& response) const;
    void reportRevokedToken() const;

    const records::Url baseURL_;
    const std::optional<std::string> token_;
    const platform::InformationDictionary& information_;
    const platform::Executor background_;
    const std::unique_ptr<platform::UrlSession> session_;
    mutable std::mutex handlerMutex_;
    std::function<void()> onDeviceTokenRevoked_;  ///< under `handlerMutex_`
};

}  // namespace zelkovanta::server
