#include "screens/wait_time.h"

#include "records/server_date.h"
#include "screens/theme/palette.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using namespace std::chrono_literals;
using platform::SteadyTime;
using platform::WallTime;

const WallTime start{std::chrono::seconds{1'767'340'800}};

TEST(WaitTime, readsMinutesAndSecondsUpToAnHourAndThenHours) {
    const std::vector<std::pair<std::chrono::microseconds, std::string>> cases{
        {0s, "0:00"},
        {1s, "0:01"},
        {59s, "0:59"},
        {60s, "1:00"},
        {249s, "4:09"},
        {600s, "10:00"},
        {3599s, "59:59"},
        {3600s, "1:00:00"},
        {3661s, "1:01:01"},
        {25h + 3s, "25:00:03"},
        {1000h, "1000:00:00"},
        // Whole seconds are cut off, not rounded.
        {59'999ms, "0:59"},
        {3'599'999ms, "59:59"},
    };
    for (const auto& [waited, text] : cases) {
        EXPECT_EQ(waitTimeText(start, start + waited), text);
    }
}

TEST(WaitTime, aBeginningInTheFutureReadsZero) {
    EXPECT_EQ(waitTimeText(start, start - 1us), "0:00");
    EXPECT_EQ(waitTimeText(start, start - 48h), "0:00");
}

TEST(WaitTime, aMissingBeginningReadsZeroForGood) {
    WaitTimerText timer{std::nullopt};
    for (const auto passed : {0h, 1h, 1000h}) {
        EXPECT_EQ(timer.textAt(start + passed), "0:00");
        EXPECT_FALSE(timer.isLong());
    }
}

TEST(WaitTime, turnsToTheErrorColourExactlyAtFiveMinutes) {
    WaitTimerText timer{start};
    EXPECT_EQ(timer.textAt(start + 299'999ms), "4:59");
    EXPECT_EQ(timer.color(), theme::textSecondary);
    EXPECT_EQ(timer.textAt(start + 300s), "5:00");
    EXPECT_EQ(timer.color(), theme::redText);
    EXPECT_FALSE(isLongWait(start, start + 299'999ms));
    EXPECT_TRUE(isLongWait(start, start + 300s));
}

TEST(WaitTime, neverTurnsBackFromTheErrorColour) {
    WaitTimerText timer{start};
    static_cast<void>(timer.textAt(start + 301s));
    ASSERT_TRUE(timer.isLong());
    // The clock is set back.
    EXPECT_EQ(timer.textAt(start + 10s), "0:10");
    EXPECT_EQ(timer.color(), theme::redText);
    EXPECT_EQ(timer.textAt(start - 1h), "0:00");
    EXPECT_EQ(timer.color(), theme::redText);
}

TEST(WaitTime, ticksOnWholeSecondsFromWhenItAppeared) {
    const SteadyTime appeared{123'456'789ns};
    EXPECT_EQ(untilNextTick(appeared, appeared), 1s);
    EXPECT_EQ(untilNextTick(appeared, appeared + 1ns), 999'999'999ns);
    EXPECT_EQ(untilNextTick(appeared, appeared + 400ms), 600ms);
    EXPECT_EQ(untilNextTick(appeared, appeared + 999'999'999ns), 1ns);
    EXPECT_EQ(untilNextTick(appeared, appeared + 1s), 1s);
    EXPECT_EQ(untilNextTick(appeared, appeared + 1h + 250ms), 750ms);
}

}  // namespace
}  // namespace zelkovanta::screens
