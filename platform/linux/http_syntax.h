#pragma once

#include "platform/url_session.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// A method or the name of a header.
[[nodiscard]] inline bool isHttpToken(std::string_view text) {
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !text.empty() && std::ranges::all_of(text, [&](char c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return isLetter || (c >= '0' && c <= '9') || marks.find(c) != std::string_view::npos;
    });
}

/// Whether nothing in the headers breaks out of its line: that would begin a header of its own.
[[nodiscard]] inline bool areHttpHeaders(std::span<const HttpHeader> headers) {
    return std::ranges::all_of(headers, [](const HttpHeader& header) {
        return isHttpToken(header.name) &&
               std::ranges::none_of(header.value, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
    });
}

}  // namespace zelkovanta::platform::linux_host
