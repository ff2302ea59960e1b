#include "records/signal.h"

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

Signal withStatus(std::string_view status) {
    Signal signal;
    signal.status = status;
    return signal;
}

TEST(SignalTest, waitingAndAcknowledgedAreActive) {
    EXPECT_TRUE(isActive(withStatus("waiting")));
    EXPECT_TRUE(isActive(withStatus("acknowledged")));
}

TEST(SignalTest, everyOtherWordIsInactive) {
    for (const char* status : {"done", "canceled", "expired", "cancelled", "Waiting", "", "snoozed"})
        EXPECT_FALSE(isActive(withStatus(status))) << status;
}

TEST(SignalTest, anEmptyValueIsAnotherSignalThanAnAbsentOne) {
    Signal one;
    Signal other;
    EXPECT_EQ(one, other);
    other.clearedBy = "";
    EXPECT_NE(one, other);
    other = one;
    other.providerIds.emplace();
    EXPECT_NE(one, other);
}

}  // namespace
}  // namespace zelkovanta::records
