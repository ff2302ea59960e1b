#pragma once

#include "platform/linux/transport_settings.h"
#include "platform/web_socket.h"

#include <memory>

namespace zelkovanta::platform::linux_host {

/// Web sockets over ws and wss. A session's executor must be a strand of the network thread.
///
/// Compression is not offered, so that a frame is as long as its header says. A frame above the limit, or a text frame
/// that is not UTF-8, ends its socket.
class BeastWebSocketLoading final : public WebSocketLoading {
public:
    explicit BeastWebSocketLoading(TransportSettings settings);
    ~BeastWebSocketLoading() override;

    [[nodiscard]] std::unique_ptr<WebSocketSession> makeSession(Executor executor) override;

    /// Ends every socket. Any thread; it happens on the executor of each, soon after. To be called before the network
    /// thread stops.
    void cancelAll();

private:
    struct Sessions;
    TransportSettings settings_;
    std::shared_ptr<Sessions> sessions_;
};

}  // namespace zelkovanta::platform::linux_host
