// The picture of one log-on run, without a window: a row per program with its bar from its start
// until it was ready (or until its watch ended), coloured by its impact rating, its figures
// beside the bar, the main wait shaded behind the rows, and a time axis in whole seconds. The
// window paints exactly this layout; the caller scales the metrics for the screen's density.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/logon_history.h"

namespace tolvane {

struct TimelineMetrics {
    int RowHeight = 22;
    int MinRowHeight = 12; // rows shrink down to this to fit the window, then run past its end
    int LabelWidth = 160;
    int FiguresWidth = 170;
    int Margin = 8;
    int AxisHeight = 24; // the ticks and their labels below the rows
    int TickLength = 4;
    int MinTickSpacing = 60; // the ticks' labels stay readable
};

struct TimelineRect {
    int Left = 0, Top = 0, Right = 0, Bottom = 0;
    bool operator==(const TimelineRect&) const = default;
};

struct TimelineRow {
    std::string Label;
    TimelineRect LabelBox;
    TimelineRect Bar;
    ImpactRating Rating = ImpactRating::Low;
    std::string Figures;
    TimelineRect FiguresBox;
};

struct TimelineTick {
    int X = 0;
    std::string Label; // "10 s"
    bool operator==(const TimelineTick&) const = default;
};

struct TimelineLayout {
    bool Measured = false;  // false: no program of the run was measured; nothing else is set
    TimelineRect MainDelay; // empty when the run has no main wait
    TimelineRect Plot;      // where the bars lie
    int AxisY = 0;          // the axis line
    int AxisLabelTop = 0;   // the top of the ticks' labels
    std::vector<TimelineTick> Ticks;
    std::vector<TimelineRow> Rows;
};

// The window's own texts, by the lines of its language file; the built-in English ones stand
// for whatever the file does not supply.
enum TimelineText : size_t {
    kTimelineTitle = 0,
    kTimelineNoHistory = 1,
    kTimelineNothingMeasured = 2,
    kTimelineFigures = 3, // "CPU %1 s, disk %2 MB"
    kTimelineMainDelay = 4,
    kTimelineRunEntry = 5,   // a run in the list: "%1 - %2 programs"
    kTimelineBrokenFile = 6, // "%1 lines of %2 could not be read."
};
std::vector<std::string> BuiltInTimelineTexts();

// The colour of a rating as 0x00BBGGRR (a COLORREF): green, amber, red.
uint32_t RatingColour(ImpactRating rating);

// Seconds between ticks: the first of 1, 2, 5, 10, 20, 30, 60, 120, 300, 600... whose spacing
// is at least minSpacing pixels where the plot shows spanMs in plotWidth pixels.
uint64_t TickStepSeconds(uint64_t spanMs, int plotWidth, int minSpacing);

// "CPU 1.2 s, disk 3.4 MB" by the language's text ("CPU %1 s, disk %2 MB"), one decimal with
// the locale's separator.
std::string FiguresText(std::string_view format, uint64_t cpuMs, uint64_t ioBytes,
                        std::string_view decimal);

// figures: the language's text for the figures, as above.
TimelineLayout LayoutTimeline(const LogonRun& run, int width, int height,
                              const TimelineMetrics& metrics, std::string_view figures,
                              std::string_view decimal);

} // namespace tolvane
