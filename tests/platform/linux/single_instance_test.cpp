#include "platform/linux/single_instance.h"

#include "tests/platform/linux/started_program.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

/// The same rules hold on a bus and without one: this file is run in both.
struct SingleInstanceTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
};

TEST_F(SingleInstanceTest, aSecondStartAsksTheFirstToComeForwardAndEnds) {
    StartedProgram first;
    EXPECT_EQ(first.line(), "first");
    StartedProgram second("XDG_ACTIVATION_TOKEN", "token-7");
    EXPECT_EQ(second.line(), "asked the first");
    EXPECT_EQ(first.line(), "activated with 'token-7'");
    StartedProgram third("DESKTOP_STARTUP_ID", "startup-8");
    EXPECT_EQ(third.line(), "asked the first");
    EXPECT_EQ(first.line(), "activated with 'startup-8'");
    StartedProgram fourth;
    EXPECT_EQ(fourth.line(), "asked the first");
    EXPECT_EQ(first.line(), "activated with ''");
}

TEST_F(SingleInstanceTest, profilesDoNotStandInEachOthersWay) {
    StartedProgram plain;
    StartedProgram room("ZELKOVANTA_PROFILE", "room-3");
    StartedProgram number("ZELKOVANTA_PROFILE", "3");
    EXPECT_EQ(plain.line(), "first");
    EXPECT_EQ(room.line(), "first");
    EXPECT_EQ(number.line(), "first");
    StartedProgram again("ZELKOVANTA_PROFILE", "room-3");
    EXPECT_EQ(again.line(), "asked the first");
    EXPECT_EQ(room.line(), "activated with ''");
    StartedProgram numberAgain("ZELKOVANTA_PROFILE", "3");
    EXPECT_EQ(numberAgain.line(), "asked the first");
}

TEST_F(SingleInstanceTest, theClaimEndsWithItsProcessHoweverItEnds) {
    StartedProgram first;
    EXPECT_EQ(first.line(), "first");
    first.end();
    StartedProgram second;
    EXPECT_EQ(second.line(), "first");
    second.crash();
    StartedProgram third;
    EXPECT_EQ(third.line(), "first");
}

TEST_F(SingleInstanceTest, ofManyStartsAtOnceExactlyOneIsTheFirst) {
    std::vector<std::unique_ptr<StartedProgram>> programs;
    for (int i = 0; i < 6; ++i) {
        programs.push_back(std::make_unique<StartedProgram>());
    }
    int firsts = 0;
    for (const auto& program : programs) {
        firsts += program->line() == "first" ? 1 : 0;
    }
    EXPECT_EQ(firsts, 1);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
