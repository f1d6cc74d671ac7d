// The Last Log-on window: the picture of a log-on run from the history file, the newest first,
// earlier runs chosen from a list above it. It paints only what the timeline model lays out.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "config/logon_history.h"
#include "platform/handles.h"
#include "ui/timeline/timeline_model.h"
#include "ui/window.h"

namespace tolvane {

class EventLog;

// The metrics of the picture at the screen's density.
TimelineMetrics TimelineMetricsFor(UINT dpi);

// Paints the layout into the DC's area of this size, or the message where there is no picture;
// in the font selected into the DC. The window paints with it, into a bitmap first.
void PaintTimeline(HDC dc, int width, int height, const TimelineLayout& layout,
                   const std::vector<std::string>& texts, const std::string& message);

class TimelineWindow : public Window<TimelineWindow> {
public:
    static constexpr const char* kClassName = "TolvaneTimeline";

    // texts: the window's language texts (BuiltInTimelineTexts and its file); decimal: the
    // locale's separator.
    TimelineWindow(std::string historyFile, std::vector<std::string> texts, std::string decimal,
                   const EventLog* log);
    // Reads the history and shows the window, owned by `owner`; false when it cannot be made.
    bool ShowModeless(HINSTANCE instance, HWND owner);

    HWND RunList() const { return list_; }
    const TimelineLayout& Layout() const { return layout_; }
    // The text shown where there is no picture; "" while there is one.
    const std::string& Message() const { return message_; }

    static void ClassStyle(WNDCLASSEXA& wc);
    LRESULT HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

private:
    void ReadHistory();
    void ChooseRun(int index);
    void Relayout();
    // Where the picture begins: below the list of runs.
    int PictureTop() const;

    std::string file_;
    std::vector<std::string> texts_;
    std::string decimal_;
    const EventLog* log_;
    std::vector<LogonRun> runs_; // newest first
    int shown_ = -1;
    std::string broken_; // said below the list when the file holds broken lines
    TimelineLayout layout_;
    std::string message_;
    HWND list_ = nullptr; // a child: destroyed with the window
    UniqueGdiObject font_;
};

} // namespace tolvane
