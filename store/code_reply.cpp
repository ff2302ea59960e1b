#include "store/code_reply.h"

#include "records/base64.h"

#include <cstddef>

namespace zelkovanta::store {

using namespace std::chrono_literals;

namespace {

constexpr auto throttledDelay = 30s;
constexpr int tooManyRequests = 429;

// A picture of a code has a few kilobytes. What is far larger would only keep the main thread from its work.
constexpr std::size_t imageTextLimit = std::size_t{1024} * 1024;

}  // namespace

std::optional<std::string> imageFromDataURL(std::string_view dataURL) {
    constexpr std::string_view marker = "base64,";
    if (dataURL.size() > imageTextLimit) {
        return std::nullopt;
    }
    const auto position = dataURL.find(marker);
    if (position == std::string_view::npos) {
        return std::nullopt;
    }
    auto bytes = records::decodeBase64(dataURL.substr(position + marker.size()));
    return bytes && !bytes->empty() ? std::move(bytes) : std::nullopt;
}

platform::Duration retryDelay(const server::APIError& error, platform::Duration usual) {
    return server::isHttpStatus(error, tooManyRequests) ? platform::Duration{throttledDelay} : usual;
}

}  // namespace zelkovanta::store
