#include "records/url.h"

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

namespace zelkovanta::records {
namespace {

std::optional<boost::urls::url_view> parsed(std::string_view text) {
    const auto view = boost::urls::parse_uri_reference(text);
    if (!view)
        return std::nullopt;
    // The library takes "host:port" with letters as a host with a path behind it.
    const std::string_view path = view->encoded_path();
    if (view->has_authority() && !path.empty() && !path.starts_with('/'))
        return std::nullopt;
    return *view;
}

boost::urls::url_view viewOf(const std::string& text) {
    return parsed(text).value_or(boost::urls::url_view());
}

bool standsInPath(char character) {
    // pchar of RFC 3986 without its percent-encoded form, and the slash between segments.
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/";
    return allowed.find(character) != std::string_view::npos;
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
    if (text.empty() || !parsed(text))
        return std::nullopt;
    return Url(std::string(text));
}

std::string_view Url::scheme() const {
    return viewOf(text_).scheme();
}

std::string_view Url::host() const {
    const auto view = viewOf(text_);
    if (!view.has_authority())
        return {};
    const std::string_view host = view.encoded_host();
    return host;
}

Url Url::appendingPath(std::string_view path) const {
    std::string text = text_.substr(0, text_.find_first_of("?#"));
    // A slash of "//" before an authority is none of the path's own.
    const auto view = viewOf(text_);
    const std::size_t pathLength = view.encoded_path().size();
    const std::size_t pathStart = text.size() - pathLength;
    while (text.size() > pathStart && text.back() == '/')
        text.pop_back();
    text += '/';
    const std::size_t seam = path.find_first_not_of('/');
    path.remove_prefix(seam == std::string_view::npos ? path.size() : seam);
    for (const char character : path) {
        if (standsInPath(character)) {
            text += character;
        } else {
            constexpr std::string_view digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(character);
            text += '%';
            text += digits[byte >> 4U];
            text += digits[byte & 0xFU];
        }
    }
    return Url(std::move(text));
}

Url Url::withScheme(std::string_view scheme) const {
    const std::string_view own = this->scheme();
    std::string text(scheme);
    text += own.empty() ? ":" : "";
    text += text_.substr(own.size());
    return Url(std::move(text));
}

}  // namespace zelkovanta::records
