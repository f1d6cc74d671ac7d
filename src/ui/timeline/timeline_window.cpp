#include "ui/timeline/timeline_window.h"

#include <algorithm>

#include "platform/event_log.h"
#include "platform/wide_text.h"
#include "text/placeholders.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

constexpr int kListId = 100;
// The list of runs is made once the picture is on screen: a combo box is the dearest part of the
// window to make, and the picture is what the user opened the window for.
constexpr UINT kMakeList = WM_APP + 1;
// The band above the picture that holds the list, in pixels at 96 dots per inch.
constexpr int kListBand = 24;
// The window's first size and the list's width, in pixels at 96 dots per inch.
constexpr int kFirstWidth = 820, kFirstHeight = 480, kListWidth = 320;
constexpr COLORREF kMainDelayShade = RGB(224, 224, 232);
constexpr COLORREF kAxis = RGB(96, 96, 96);

int Scaled(int pixels, UINT dpi) {
    return MulDiv(pixels, static_cast<int>(dpi), 96);
}

RECT Win32Rect(const TimelineRect& r) {
    return {r.Left, r.Top, r.Right, r.Bottom};
}

// The DC's own brush: no brush is made and deleted for each of the many bars.
void Fill(HDC dc, const TimelineRect& r, COLORREF colour) {
    SetDCBrushColor(dc, colour);
    RECT rect = Win32Rect(r);
    FillRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

// One line, cut off at the box's edges, upright in its middle or at its bottom.
void Text(HDC dc, const std::string& text, const TimelineRect& box, int lineHeight,
          bool bottom = false) {
    RECT clip = Win32Rect(box);
    const int y = bottom ? box.Bottom - lineHeight : (box.Top + box.Bottom - lineHeight) / 2;
    ExtTextOutA(dc, box.Left, y, ETO_CLIPPED, &clip, text.c_str(), static_cast<UINT>(text.size()),
                nullptr);
}

} // namespace

TimelineMetrics TimelineMetricsFor(UINT dpi) {
    const TimelineMetrics base;
    return {Scaled(base.RowHeight, dpi),  Scaled(base.MinRowHeight, dpi),
            Scaled(base.LabelWidth, dpi), Scaled(base.FiguresWidth, dpi),
            Scaled(base.Margin, dpi),     Scaled(base.AxisHeight, dpi),
            Scaled(base.TickLength, dpi), Scaled(base.MinTickSpacing, dpi)};
}

