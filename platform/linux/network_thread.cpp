#include "platform/linux/network_thread.h"

#include "platform/task.h"

#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <thread>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

struct NetworkThread::Threads {
    explicit Threads(std::size_t count) : workers(count) {}

    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> guard{context.get_executor()};
    asio::thread_pool workers;
    std::thread traffic{[this] {
        ::pthread_setname_np(::pthread_self(), "network");
        context.run();
    }};
};

NetworkThread::NetworkThread(std::size_t workers) : threads_(std::make_unique<Threads>(workers)) {}

NetworkThread::~NetworkThread() {
    stop();
}

Executor NetworkThread::executor() {
    return threads_->context.get_executor();
}

Executor NetworkThread::makeSerialQueue() {
    return asio::make_strand(threads_->context);
}

Executor NetworkThread::makeWorkerQueue() {
    return asio::make_strand(threads_->workers);
}

asio::io_context& NetworkThread::context() {
    return threads_->context;
}

void NetworkThread::runAndWait(std::function<Awaitable<void>()> task, Duration limit) {
    struct Ending {
        std::mutex mutex;
        std::condition_variable changed;
        bool reached = false;
    };
    auto ending = std::make_shared<Ending>();
    startTask(executor(), [task = std::move(task), ending]() -> Awaitable<void> {
        co_await task();
        const std::scoped_lock lock(ending->mutex);
        ending->reached = true;
        ending->changed.notify_all();
    });
    std::unique_lock lock(ending->mutex);
    ending->changed.wait_for(lock, limit, [&] { return ending->reached; });
}

void NetworkThread::stop() {
    if (!threads_->traffic.joinable()) {
        return;
    }
    threads_->context.stop();
    threads_->traffic.join();
    threads_->workers.stop();
    threads_->workers.join();
}

}  // namespace zelkovanta::platform::linux_host
