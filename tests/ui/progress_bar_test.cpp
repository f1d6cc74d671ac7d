#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <vector>

#include "platform/handles.h"
#include "ui/progress_bar.h"

namespace tolvane {
namespace {

// A top-level window with a real status bar of two panels, as the main window has.
class StatusBarFrame {
public:
    StatusBarFrame() {
        INITCOMMONCONTROLSEX icc{sizeof icc, ICC_BAR_CLASSES};
        InitCommonControlsEx(&icc);
        frame_.reset(CreateWindowExA(0, "STATIC", "progress test", WS_OVERLAPPEDWINDOW, 40, 40, 480,
                                     200, nullptr, nullptr, nullptr, nullptr));
        status_ = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0,
                                  frame_.get(), nullptr, nullptr, nullptr);
        SetPanels(240);
        ShowWindow(frame_.get(), SW_SHOWNOACTIVATE);
        UpdateWindow(frame_.get());
    }
    void SetPanels(int firstRight) {
        int rights[2] = {firstRight, -1};
        SendMessageA(status_, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(rights));
    }
    RECT Panel(int zeroBased) const {
        RECT r{};
        SendMessageA(status_, SB_GETRECT, zeroBased, reinterpret_cast<LPARAM>(&r));
        return r;
    }
    HWND Frame() const { return frame_.get(); }
    HWND Status() const { return status_; }
    void Close() { frame_.reset(); }

private:
    UniqueWindow frame_;
    HWND status_ = nullptr; // goes with the frame
};

// The control's client area, pixel by pixel in rows, as COLORREF values.
struct Pixels {
    int width = 0, height = 0;
    std::vector<Colour> colours;
    Colour At(int x, int y) const { return colours[static_cast<size_t>(y * width + x)]; }
    bool operator==(const Pixels&) const = default;
};

// Off screen through WM_PRINTCLIENT, or what the screen shows now, read from the window's DC.
enum class Source { Print, Screen };

Pixels Capture(HWND window, Source source) {
    Pixels p;
    RECT client{};
    GetClientRect(window, &client);
    p.width = client.right;
    p.height = client.bottom;
    WindowDc screen(window);
    UniqueDc memory(CreateCompatibleDC(screen.get()));
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), p.width, -p.height, 1, 32, BI_RGB};
    void* bits = nullptr;
    UniqueGdiObject dib(CreateDIBSection(memory.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dib || p.width <= 0 || p.height <= 0) {
        ADD_FAILURE() << "no bitmap to capture into";
        return p;
    }
    {
        ScopedSelection selected(memory.get(), dib.get());
        if (source == Source::Print)
            SendMessageA(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory.get()),
                         PRF_CLIENT);
        else
            BitBlt(memory.get(), 0, 0, p.width, p.height, screen.get(), 0, 0, SRCCOPY);
        GdiFlush();
    }
    const auto* dibPixels = static_cast<const uint32_t*>(bits);
    for (int i = 0; i < p.width * p.height; ++i) {
        const uint32_t v = dibPixels[i]; // 0x00RRGGBB
        p.colours.push_back(RgbColour(v >> 16 & 0xff, v >> 8 & 0xff, v & 0xff));
    }
    return p;
}

// How many columns from the left, in every row alike, are not the background.
int FilledColumns(const Pixels& p) {
    int filled = 0;
    while (filled < p.width && p.At(filled, 0) != AdvProgressBar::BackgroundColour())
        ++filled;
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            EXPECT_EQ(p.At(x, y) != AdvProgressBar::BackgroundColour(), x < filled)
                << "at " << x << "," << y;
    return filled;
}

// Whether the window lies exactly on r, in its parent's client coordinates.
bool LiesOn(HWND window, RECT r) {
    RECT w{};
    GetWindowRect(window, &w);
    MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&w), 2);
    return EqualRect(&w, &r);
}

