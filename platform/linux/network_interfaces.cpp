#include "platform/linux/network_interfaces.h"

#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>

namespace zelkovanta::platform::linux_host {

namespace {

bool reachesBeyondItsLink(const sockaddr& address) {
    if (address.sa_family == AF_INET) {
        return true;
    }
    if (address.sa_family != AF_INET6) {
        return false;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the family says what it is.
    const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
    return !IN6_IS_ADDR_LINKLOCAL(&six.sin6_addr);
}

}  // namespace

bool hasNetwork() {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0) {
        // Unknown counts as present: the worse mistake is to tell a connected person to look for a cable.
        return true;
    }
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, &::freeifaddrs);
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        const bool isUp = (entry->ifa_flags & IFF_UP) != 0 && (entry->ifa_flags & IFF_LOOPBACK) == 0;
        if (isUp && entry->ifa_addr != nullptr && reachesBeyondItsLink(*entry->ifa_addr)) {
            return true;
        }
    }
    return false;
}

}  // namespace zelkovanta::platform::linux_host
