#pragma once

#include "platform/linux/transport_settings.h"
#include "platform/url_session_delegate.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <curl/curl.h>

namespace zelkovanta::platform::linux_host {

struct UrlParts;

/// All that a URL session asks of its handshakes: TLS 1.2 or later, trusted roots, and the consent of its delegate.
///
/// With a delegate, each server's chain is first verified as usual, and then shown to the delegate inside the
/// handshake, so that a refused server never sees a byte of a request. Nothing is resumed: a resumed connection shows
/// no chain. A proxy's own handshake is verified as usual and not shown, unless it cannot be told from the server's:
/// where both have one name, or both are addresses, both are shown.
///
/// One thread. Must outlive every connection of the handles that it set up.
class TlsHandshakes {
public:
    /// The settings must outlive this object. No delegate leaves everything to the usual verification.
    TlsHandshakes(const TransportSettings& settings, std::shared_ptr<const UrlSessionDelegate> delegate);
    ~TlsHandshakes();
    TlsHandshakes(const TlsHandshakes&) = delete;
    TlsHandshakes& operator=(const TlsHandshakes&) = delete;

    /// Sets up a handle that will talk to `server`, perhaps by way of a proxy. False if its library cannot be made to
    /// ask the delegate; then the handle must not be used.
    [[nodiscard]] bool setUp(CURL* easy, const UrlParts& server, const std::optional<std::string>& proxy);

    /// For a handle that is about to send its request: whether the delegate still consents to the chain that was shown
    /// in the handshake of its connection. A connection that was made just now has been asked about already.
    [[nodiscard]] bool stillConsents(CURL* easy) const;

private:
    struct Route;
    static CURLcode prepareContext(CURL* easy, void* context, void* route);

    const TransportSettings& settings_;
    const std::shared_ptr<const UrlSessionDelegate> delegate_;
    /// By server and proxy. Connections point to them.
    std::map<std::pair<std::string, std::string>, Route> routes_;
};

}  // namespace zelkovanta::platform::linux_host
