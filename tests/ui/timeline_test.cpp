// The picture of a log-on run: where each bar, the main wait and the ticks lie for a window of a
// known size, and what the figures say.
#include <gtest/gtest.h>

#include "ui/timeline/timeline_model.h"

namespace tolvane {
namespace {

using R = TimelineRect;

// A plot 400 px wide from x 168: 8 margin, 160 label, 170 figures, 8 margin.
constexpr int kWidth = 746;

TEST(TimelineLayout, BarsRunFromStartToReadyOrTheWatchsEndOverTheShadedMainWait) {
    const LogonRun run{"1",
                       "t",
                       10000,
                       {{{kUserRun, "Tool"}, "tool.exe", 10000, 2000, 250, 100 << 10, 0, 30000},
                        {{kUserStartup, "Big.lnk"}, "Big.lnk", 12000, {}, 1500, 0, 0, 8000}}};
    const TimelineLayout l = LayoutTimeline(run, kWidth, 400, {}, "CPU %1 s, disk %2 MB", ",");
    ASSERT_TRUE(l.Measured);
    EXPECT_EQ(l.Plot, (R{168, 8, 568, 52}));
    EXPECT_EQ(l.MainDelay, (R{168, 8, 368, 52})); // 20 px a second, the span 20 s
    ASSERT_EQ(l.Rows.size(), 2u);
    EXPECT_EQ(l.Rows[0].Label, "Tool");
    EXPECT_EQ(l.Rows[0].Bar, (R{368, 12, 408, 26}));
    EXPECT_EQ(l.Rows[0].Figures, "CPU 0,3 s, disk 0,1 MB");
    EXPECT_EQ(l.Rows[1].Bar, (R{408, 34, 568, 48})); // never ready: to the watch's end
    EXPECT_EQ(l.Rows[1].Rating, ImpactRating::High);
    EXPECT_EQ(l.Rows[1].FiguresBox.Left, 572);
    EXPECT_EQ(l.Ticks,
              (std::vector<TimelineTick>{
                  {168, "0 s"}, {268, "5 s"}, {368, "10 s"}, {468, "15 s"}, {568, "20 s"}}));

    // Fifty programs share a low window at the rows' least height.
    LogonRun many{"2", "t", 0, std::vector<RunProgram>(50, run.Programs[0])};
    EXPECT_EQ(LayoutTimeline(many, kWidth, 500, {}, "", ".").Rows[49].Bar.Top, 8 + 49 * 12 + 2);
    EXPECT_FALSE(LayoutTimeline({"3", "t", 30000, {}}, kWidth, 400, {}, "", ".").Measured);
}

TEST(TimelineLayout, TicksAreWholeSecondsAtAReadableSpacing) {
    const struct {
        uint64_t spanMs;
        int width;
        uint64_t step;
    } cases[] = {{4000, 400, 1},   {20000, 400, 5},    {60000, 400, 10},
                 {90000, 400, 20}, {600000, 400, 120}, {100000000, 400, 3600}};
    for (const auto& c : cases)
        EXPECT_EQ(TickStepSeconds(c.spanMs, c.width, 60), c.step) << c.spanMs;
    EXPECT_EQ(FiguresText("CPU %1 s, disk %2 MB", 1250, 3565158, "."), "CPU 1.3 s, disk 3.4 MB");
}

} // namespace
} // namespace tolvane
