#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::records {

/// The bytes of a text in standard base64 (RFC 4648, section 4): padded, without white space. None for anything else.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);
/// Bytes as text in the same form.
[[nodiscard]] std::string encodeBase64(std::string_view bytes);

}  // namespace zelkovanta::records
