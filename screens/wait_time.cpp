#include "screens/wait_time.h"

#include "screens/theme/palette.h"

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
    char text[64];
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

platform::Duration untilNextTick(platform::SteadyTime appeared, platform::SteadyTime now) {
    return seconds{1} - (now - appeared) % seconds{1};
}

std::string WaitTimerText::textAt(platform::WallTime now) {
    isLong_ = isLong_ || isLongWait(since_, now);
    return waitTimeText(since_, now);
}

theme::ColorPair WaitTimerText::color() const {
    return isLong_ ? theme::redText : theme::textSecondary;
}

}  // namespace zelkovanta::screens
