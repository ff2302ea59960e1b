#pragma once

#include "platform/linux/environment.h"

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// The proxies that the environment names, as its variables have them.
struct ProxySettings {
    std::string http{};     ///< "http_proxy"; only in lower case, since a web server's HTTP_PROXY is somebody's header
    std::string https{};    ///< "https_proxy" or "HTTPS_PROXY"
    std::string all{};      ///< "all_proxy" or "ALL_PROXY", where the one for the scheme is unset
    std::string without{};  ///< "no_proxy" or "NO_PROXY": names with their subdomains, addresses, networks, or "*"
    bool operator==(const ProxySettings&) const = default;

    /// The URL of the proxy for a host, with its scheme and port; none if the host is reached directly. An empty text
    /// if the one that is named is none that we can ask (anything but http and https), so that nothing may be sent.
    /// "ws" counts as http, "wss" as https. No proxy is asked for this computer itself.
    [[nodiscard]] std::optional<std::string> proxyFor(std::string_view scheme, std::string_view host) const;
};

/// How this computer reaches servers.
struct TransportSettings {
    ProxySettings proxies{};
    std::string certificateFile{};  ///< "SSL_CERT_FILE": trusted in place of the system's file; empty for the system's
    std::string certificateFolder{};  ///< "SSL_CERT_DIR", likewise
    std::string acceptLanguage{};     ///< sent with each REST request; empty to send none
    bool operator==(const TransportSettings&) const = default;

    [[nodiscard]] static TransportSettings from(const Environment& environment, std::string acceptLanguage);
};

}  // namespace zelkovanta::platform::linux_host
