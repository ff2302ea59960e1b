#pragma once

#include <string>
#include <string_view>

namespace zelkovanta::office {

/// A QR code of the text as a PNG image, in the form "data:image/png;base64,…". A text too long for a code gives an
/// empty result.
[[nodiscard]] std::string qrPicture(std::string_view text);

}  // namespace zelkovanta::office
