#pragma once

#include "tests/simulation/network.h"

#include <expected>
#include <functional>

namespace zelkovanta::simulation {

/// One request and its reply, on their way.
class Exchange : public std::enable_shared_from_this<Exchange> {
public:
    using Result = std::expected<platform::HttpResponse, platform::TransportError>;
    using Completion = std::move_only_function<void(Result)>;

    Exchange(NetworkPort& port, const platform::HttpRequest& request, platform::Duration idleLimit,
             platform::Executor executor, Completion complete);

    void begin();
    [[nodiscard]] Route route() const { return route_; }

    /// The process that asked is gone. What has left the computer still reaches the office.
    void letGo() { complete_ = nullptr; }

private:
    struct Reply {
        Result result;
        std::uint64_t sequence = 0;  ///< of the office's call, 0 if the office did not answer
        std::uint64_t incarnation = 0;
    };
    void after(platform::Duration delay, void (Exchange::*step)());
    void arrive();
    void refuse(int status, std::string body);
    void comeBack(platform::Duration delay, Reply reply);
    void handBack();
    void fail(platform::TransportCause cause, platform::Duration delay);
    void timeOut();
    void finish();

    NetworkPort& port_;
    office::Request request_;
    Route route_;
    std::uint64_t session_;
    platform::SteadyTime deadline_;
    platform::Executor executor_;
    Completion complete_;
    std::optional<Fault> mishap_;
    Reply reply_;
};

}  // namespace zelkovanta::simulation
