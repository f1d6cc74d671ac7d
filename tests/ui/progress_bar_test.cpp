// The status-bar progress bar's model: what each column of the bar shows.
#include <gtest/gtest.h>

#include <limits>

#include "ui/progress_bar_model.h"

namespace tolvane {
namespace {

ProgressBarModel Bar(float value, float max = 100, bool gradient = true) {
    ProgressBarModel bar;
    bar.SetMax(max);
    bar.SetGradient(gradient);
    bar.SetValue(value);
    return bar;
}

TEST(ProgressBarModel, GradientWalksInHundredthsAndGetsBluerAtWholesAndOddHalves) {
    const std::vector<GradientColumn> columns = Bar(10).GradientColumns();
    ASSERT_EQ(columns.size(), 201u); // 0, 0.05, ..., 10
    for (size_t i = 0; i < columns.size(); ++i)
        EXPECT_NEAR(columns[i].x, i * 0.05, 1e-5) << i; // rounding keeps the steps from drifting
    // An even number and a half (2.5) does not count.
    const std::pair<size_t, int> blues[] = {{0, 1},  {20, 2}, {30, 3},  {40, 4},
                                            {50, 4}, {70, 6}, {200, 16}};
    for (auto [i, blue] : blues)
        EXPECT_EQ(columns[i].blue, blue) << "at x = " << columns[i].x;

    EXPECT_EQ(Bar(100).GradientColumns().back().blue, 151);
    // Far enough along, the level stays at the colour's top.
    EXPECT_EQ(Bar(200, 400).GradientColumns().back().blue, 255);
    // The walk ends where the scale does, and an empty bar has no lines.
    EXPECT_NEAR(Bar(1e30f).GradientColumns().back().x, 100, 1e-4);
    EXPECT_TRUE(Bar(0).GradientColumns().empty());
}

Colour ColourAt(const std::vector<ColourSpan>& spans, int column) {
    for (const ColourSpan& s : spans)
        if (s.left <= column && column < s.right)
            return s.colour;
    return 0xffffffff; // unpainted
}

TEST(ProgressBarModel, FilledColumnsFollowTheScale) {
    EXPECT_EQ(Bar(50, 100, false).FilledSpans(200, 0x123456),
              (std::vector<ColourSpan>{{0, 100, 0x123456}}));
    EXPECT_EQ(Bar(-30).FilledWidth(200), 60); // a negative value shows as its amount
    EXPECT_EQ(Bar(std::numeric_limits<float>::quiet_NaN()).FilledWidth(200), 0);
    EXPECT_EQ(Bar(150).FilledWidth(200), 200); // never beyond the right edge
    EXPECT_TRUE(Bar(0).FilledSpans(200, 0x123456).empty());
    EXPECT_EQ(Bar(50, -50).FilledWidth(200), 0); // the scale lies left of the area
    ProgressBarModel bar = Bar(60);
    bar.SetMin(10);
    EXPECT_EQ(bar.FilledWidth(220), 100); // from x = 10 over Max + Min = 110 units
    bar.SetMax(-10);
    EXPECT_EQ(bar.FilledWidth(220), 220); // a scale of no width counts as one unit
    ProgressBarModel share = Bar(0);
    share.SetPercent(25); // a share of the scale, as 0.25 is
    EXPECT_EQ(share.FilledWidth(200), 50);

    // Narrow: the last line that falls into a column wins (x 0 to 2.45 share column 0).
    const std::vector<ColourSpan> narrow = Bar(100).FilledSpans(40, 0);
    EXPECT_EQ(ColourAt(narrow, 0), RgbColour(0, 0, 4));
    EXPECT_EQ(narrow.back().right, 40);
    // 0.7 columns per unit: x = 90 maps to 62.9999... in binary, yet its line (blue 136)
    // starts column 63 and leaves column 62 at the blue of x = 89.95; column 63 ends at 91.4.
    const std::vector<ColourSpan> uneven = Bar(100).FilledSpans(70, 0);
    EXPECT_EQ(ColourAt(uneven, 62), RgbColour(0, 0, 135));
    EXPECT_EQ(ColourAt(uneven, 63), RgbColour(0, 0, 137));
    // Wide: columns between lines take the colour before them, so nothing stays unpainted.
    const std::vector<ColourSpan> wide = Bar(100).FilledSpans(8000, 0);
    EXPECT_EQ(wide.front().left, 0);
    EXPECT_EQ(wide.back().right, 8000);
    for (size_t i = 1; i < wide.size(); ++i) {
        EXPECT_EQ(wide[i].left, wide[i - 1].right);
        EXPECT_GT(wide[i].colour, wide[i - 1].colour); // blue only grows
    }
}

} // namespace
} // namespace tolvane