TEST(AdvProgressBar, CoversTheFirstStatusBarPanelAndFollowsIt) {
    StatusBarFrame f;
    AdvProgressBar bar(f.Frame());
    // The main window's order of set-up.
    bar.SetMin(0);
    bar.SetMax(100);
    bar.SetValue(0);
    bar.SetGradient(false);
    bar.SetMyParent(f.Status());
    bar.SetStatusBarPanelIndex(1);
    EXPECT_EQ(GetParent(bar.Hwnd()), f.Status());
    EXPECT_TRUE(LiesOn(bar.Hwnd(), f.Panel(0)));
    EXPECT_EQ(GetWindow(f.Status(), GW_CHILD), bar.Hwnd()); // in front

    f.SetPanels(150);
    EXPECT_FALSE(LiesOn(bar.Hwnd(), f.Panel(0)));
    bar.Reposition();
    EXPECT_TRUE(LiesOn(bar.Hwnd(), f.Panel(0)));
    bar.SetStatusBarPanelIndex(2);
    EXPECT_TRUE(LiesOn(bar.Hwnd(), f.Panel(1)));

    // In a window that is no status bar the control keeps its place.
    bar.SetMyParent(f.Frame());
    EXPECT_EQ(GetParent(bar.Hwnd()), f.Frame());
    EXPECT_TRUE(LiesOn(bar.Hwnd(), f.Panel(1)));

    // The window dies with its container; the object then holds none.
    f.Close();
    EXPECT_EQ(bar.Hwnd(), nullptr);
}

TEST(AdvProgressBar, DrawsTheValueAtOnce) {
    StatusBarFrame f;
    AdvProgressBar bar(f.Frame());
    bar.SetMyParent(f.Status());
    bar.SetStatusBarPanelIndex(1);
    bar.SetValue(0);
    UpdateWindow(f.Frame());
    const Pixels empty = Capture(bar.Hwnd(), Source::Screen);
    ASSERT_GT(empty.width, 100);
    ASSERT_GT(empty.height, 4);
    EXPECT_EQ(FilledColumns(empty), 0);

    // No message is handled between setting and looking: the screen already shows it.
    bar.SetValue(50);
    const Pixels half = Capture(bar.Hwnd(), Source::Screen);
    EXPECT_NEAR(FilledColumns(half), half.width / 2, 1);
    for (int y = 0; y < half.height; ++y)
        EXPECT_EQ(half.At(0, y), AdvProgressBar::DrawingColour());
    EXPECT_EQ(Capture(bar.Hwnd(), Source::Print), half);

    bar.SetValue(-30);
    const Pixels negative = Capture(bar.Hwnd(), Source::Screen);
    bar.SetValue(30);
    EXPECT_EQ(Capture(bar.Hwnd(), Source::Screen), negative);
    EXPECT_NEAR(FilledColumns(negative), negative.width * 3 / 10, 1);

    bar.SetValue(0);
    EXPECT_EQ(Capture(bar.Hwnd(), Source::Screen), empty);
}

TEST(AdvProgressBar, GradientRunsFromBlackToBlue) {
    StatusBarFrame f;
    AdvProgressBar bar(f.Frame());
    bar.SetMyParent(f.Status());
    bar.SetStatusBarPanelIndex(1);
    bar.SetGradient(true);
    bar.SetValue(100);
    const Pixels p = Capture(bar.Hwnd(), Source::Screen);
    ASSERT_EQ(FilledColumns(p), p.width);
    EXPECT_LE(GetBValue(p.At(0, 0)), 4);
    EXPECT_GE(GetBValue(p.At(p.width - 1, 0)), 140);
    ProgressBarModel model;
    model.SetGradient(true);
    model.SetValue(100);
    const std::vector<ColourSpan> spans = model.FilledSpans(p.width, 0);
    size_t span = 0;
    for (int x = 0; x < p.width; ++x) {
        while (spans[span].right <= x)
            ++span;
        const Colour c = p.At(x, p.height / 2);
        EXPECT_EQ(c, spans[span].colour) << x;
        EXPECT_EQ(c & 0xffff, 0u) << x; // no red, no green
        if (x > 0) {
            EXPECT_GE(GetBValue(c), GetBValue(p.At(x - 1, p.height / 2))) << x;
        }
    }
}

} // namespace
} // namespace tolvane
