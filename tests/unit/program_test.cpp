// The frame loop's sleep: the default rate where no limit is set, the limit's period otherwise,
// and limits far below a frame a second bounded instead of overflowing.
#include <gtest/gtest.h>

#include <limits>

#include "krProgram.h"

TEST(Program, WithoutALimitTheLoopSleepsToTheDefaultRate) {
    EXPECT_EQ(krProgram::frameSleepMs(0, 0), 2);
    EXPECT_EQ(krProgram::frameSleepMs(-1, 0), 2);
    EXPECT_EQ(krProgram::frameSleepMs(0, 0.0015), 0) << "truncated toward zero";
    EXPECT_EQ(krProgram::frameSleepMs(0, 0.01), 0) << "a slow frame does not sleep";
}

TEST(Program, ALimitSleepsOutTheRestOfItsPeriod) {
    EXPECT_EQ(krProgram::frameSleepMs(0.025f, 0.005), 20);
    EXPECT_EQ(krProgram::frameSleepMs(0.025f, 0.03), 0);
}

TEST(Program, TinyLimitsSleepAtMostTheLongestSleep) {
    // fpsLimit 5e-7 is a period of two million seconds; 1e-45 one of infinity.
    EXPECT_EQ(krProgram::frameSleepMs(1 / 5e-7f, 0), krProgram::maxSleepMs);
    EXPECT_EQ(krProgram::frameSleepMs(std::numeric_limits<float>::infinity(), 0), krProgram::maxSleepMs);
    EXPECT_EQ(krProgram::frameSleepMs(std::numeric_limits<float>::max(), 1e30), krProgram::maxSleepMs);
}
