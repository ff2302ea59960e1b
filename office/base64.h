#pragma once

#include <string>
#include <string_view>

namespace zelkovanta::office {

/// Bytes in standard base64 (RFC 4648, section 4), padded.
[[nodiscard]] std::string base64Of(std::string_view bytes);

}  // namespace zelkovanta::office
