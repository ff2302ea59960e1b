#include "office/base64.h"

#include <openssl/evp.h>

namespace zelkovanta::office {

std::string base64Of(std::string_view bytes) {
    // The library ends what it writes with a zero byte.
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    // NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast): bytes are what the library takes.
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    // NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace zelkovanta::office
