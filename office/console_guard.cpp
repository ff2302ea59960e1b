#include "office/console_guard.h"

#include "office/ascii.h"

#include <algorithm>
#include <array>

namespace zelkovanta::office {
namespace {

Refusal forbidden(std::string message) {
    return {403, "not_the_console", std::move(message), std::nullopt};
}

bool isJson(std::string_view contentType) {
    std::string_view type = contentType.substr(0, contentType.find(';'));
    while (type.ends_with(' ')) {
        type.remove_suffix(1);
    }
    return lowered(type) == "application/json";
}

}  // namespace

bool isNameOfThisMachine(std::string_view host) {
    const std::string name = lowered(host);
    constexpr std::array<std::string_view, 3> names = {"127.0.0.1", "localhost", "[::1]"};
    return std::ranges::any_of(names, [&name](std::string_view own) {
        if (!name.starts_with(own)) {
            return false;
        }
        const std::string_view port = std::string_view(name).substr(own.size());
        return port.empty() ||
               (port.size() > 1 && port.size() <= 6 && port[0] == ':' &&
                std::ranges::all_of(port.substr(1), [](char digit) { return digit >= '0' && digit <= '9'; }));
    });
}

std::optional<Refusal> refusedAtConsole(const ConsoleVisit& visit) {
    if (!visit.fromThisMachine) {
        return forbidden("The console answers on the office's own computer only.");
    }
    if (!isNameOfThisMachine(visit.host)) {
        return forbidden("The console answers at 127.0.0.1 and localhost only.");
    }
    if (visit.reads) {
        return std::nullopt;
    }
    const std::string own = (visit.encrypted ? "https://" : "http://") + lowered(visit.host);
    const bool sameOrigin = visit.origin && lowered(*visit.origin) == own;
    if (!sameOrigin || (visit.fetchSite && *visit.fetchSite != "same-origin")) {
        return forbidden("The console takes orders from its own page only.");
    }
    if (visit.hasBody && !(visit.contentType && isJson(*visit.contentType))) {
        return Refusal{415, "not_json", "An order is JSON.", std::nullopt};
    }
    return std::nullopt;
}

}  // namespace zelkovanta::office
