#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// What is needed to reach a server.
struct UrlParts {
    std::string scheme;       ///< lower case
    std::string credentials;  ///< decoded "user:password", empty if there are none
    std::string host;         ///< name or address, an IPv6 address without its brackets
    std::uint16_t port = 0;   ///< that of the scheme if the URL gives none
    std::string authority;    ///< host and port as a "Host" header has them: the port only if the URL gives it
    std::string target;       ///< path and query, at least "/"
    bool operator==(const UrlParts&) const = default;
};

/// None for anything but an absolute URL with one of the schemes http, https, ws, wss and a host.
[[nodiscard]] std::optional<UrlParts> parseUrl(std::string_view url);

/// Whether a host is this computer by its very name: "localhost" or an address of the loopback network.
[[nodiscard]] bool isLoopback(std::string_view host);

}  // namespace zelkovanta::platform::linux_host
