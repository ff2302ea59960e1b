#pragma once

#include "platform/clock.h"

#include <memory>

namespace boost::asio {
class io_context;
}  // namespace boost::asio

namespace zelkovanta::platform::linux_host {

/// The computer's clocks. Time for measuring counts a suspend, and a call that fell due during one comes right after
/// it.
///
/// One kernel timer on the network thread serves all calls. Destroying the clock drops the calls that have not come;
/// timers may outlive it.
class BoottimeClock final : public Clock {
public:
    explicit BoottimeClock(boost::asio::io_context& network);
    ~BoottimeClock() override;
    BoottimeClock(const BoottimeClock&) = delete;
    BoottimeClock& operator=(const BoottimeClock&) = delete;

    [[nodiscard]] SteadyTime steadyNow() const override;
    [[nodiscard]] WallTime wallNow() const override;
    [[nodiscard]] Timer callAfter(Duration delay, Executor executor, std::move_only_function<void()> call) override;

private:
    class Queue;
    std::shared_ptr<Queue> queue_;
};

}  // namespace zelkovanta::platform::linux_host
