#include "office/qr_picture.h"

#include <cstdint>
#include <png.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <qrencode.h>

namespace zelkovanta::office {
namespace {

constexpr std::string_view marker = "data:image/png;base64,";

std::string decoded(std::string_view base64) {
    std::string bytes(base64.size(), '\0');
    const int length =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(base64.data()), static_cast<int>(base64.size()));
    EXPECT_GT(length, 0);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

TEST(QrPicture, isAnImageOfTheCodeWithItsQuietZone) {
    const std::string text = "zelkovanta://setup?token=zvs_6VFnqjAwzlAoq6Fg2GKUaq5p81N0pyjNc0uGwf56JLA";
    const std::string url = qrPicture(text);
    ASSERT_TRUE(url.starts_with(marker));
    const std::string file = decoded(std::string_view(url).substr(marker.size()));

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_memory(&image, file.data(), file.size()), 0) << image.message;
    image.format = PNG_FORMAT_GRAY;
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;

    QRcode* code = QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_M);
    const auto modules = static_cast<std::size_t>(code->width);
    const std::size_t scale = image.width / (modules + 8);
    ASSERT_EQ(image.width, (modules + 8) * scale);
    ASSERT_EQ(image.height, image.width);
    ASSERT_GE(scale, 4U);
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t x = 0; x < image.width; ++x) {
            const std::size_t row = y / scale;
            const std::size_t column = x / scale;
            const bool inside = row >= 4 && row < modules + 4 && column >= 4 && column < modules + 4;
            const bool dark = inside && (code->data[(row - 4) * modules + column - 4] & 1U) != 0;
            ASSERT_EQ(pixels[y * image.width + x], dark ? 0 : 255) << x << ',' << y;
        }
    }
    QRcode_free(code);
}

TEST(QrPicture, ofATextThatFitsNoCodeIsEmpty) {
    EXPECT_EQ(qrPicture(std::string(5000, 'a')), "");
}

}  // namespace
}  // namespace zelkovanta::office
