#pragma once

#include "platform/linux/callback_awaitable.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <boost/asio/ip/tcp.hpp>

namespace zelkovanta::platform::linux_host {

using Endpoints = std::vector<boost::asio::ip::tcp::endpoint>;

/// Looks up the addresses of a name.
///
/// The system's lookup cannot be interrupted and may hang for half a minute, so each runs on a thread of its own that
/// is left behind when the lookup is given up.
class NameLookup {
public:
    NameLookup() = default;
    /// Calls `done` once, with the addresses, the two families taking turns; with none if there are none or the lookup
    /// was given up. That may be within this constructor (the host is an address, or there is no thread to be had), on
    /// a thread of the lookup's own, or within the destructor or the assignment that gives it up; it is never called
    /// after these have returned.
    NameLookup(std::string host, std::uint16_t port, Completion<Endpoints> done);
    /// Gives it up.
    ~NameLookup();
    NameLookup(NameLookup&&) noexcept = default;
    NameLookup& operator=(NameLookup&& other) noexcept;

private:
    struct Pending;
    void giveUp();

    std::shared_ptr<Pending> pending_;
};

}  // namespace zelkovanta::platform::linux_host