void PaintTimeline(HDC dc, int width, int height, const TimelineLayout& layout,
                   const std::vector<std::string>& texts, const std::string& message) {
    RECT all{0, 0, width, height};
    FillRect(dc, &all, GetSysColorBrush(COLOR_WINDOW));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
    if (!layout.Measured) {
        RECT r{0, 0, width, height};
        DrawTextA(dc, message.c_str(), static_cast<int>(message.size()), &r,
                  DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
        return;
    }
    TEXTMETRICA font{};
    GetTextMetricsA(dc, &font);
    const int line = font.tmHeight;
    if (layout.MainDelay.Right > layout.MainDelay.Left) {
        Fill(dc, layout.MainDelay, kMainDelayShade);
        const TimelineRect& r = layout.MainDelay;
        Text(dc, TextTables::Entry(texts, kTimelineMainDelay),
             {r.Left + 2, r.Top, r.Right, r.Bottom}, line, true);
    }
    Fill(dc, {layout.Plot.Left, layout.AxisY, layout.Plot.Right + 1, layout.AxisY + 1}, kAxis);
    const int tickLength = layout.AxisLabelTop - layout.AxisY - 1;
    SetTextAlign(dc, TA_CENTER | TA_TOP);
    for (const TimelineTick& tick : layout.Ticks) {
        Fill(dc, {tick.X, layout.AxisY, tick.X + 1, layout.AxisY + tickLength}, kAxis);
        TextOutA(dc, tick.X, layout.AxisLabelTop, tick.Label.c_str(),
                 static_cast<int>(tick.Label.size()));
    }
    SetTextAlign(dc, TA_LEFT | TA_TOP);
    for (const TimelineRow& row : layout.Rows) {
        Text(dc, row.Label, row.LabelBox, line);
        Fill(dc, row.Bar, RatingColour(row.Rating));
        Text(dc, row.Figures, row.FiguresBox, line);
    }
}

TimelineWindow::TimelineWindow(std::string historyFile, std::vector<std::string> texts,
                               std::string decimal, const EventLog* log)
    : Window(log, "Last Log-on Error: "), file_(std::move(historyFile)), texts_(std::move(texts)),
      decimal_(std::move(decimal)), log_(log) {}

void TimelineWindow::ClassStyle(WNDCLASSEXA& wc) {
    wc.hIcon = LoadIconA(wc.hInstance, "clock");
    wc.hbrBackground = nullptr; // the picture paints every pixel
}

bool TimelineWindow::ShowModeless(HINSTANCE instance, HWND owner) {
    ReadHistory();
    const UINT dpi = owner ? GetDpiForWindow(owner) : 96;
    const std::string title = TextTables::Entry(texts_, kTimelineTitle);
    if (!Create(instance, 0, title.c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                CW_USEDEFAULT, Scaled(kFirstWidth, dpi), Scaled(kFirstHeight, dpi), owner))
        return false;
    ShowWindow(Hwnd(), SW_SHOWNORMAL);
    UpdateWindow(Hwnd());
    return true;
}

void TimelineWindow::ReadHistory() {
    runs_.clear();
    broken_.clear();
    if (const std::optional<std::string> bytes = ReadTextFile(file_)) {
        HistoryFileContent content = ParseHistoryFile(*bytes);
        runs_.assign(content.Runs.rbegin(), content.Runs.rend());
        if (content.SkippedLines) {
            broken_ = FillIn(TextTables::Entry(texts_, kTimelineBrokenFile),
                             {std::to_string(content.SkippedLines), file_});
            if (log_)
                log_->WriteLog("History file " + file_ + ": " +
                                   std::to_string(content.SkippedLines) +
                                   " broken lines passed over",
                               kLogWarning);
        }
    }
}

int TimelineWindow::PictureTop() const {
    const UINT dpi = GetDpiForWindow(Hwnd());
    return 2 * TimelineMetricsFor(dpi).Margin + Scaled(kListBand, dpi);
}

void TimelineWindow::ChooseRun(int index) {
    shown_ = index;
    Relayout();
}

void TimelineWindow::Relayout() {
    RECT client{};
    GetClientRect(Hwnd(), &client);
    const UINT dpi = GetDpiForWindow(Hwnd());
    const TimelineMetrics metrics = TimelineMetricsFor(dpi);
    if (list_)
        MoveWindow(list_, metrics.Margin, metrics.Margin, Scaled(kListWidth, dpi), Scaled(200, dpi),
                   TRUE);
    const int top = PictureTop();
    layout_ = TimelineLayout();
    message_.clear();
    if (shown_ >= 0 && shown_ < static_cast<int>(runs_.size()))
        layout_ =
            LayoutTimeline(runs_[static_cast<size_t>(shown_)], client.right, client.bottom - top,
                           metrics, TextTables::Entry(texts_, kTimelineFigures), decimal_);
    if (!layout_.Measured)
        message_ = TextTables::Entry(texts_,
                                     runs_.empty() ? kTimelineNoHistory : kTimelineNothingMeasured);
    InvalidateRect(Hwnd(), nullptr, FALSE);
}

LRESULT TimelineWindow::HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_CREATE: {
        const UINT dpi = GetDpiForWindow(hwnd);
        NONCLIENTMETRICSA metrics{sizeof metrics};
        if (SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi))
            font_.reset(CreateFontIndirectA(&metrics.lfMessageFont));
        shown_ = runs_.empty() ? -1 : 0;
        PostMessageA(hwnd, kMakeList, 0, 0);
        return 0;
    }
    case kMakeList: {
        list_ = CreateWindowExA(
            0, "COMBOBOX", "", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST,
            0, 0, 0, 0, hwnd, reinterpret_cast<HMENU>(kListId),
            reinterpret_cast<HINSTANCE>(GetWindowLongPtrA(hwnd, GWLP_HINSTANCE)), nullptr);
        if (font_)
            SendMessageA(list_, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        for (const LogonRun& run : runs_) {
            const std::string entry = FillIn(TextTables::Entry(texts_, kTimelineRunEntry),
                                             {run.Started, std::to_string(run.Programs.size())});
            SendMessageA(list_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
        }
        EnableWindow(list_, !runs_.empty());
        SendMessageA(list_, CB_SETCURSEL, static_cast<WPARAM>(shown_), 0);
        Relayout();
        return 0;
    }
    case WM_SIZE:
        Relayout();
        return 0;
    case WM_DPICHANGED: {
        // The base took the suggested size; the font and the metrics follow the new density.
        NONCLIENTMETRICSA metrics{sizeof metrics};
        if (SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                       HIWORD(wp))) {
            UniqueGdiObject font(CreateFontIndirectA(&metrics.lfMessageFont));
            SendMessageA(list_, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
            font_ = std::move(font);
        }
        Relayout();
        return 0;
    }
    case WM_COMMAND:
        if (LOWORD(wp) == kListId && HIWORD(wp) == CBN_SELCHANGE)
            ChooseRun(static_cast<int>(SendMessageA(list_, CB_GETCURSEL, 0, 0)));
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT: {
        PaintDc paint(hwnd);
        RECT client{};
        GetClientRect(hwnd, &client);
        const int top = PictureTop();
        // The band of the list, then the picture drawn into a bitmap and copied at once: no
        // flicker while the window is sized.
        RECT band{0, 0, client.right, top};
        FillRect(paint.get(), &band, GetSysColorBrush(COLOR_BTNFACE));
        if (!broken_.empty()) {
            const ScopedSelection font(paint.get(), font_.get());
            SetBkMode(paint.get(), TRANSPARENT);
            RECT note{Scaled(kListWidth + 16, GetDpiForWindow(hwnd)), 0, client.right, top};
            DrawTextA(paint.get(), broken_.c_str(), static_cast<int>(broken_.size()), &note,
                      DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
        }
        const int width = client.right, height = std::max(0L, client.bottom - top);
        if (width <= 0 || height <= 0)
            return 0;
        const UniqueDc memory(CreateCompatibleDC(paint.get()));
        const UniqueGdiObject bitmap(CreateCompatibleBitmap(paint.get(), width, height));
        if (!memory || !bitmap)
            return 0;
        const ScopedSelection picture(memory.get(), bitmap.get());
        const ScopedSelection font(memory.get(),
                                   font_ ? font_.get() : GetStockObject(DEFAULT_GUI_FONT));
        PaintTimeline(memory.get(), width, height, layout_, texts_, message_);
        BitBlt(paint.get(), 0, top, width, height, memory.get(), 0, 0, SRCCOPY);
        return 0;
    }
    case WM_CLOSE:
        DestroyWindow(hwnd);
        return 0;
    default:
        return DefWindowProcA(hwnd, msg, wp, lp);
    }
}

} // namespace tolvane
