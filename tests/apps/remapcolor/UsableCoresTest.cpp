#include "remapcolor/UsableCores.h"

#include <gtest/gtest.h>
#include <sched.h>

namespace {

TEST(UsableCores, OnlyThoseThatTheProcessMayRunOnCount)
{
    cpu_set_t before;
    CPU_ZERO(&before);
    ASSERT_EQ(sched_getaffinity(0, sizeof(before), &before), 0);
    EXPECT_GE(countUsableCores(), 1);
    EXPECT_LE(countUsableCores(), CPU_COUNT(&before));

    cpu_set_t one;
    CPU_ZERO(&one);
    for (int core = 0; core < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++core) {
        if (CPU_ISSET(core, &before)) {
            CPU_SET(core, &one);
        }
    }
    ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
    EXPECT_EQ(countUsableCores(), 1);
    sched_setaffinity(0, sizeof(before), &before);
}

} // namespace
