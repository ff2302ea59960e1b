#pragma once

#include "platform/background.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace boost::asio {
class io_context;
}  // namespace boost::asio

namespace zelkovanta::platform::linux_host {

/// The thread of all traffic, and a few workers for files, which may block.
///
/// Begins with its construction. What still waits after `stop` is destroyed with this object; coroutines are unwound
/// through the executors that they came from, so those must live as long as this object does.
class NetworkThread final : public Background {
public:
    explicit NetworkThread(std::size_t workers = 2);
    /// Stops, if that was not done before.
    ~NetworkThread() override;
    NetworkThread(const NetworkThread&) = delete;
    NetworkThread& operator=(const NetworkThread&) = delete;

    [[nodiscard]] Executor executor() override;
    /// A strand on the thread of traffic; sockets may be made on it.
    [[nodiscard]] Executor makeSerialQueue() override;
    void runAndWait(std::function<Awaitable<void>()> task, Duration limit) override;

    /// A serial queue on the workers, where work may block.
    [[nodiscard]] Executor makeWorkerQueue();
    [[nodiscard]] boost::asio::io_context& context();

    /// Returns when no thread of this object runs any more: the piece of work that each is in is finished, what waits
    /// is not begun. Once; not from a thread of this object.
    void stop();

private:
    struct Threads;
    std::unique_ptr<Threads> threads_;
};

}  // namespace zelkovanta::platform::linux_host
