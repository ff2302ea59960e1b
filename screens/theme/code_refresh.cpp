#include "screens/theme/code_refresh.h"

#include "records/server_date.h"

#include <algorithm>
#include <cstdio>

namespace zelkovanta::screens::theme {

std::optional<std::string> codeRefreshText(const std::optional<std::string>& expiresAt,
                                           std::chrono::sys_time<std::chrono::microseconds> now,
                                           const platform::StringTable& strings) {
    using std::chrono::seconds;
    const auto end = expiresAt ? records::parseServerDate(*expiresAt) : std::nullopt;
    if (!end) {
        return std::nullopt;
    }
    constexpr std::chrono::milliseconds half{500};
    const auto left = std::max(std::chrono::floor<seconds>(*end - now + half), seconds{0});
    char time[32];
    std::snprintf(time, sizeof time, "%ld:%02ld", static_cast<long>(left.count() / 60),
                  static_cast<long>(left.count() % 60));
    return platform::filled(strings.localized("Code refreshes in %@"), {std::string_view{time}});
}

}  // namespace zelkovanta::screens::theme
