#pragma once

#include "records/snapshot.h"

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include <boost/describe/class.hpp>

namespace zelkovanta::server {

/// Each has just the form of its frame's `data`, but for the last two, which have none.
namespace server_message {

struct SignalCreated {
    records::Signal signal;
    bool operator==(const SignalCreated&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignalCreated, (), (signal))

struct SignalUpdated {
    records::Signal signal;
    bool operator==(const SignalUpdated&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignalUpdated, (), (signal))

struct MemberUpdated {
    records::Member member;
    bool operator==(const MemberUpdated&) const = default;
};
BOOST_DESCRIBE_STRUCT(MemberUpdated, (), (member))

struct OfficeUpdated {
    records::Office office;
    bool operator==(const OfficeUpdated&) const = default;
};
BOOST_DESCRIBE_STRUCT(OfficeUpdated, (), (office))

struct RoomsUpdated {
    std::vector<records::Room> rooms;
    bool operator==(const RoomsUpdated&) const = default;
};
BOOST_DESCRIBE_STRUCT(RoomsUpdated, (), (rooms))

struct TypesUpdated {
    std::vector<records::SignalType> signalTypes;
    bool operator==(const TypesUpdated&) const = default;
};
BOOST_DESCRIBE_STRUCT(TypesUpdated, (), (signalTypes))

struct SessionStarted {
    records::Device device;
    records::Member member;
    bool operator==(const SessionStarted&) const = default;
};
BOOST_DESCRIBE_STRUCT(SessionStarted, (), (device, member))

struct SessionEnded {
    bool operator==(const SessionEnded&) const = default;
};
struct Pong {
    bool operator==(const Pong&) const = default;
};

}  // namespace server_message

/// What one frame of the real-time connection says.
using ServerMessage =
    std::variant<records::StateSnapshot, server_message::SignalCreated, server_message::SignalUpdated,
                 server_message::MemberUpdated, server_message::OfficeUpdated, server_message::RoomsUpdated,
                 server_message::TypesUpdated, server_message::SessionStarted, records::DesktopRelease,
                 server_message::SessionEnded, server_message::Pong>;

/// The message of one frame's bytes: one JSON object `{"type": …, "data": {…}}`. None for anything that is not a whole,
/// valid frame of a known type; such a frame is to be dropped. Pure, any thread.
[[nodiscard]] std::optional<ServerMessage> decodeServerMessage(std::string_view frame);

}  // namespace zelkovanta::server
