#pragma once

#include "records/snapshot.h"

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace zelkovanta::server {

namespace server_message {

struct SignalCreated {
    records::Signal signal;
    bool operator==(const SignalCreated&) const = default;
};
struct SignalUpdated {
    records::Signal signal;
    bool operator==(const SignalUpdated&) const = default;
};
struct MemberUpdated {
    records::Member member;
    bool operator==(const MemberUpdated&) const = default;
};
struct OfficeUpdated {
    records::Office office;
    bool operator==(const OfficeUpdated&) const = default;
};
struct RoomsUpdated {
    std::vector<records::Room> rooms;
    bool operator==(const RoomsUpdated&) const = default;
};
struct TypesUpdated {
    std::vector<records::SignalType> signalTypes;
    bool operator==(const TypesUpdated&) const = default;
};
struct SessionStarted {
    records::Device device;
    records::Member member;
    bool operator==(const SessionStarted&) const = default;
};
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
