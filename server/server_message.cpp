#include "server/server_message.h"

#include "records/json_decoder.h"

#include <utility>

namespace zelkovanta::server {
namespace {

using simdjson::dom::element;

struct ReleasePayload {
    std::optional<records::DesktopRelease> desktopRelease;
};
BOOST_DESCRIBE_STRUCT(ReleasePayload, (), (desktopRelease))

template <class Payload>
bool decodePayload(const std::optional<element>& data, Payload& payload) {
    records::json::Failure failure;
    return data && records::json::decode(*data, payload, failure);
}

/// A message whose payload has just the form of the message.
template <class Message>
std::optional<ServerMessage> messageFrom(const std::optional<element>& data) {
    std::optional<ServerMessage> message(std::in_place, std::in_place_type<Message>);
    if (!decodePayload(data, std::get<Message>(*message)))
        message.reset();
    return message;
}

std::optional<ServerMessage> releaseFrom(const std::optional<element>& data) {
    ReleasePayload payload;
    if (!decodePayload(data, payload) || !payload.desktopRelease)
        return std::nullopt;
    return *std::move(payload.desktopRelease);
}

}  // namespace

std::optional<ServerMessage> decodeServerMessage(std::string_view frame) {
    const records::json::Document document(frame);
    simdjson::dom::object envelope;
    if (!document.isValid() || document.root().get_object().get(envelope) != simdjson::SUCCESS)
        return std::nullopt;
    std::optional<element> type;
    std::optional<element> data;
    for (const simdjson::dom::key_value_pair member : envelope) {
        if (member.key == "type")
            type = member.value;
        else if (member.key == "data")
            data = member.value;
    }
    std::string_view word;
    if (!type || type->get_string().get(word) != simdjson::SUCCESS)
        return std::nullopt;
    if (word == "snapshot")
        return messageFrom<records::StateSnapshot>(data);
    if (word == "signal.created")
        return messageFrom<server_message::SignalCreated>(data);
    if (word == "signal.updated")
        return messageFrom<server_message::SignalUpdated>(data);
    if (word == "member.updated")
        return messageFrom<server_message::MemberUpdated>(data);
    if (word == "office.updated")
        return messageFrom<server_message::OfficeUpdated>(data);
    if (word == "rooms.updated")
        return messageFrom<server_message::RoomsUpdated>(data);
    if (word == "types.updated")
        return messageFrom<server_message::TypesUpdated>(data);
    if (word == "session.started")
        return messageFrom<server_message::SessionStarted>(data);
    if (word == "desktop.release")
        return releaseFrom(data);
    if (word == "session.ended")
        return server_message::SessionEnded{};
    if (word == "pong")
        return server_message::Pong{};
    return std::nullopt;
}

}  // namespace zelkovanta::server
