#include "platform/linux/notification_text.h"

#include <algorithm>
#include <string>

#include <QList>

namespace zelkovanta::platform::linux_host {

namespace {

enum class Lines : std::uint8_t { kept, joined };

constexpr char32_t ellipsis = U'…';

bool isLineEnd(char32_t c) {
    return c == '\n' || c == U'\u2028' || c == U'\u2029' || c == U'\u0085' || c == '\v' || c == '\f';
}

bool isLeftOut(char32_t c) {
    const bool isControl = (c < 0x20 && c != '\n' && c != '\t') || (c >= 0x7F && c < 0xA0);
    const bool isDirection =
        (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x200E || c == 0x200F || c == 0x061C;
    const bool isNoCharacter = (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE || c == 0xFEFF;
    return isControl || isDirection || isNoCharacter;
}

/// The first bytes, without half a character at the end.
std::string_view beginning(std::string_view text, std::size_t size) {
    if (text.size() <= size) {
        return text;
    }
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}

std::u32string plainText(std::string_view text, std::size_t longest, Lines lines) {
    constexpr std::size_t mostBytes = 4;
    // Enough for the longest text and for as much again that is left out.
    const auto read = beginning(text, 2 * mostBytes * longest);
    const auto characters = QString::fromUtf8(read.data(), static_cast<qsizetype>(read.size())).toUcs4();
    std::u32string plain;
    for (const auto code : characters) {
        const auto c = static_cast<char32_t>(code);
        if (isLineEnd(c)) {
            plain += lines == Lines::kept ? U'\n' : U' ';
        } else if (!isLeftOut(c)) {
            plain += c == '\t' ? U' ' : c;
        }
    }
    if (plain.size() > longest || read.size() < text.size()) {
        plain.resize(std::min(plain.size(), longest - 1));
        plain += ellipsis;
    }
    return plain;
}

QString toQString(const std::u32string& text) {
    return QString::fromUcs4(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString notificationTitle(std::string_view text) {
    const QString title = toQString(plainText(text, longestNotificationTitle, Lines::joined));
    return title.trimmed().isEmpty() ? QStringLiteral("ZelkoVanta") : title;
}

QString notificationBody(std::string_view text, BodyReading reading) {
    QString body = toQString(plainText(text, longestNotificationBody, Lines::kept));
    if (reading == BodyReading::markup) {
        body.replace('&', QStringLiteral("&amp;"));
        body.replace('<', QStringLiteral("&lt;"));
        body.replace('>', QStringLiteral("&gt;"));
    }
    return body;
}

}  // namespace zelkovanta::platform::linux_host
