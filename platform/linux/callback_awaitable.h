#pragma once

#include "platform/async.h"

#include <functional>
#include <utility>

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform::linux_host {

/// What an operation calls, once, from any thread, when it has its result. Letting go of it unwinds the coroutine.
template <class T>
using Completion = std::move_only_function<void(T)>;

/// Waits for an operation that ends by calling a function. `begin` is given that function on the waiting coroutine's
/// executor, and the coroutine resumes there.
template <class T, class Begin>
[[nodiscard]] Awaitable<T> awaitCallback(Begin begin) {
    using Token = boost::asio::use_awaitable_t<Executor>;
    return boost::asio::async_initiate<const Token, void(T)>(
        [begin = std::move(begin)](auto handler) mutable {
            begin(Completion<T>{[handler = std::move(handler)](T result) mutable {
                const auto executor = boost::asio::get_associated_executor(handler);
                boost::asio::post(executor, [handler = std::move(handler), result = std::move(result)]() mutable {
                    handler(std::move(result));
                });
            }});
        },
        Token{});
}

}  // namespace zelkovanta::platform::linux_host
