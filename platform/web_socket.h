#pragma once

#include "platform/async.h"
#include "platform/url_session.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::platform {

/// One data frame, whole. Control frames (ping, pong, close) are answered by the task and never seen here.
struct WebSocketFrame {
    enum class Kind : std::uint8_t { text, binary };
    Kind kind = Kind::text;
    std::string payload;
    bool operator==(const WebSocketFrame&) const = default;
};

/// How a socket ended.
struct WebSocketFailure {
    std::optional<std::uint16_t> closeCode{};  ///< of the peer's close frame, if there was one
    std::optional<int> httpStatus{};           ///< of the answer to the opening request, if there was one
    bool operator==(const WebSocketFailure&) const = default;
};

struct WebSocketRequest {
    std::string url;  ///< "ws" or "wss"
    std::vector<HttpHeader> headers{};
    std::chrono::milliseconds openingTimeout{15'000};
    bool operator==(const WebSocketRequest&) const = default;
};

/// A frame above this size is a failure of its socket.
inline constexpr std::size_t maximumWebSocketFrameSize = std::size_t{16} * 1024 * 1024;

/// The close code with which a socket is given up.
inline constexpr std::uint16_t goingAway = 1001;

/// One socket. `receive` and `send` may be called before the opening has finished: they wait for it.
/// At most one `receive` and one `send` may be under way at a time. All calls come from one executor, the one that the
/// session was made for, and everything resumes there.
class WebSocketTask {
public:
    virtual ~WebSocketTask() = default;

    /// Begins the opening.
    virtual void resume() = 0;
    /// The next frame. After a failure every further call fails likewise.
    virtual Awaitable<std::expected<WebSocketFrame, WebSocketFailure>> receive() = 0;
    /// Whether the text frame was handed to the connection.
    virtual Awaitable<bool> send(std::string text) = 0;
    /// Ends the socket without waiting for the peer: a close frame is tried, then the connection is dropped.
    /// A `receive` or `send` under way fails soon after.
    virtual void cancel(std::uint16_t closeCode) = 0;
};

class WebSocketSession {
public:
    virtual ~WebSocketSession() = default;
    /// Never null. Malformed requests fail at the first `receive`.
    [[nodiscard]] virtual std::shared_ptr<WebSocketTask> makeTask(WebSocketRequest request) = 0;
    /// Cancels every task of this session and releases what it holds (connections, resolvers).
    virtual void invalidateAndCancel() = 0;
};

class WebSocketLoading {
public:
    virtual ~WebSocketLoading() = default;
    /// `executor` is the serial queue on which the session and its tasks are used.
    [[nodiscard]] virtual std::unique_ptr<WebSocketSession> makeSession(Executor executor) = 0;
};

}  // namespace zelkovanta::platform
