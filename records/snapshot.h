#pragma once

#include "records/office.h"
#include "records/signal.h"
#include "records/url.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>

namespace zelkovanta::records {

struct MacRelease {
    std::string version;
    std::int64_t build = 0;
    Url url;
    std::optional<std::string> sha256;
    bool operator==(const MacRelease&) const = default;
};
BOOST_DESCRIBE_STRUCT(MacRelease, (), (version, build, url, sha256))

struct WindowsRelease {
    std::string version;
    bool operator==(const WindowsRelease&) const = default;
};
BOOST_DESCRIBE_STRUCT(WindowsRelease, (), (version))

/// What the server says is the current release, by platform.
struct DesktopRelease {
    using Mac = MacRelease;
    using Windows = WindowsRelease;
    std::optional<Mac> macos;
    std::optional<Windows> windows;
    bool operator==(const DesktopRelease&) const = default;
};
BOOST_DESCRIBE_STRUCT(DesktopRelease, (), (macos, windows))

/// The whole state of one computer's view of the office.
struct StateSnapshot {
    Office office;
    std::vector<Member> members;
    std::vector<Room> rooms;
    std::vector<SignalType> signalTypes;
    std::vector<Signal> signals;
    Device device;
    std::optional<DesktopRelease> desktopRelease;
    bool operator==(const StateSnapshot&) const = default;
};
BOOST_DESCRIBE_STRUCT(StateSnapshot, (), (office, members, rooms, signalTypes, signals, device, desktopRelease))

}  // namespace zelkovanta::records
