#pragma once

#include "platform/async.h"

#include <functional>
#include <memory>
#include <string>

class QString;

namespace zelkovanta::app {

/// The program's name on the session bus, and "org.freedesktop.Application" below it, by which the desktop asks for the
/// window. Without a session bus, or where the name is taken, there is nothing of it and nothing is missed.
class BusPresence {
public:
    /// `name` is the bus name. Connecting to the bus may wait, so it happens on `connecting`; `onActivate` is called on
    /// the main thread with the desktop's activation token, empty for none.
    BusPresence(const std::string& name, const platform::Executor& connecting, platform::Executor main,
                std::function<void(const QString& activationToken)> onActivate);
    ~BusPresence();
    BusPresence(const BusPresence&) = delete;
    BusPresence& operator=(const BusPresence&) = delete;

private:
    class Application;
    const std::shared_ptr<Application> application_;
};

}  // namespace zelkovanta::app
