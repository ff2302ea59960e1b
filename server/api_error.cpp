#include "server/api_error.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelkovanta::server {

namespace {

using platform::textKey;
using platform::TransportCause;

constexpr std::array<std::pair<std::string_view, std::string_view>, 9> sentencesByCode{{
    {"invalid_code", textKey("That code isn't valid. Check it and try again.")},
    {"expired_code", textKey("That code has expired. Generate a new one in the admin.")},
    {"duplicate_active_signal", textKey("This room already has an active signal.")},
    {"already_cleared", textKey("That signal was already cleared.")},
    {"provider_off_shift", textKey("That doctor is off shift right now.")},
    {"room_required", textKey("Pick a room first.")},
    {"too_many_attempts", textKey("Too many attempts. Wait a moment and try again.")},
    {"not_a_station", textKey("This device can't be signed into.")},
    {"signin_required", textKey("Sign in to use this computer first.")},
}};

std::string_view sentence(TransportCause cause) {
    switch (cause) {
        case TransportCause::noNetwork:
            return textKey("This computer has no network connection.");
        case TransportCause::nameNotFound:
            return textKey("The server's name can't be found. Check the server address.");
        case TransportCause::refused:
            return textKey("The server isn't answering. It may be down for a moment.");
        case TransportCause::timedOut:
            return textKey("The server took too long to answer.");
        case TransportCause::certificateRefused:
            return textKey("The server's certificate can't be trusted, so nothing was sent.");
        case TransportCause::proxyFailed:
            return textKey("The network's proxy didn't let the connection through.");
        case TransportCause::interrupted:
            return textKey("The connection to the server was lost.");
        case TransportCause::tooLarge:
            return textKey("The server's answer is too large.");
        case TransportCause::badServerResponse:
            return textKey("Something other than the ZelkoVanta server answered. Check the server address.");
        case TransportCause::cancelled:
            return textKey("The request was canceled.");
        case TransportCause::unsendable:
            return textKey("The request can't be sent. If that stays so, set this computer up again.");
    }
    std::unreachable();
}

struct Describe {
    const platform::StringTable& strings;

    std::string operator()(const api_error::BadStatus& error) const {
        if (error.message && !error.message->empty()) {
            return *error.message;
        }
        const auto* const known =
            std::ranges::find(sentencesByCode, error.error, [](const auto& row) { return row.first; });
        if (known != sentencesByCode.end()) {
            return strings.localized(known->second);
        }
        return platform::filled(strings.localized("Server error (%lld): %@"), {error.code, error.error});
    }
    std::string operator()(const api_error::InCooldown& error) const {
        return error.message == api_error::cooldownSentence ? strings.localized(api_error::cooldownSentence)
                                                            : error.message;
    }
    std::string operator()(const api_error::Decoding&) const {
        return strings.localized("Unexpected response from the server.");
    }
    std::string operator()(const api_error::Transport& error) const {
        return strings.localized(sentence(error.underlying.cause));
    }
    std::string operator()(const api_error::InvalidURL&) const { return strings.localized("Invalid server URL."); }
};

}  // namespace

std::string localizedDescription(const APIError& error, const platform::StringTable& strings) {
    return std::visit(Describe{strings}, error);
}

bool isHttpStatus(const APIError& error, int status) {
    const auto* const answered = std::get_if<api_error::BadStatus>(&error);
    return answered != nullptr && answered->code == status;
}

}  // namespace zelkovanta::server
