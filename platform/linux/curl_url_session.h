#pragma once

#include "platform/linux/transport_settings.h"
#include "platform/url_session.h"

#include <memory>

namespace zelkovanta::platform::linux_host {

class NetworkThread;

/// Exchanges over http and https, driven by the network thread; nothing runs on the caller's.
///
/// Each session keeps connections of its own, so that what was agreed on in one session's handshakes never serves
/// another. To be destroyed before `network`.
class CurlUrlLoading final : public UrlLoading {
public:
    CurlUrlLoading(NetworkThread& network, TransportSettings settings);
    ~CurlUrlLoading() override;

    [[nodiscard]] std::unique_ptr<UrlSession> makeSession(const UrlSessionConfiguration& configuration) override;

    /// Ends every exchange under way with `cancelled`. Any thread; it happens on the network thread, soon after.
    void cancelAll();

private:
    struct Sessions;
    NetworkThread& network_;
    TransportSettings settings_;
    std::shared_ptr<Sessions> sessions_;
};

}  // namespace zelkovanta::platform::linux_host
