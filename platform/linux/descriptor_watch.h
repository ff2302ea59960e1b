#pragma once

#include <functional>
#include <memory>
#include <unordered_map>

namespace boost::asio {
class io_context;
}  // namespace boost::asio

namespace zelkovanta::platform::linux_host {

enum class Readiness { readable, writable, failed };

/// Watches descriptors that another library owns, and may close whenever it likes: what is watched is a copy of each.
/// Network thread only.
class DescriptorWatch {
public:
    /// `ready` is called again and again while a descriptor is ready for what is wanted of it. It may call `watch` and
    /// `forget`, and may destroy this object.
    DescriptorWatch(boost::asio::io_context& network, std::function<void(int descriptor, Readiness)> ready);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

    /// False if no further descriptor can be had.
    bool watch(int descriptor, bool wantsRead, bool wantsWrite);
    void forget(int descriptor);

private:
    struct Watched;
    static void wait(const std::shared_ptr<Watched>& watched);

    boost::asio::io_context& network_;
    std::shared_ptr<const std::function<void(int, Readiness)>> ready_;
    std::unordered_map<int, std::shared_ptr<Watched>> watched_;
};

}  // namespace zelkovanta::platform::linux_host
