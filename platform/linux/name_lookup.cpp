#include "platform/linux/name_lookup.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <netdb.h>
#include <system_error>
#include <thread>
#include <utility>

#include <boost/asio/ip/address.hpp>

namespace zelkovanta::platform::linux_host {

namespace ip = boost::asio::ip;

namespace {

Endpoints alternate(const Endpoints& all) {
    Endpoints preferred;
    Endpoints others;
    for (const auto& endpoint : all) {
        (endpoint.protocol() == all.front().protocol() ? preferred : others).push_back(endpoint);
    }
    Endpoints mixed;
    for (std::size_t i = 0; i < std::max(preferred.size(), others.size()); ++i) {
        if (i < preferred.size()) {
            mixed.push_back(preferred[i]);
        }
        if (i < others.size()) {
            mixed.push_back(others[i]);
        }
    }
    return mixed;
}

Endpoints lookUp(const std::string& host, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_ADDRCONFIG;
    addrinfo* first = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &first) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(first, &::freeaddrinfo);
    Endpoints found;
    for (const addrinfo* entry = first; entry != nullptr; entry = entry->ai_next) {
        ip::tcp::endpoint endpoint;
        if (entry->ai_addrlen <= endpoint.capacity()) {
            std::memcpy(endpoint.data(), entry->ai_addr, entry->ai_addrlen);
            endpoint.resize(entry->ai_addrlen);
            endpoint.port(port);
            found.push_back(endpoint);
        }
    }
    return found.empty() ? found : alternate(found);
}

}  // namespace

struct NameLookup::Pending {
    std::mutex mutex;
    Completion<Endpoints> done;

    // Called under the lock, so that whoever gave the lookup up may destroy what `done` refers to right after.
    void finish(Endpoints endpoints) {
        const std::scoped_lock lock(mutex);
        if (auto call = std::exchange(done, nullptr)) {
            call(std::move(endpoints));
        }
    }
};

NameLookup::NameLookup(std::string host, std::uint16_t port, Completion<Endpoints> done)
    : pending_(std::make_shared<Pending>()) {
    pending_->done = std::move(done);
    boost::system::error_code isName;
    const auto address = ip::make_address(host, isName);
    if (!isName) {
        pending_->finish({{address, port}});
        return;
    }
    try {
        std::thread([pending = pending_, host = std::move(host), port] {
            pending->finish(lookUp(host, port));
        }).detach();
    } catch (const std::system_error&) {
        pending_->finish({});
    }
}

NameLookup::~NameLookup() {
    giveUp();
}

NameLookup& NameLookup::operator=(NameLookup&& other) noexcept {
    if (this != &other) {
        giveUp();
        pending_ = std::move(other.pending_);
    }
    return *this;
}

void NameLookup::giveUp() {
    if (const auto pending = std::exchange(pending_, nullptr)) {
        pending->finish({});
    }
}

}  // namespace zelkovanta::platform::linux_host
