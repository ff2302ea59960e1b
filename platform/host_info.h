#pragma once

#include <string>

namespace zelkovanta::platform {

/// What this computer says of itself. Cheap, never waits; main thread.
class HostInfo {
public:
    virtual ~HostInfo() = default;

    [[nodiscard]] virtual std::string localizedName() const = 0;     ///< empty if the system gives none
    [[nodiscard]] virtual std::string hardwareModel() const = 0;     ///< empty if the system gives none
    [[nodiscard]] virtual std::string localeIdentifier() const = 0;  ///< BCP 47, such as "en-US"
    /// Seconds since 1970 at which the kernel started; 0 if that cannot be read.
    [[nodiscard]] virtual double bootTime() const = 0;
    /// Names the login in which this process runs; empty if nothing tells logins apart.
    [[nodiscard]] virtual std::string auditSessionId() const = 0;
};

}  // namespace zelkovanta::platform
