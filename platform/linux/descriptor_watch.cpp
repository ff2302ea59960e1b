#include "platform/linux/descriptor_watch.h"

#include <fcntl.h>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

struct DescriptorWatch::Watched : std::enable_shared_from_this<Watched> {
    Watched(asio::io_context& network, int original, int copy) : descriptor(network, copy), number(original) {}

    using Type = asio::posix::descriptor_base::wait_type;

    void waitFor(Type type, bool Watched::* waits) {
        if (std::exchange(this->*waits, true)) {
            return;
        }
        descriptor.async_wait(type, [weak = weak_from_this(), type, waits](boost::system::error_code error) {
            const auto self = weak.lock();
            if (!self || error == asio::error::operation_aborted) {
                return;
            }
            (*self).*waits = false;
            const bool isRead = type == Type::wait_read;
            if (isRead ? self->wantsRead : self->wantsWrite) {
                const auto call = self->ready;
                (*call)(self->number, error ? Readiness::failed : isRead ? Readiness::readable : Readiness::writable);
            }
            if (!self->isForgotten && !error) {
                wait(self);
            }
        });
    }

    asio::posix::stream_descriptor descriptor;
    int number;
    std::shared_ptr<const std::function<void(int, Readiness)>> ready;
    bool wantsRead = false;
    bool wantsWrite = false;
    bool waitsForRead = false;
    bool waitsForWrite = false;
    bool isForgotten = false;
};

DescriptorWatch::DescriptorWatch(asio::io_context& network, std::function<void(int, Readiness)> ready)
    : network_(network), ready_(std::make_shared<const std::function<void(int, Readiness)>>(std::move(ready))) {}

DescriptorWatch::~DescriptorWatch() {
    for (const auto& [number, watched] : watched_) {
        watched->isForgotten = true;
    }
}

bool DescriptorWatch::watch(int descriptor, bool wantsRead, bool wantsWrite) {
    auto& watched = watched_[descriptor];
    if (!watched) {
        const int copy = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        if (copy < 0) {
            watched_.erase(descriptor);
            return false;
        }
        watched = std::make_shared<Watched>(network_, descriptor, copy);
        watched->ready = ready_;
    }
    watched->wantsRead = wantsRead;
    watched->wantsWrite = wantsWrite;
    wait(watched);
    return true;
}

void DescriptorWatch::forget(int descriptor) {
    if (const auto node = watched_.extract(descriptor)) {
        node.mapped()->isForgotten = true;
    }
}

void DescriptorWatch::wait(const std::shared_ptr<Watched>& watched) {
    if (watched->wantsRead) {
        watched->waitFor(Watched::Type::wait_read, &Watched::waitsForRead);
    }
    if (watched->wantsWrite) {
        watched->waitFor(Watched::Type::wait_write, &Watched::waitsForWrite);
    }
}

}  // namespace zelkovanta::platform::linux_host
