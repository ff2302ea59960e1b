#pragma once

#include "office/refusal.h"

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::office {

/// What tells whether a visitor of the console is one: his network address and what his browser says about itself.
struct ConsoleVisit {
    bool fromThisMachine = false;
    bool encrypted = false;
    bool reads = true;  ///< asks for the page or one of its files, which hold nothing of the office
    bool hasBody = false;
    std::string host = {};
    std::optional<std::string> origin = {};
    std::optional<std::string> fetchSite = {};  ///< "Sec-Fetch-Site"
    std::optional<std::string> contentType = {};
};

/// The console obeys without a password, so it has to be sure that it is asked by its own page, in a browser of this
/// machine: by the peer's address, by a host name that no other site can take (a foreign name that leads here would
/// make another site the same origin), and by the origin. Nothing means welcome.
[[nodiscard]] std::optional<Refusal> refusedAtConsole(const ConsoleVisit& visit);

/// True for names of this machine with or without a port: "127.0.0.1:8787", "localhost", "[::1]:80".
[[nodiscard]] bool isNameOfThisMachine(std::string_view host);

}  // namespace zelkovanta::office
