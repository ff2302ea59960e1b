#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zelkovanta::records {

/// A text that parses as a URL reference (RFC 3986), kept exactly as it was written.
class Url {
public:
    /// The empty text, which `parse` never gives: a place to put a URL into.
    Url() = default;

    /// None for an empty text and for one that does not parse.
    [[nodiscard]] static std::optional<Url> parse(std::string_view text);

    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] std::string_view scheme() const;  ///< as written, without the colon; empty if there is none
    [[nodiscard]] std::string_view host() const;    ///< as written; empty if there is none

    /// This URL with `path` behind its own path, with exactly one slash at the seam. Characters that cannot stand in a
    /// path are percent-encoded; slashes in `path` separate its segments. Query and fragment are dropped.
    [[nodiscard]] Url appendingPath(std::string_view path) const;
    [[nodiscard]] Url withScheme(std::string_view scheme) const;

    bool operator==(const Url&) const = default;

private:
    explicit Url(std::string text) : text_(std::move(text)) {}
    std::string text_;
};

}  // namespace zelkovanta::records
