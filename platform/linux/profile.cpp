#include "platform/linux/profile.h"

#include <algorithm>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::size_t maximumNameSize = 64;

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

std::filesystem::path homeFolder(const Environment& environment) {
    if (const auto home = environment("HOME"); home && home->starts_with('/')) {
        return *home;
    }
    const passwd* const person = ::getpwuid(::getuid());
    return person != nullptr && person->pw_dir != nullptr ? person->pw_dir : "/";
}

std::optional<std::filesystem::path> absolutePath(const Environment& environment, const char* name) {
    const auto value = environment(name);
    return value && value->starts_with('/') ? std::optional<std::filesystem::path>{*value} : std::nullopt;
}

}  // namespace

std::string Profile::applyTo(const std::string& base) const {
    return name ? base + "." + *name : base;
}

std::string Profile::applyToBusName(const std::string& base) const {
    const bool beginsWithDigit = name && name->front() >= '0' && name->front() <= '9';
    return beginsWithDigit ? base + "._" + *name : applyTo(base);
}

std::expected<Profile, std::string> profileFrom(const Environment& environment) {
    const auto name = environment("ZELKOVANTA_PROFILE");
    if (name && (name->size() > maximumNameSize || !std::ranges::all_of(*name, isNameCharacter))) {
        return std::unexpected(
            "ZELKOVANTA_PROFILE must consist of at most 64 letters, digits, hyphens and underscores.");
    }
    return Profile{name};
}

FileRoots fileRootsFrom(const Environment& environment, const Profile& profile) {
    const auto home = homeFolder(environment);
    const auto folder = [&](const char* name, const char* below) {
        return absolutePath(environment, name).value_or(home / below);
    };
    FileRoots roots{.config = folder("XDG_CONFIG_HOME", ".config"),
                    .data = folder("XDG_DATA_HOME", ".local/share"),
                    .state = folder("XDG_STATE_HOME", ".local/state"),
                    .runtime = absolutePath(environment, "XDG_RUNTIME_DIR")};
    if (profile.name) {
        const auto base = roots.data / "zelkovanta-profiles" / *profile.name;
        roots.config = base / "config";
        roots.data = base / "data";
        roots.state = base / "state";
    }
    return roots;
}

std::filesystem::path resourcesFolderFrom(const Environment& environment, const std::filesystem::path& program) {
    if (const auto folder = environment("ZELKOVANTA_RESOURCES")) {
        return *folder;
    }
    return program.parent_path().parent_path() / "share" / "zelkovanta";
}

std::filesystem::path programFile() {
    std::error_code failed;
    return std::filesystem::read_symlink("/proc/self/exe", failed);
}

}  // namespace zelkovanta::platform::linux_host
