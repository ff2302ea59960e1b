#include "screens/plain_page.h"

#include "screens/wait_time.h"

#include <chrono>

#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using namespace std::chrono_literals;

constexpr platform::WallTime start{std::chrono::days{20'000}};

TEST(WaitTime, isWrittenInMinutesThenInHours) {
    EXPECT_EQ(waitTimeText(start, start), "0:00");
    EXPECT_EQ(waitTimeText(start, start + 59'999ms), "0:59");
    EXPECT_EQ(waitTimeText(start, start + 3599s), "59:59");
    EXPECT_EQ(waitTimeText(start, start + 3600s), "1:00:00");
    EXPECT_EQ(waitTimeText(start, start + 100h + 62s), "100:01:02");
}

TEST(WaitTime, withoutABeginningOrBeforeItIsZero) {
    EXPECT_EQ(waitTimeText(std::nullopt, start), "0:00");
    EXPECT_EQ(waitTimeText(start, start - 10s), "0:00");
}

TEST(WaitTime, isLongFromFiveMinutesOn) {
    EXPECT_FALSE(isLongWait(start, start + 299'999ms));
    EXPECT_TRUE(isLongWait(start, start + 300s));
    EXPECT_FALSE(isLongWait(std::nullopt, start));
}

TEST(PairingCode, takesTheFormInWhichItIsPrinted) {
    EXPECT_EQ(pairingCodeText("ab-12 cd/34ef"), "AB12-CD34");
    EXPECT_EQ(pairingCodeText("ab12"), "AB12");
    EXPECT_EQ(pairingCodeText("ab12c"), "AB12-C");
    EXPECT_EQ(pairingCodeText(""), "");
}

}  // namespace
}  // namespace zelkovanta::screens
