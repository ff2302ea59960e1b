#pragma once

#include "server/server_message.h"
#include "tests/records/reference_json.h"

#include <optional>
#include <string_view>

namespace zelkovanta::records::reference {

/// The message of a frame that is the document `frame`, found in the two steps in which the wire is described: the
/// `type` first, then the whole in that type's form.
[[nodiscard]] inline std::optional<server::ServerMessage> readMessage(const Json& frame) {
    namespace message = server::server_message;
    if (!frame.is_object() || !frame.contains("type") || !frame["type"].is_string())
        return std::nullopt;
    const std::string type = frame["type"];
    if (type == "session.ended")
        return message::SessionEnded{};
    if (type == "pong")
        return message::Pong{};
    if (!frame.contains("data") || !frame["data"].is_object())
        return std::nullopt;
    const Json& data = frame["data"];
    const auto field = [&data](const char* key) { return data.contains(key) ? data[key] : Json(); };
    if (type == "snapshot") {
        if (auto snapshot = read<StateSnapshot>(data))
            return *snapshot;
    } else if (type == "signal.created") {
        if (auto signal = read<Signal>(field("signal")))
            return message::SignalCreated{*signal};
    } else if (type == "signal.updated") {
        if (auto signal = read<Signal>(field("signal")))
            return message::SignalUpdated{*signal};
    } else if (type == "member.updated") {
        if (auto member = read<Member>(field("member")))
            return message::MemberUpdated{*member};
    } else if (type == "office.updated") {
        if (auto office = read<Office>(field("office")))
            return message::OfficeUpdated{*office};
    } else if (type == "rooms.updated") {
        message::RoomsUpdated rooms;
        if (!field("rooms").is_array())
            return std::nullopt;
        for (const Json& item : field("rooms")) {
            const auto room = read<Room>(item);
            if (!room)
                return std::nullopt;
            rooms.rooms.push_back(*room);
        }
        return rooms;
    } else if (type == "types.updated") {
        message::TypesUpdated types;
        if (!field("signalTypes").is_array())
            return std::nullopt;
        for (const Json& item : field("signalTypes")) {
            const auto signalType = read<SignalType>(item);
            if (!signalType)
                return std::nullopt;
            types.signalTypes.push_back(*signalType);
        }
        return types;
    } else if (type == "session.started") {
        const auto device = read<Device>(field("device"));
        const auto member = read<Member>(field("member"));
        if (device && member)
            return message::SessionStarted{*device, *member};
    } else if (type == "desktop.release") {
        if (auto release = read<DesktopRelease>(field("desktopRelease")))
            return *release;
    }
    return std::nullopt;
}

}  // namespace zelkovanta::records::reference
