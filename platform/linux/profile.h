#pragma once

#include "platform/linux/environment.h"

#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace zelkovanta::platform::linux_host {

/// One of several computers on one machine, for trying out and testing. Without a name it is the computer itself.
struct Profile {
    std::optional<std::string> name{};
    bool operator==(const Profile&) const = default;

    /// `name`, for what carries the profile as a suffix: "base" or "base.name".
    [[nodiscard]] std::string applyTo(const std::string& base) const;
    /// The same for names on the bus, whose elements begin with no digit.
    [[nodiscard]] std::string applyToBusName(const std::string& base) const;
};

/// From "ZELKOVANTA_PROFILE". The error is a sentence for whoever started the program.
[[nodiscard]] std::expected<Profile, std::string> profileFrom(const Environment& environment);

/// The folders below which this program keeps what is its own. Each may be missing; none is made here.
struct FileRoots {
    std::filesystem::path config;                    ///< "zelkovanta/…" and "autostart/…" lie below it
    std::filesystem::path data;                      ///< "zelkovanta/…" lies below it
    std::filesystem::path state;                     ///< likewise
    std::optional<std::filesystem::path> runtime{};  ///< sockets and locks of this login; none if the session has none
    bool operator==(const FileRoots&) const = default;
};

/// The base folders of the session; those of a profile lie together in one folder of its own below the data folder.
/// A relative path in a variable is no path.
[[nodiscard]] FileRoots fileRootsFrom(const Environment& environment, const Profile& profile);

/// Where `Info.json`, sounds and strings are: "ZELKOVANTA_RESOURCES", else "share/zelkovanta" beside the folder of the
/// program, which holds for an installation and for a build.
[[nodiscard]] std::filesystem::path resourcesFolderFrom(const Environment& environment,
                                                        const std::filesystem::path& program);

/// The file of this very program, with links resolved.
[[nodiscard]] std::filesystem::path programFile();

}  // namespace zelkovanta::platform::linux_host
