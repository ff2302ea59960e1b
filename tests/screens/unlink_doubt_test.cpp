#include "screens/unlink_doubt.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using namespace std::chrono_literals;

/// What comes of presses at these times: "asks", "unlinks".
std::vector<std::string> pressedAt(const std::vector<platform::Duration>& times) {
    UnlinkDoubt doubt{400ms};
    std::vector<std::string> heard;
    for (const auto time : times) {
        heard.emplace_back(doubt.press(platform::SteadyTime{time}) ? "unlinks" : "asks");
    }
    return heard;
}

using Heard = std::vector<std::string>;

TEST(UnlinkDoubtTest, isOverWithTheSecondPress) {
    EXPECT_EQ(pressedAt({10s, 12s}), (Heard{"asks", "unlinks"}));
    EXPECT_EQ(pressedAt({10s, 12s, 14s, 15s}), (Heard{"asks", "unlinks", "asks", "unlinks"}));
}

TEST(UnlinkDoubtTest, isNotOverWithADoubleClick) {
    EXPECT_EQ(pressedAt({10s, 10s}), (Heard{"asks", "asks"}));
    EXPECT_EQ(pressedAt({10s, 10s + 399ms}), (Heard{"asks", "asks"}));
    EXPECT_EQ(pressedAt({10s, 10s + 400ms}), (Heard{"asks", "unlinks"}));
    EXPECT_EQ(pressedAt({10s, 10s + 300ms, 10s + 600ms}), (Heard{"asks", "asks", "asks"})) << "nor with more clicks";
    EXPECT_EQ(pressedAt({10s, 10s + 300ms, 11s}), (Heard{"asks", "asks", "unlinks"}));
}

TEST(UnlinkDoubtTest, isForgottenAfterSixSeconds) {
    EXPECT_EQ(pressedAt({10s, 16s - 1ns}), (Heard{"asks", "unlinks"}));
    EXPECT_EQ(pressedAt({10s, 16s}), (Heard{"asks", "asks"}));
    EXPECT_EQ(pressedAt({10s, 10s + 100ms, 16s, 17s}), (Heard{"asks", "asks", "asks", "unlinks"}))
        << "six seconds from the first press of all";
}

TEST(UnlinkDoubtTest, tellsHowLongItAsksYet) {
    UnlinkDoubt doubt{400ms};
    const platform::SteadyTime start{10s};
    EXPECT_FALSE(doubt.isAsking(start));
    EXPECT_EQ(doubt.left(start), 0s);
    ASSERT_FALSE(doubt.press(start));
    EXPECT_EQ(doubt.left(start), 6s);
    EXPECT_EQ(doubt.left(start + 5s), 1s);
    EXPECT_TRUE(doubt.isAsking(start + 5999ms));
    EXPECT_FALSE(doubt.isAsking(start + 6s));
    EXPECT_EQ(doubt.left(start + 1h), 0s);
    ASSERT_TRUE(doubt.press(start + 1s));
    EXPECT_FALSE(doubt.isAsking(start + 1s)) << "it is done";
}

}  // namespace
}  // namespace zelkovanta::screens
