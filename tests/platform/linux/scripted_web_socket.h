#pragma once

#include "tests/platform/linux/scripted_server.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// The opcodes of web socket frames.
enum Opcode : std::uint8_t { continuation = 0, text = 1, binary = 2, closeCode = 8, ping = 9, pongCode = 10 };

struct ClientFrame {
    std::uint8_t opcode = 0;
    std::string payload;
    bool operator==(const ClientFrame&) const = default;
};

/// What agrees to an opening request.
[[nodiscard]] std::string upgradeReply(std::string_view request);
/// Reads the opening request, agrees, and gives the request.
std::string acceptUpgrade(ScriptedConnection& connection);
[[nodiscard]] std::string serverFrame(Opcode opcode, std::string_view payload, bool isFinal = true);
/// An empty frame of opcode 0 once the client is gone. A frame that is not masked counts as opcode 255.
ClientFrame readClientFrame(ScriptedConnection& connection);

}  // namespace zelkovanta::platform::linux_host
