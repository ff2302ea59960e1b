#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <QString>

/// Texts as a notification daemon may be given them, whatever they are made of: bytes that are no UTF-8 are replaced,
/// characters that steer a terminal, a line's direction or a parser are left out, and what is too long is cut.
namespace zelkovanta::platform::linux_host {

/// In characters of Unicode. Far above what any desktop shows; some daemons take seconds over a text without end.
inline constexpr std::size_t longestNotificationTitle = 300;
inline constexpr std::size_t longestNotificationBody = 4000;

enum class BodyReading : std::uint8_t { literal, markup };

/// One line; never empty, since some daemons show nothing then. Daemons read no markup in it.
[[nodiscard]] QString notificationTitle(std::string_view text);
/// Lines are kept. With `markup` it reads as the same text to a daemon that looks for markup.
[[nodiscard]] QString notificationBody(std::string_view text, BodyReading reading);

}  // namespace zelkovanta::platform::linux_host
