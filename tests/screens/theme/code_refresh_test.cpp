#include "screens/theme/code_refresh.h"

#include "records/server_date.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::theme {
namespace {

using namespace std::chrono_literals;

struct CodeRefresh : testing::Test {
    platform::KeysAsTexts strings;
    std::string expiresAt = "2026-01-02T08:00:00Z";

    std::optional<std::string> withLeft(std::chrono::microseconds left) const {
        return codeRefreshText(expiresAt, *records::parseServerDate(expiresAt) - left, strings);
    }
};

TEST_F(CodeRefresh, countsMinutesAndSecondsToTheNearestSecond) {
    EXPECT_EQ(withLeft(90s), "Code refreshes in 1:30");
    EXPECT_EQ(withLeft(60s), "Code refreshes in 1:00");
    EXPECT_EQ(withLeft(59499ms), "Code refreshes in 0:59");
    EXPECT_EQ(withLeft(59500ms), "Code refreshes in 1:00");
    EXPECT_EQ(withLeft(9s), "Code refreshes in 0:09");
    EXPECT_EQ(withLeft(500ms), "Code refreshes in 0:01");
    EXPECT_EQ(withLeft(499ms), "Code refreshes in 0:00");
    EXPECT_EQ(withLeft(3600s), "Code refreshes in 60:00");
}

TEST_F(CodeRefresh, neverCountsBelowZero) {
    EXPECT_EQ(withLeft(0s), "Code refreshes in 0:00");
    EXPECT_EQ(withLeft(-1s), "Code refreshes in 0:00");
    EXPECT_EQ(withLeft(-24h), "Code refreshes in 0:00");
}

TEST_F(CodeRefresh, aCodeWithoutAReadableEndHasNoLine) {
    EXPECT_EQ(codeRefreshText(std::nullopt, {}, strings), std::nullopt);
    EXPECT_EQ(codeRefreshText("soon", {}, strings), std::nullopt);
    EXPECT_EQ(codeRefreshText("", {}, strings), std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::screens::theme
