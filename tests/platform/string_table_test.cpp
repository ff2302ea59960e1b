#include "platform/string_table.h"

#include <gtest/gtest.h>

namespace zelkovanta::platform {
namespace {

TEST(FilledTest, eachFormatWordTakesTheNextValueOfItsKind) {
    EXPECT_EQ(filled("Server error (%lld): %@", {502, "http_502"}), "Server error (502): http_502");
    EXPECT_EQ(filled("%@ and %@, %lld and %lld", {"a", 1, "b", 2}), "a and b, 1 and 2");
}

TEST(FilledTest, aTranslationMayNameTheTextBeforeTheNumber) {
    EXPECT_EQ(filled("%@ kam mit %lld", {502, "http_502"}), "http_502 kam mit 502");
}

TEST(FilledTest, whatIsPutInIsNoFormatWord) {
    EXPECT_EQ(filled("%@ %@", {"%lld %@", "b"}), "%lld %@ b");
}

TEST(FilledTest, aFormatWordWithoutAValueStays) {
    EXPECT_EQ(filled("%lld of %lld for %@", {3}), "3 of %lld for %@");
    EXPECT_EQ(filled("%@", {}), "%@");
}

TEST(FilledTest, otherPerCentSignsAndValuesToSpareChangeNothing) {
    EXPECT_EQ(filled("100 % of %lld%", {7, 8, "unused"}), "100 % of 7%");
    EXPECT_EQ(filled("%", {}), "%");
    EXPECT_EQ(filled("", {1}), "");
}

TEST(FilledTest, numbersOfAnySizeAndSignAreWrittenInFull) {
    EXPECT_EQ(filled("%lld|%lld", {INT64_MIN, INT64_MAX}), "-9223372036854775808|9223372036854775807");
}

}  // namespace
}  // namespace zelkovanta::platform
