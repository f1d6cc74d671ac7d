#include "ui/timeline/timeline_model.h"

#include <algorithm>

#include "text/placeholders.h"
#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {} // namespace

std::vector<std::string> BuiltInTimelineTexts() {
    static const char kTexts[] = "Last Log-on\0"
                                 "No log-on has been recorded yet. Tolvane records each log-on "
                                 "at which it starts delayed programs.\0"
                                 "No program was measured in this run.\0"
                                 "CPU %1 s, disk %2 MB\0"
                                 "Main delay\0"
                                 "%1 - %2 programs\0"
                                 "%1 lines of %2 could not be read.\0";
    return UnpackTexts(kTexts, sizeof kTexts);
}

uint32_t RatingColour(ImpactRating rating) {
    switch (rating) {
    case ImpactRating::High:
        return 0x003030D8; // red
    case ImpactRating::Medium:
        return 0x0020A8F0; // amber
    case ImpactRating::Low:
        break;
    }
    return 0x0050B040; // green
}

uint64_t TickStepSeconds(uint64_t spanMs, int plotWidth, int minSpacing) {
    static constexpr uint64_t kSteps[] = {1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1200, 1800};
    const uint64_t span = std::max<uint64_t>(spanMs, 1);
    for (uint64_t step : kSteps)
        if (step * 1000 * static_cast<uint64_t>(std::max(plotWidth, 1)) >=
            static_cast<uint64_t>(std::max(minSpacing, 1)) * span)
            return step;
    return 3600;
}

std::string FiguresText(std::string_view format, uint64_t cpuMs, uint64_t ioBytes,
                        std::string_view decimal) {
    return FillIn(format, {Tenths(cpuMs, 1000, decimal), Tenths(ioBytes, 1024 * 1024, decimal)});
}

TimelineLayout LayoutTimeline(const LogonRun& run, int width, int height, const TimelineMetrics& m,
                              std::string_view figures, std::string_view decimal) {
    TimelineLayout layout;
    if (run.Programs.empty())
        return layout;
    layout.Measured = true;

    // The rows shrink to fit above the axis, down to their least height.
    const int rows = static_cast<int>(run.Programs.size());
    const int room = height - 2 * m.Margin - m.AxisHeight;
    const int rowHeight = std::clamp(room / rows, m.MinRowHeight, m.RowHeight);
    const int plotLeft = m.Margin + m.LabelWidth;
    const int plotRight = std::max(plotLeft + 1, width - m.Margin - m.FiguresWidth);
    const int plotBottom = m.Margin + rows * rowHeight;
    layout.Plot = {plotLeft, m.Margin, plotRight, plotBottom};

    uint64_t span = std::max<uint64_t>(run.MainDelayMs.value_or(0), 1000);
    for (const RunProgram& p : run.Programs)
        span = std::max(span, p.EndMs());
    const int plotWidth = plotRight - plotLeft;
    auto x = [&](uint64_t ms) {
        return plotLeft + static_cast<int>(std::min(ms, span) * plotWidth / span);
    };

    if (run.MainDelayMs && *run.MainDelayMs > 0)
        layout.MainDelay = {plotLeft, m.Margin, x(*run.MainDelayMs), plotBottom};

    const int inset = rowHeight / 5;
    for (int i = 0; i < rows; ++i) {
        const RunProgram& p = run.Programs[static_cast<size_t>(i)];
        const int top = m.Margin + i * rowHeight;
        TimelineRow row;
        row.Label = p.Item.Name;
        row.LabelBox = {m.Margin, top, plotLeft - m.Margin / 2, top + rowHeight};
        const int left = x(p.StartMs);
        // A bar as short as a pixel or two still shows.
        row.Bar = {left, top + inset, std::max(x(p.EndMs()), left + 3), top + rowHeight - inset};
        row.Rating = p.Rating();
        row.Figures = FiguresText(figures, p.CpuMs, p.ReadBytes + p.WriteBytes, decimal);
        row.FiguresBox = {row.Bar.Right + m.Margin / 2, top, width - m.Margin, top + rowHeight};
        layout.Rows.push_back(std::move(row));
    }

    layout.AxisY = plotBottom + 1;
    layout.AxisLabelTop = layout.AxisY + m.TickLength + 1;
    const uint64_t step = TickStepSeconds(span, plotWidth, m.MinTickSpacing);
    for (uint64_t s = 0; s * 1000 <= span; s += step)
        layout.Ticks.push_back({x(s * 1000), std::to_string(s) + " s"});
    return layout;
}

} // namespace tolvane
