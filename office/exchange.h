#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// What goes into the office and what comes out of it, as values.
namespace zelkovanta::office {

struct Request {
    std::string method = {};  ///< "GET", "POST", "PATCH", "DELETE"
    std::string path = {};    ///< with its leading slash, for example "/api/v1/state"
    std::string token = {};   ///< behind "Bearer ", empty for none
    std::string body = {};
    std::string peer = {};      ///< who asks, for the limits on attempts; a network address in the program
    std::string appCheck = {};  ///< what the desktop build says about itself when it pairs; empty for nothing
};

/// The frame goes to every open real-time connection of these computers.
struct SendFrame {
    std::vector<std::string> deviceIds = {};
    std::string frame = {};
    bool operator==(const SendFrame&) const = default;
};

/// All open real-time connections of the computer are closed.
struct CloseSockets {
    std::string deviceId = {};
    std::uint16_t code = 0;
    bool operator==(const CloseSockets&) const = default;
};

/// To be carried out in order. What they tell is already durable.
using Effect = std::variant<SendFrame, CloseSockets>;

struct Answer {
    int status = 200;
    std::string body = {};   ///< JSON
    std::string route = {};  ///< the path with its identifiers left out, fit for a log
    std::vector<Effect> effects = {};
    bool operator==(const Answer&) const = default;
};

/// The code of a closed connection whose computer is not paired any more.
inline constexpr std::uint16_t revokedCloseCode = 4001;

}  // namespace zelkovanta::office
