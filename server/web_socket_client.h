#pragma once

#include "platform/async.h"
#include "platform/clock.h"
#include "platform/random_source.h"
#include "platform/web_socket.h"
#include "records/url.h"
#include "server/connection_state.h"
#include "server/server_message.h"

#include <functional>
#include <memory>
#include <string>

namespace zelkovanta::server {

/// What a client needs of its host. The references must outlive the client and the work on its queue.
struct WebSocketClientPorts {
    platform::WebSocketLoading& webSocketLoading;
    platform::Clock& clock;
    platform::RandomSource& random;
    platform::Executor queue;  ///< a serial queue of this client's own
    platform::Executor main;
};

/// Keeps one live connection to the server for as long as a session lasts: reconnects by itself, notices connections
/// that died in silence, drops whatever belongs to an abandoned one, and delivers messages one by one, in the order of
/// the socket. A stopped client is not started again. While it holds a socket it keeps itself alive: stop it to let it
/// go.
///
/// The callbacks are set after construction, before `start`, and run on the main executor, each in a turn of its own.
/// The next frame is not read before `onMessage` has returned. A state is never delivered after a newer one.
class WebSocketClient : public std::enable_shared_from_this<WebSocketClient> {
public:
    /// `baseURL` is the server's root. "http" and "https" become "ws" and "wss", another scheme stays as it is. An http
    /// or https URL without a host, from which no socket URL can be formed, is a programming fault and ends the
    /// process.
    [[nodiscard]] static std::shared_ptr<WebSocketClient> make(const records::Url& baseURL, std::string token,
                                                               const WebSocketClientPorts& ports);
    ~WebSocketClient();

    std::function<void(ServerMessage)> onMessage;
    std::function<void(ConnectionState)> onStateChange;
    std::function<void()> onRevoked;
    std::function<void()> onUpgradeUnauthorized;

    /// Both post to the queue and return. Main executor.
    void start();
    void stop();

private:
    struct Private;

public:
    WebSocketClient(const Private&, std::string url, std::string token, const WebSocketClientPorts& ports);

    WebSocketClient(const WebSocketClient&) = delete;
    WebSocketClient& operator=(const WebSocketClient&) = delete;

private:
    class Driver;
    const platform::Executor queue_;
    std::shared_ptr<Driver> driver_;
};

}  // namespace zelkovanta::server
