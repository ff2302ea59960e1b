#pragma once

#include "platform/async.h"
#include "platform/url_session_delegate.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::platform {

/// Why an exchange with a server failed: one enumerator for each cause that a person can act on.
enum class TransportCause : std::uint8_t {
    noNetwork,           ///< this computer has no connection
    nameNotFound,        ///< the server's name cannot be resolved
    refused,             ///< nobody listens there
    timedOut,            ///< nothing moved for the time allowed
    certificateRefused,  ///< the server's certificate was not accepted
    proxyFailed,         ///< the proxy refused or could not be reached
    interrupted,         ///< the connection broke off
    tooLarge,            ///< the answer exceeds the size allowed
    badServerResponse,   ///< what came back is not an HTTP response
    cancelled,           ///< given up on this side
    unsendable,          ///< its method or headers cannot stand in a request
};

struct TransportError {
    TransportCause cause = TransportCause::interrupted;
    bool operator==(const TransportError&) const = default;
};

struct HttpHeader {
    std::string name;
    std::string value;
    bool operator==(const HttpHeader&) const = default;
};

struct HttpRequest {
    std::string method;
    std::string url;  ///< absolute
    std::vector<HttpHeader> headers{};
    std::optional<std::string> body{};
    bool operator==(const HttpRequest&) const = default;
};

struct HttpResponse {
    int status = 0;
    std::string body{};
    bool operator==(const HttpResponse&) const = default;
};

struct UrlSessionConfiguration {
    /// How long nothing may move. It is an idle limit: a slow answer that keeps moving is alive.
    std::chrono::milliseconds idleTimeout{15'000};
    std::size_t maximumBodySize = std::size_t{64} * 1024 * 1024;
    /// Asked about every server of the session; none for a plain session.
    std::shared_ptr<const UrlSessionDelegate> delegate{};
};

/// Exchanges of one configuration. No redirect is followed, nothing is cached, there are no cookies, an offline call
/// fails at once. Operations may run at the same time from any thread; each resumes on its caller's executor.
/// An exchange keeps what it needs alive, so a session may be destroyed before its exchanges have ended.
class UrlSession {
public:
    virtual ~UrlSession() = default;
    virtual Awaitable<std::expected<HttpResponse, TransportError>> perform(HttpRequest request) = 0;
};

class UrlLoading {
public:
    virtual ~UrlLoading() = default;
    [[nodiscard]] virtual std::unique_ptr<UrlSession> makeSession(const UrlSessionConfiguration& configuration) = 0;
};

}  // namespace zelkovanta::platform
