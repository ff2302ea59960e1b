#include "store/login_scope.h"

#include <gtest/gtest.h>

namespace zelkovanta::store {
namespace {

bool holds(const LoginScope& stored, const LoginScope& current) {
    return stored.holdsIn(current);
}

TEST(LoginScopeTest, holdsWhileTheBootTimeMovesByAtMostFiveSeconds) {
    const LoginScope stored{.bootTime = 1000, .auditSessionId = "7"};
    for (const double current : {995.0, 995.1, 1000.0, 1004.9, 1005.0}) {
        EXPECT_TRUE(holds(stored, {.bootTime = current, .auditSessionId = "7"})) << current;
    }
    for (const double current : {0.0, 994.9, 1005.1, 2000.0}) {
        EXPECT_FALSE(holds(stored, {.bootTime = current, .auditSessionId = "7"})) << current;
    }
}

TEST(LoginScopeTest, aBootTimeThatWasNeverStoredNeverHolds) {
    EXPECT_FALSE(holds({.bootTime = 0, .auditSessionId = "7"}, {.bootTime = 0, .auditSessionId = "7"}));
    EXPECT_FALSE(holds({.bootTime = -1, .auditSessionId = "7"}, {.bootTime = -1, .auditSessionId = "7"}));
}

TEST(LoginScopeTest, anotherOrAnEmptySessionNeverHolds) {
    EXPECT_FALSE(holds({.bootTime = 1000, .auditSessionId = "7"}, {.bootTime = 1000, .auditSessionId = "8"}));
    EXPECT_FALSE(holds({.bootTime = 1000, .auditSessionId = ""}, {.bootTime = 1000, .auditSessionId = "8"}));
    EXPECT_FALSE(holds({.bootTime = 1000, .auditSessionId = "7"}, {.bootTime = 1000, .auditSessionId = ""}));
    EXPECT_FALSE(holds({.bootTime = 1000, .auditSessionId = ""}, {.bootTime = 1000, .auditSessionId = ""}));
}

}  // namespace
}  // namespace zelkovanta::store
