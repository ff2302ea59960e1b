#include "office/http_forms.h"

#include "office/base64.h"
#include "office/refusal.h"

#include <boost/beast/core/string.hpp>
#include <boost/beast/http/error.hpp>
#include <openssl/sha.h>

namespace zelkovanta::office {
namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;

/// The console needs nothing but what the office itself serves and the style in the page, and is nobody's frame.
std::string contentPolicy() {
    const std::string_view style = consoleStyle();
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    // NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast): bytes are what the library takes.
    SHA256(reinterpret_cast<const unsigned char*>(style.data()), style.size(),
           reinterpret_cast<unsigned char*>(digest.data()));
    // NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)
    return "default-src 'none'; script-src 'self'; style-src 'sha256-" + base64Of(digest) +
           "'; img-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

HttpResponse response(int status, std::string_view type, std::string_view body, unsigned version, bool keepAlive) {
    HttpResponse made(static_cast<http::status>(status), version);
    made.set(http::field::content_type, beast::string_view(type.data(), type.size()));
    made.set(http::field::cache_control, "no-store");
    made.set("X-Content-Type-Options", "nosniff");
    made.keep_alive(keepAlive);
    made.body() = body;
    return made;
}

}  // namespace

std::string_view pathOf(const HttpRequest& request) {
    const std::string_view target = view(request.target());
    return target.substr(0, target.find('?'));
}

std::string bearerOf(const HttpRequest& request) {
    constexpr std::string_view scheme = "Bearer ";
    const std::string_view header = view(request[http::field::authorization]);
    return header.size() > scheme.size() && beast::iequals(header.substr(0, scheme.size()), scheme)
               ? std::string(header.substr(scheme.size()))
               : std::string();
}

std::optional<std::string> headerOf(const HttpRequest& request, std::string_view name) {
    const auto found = request.find(beast::string_view(name.data(), name.size()));
    return found == request.end() ? std::nullopt : std::optional(std::string(view(found->value())));
}

HttpResponse responseOf(const Answer& answer, unsigned version, bool keepAlive) {
    HttpResponse made = response(answer.status, "application/json", answer.body, version, keepAlive);
    made.prepare_payload();
    return made;
}

HttpResponse responseOf(const ConsoleFile& file, unsigned version, bool keepAlive) {
    HttpResponse made = response(200, file.type, file.content, version, keepAlive);
    made.set("Content-Security-Policy", contentPolicy());
    made.set("Cross-Origin-Resource-Policy", "same-origin");
    made.set("Cross-Origin-Opener-Policy", "same-origin");
    made.set("Referrer-Policy", "no-referrer");
    made.prepare_payload();
    return made;
}

std::optional<Answer> answerToFault(boost::system::error_code error) {
    if (error == http::error::body_limit) {
        return refuse({413, "too_large", "The request is too large.", std::nullopt});
    }
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        return refuse({431, "too_large", "The request's header is too large.", std::nullopt});
    }
    if (error.category() == http::make_error_code(http::error::bad_method).category() &&
        error != http::error::end_of_stream && error != http::error::partial_message) {
        return refuse(refusals::badRequest("This is no request that the office understands."));
    }
    return std::nullopt;
}

}  // namespace zelkovanta::office
