#include "platform/uuid.h"

#include "tests/support/counting_random.h"

#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::platform {
namespace {

/// The same part of every interval.
class Constant final : public RandomSource {
public:
    explicit Constant(double part) : part_(part) {}
    [[nodiscard]] double uniform(double lowest, double highest) override { return lowest + (highest - lowest) * part_; }

private:
    double part_;
};

TEST(UUID, hasTheFormOfVersionFour) {
    support::CountingRandom random;
    for (int count = 0; count < 1000; ++count) {
        EXPECT_THAT(makeUUID(random), testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-"
                                                            "[0-9a-f]{12}"));
    }
}

TEST(UUID, theEndsOfTheIntervalsFitIn) {
    Constant lowest{0};
    EXPECT_EQ(makeUUID(lowest), "00000000-0000-4000-8000-000000000000");
    Constant highest{1};
    EXPECT_EQ(makeUUID(highest), "ffffffff-ffff-4fff-bfff-ffffffffffff");
}

TEST(UUID, everyOneIsNew) {
    support::CountingRandom random;
    std::set<std::string> seen;
    for (int count = 0; count < 10'000; ++count) {
        EXPECT_TRUE(seen.insert(makeUUID(random)).second);
    }
}

}  // namespace
}  // namespace zelkovanta::platform
