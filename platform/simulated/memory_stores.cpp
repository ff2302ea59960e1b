#include "platform/simulated/memory_stores.h"

#include <functional>
#include <utility>
#include <vector>

#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace zelkovanta::platform::simulated {

namespace asio = boost::asio;

Awaitable<std::optional<std::string>> MemoryKeyStore::read(KeyStoreItem item) {
    const Executor executor = co_await asio::this_coro::executor;
    if (isLocked_) {
        co_await asio::async_initiate<const asio::use_awaitable_t<Executor>, void()>(
            [this, &executor](auto handler) {
                waiting_.emplace_back(
                    [executor, handler = std::move(handler)]() mutable { asio::post(executor, std::move(handler)); });
            },
            asio::use_awaitable_t<Executor>{});
    } else {
        // A real key store never answers within the caller's turn.
        co_await asio::post(executor, asio::use_awaitable_t<Executor>{});
    }
    co_return peek(item);
}

void MemoryKeyStore::write(KeyStoreItem item, std::string value) {
    if (!isBroken_) {
        values_.insert_or_assign({std::move(item.service), std::move(item.account)}, std::move(value));
    }
}

void MemoryKeyStore::remove(KeyStoreItem item) {
    if (!isBroken_) {
        values_.erase({std::move(item.service), std::move(item.account)});
    }
}

void MemoryKeyStore::setLocked(bool locked) {
    isLocked_ = locked;
    if (!locked) {
        for (auto& resume : std::exchange(waiting_, {})) {
            resume();
        }
    }
}

std::optional<std::string> MemoryKeyStore::peek(const KeyStoreItem& item) const {
    const auto found = values_.find({item.service, item.account});
    if (isBroken_ || found == values_.end() || found->second.empty()) {
        return std::nullopt;
    }
    return found->second;
}

}  // namespace zelkovanta::platform::simulated
