#pragma once

#include "platform/async.h"

#include <functional>
#include <utility>

#include <boost/asio/execution.hpp>
#include <boost/asio/execution_context.hpp>

namespace zelkovanta::platform {

/// A thread, or a test's stand-in for one, that runs posted work one piece after the other.
///
/// `post` may be called from any thread; work runs in the order in which it was posted and never within `post`.
/// Work still waiting when the context is destroyed is destroyed without being run.
class PostingContext : public boost::asio::execution_context {
public:
    using Work = std::move_only_function<void()>;

    virtual ~PostingContext() = default;

    virtual void post(Work work) = 0;

    [[nodiscard]] Executor executor();
};

/// The Asio executor over a `PostingContext`.
class PostingExecutor {
public:
    explicit PostingExecutor(PostingContext& context) noexcept : context_(&context) {}

    [[nodiscard]] PostingContext& query(boost::asio::execution::context_t) const noexcept { return *context_; }
    [[nodiscard]] static constexpr boost::asio::execution::blocking_t query(
        boost::asio::execution::blocking_t) noexcept {
        return boost::asio::execution::blocking.never;
    }
    [[nodiscard]] PostingExecutor require(boost::asio::execution::blocking_t::never_t) const noexcept { return *this; }

    template <class Function>
    void execute(Function&& function) const {
        context_->post(std::forward<Function>(function));
    }

    friend bool operator==(const PostingExecutor&, const PostingExecutor&) noexcept = default;

private:
    PostingContext* context_;
};

inline Executor PostingContext::executor() {
    return PostingExecutor{*this};
}

}  // namespace zelkovanta::platform
