// What the status-bar progress bar shows, free of the platform: its values, its scale, and
// which colour each device column of the drawing area gets. The window only paints this.
#pragma once

#include <cstdint>
#include <vector>

namespace tolvane {

// A colour as the platform keeps it: 0x00BBGGRR.
using Colour = uint32_t;
constexpr Colour RgbColour(uint8_t red, uint8_t green, uint8_t blue) {
    return static_cast<Colour>(red) | static_cast<Colour>(green) << 8 |
           static_cast<Colour>(blue) << 16;
}

// One vertical line of the gradient: where on the scale it stands and how blue it is.
struct GradientColumn {
    float x = 0;
    uint8_t blue = 0;
};

// Device columns [left, right) of the drawing area in one colour.
struct ColourSpan {
    int left = 0;
    int right = 0;
    Colour colour = 0;
    bool operator==(const ColourSpan&) const = default;
};

// The scale runs from x = Min at the left edge over a width of Max + Min x units (1 when that
// sum is 0), so with Min 0, as the program uses it, x runs from 0 to Max. A negative width
// puts the whole scale left of the drawing area: nothing shows.
class ProgressBarModel {
public:
    // Kept as its absolute value: -30 shows as 30. Not a number counts as 0, the empty bar.
    void SetValue(float value);
    float Value() const { return value_; }

    void SetMin(int32_t min) { min_ = min; }
    int32_t Min() const { return min_; }
    void SetMax(float max) { max_ = max; }
    float Max() const { return max_; }

    // A share of the bar, kept as a fraction: a number of 1 or more is a percentage and is
    // divided by 100 (so 1 means one percent, not all of it). Setting it moves Value to that
    // share of the scale, so Percent 50 and Percent 0.5 both fill half the bar; setting Value
    // afterwards leaves the stored share alone.
    void SetPercent(float percent);
    float Percent() const { return percent_; }

    void SetGradient(bool gradient) { gradient_ = gradient; }
    bool Gradient() const { return gradient_; }

    float ScaleLeft() const { return static_cast<float>(min_); }
    float ScaleWidth() const;

    // The gradient's lines, left to right: x walks from Min towards Value in steps of 0.05,
    // rounded to two decimals at each step, and the blue level goes up by one at every whole
    // x and at every odd number and a half (1.5, 3.5, ...), so the colour darkens towards
    // black at the left and reaches blue 151 at x = 100; above 255 it stays 255. The walk
    // stops at the right end of the scale, where the drawing area ends, and where single
    // precision can no longer take a step.
    std::vector<GradientColumn> GradientColumns() const;

    // How many device columns, from the left edge, the filled part covers in a drawing area
    // this wide; 0 when Value is 0.
    int FilledWidth(int areaWidth) const;

    // The filled part as runs of one colour, left to right, covering FilledWidth columns: one
    // run in the solid colour, or the gradient, where each device column takes the colour of
    // the last line that falls into it (or, when the bar is so wide that no line does, of the
    // column before it). Everything right of the runs is background.
    std::vector<ColourSpan> FilledSpans(int areaWidth, Colour solidColour) const;

private:
    float value_ = 0;
    int32_t min_ = 0;
    float max_ = 100;
    float percent_ = 0;
    bool gradient_ = false;
};

} // namespace tolvane
