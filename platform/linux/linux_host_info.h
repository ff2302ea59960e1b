#pragma once

#include "platform/host_info.h"
#include "platform/linux/environment.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace zelkovanta::platform::linux_host {

/// Where a host's facts come from.
struct HostSources {
    std::filesystem::path root = "/";  ///< the file system below which "etc", "proc", "run" and "sys" are read
    Environment environment = processEnvironment();
    std::function<std::string()> hostName;  ///< the kernel's
    std::function<std::string()>
        sessionBusId;  ///< the bus's own id, empty while there is none; asked for once it is needed
    std::uint32_t userId = 0;

    /// This computer's.
    [[nodiscard]] static HostSources ofThisComputer();
};

class LinuxHostInfo final : public HostInfo {
public:
    explicit LinuxHostInfo(HostSources sources);

    /// The pretty name that the person gave, else the host name, without its domain.
    [[nodiscard]] std::string localizedName() const override;
    /// The product name of the firmware, at most 80 scalars.
    [[nodiscard]] std::string hardwareModel() const override;
    [[nodiscard]] std::string localeIdentifier() const override;
    [[nodiscard]] double bootTime() const override;
    /// One letter, then the id: "k" the kernel's audit session, "l" the login service's session, "b" the session bus.
    /// The first that there is.
    [[nodiscard]] std::string auditSessionId() const override;

private:
    [[nodiscard]] std::optional<std::string> firstLine(const char* file) const;
    [[nodiscard]] std::optional<std::string> loginSession() const;
    /// Whether the login service knows this session, and it is not being closed.
    [[nodiscard]] bool isOpenSession(const std::string& session) const;

    HostSources sources_;
    mutable std::string busId_;
};

/// BCP 47 from a locale's name such as "de_DE.UTF-8@euro"; "en-US" for "C", "POSIX", nothing and what is no locale.
[[nodiscard]] std::string languageTag(std::string_view locale);

}  // namespace zelkovanta::platform::linux_host
