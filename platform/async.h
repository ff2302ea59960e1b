#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>

namespace zelkovanta::platform {

/// Where work runs. The program has the main thread's, the network thread's and the workers'; a test has queues.
using Executor = boost::asio::any_io_executor;

/// Asynchronous work that reads in the order in which it happens.
template <class T>
using Awaitable = boost::asio::awaitable<T, Executor>;

}  // namespace zelkovanta::platform
