#pragma once

#include "platform/async.h"
#include "platform/linux/environment.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace zelkovanta::platform::linux_host {

/// Lets this process go without its session bus, as if there were none, if the bus has neither answered nor refused
/// within `limit`. The toolkit connects to it on the main thread by itself, and would never return. To be called before
/// anything that might; waits.
void leaveSilentSessionBusAlone(const Environment& environment, std::chrono::milliseconds limit);

/// Where the desktop's buses are connected to: a thread for each, whose work begins once its bus has answered, or has
/// refused.
///
/// A bus that accepts and stays silent holds whoever connects to it for ever, in a way that cannot be given up, and
/// with them all who connect to another bus. So it is asked first in a way that can. Begins with its construction.
class BusThreads {
public:
    explicit BusThreads(const Environment& environment);
    /// Stops, if that was not done before. What still waits is destroyed, as by `NetworkThread`.
    ~BusThreads();
    BusThreads(const BusThreads&) = delete;
    BusThreads& operator=(const BusThreads&) = delete;

    [[nodiscard]] Executor session();
    [[nodiscard]] Executor system();

    /// Returns when neither thread runs any more: the piece of work that each is in is finished, what waits is not
    /// begun. Not from these threads.
    void stop();

private:
    class Bus;
    std::unique_ptr<Bus> session_;
    std::unique_ptr<Bus> system_;
};

/// The session bus's own id, which lasts as long as the bus. Any thread.
class SessionBusId {
public:
    /// `connecting` is where `ask` is called, which may wait, and gives an empty text where it fails. Called up to
    /// three times on end, so that what comes after it there does not find the id missing for one failure.
    SessionBusId(Executor connecting, std::function<std::string()> ask);
    /// Asks this process's session bus.
    explicit SessionBusId(Executor connecting);
    ~SessionBusId();
    SessionBusId(const SessionBusId&) = delete;
    SessionBusId& operator=(const SessionBusId&) = delete;

    /// Empty while it is not known; then the bus is asked, so that a later call may know it. Never waits.
    [[nodiscard]] std::string value() const;

private:
    class Asking;
    std::shared_ptr<Asking> asking_;
};

}  // namespace zelkovanta::platform::linux_host
