// When the machine counts as idle, fed one half-second window at a time.
#include <gtest/gtest.h>

#include "startup/idle_detector.h"

namespace tolvane {
namespace {

TEST(IdleDetector, TenQuietWindowsInARowWithProcessorsAndDisksEachBelowAFifth) {
    IdleDetector idle;
    const LoadSample quiet{0.19, 0.19};
    // A busy window, of either kind, starts the count again.
    for (const LoadSample busy : {LoadSample{0, 0.20}, LoadSample{0.20, 0}}) {
        for (int i = 0; i < 9; ++i)
            EXPECT_FALSE(idle.Add(quiet)) << i;
        EXPECT_FALSE(idle.Add(busy));
    }
    for (int i = 0; i < 9; ++i)
        EXPECT_FALSE(idle.Add(quiet)) << i;
    EXPECT_TRUE(idle.Add(quiet));
    EXPECT_TRUE(idle.Add(quiet)); // stays idle while quiet
}

} // namespace
} // namespace tolvane
