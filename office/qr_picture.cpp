#include "office/qr_picture.h"

#include "office/base64.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>
#include <zlib.h>

#include <qrencode.h>

namespace zelkovanta::office {
namespace {

constexpr std::size_t quietZone = 4;
constexpr std::size_t pixelsPerModule = 6;

void appendNumber(std::string& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(number >> shift & 0xFFU);
    }
}

const Bytef* bytesOf(const std::string& text) {
    return reinterpret_cast<const Bytef*>(text.data());
}

void appendChunk(std::string& png, std::string_view type, const std::string& content) {
    appendNumber(png, static_cast<std::uint32_t>(content.size()));
    const std::string checked = std::string(type) + content;
    png += checked;
    appendNumber(png, static_cast<std::uint32_t>(crc32(0, bytesOf(checked), static_cast<uInt>(checked.size()))));
}

/// Grey with one bit a pixel, a filter byte of 0 before each row.
std::string rowsOf(const QRcode& code, std::size_t side) {
    const auto modules = static_cast<std::size_t>(code.width);
    std::string rows;
    for (std::size_t y = 0; y < side; ++y) {
        rows += '\0';
        const std::size_t row = y / pixelsPerModule;
        std::string line((side + 7) / 8, '\xFF');
        for (std::size_t x = 0; x < side; ++x) {
            const std::size_t column = x / pixelsPerModule;
            const bool inside =
                row >= quietZone && row < quietZone + modules && column >= quietZone && column < quietZone + modules;
            if (inside && (code.data[(row - quietZone) * modules + column - quietZone] & 1U) != 0) {
                line[x / 8] = static_cast<char>(line[x / 8] & ~(0x80 >> (x % 8)));
            }
        }
        rows += line;
    }
    return rows;
}

}  // namespace

std::string qrPicture(std::string_view text) {
    const std::string terminated(text);
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString8bit(terminated.c_str(), 0, QR_ECLEVEL_M), &QRcode_free);
    if (code == nullptr) {
        return {};
    }
    const std::size_t side = (static_cast<std::size_t>(code->width) + 2 * quietZone) * pixelsPerModule;
    const std::string rows = rowsOf(*code, side);
    uLongf length = compressBound(static_cast<uLong>(rows.size()));
    std::string packed(length, '\0');
    if (compress(reinterpret_cast<Bytef*>(packed.data()), &length, bytesOf(rows), static_cast<uLong>(rows.size())) !=
        Z_OK) {
        return {};
    }
    packed.resize(length);

    std::string header;
    appendNumber(header, static_cast<std::uint32_t>(side));
    appendNumber(header, static_cast<std::uint32_t>(side));
    header += std::string("\x01\x00\x00\x00\x00", 5);  // one bit deep, grey, deflate, no filter, not interlaced

    std::string png = "\x89PNG\r\n\x1A\n";
    appendChunk(png, "IHDR", header);
    appendChunk(png, "IDAT", packed);
    appendChunk(png, "IEND", {});

    return "data:image/png;base64," + base64Of(png);
}

}  // namespace zelkovanta::office
