#pragma once

#include "platform/async.h"
#include "platform/clock.h"
#include "platform/power_off.h"
#include "platform/string_table.h"

#include <functional>
#include <memory>

namespace boost::asio {
class io_context;
}  // namespace boost::asio

namespace zelkovanta::platform::linux_host {

/// The end of the computer (the login service announces it and waits for us, under a delay inhibitor), of the desktop
/// session, or of this process by SIGTERM: whichever comes first runs the handlers, once. A shutdown that was called
/// off counts as none. Nobody tells of a log-out that was called off: it counts as none once this process has outlived
/// it by half a minute.
///
/// Without a system bus or a login service there is still SIGTERM. Main thread; nothing here waits.
class PowerOff final : public PowerOffNotifications {
public:
    /// `quit` is called on the main thread after SIGTERM's handlers ran. Connecting to the bus may wait, so it happens
    /// on `connecting`. The desktop may show why a shutdown waits, in words of `strings`. `clock` and `strings` must
    /// outlive this object.
    PowerOff(Clock& clock, boost::asio::io_context& network, const Executor& connecting, Executor mainThread,
             const StringTable& strings, std::function<void()> quit);
    ~PowerOff() override;
    PowerOff(const PowerOff&) = delete;
    PowerOff& operator=(const PowerOff&) = delete;

    /// No handler is called from here on.
    void stop();

    [[nodiscard]] Observation observe(std::function<void()> handler) override;

private:
    class State;
    std::shared_ptr<State> state_;
};

}  // namespace zelkovanta::platform::linux_host
