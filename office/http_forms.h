#pragma once

#include "office/console_files.h"
#include "office/exchange.h"

#include <optional>
#include <string>
#include <string_view>

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/system/error_code.hpp>

// How requests and answers look in HTTP. Included by the server alone: Beast is heavy.
namespace zelkovanta::office {

using HttpRequest = boost::beast::http::request<boost::beast::http::string_body>;
using HttpResponse = boost::beast::http::response<boost::beast::http::string_body>;

inline std::string_view view(boost::beast::string_view text) {
    return {text.data(), text.size()};
}

/// Without the query.
[[nodiscard]] std::string_view pathOf(const HttpRequest& request);
/// The token that the request carries; empty without one.
[[nodiscard]] std::string bearerOf(const HttpRequest& request);
/// The header's text, nothing where there is no such header.
[[nodiscard]] std::optional<std::string> headerOf(const HttpRequest& request, std::string_view name);

[[nodiscard]] HttpResponse responseOf(const Answer& answer, unsigned version, bool keepAlive);
[[nodiscard]] HttpResponse responseOf(const ConsoleFile& file, unsigned version, bool keepAlive);

/// What a request that could not be read gets to hear; nothing where nobody listens any more.
[[nodiscard]] std::optional<Answer> answerToFault(boost::system::error_code error);

}  // namespace zelkovanta::office
