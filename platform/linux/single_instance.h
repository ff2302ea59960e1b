#pragma once

#include "platform/linux/environment.h"
#include "platform/linux/profile.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace zelkovanta::platform::linux_host {

/// The claim of this process to be the only one of its profile: the name on the session bus, or a lock and a socket in
/// the runtime folder where there is no bus. Ends with this object. Main thread, with an event loop.
class SingleInstance {
public:
    /// Called when the program is started again, or activated by the desktop, with the activation token that came along
    /// (empty without one).
    using Activate = std::function<void(const std::string& activationToken)>;

    /// Why this process is to end.
    struct AnotherRuns {
        /// Whether that one was asked to come forward, or only found to be there.
        bool wasAsked = false;
    };

    /// What stands behind the claim; each waits for nobody longer than a second.
    [[nodiscard]] static std::expected<std::unique_ptr<SingleInstance>, AnotherRuns> claim(
        const Profile& profile, const FileRoots& roots, const Environment& environment, Activate activate);

    virtual ~SingleInstance() = default;
};

}  // namespace zelkovanta::platform::linux_host
