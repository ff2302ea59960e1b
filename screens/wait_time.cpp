#include "screens/wait_time.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace zelkovanta::screens {

namespace {

using std::chrono::seconds;

constexpr seconds longWait{300};

seconds waited(std::optional<platform::WallTime> since, platform::WallTime now) {
    return since ? std::max(seconds{0}, std::chrono::floor<seconds>(now - *since)) : seconds{0};
}

}  // namespace

std::string waitTimeText(std::optional<platform::WallTime> since, platform::WallTime now) {
    const std::chrono::hh_mm_ss time{waited(since, now)};
    char text[32];
    if (time.hours().count() > 0) {
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", static_cast<long>(time.hours().count()),
                      static_cast<long>(time.minutes().count()), static_cast<long>(time.seconds().count()));
    } else {
        std::snprintf(text, sizeof text, "%ld:%02ld", static_cast<long>(time.minutes().count()),
                      static_cast<long>(time.seconds().count()));
    }
    return text;
}

bool isLongWait(std::optional<platform::WallTime> since, platform::WallTime now) {
    return waited(since, now) >= longWait;
}

}  // namespace zelkovanta::screens
