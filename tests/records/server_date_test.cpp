#include "records/server_date.h"

#include <chrono>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using namespace std::chrono_literals;
using Moment = std::chrono::sys_time<std::chrono::microseconds>;

constexpr std::chrono::sys_days newYear = std::chrono::year(2026) / 1 / 1;

struct Written {
    const char* text;
    Moment moment;
};

TEST(ServerDateTest, datesWithAndWithoutFractionAreRead) {
    const std::vector<Written> table{
        {"2026-01-01T00:00:00Z", newYear},
        {"2026-01-01T07:08:09Z", newYear + 7h + 8min + 9s},
        {"2026-01-01T07:08:09.5Z", newYear + 7h + 8min + 9s + 500ms},
        {"2026-01-01T07:08:09.123Z", newYear + 7h + 8min + 9s + 123ms},
        {"2026-01-01T07:08:09.000001Z", newYear + 7h + 8min + 9s + 1us},
        {"2026-01-01T07:08:09.123456999999Z", newYear + 7h + 8min + 9s + 123456us},
        {"2026-01-01T23:59:59.999Z", newYear + 23h + 59min + 59s + 999ms},
        {"1970-01-01T00:00:00Z", Moment()},
        {"1969-12-31T23:59:59.5Z", Moment(-500ms)},
        {"0000-01-01T00:00:00Z", std::chrono::sys_days(std::chrono::year(0) / 1 / 1)},
        {"9999-12-31T23:59:59Z", std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) + 24h - 1s},
    };
    for (const Written& row : table)
        EXPECT_EQ(parseServerDate(row.text), row.moment) << row.text;
}

TEST(ServerDateTest, anOffsetLeadsToUniversalTime) {
    EXPECT_EQ(parseServerDate("2026-01-01T01:00:00+01:00"), newYear);
    EXPECT_EQ(parseServerDate("2025-12-31T18:30:00-05:30"), newYear);
    EXPECT_EQ(parseServerDate("2026-01-01T00:00:00.25+00:00"), newYear + 250ms);
    EXPECT_EQ(parseServerDate("2026-01-01T00:00:00-00:00"), newYear);
    EXPECT_EQ(parseServerDate("2026-01-01T23:59:00+23:59"), newYear);
}

TEST(ServerDateTest, leapDaysFollowTheCalendar) {
    EXPECT_TRUE(parseServerDate("2024-02-29T00:00:00Z"));
    EXPECT_TRUE(parseServerDate("2000-02-29T00:00:00Z"));
    EXPECT_FALSE(parseServerDate("2026-02-29T00:00:00Z"));
    EXPECT_FALSE(parseServerDate("1900-02-29T00:00:00Z"));
}

TEST(ServerDateTest, anythingElseHasNoValue) {
    for (const std::string text : {
             "",
             "2026-01-01",
             "2026-01-01T00:00:00",
             "2026-01-01T00:00Z",
             "2026-01-01 00:00:00Z",
             "2026-01-01t00:00:00z",
             "2026-01-01T00:00:00z",
             "2026-01-01T00:00:00.Z",
             "2026-01-01T00:00:00,5Z",
             "2026-01-01T00:00:00.5",
             "2026-01-01T00:00:00+0100",
             "2026-01-01T00:00:00+01",
             "2026-01-01T00:00:00 Z",
             "2026-01-01T00:00:00Z ",
             " 2026-01-01T00:00:00Z",
             "2026-01-01T00:00:00ZZ",
             "2026-01-01T00:00:00Z+01:00",
             "2026-1-01T00:00:00Z",
             "26-01-01T00:00:00Z",
             "+2026-01-01T00:00:00Z",
             "-026-01-01T00:00:00Z",
             "12026-01-01T00:00:00Z",
             "20260101T000000Z",
             "2026-13-01T00:00:00Z",
             "2026-00-01T00:00:00Z",
             "2026-01-00T00:00:00Z",
             "2026-01-32T00:00:00Z",
             "2026-04-31T00:00:00Z",
             "2026-01-01T24:00:00Z",
             "2026-01-01T00:60:00Z",
             "2026-01-01T00:00:60Z",
             "2026-01-01T00:00:00+24:00",
             "2026-01-01T00:00:00+00:60",
             "2026-01-01T00:00:00.5.5Z",
             "2026-01-01T-1:00:00Z",
             "2026-01-01T00:00:0 Z",
             "2026-W01-1T00:00:00Z",
             "٢٠٢٦-01-01T00:00:00Z",
             "yesterday",
         })
        EXPECT_EQ(parseServerDate(text), std::nullopt) << text;
}

TEST(ServerDateTest, everyPrefixOfADateHasNoValue) {
    const std::string whole = "2026-01-01T07:08:09.123+01:00";
    ASSERT_TRUE(parseServerDate(whole));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(parseServerDate(whole.substr(0, length)), std::nullopt) << length;
}

TEST(ServerDateTest, writingCutsToWholeSecondsOfUniversalTime) {
    EXPECT_EQ(formatServerDate(newYear), "2026-01-01T00:00:00Z");
    EXPECT_EQ(formatServerDate(newYear + 7h + 8min + 9s + 999ms), "2026-01-01T07:08:09Z");
    EXPECT_EQ(formatServerDate(Moment(-1us)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(formatServerDate(std::chrono::sys_days(std::chrono::year(7) / 2 / 3)), "0007-02-03T00:00:00Z");
}

TEST(ServerDateTest, whatIsWrittenIsReadAgain) {
    EXPECT_TRUE(rc::check("written and read again", [] {
        // From the year 0 to the year 9999.
        const auto seconds = *rc::gen::inRange<std::int64_t>(-62'167'219'200, 253'402'300'800);
        const Moment moment{std::chrono::seconds(seconds)};
        RC_ASSERT(parseServerDate(formatServerDate(moment)) == moment);
    }));
}

TEST(ServerDateTest, noDigitMayStandForAMarkAndNoMarkForADigit) {
    EXPECT_TRUE(rc::check("one character changed to another kind", [] {
        const std::string whole = "2026-01-01T07:08:09.123+01:00";
        const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
        const auto position = *rc::gen::inRange<std::size_t>(0, whole.size());
        const char character =
            *rc::gen::suchThat<char>([&](char candidate) { return isDigit(candidate) != isDigit(whole[position]); });
        std::string text = whole;
        text[position] = character;
        RC_ASSERT(parseServerDate(text) == std::nullopt);
    }));
}

}  // namespace
}  // namespace zelkovanta::records
