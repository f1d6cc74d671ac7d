#include "ui/progress_bar_model.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tolvane {

namespace {

float RoundToHundredths(float x) {
    return static_cast<float>(std::nearbyint(static_cast<double>(x) * 100.0) / 100.0);
}

// Whole numbers, and the x for which x - 0.5 is the nearest whole number (halves to the even
// one) minus 1: exactly the odd numbers and a half.
bool BlueStepsUp(float x) {
    const double value = x;
    if (value == std::floor(value))
        return true;
    return value - 0.5 == std::nearbyint(value) - 1.0;
}

// Calls visit(x, blue) for each line of the gradient, left to right.
template <class Visit> void WalkGradient(const ProgressBarModel& bar, Visit&& visit) {
    if (bar.Value() == 0)
        return;
    const float end = std::min(bar.Value(), bar.ScaleLeft() + bar.ScaleWidth());
    float x = bar.ScaleLeft();
    if (!(x <= end))
        return;
    unsigned blue = 0;
    for (;;) {
        x = RoundToHundredths(x);
        if (BlueStepsUp(x))
            ++blue;
        visit(x, static_cast<uint8_t>(std::min(blue, 255u)));
        float next = RoundToHundredths(x + 0.05f);
        if (!(next > x) || !(x + 0.05f <= end))
            return;
        x = next;
    }
}

} // namespace

void ProgressBarModel::SetValue(float value) {
    value_ = std::isnan(value) ? 0.0f : std::fabs(value);
}

void ProgressBarModel::SetPercent(float percent) {
    percent_ = percent >= 1 ? percent / 100 : percent;
    SetValue(ScaleLeft() + percent_ * ScaleWidth());
}

float ProgressBarModel::ScaleWidth() const {
    const float width = max_ + static_cast<float>(min_);
    return width == 0 ? 1.0f : width;
}

std::vector<GradientColumn> ProgressBarModel::GradientColumns() const {
    std::vector<GradientColumn> columns;
    WalkGradient(*this, [&](float x, uint8_t blue) { columns.push_back({x, blue}); });
    return columns;
}

int ProgressBarModel::FilledWidth(int areaWidth) const {
    const float width = ScaleWidth();
    if (value_ == 0 || areaWidth <= 0 || width < 0)
        return 0;
    const double end = std::min<double>(value_, ScaleLeft() + width);
    const double columns = std::round((end - ScaleLeft()) / width * areaWidth);
    return static_cast<int>(std::clamp(columns, 0.0, static_cast<double>(areaWidth)));
}

std::vector<ColourSpan> ProgressBarModel::FilledSpans(int areaWidth, Colour solidColour) const {
    const int filled = FilledWidth(areaWidth);
    if (filled == 0)
        return {};
    if (!gradient_)
        return {{0, filled, solidColour}};

    // Each line lands on the device column its x falls into; a later line overdraws an
    // earlier one there, as drawing them one after another would. A column that no line falls
    // into takes the colour of the column before it.
    std::vector<std::optional<uint8_t>> blueOf(static_cast<size_t>(filled));
    const double pixelsPerUnit = areaWidth / static_cast<double>(ScaleWidth());
    WalkGradient(*this, [&](float x, uint8_t blue) {
        // x and the columns per unit are binary fractions, so a line that stands exactly on
        // a column's left edge can come out a hair short of it: it must not slip into the
        // column before it.
        const double column = std::floor((x - ScaleLeft()) * pixelsPerUnit + 1e-3);
        if (column >= 0 && column < filled)
            blueOf[static_cast<size_t>(column)] = blue;
    });
    std::vector<ColourSpan> spans;
    uint8_t blue = 0;
    for (int column = 0; column < filled; ++column) {
        if (const auto own = blueOf[static_cast<size_t>(column)])
            blue = *own;
        const Colour colour = RgbColour(0, 0, blue);
        if (!spans.empty() && spans.back().colour == colour)
            spans.back().right = column + 1;
        else
            spans.push_back({column, column + 1, colour});
    }
    return spans;
}

} // namespace tolvane
