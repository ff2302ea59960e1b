#pragma once

#include "platform/clock.h"
#include "screens/theme/color.h"

#include <optional>
#include <string>

namespace zelkovanta::screens {

/// How long somebody has waited: "4:09", from an hour on "1:04:09". Zero without a beginning, or for one that lies in
/// the future because the clocks differ.
[[nodiscard]] std::string waitTimeText(std::optional<platform::WallTime> since, platform::WallTime now);

/// From five minutes on a wait is drawn as a warning.
[[nodiscard]] bool isLongWait(std::optional<platform::WallTime> since, platform::WallTime now);

/// How long until a timer that appeared at `appeared` is to be drawn again: it ticks each whole second from then.
[[nodiscard]] platform::Duration untilNextTick(platform::SteadyTime appeared, platform::SteadyTime now);

/// The running timer of one row. It remembers that it became a warning: a clock that is set back does not undo that.
class WaitTimerText {
public:
    explicit WaitTimerText(std::optional<platform::WallTime> since) : since_(since) {}

    [[nodiscard]] const std::optional<platform::WallTime>& since() const { return since_; }
    /// To be asked at each redraw.
    [[nodiscard]] std::string textAt(platform::WallTime now);
    /// As of the last redraw.
    [[nodiscard]] bool isLong() const { return isLong_; }
    [[nodiscard]] theme::ColorPair color() const;

private:
    std::optional<platform::WallTime> since_;
    bool isLong_ = false;
};

}  // namespace zelkovanta::screens
