#pragma once

#include "platform/string_table.h"
#include "platform/url_session.h"
#include "records/json_codec.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace zelkovanta::server {

namespace api_error {

/// The server answered outside 200 to 299.
struct BadStatus {
    int code = 0;       ///< the HTTP status
    std::string error;  ///< the server's machine code, or "http_" and the status
    std::optional<std::string> message;
    bool operator==(const BadStatus&) const = default;
};

/// Stands in for a cooldown's message where the server sent none. A key of the string table.
inline constexpr std::string_view cooldownSentence =
    platform::textKey("You're on a short cooldown after being moved off shift.");

/// The member may not act yet.
struct InCooldown {
    std::string message;
    std::optional<std::string> until;  ///< timestamp, as the server wrote it
    bool operator==(const InCooldown&) const = default;
};

/// A success whose body did not decode.
struct Decoding {
    records::DecodingError underlying;
    bool operator==(const Decoding&) const = default;
};

/// The exchange itself failed.
struct Transport {
    platform::TransportError underlying;
    bool operator==(const Transport&) const = default;
};

/// The server URL is unusable.
struct InvalidURL {
    bool operator==(const InvalidURL&) const = default;
};

}  // namespace api_error

/// How an operation of `APIClient` fails.
using APIError = std::variant<api_error::BadStatus, api_error::InCooldown, api_error::Decoding, api_error::Transport,
                              api_error::InvalidURL>;

/// The sentence that a person reads. The server's own words pass as they are; every other sentence is looked up with
/// the English text as its key. Pure, any thread.
[[nodiscard]] std::string localizedDescription(const APIError& error, const platform::StringTable& strings);

/// Whether this is a `BadStatus` with this HTTP status. A cooldown is none, whatever its status was.
[[nodiscard]] bool isHttpStatus(const APIError& error, int status);

}  // namespace zelkovanta::server
