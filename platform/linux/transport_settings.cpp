#include "platform/linux/transport_settings.h"

#include "platform/linux/url_parts.h"
#include "records/text.h"

#include <algorithm>
#include <utility>

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/network_v4.hpp>
#include <boost/asio/ip/network_v6.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/url.hpp>

namespace zelkovanta::platform::linux_host {

namespace ip = boost::asio::ip;

namespace {

bool isInNetwork(const ip::address& address, std::string_view network) {
    boost::system::error_code failed;
    if (address.is_v4()) {
        const auto range = ip::make_network_v4(std::string{network}, failed);
        return !failed && range.canonical() == ip::network_v4(address.to_v4(), range.prefix_length()).canonical();
    }
    const auto range = ip::make_network_v6(std::string{network}, failed);
    return !failed && range.canonical() == ip::network_v6(address.to_v6(), range.prefix_length()).canonical();
}

bool matches(std::string_view host, std::string_view entry) {
    if (entry == "*") {
        return true;
    }
    boost::system::error_code isName;
    const auto address = ip::make_address(std::string{host}, isName);
    if (!isName) {
        if (entry.starts_with('[') && entry.ends_with(']')) {
            entry = entry.substr(1, entry.size() - 2);
        }
        return entry.find('/') != std::string_view::npos ? isInNetwork(address, entry) : entry == host;
    }
    while (entry.starts_with('.')) {
        entry.remove_prefix(1);
    }
    if (entry.empty() || entry.size() > host.size()) {
        return false;
    }
    const auto tail = host.substr(host.size() - entry.size());
    const bool wholeLabels = tail.size() == host.size() || host[host.size() - tail.size() - 1] == '.';
    return wholeLabels && records::lowercased(tail) == records::lowercased(entry);
}

bool isListed(std::string_view host, std::string_view list) {
    constexpr std::string_view separators = ", \t";
    while (true) {
        const auto begin = list.find_first_not_of(separators);
        if (begin == std::string_view::npos) {
            return false;
        }
        list.remove_prefix(begin);
        const auto end = std::min(list.find_first_of(separators), list.size());
        if (matches(host, list.substr(0, end))) {
            return true;
        }
        list.remove_prefix(end);
    }
}

/// Libraries differ in what they take a missing port for.
std::string withSchemeAndPort(const std::string& proxy) {
    const std::string named = proxy.find("://") == std::string::npos ? "http://" + proxy : proxy;
    const auto parts = parseUrl(named);
    if (!parts || (parts->scheme != "http" && parts->scheme != "https")) {
        return {};
    }
    boost::urls::url url{boost::urls::parse_uri(named).value()};
    url.set_scheme(parts->scheme).set_port_number(parts->port).set_encoded_path("");
    url.remove_query().remove_fragment();
    return std::string{url.buffer()};
}

}  // namespace

std::optional<std::string> ProxySettings::proxyFor(std::string_view scheme, std::string_view host) const {
    const std::string& own = scheme == "https" || scheme == "wss" ? https : http;
    const std::string& proxy = own.empty() ? all : own;
    if (proxy.empty() || isLoopback(host) || isListed(host, without)) {
        return std::nullopt;
    }
    return withSchemeAndPort(proxy);
}

TransportSettings TransportSettings::from(const Environment& environment, std::string acceptLanguage) {
    const auto either = [&](const char* lower, const char* upper) {
        auto value = environment(lower);
        if (!value) {
            value = environment(upper);
        }
        return value.value_or("");
    };
    return {.proxies = {.http = environment("http_proxy").value_or(""),
                        .https = either("https_proxy", "HTTPS_PROXY"),
                        .all = either("all_proxy", "ALL_PROXY"),
                        .without = either("no_proxy", "NO_PROXY")},
            .certificateFile = environment("SSL_CERT_FILE").value_or(""),
            .certificateFolder = environment("SSL_CERT_DIR").value_or(""),
            .acceptLanguage = std::move(acceptLanguage)};
}

}  // namespace zelkovanta::platform::linux_host
