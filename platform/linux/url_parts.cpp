#include "platform/linux/url_parts.h"

#include "records/text.h"

#include <charconv>
#include <system_error>

#include <boost/asio/ip/address.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

namespace zelkovanta::platform::linux_host {

namespace {

std::uint16_t portOfScheme(std::string_view scheme) {
    if (scheme == "http" || scheme == "ws") {
        return 80;
    }
    if (scheme == "https" || scheme == "wss") {
        return 443;
    }
    return 0;
}

}  // namespace

std::optional<UrlParts> parseUrl(std::string_view url) {
    const auto parsed = boost::urls::parse_uri(url);
    if (!parsed || !parsed->has_authority() || parsed->encoded_host().empty()) {
        return std::nullopt;
    }
    UrlParts parts;
    parts.scheme = records::lowercased(std::string_view{parsed->scheme().data(), parsed->scheme().size()});
    parts.port = portOfScheme(parts.scheme);
    if (parts.port == 0) {
        return std::nullopt;
    }
    if (parsed->has_port() && !parsed->port().empty()) {
        const std::string_view digits{parsed->port().data(), parsed->port().size()};
        const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), parts.port);
        if (failed != std::errc{} || parts.port == 0) {
            return std::nullopt;
        }
    }
    parts.credentials = parsed->userinfo();
    parts.host = parsed->host_address();
    parts.authority = std::string{parsed->encoded_host_and_port().data(), parsed->encoded_host_and_port().size()};
    const auto target = parsed->encoded_target();
    parts.target = std::string{target.data(), target.size()};
    if (parts.target.empty() || parts.target.front() != '/') {
        parts.target.insert(0, "/");
    }
    return parts;
}

bool isLoopback(std::string_view host) {
    boost::system::error_code failed;
    const auto address = boost::asio::ip::make_address(std::string{host}, failed);
    if (failed) {
        const std::string name = records::lowercased(host);
        return name == "localhost" || name.ends_with(".localhost");
    }
    return address.is_loopback();
}

}  // namespace zelkovanta::platform::linux_host
