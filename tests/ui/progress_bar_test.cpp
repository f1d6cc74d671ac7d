// The status-bar progress bar: what its model says each column shows (natively too), and
// under Windows the control's real pixels and its place over a status-bar panel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "ui/progress_bar_model.h"

#ifdef _WIN32
#include <windows.h>
#include <commctrl.h>

#include "platform/handles.h"
#include "ui/progress_bar.h"
#endif

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

TEST(ProgressBarModel, ValuesScaleAndShare) {
    ProgressBarModel bar = Bar(-30);
    EXPECT_EQ(bar.Value(), 30);
    bar.SetValue(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(bar.Value(), 0);
    bar.SetMin(10);
    EXPECT_EQ(bar.ScaleLeft(), 10);
    EXPECT_EQ(bar.ScaleWidth(), 110); // Max + Min
    bar.SetMin(-5);
    bar.SetMax(5);
    EXPECT_EQ(bar.ScaleWidth(), 1); // never 0

    // A share of 1 or more is a percentage: 50 and 0.5 both fill half, 1 is one percent.
    for (auto [share, fraction] : {std::pair{50.f, .5f}, {.25f, .25f}, {1.f, .01f}}) {
        bar = Bar(0);
        bar.SetPercent(share);
        EXPECT_FLOAT_EQ(bar.Percent(), fraction) << share;
        EXPECT_FLOAT_EQ(bar.Value(), fraction * 100) << share;
    }
    bar.SetValue(70); // leaves the share alone
    EXPECT_FLOAT_EQ(bar.Percent(), 0.01f);
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
    EXPECT_EQ(Bar(-30).FilledWidth(200), 60);
    EXPECT_EQ(Bar(150).FilledWidth(200), 200); // never beyond the right edge
    EXPECT_TRUE(Bar(0).FilledSpans(200, 0x123456).empty());
    EXPECT_EQ(Bar(50, -50).FilledWidth(200), 0); // the scale lies left of the area

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

#ifdef _WIN32
// The control's client area, row by row, as COLORREF values.
struct Pixels {
    int width = 0, height = 0;
    std::vector<Colour> colours;
    Colour At(int x, int y) const { return colours[static_cast<size_t>(y * width + x)]; }
    bool operator==(const Pixels&) const = default;
};

// What the screen shows now, read from the window's DC, or the control's own drawing of
// itself off screen through WM_PRINTCLIENT.
Pixels Capture(HWND window, bool print = false) {
    Pixels p;
    RECT client{};
    GetClientRect(window, &client);
    p.width = client.right;
    p.height = client.bottom;
    WindowDc screen(window);
    UniqueDc memory(CreateCompatibleDC(screen.get()));
    UniqueGdiObject bitmap(CreateCompatibleBitmap(screen.get(), p.width, p.height));
    ScopedSelection selected(memory.get(), bitmap.get());
    if (print)
        SendMessageA(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory.get()), PRF_CLIENT);
    else
        BitBlt(memory.get(), 0, 0, p.width, p.height, screen.get(), 0, 0, SRCCOPY);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            p.colours.push_back(GetPixel(memory.get(), x, y));
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

// A top-level window with a real status bar of two panels, as the main window has, and the
// control in it.
class ProgressBarTest : public ::testing::Test {
protected:
    ProgressBarTest() {
        INITCOMMONCONTROLSEX icc{sizeof icc, ICC_BAR_CLASSES};
        InitCommonControlsEx(&icc);
        frame.reset(CreateWindowExA(0, "STATIC", "progress test", WS_OVERLAPPEDWINDOW, 40, 40, 480,
                                    200, nullptr, nullptr, nullptr, nullptr));
        status = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0,
                                 frame.get(), nullptr, nullptr, nullptr);
        SetPanels(240);
        ShowWindow(frame.get(), SW_SHOWNOACTIVATE);
        UpdateWindow(frame.get());
        bar = std::make_unique<AdvProgressBar>(frame.get());
    }
    void SetPanels(int firstRight) {
        int rights[2] = {firstRight, -1};
        SendMessageA(status, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(rights));
    }
    // Whether the control lies exactly on the panel, in its parent's client coordinates.
    bool OnPanel(int zeroBased) const {
        RECT panel{}, w{};
        SendMessageA(status, SB_GETRECT, zeroBased, reinterpret_cast<LPARAM>(&panel));
        GetWindowRect(bar->Hwnd(), &w);
        MapWindowPoints(nullptr, GetParent(bar->Hwnd()), reinterpret_cast<POINT*>(&w), 2);
        return EqualRect(&w, &panel);
    }
    void PlaceOverFirstPanel() {
        bar->SetMyParent(status);
        bar->SetStatusBarPanelIndex(1);
    }

    UniqueWindow frame;
    HWND status = nullptr; // goes with the frame
    std::unique_ptr<AdvProgressBar> bar;
};

TEST_F(ProgressBarTest, CoversTheFirstStatusBarPanelAndFollowsIt) {
    // The main window's order of set-up.
    bar->SetMin(0);
    bar->SetMax(100);
    bar->SetValue(0);
    bar->SetGradient(false);
    PlaceOverFirstPanel();
    EXPECT_EQ(GetParent(bar->Hwnd()), status);
    EXPECT_TRUE(OnPanel(0));
    EXPECT_EQ(GetWindow(status, GW_CHILD), bar->Hwnd()); // in front

    SetPanels(150);
    EXPECT_FALSE(OnPanel(0));
    bar->Reposition();
    EXPECT_TRUE(OnPanel(0));
    bar->SetStatusBarPanelIndex(2);
    EXPECT_TRUE(OnPanel(1));

    // In a window that is no status bar the control keeps its place.
    bar->SetMyParent(frame.get());
    EXPECT_EQ(GetParent(bar->Hwnd()), frame.get());
    EXPECT_TRUE(OnPanel(1));

    // The window dies with its container; the object then holds none.
    frame.reset();
    EXPECT_EQ(bar->Hwnd(), nullptr);
}

TEST_F(ProgressBarTest, ShowsTheValueAtOnceInTheHighlightColour) {
    PlaceOverFirstPanel();
    bar->SetValue(0);
    UpdateWindow(frame.get());
    const Pixels empty = Capture(bar->Hwnd());
    ASSERT_GT(empty.width, 100);
    ASSERT_GT(empty.height, 4);
    EXPECT_EQ(FilledColumns(empty), 0);

    // No message is handled between setting and looking: the screen already shows it.
    bar->SetValue(50);
    const Pixels half = Capture(bar->Hwnd());
    const int filled = FilledColumns(half);
    EXPECT_NEAR(filled, half.width / 2, 1);
    EXPECT_EQ(std::count(half.colours.begin(), half.colours.end(), AdvProgressBar::DrawingColour()),
              filled * half.height);
    EXPECT_EQ(Capture(bar->Hwnd(), true), half);

    bar->SetValue(-30);
    const Pixels negative = Capture(bar->Hwnd());
    EXPECT_NEAR(FilledColumns(negative), negative.width * 3 / 10, 1);
    bar->SetValue(30);
    EXPECT_EQ(Capture(bar->Hwnd()), negative);
    bar->SetValue(0);
    EXPECT_EQ(Capture(bar->Hwnd()), empty);
}

TEST_F(ProgressBarTest, GradientShowsTheModelsColumnsFromBlackToBlue) {
    PlaceOverFirstPanel();
    bar->SetGradient(true);
    bar->SetValue(100);
    const Pixels p = Capture(bar->Hwnd());
    ASSERT_EQ(FilledColumns(p), p.width);
    EXPECT_LE(GetBValue(p.At(0, 0)), 4);
    EXPECT_GE(GetBValue(p.At(p.width - 1, 0)), 140);
    ProgressBarModel model;
    model.SetGradient(true);
    model.SetValue(100);
    for (const ColourSpan& span : model.FilledSpans(p.width, 0))
        for (int x = span.left; x < span.right; ++x)
            for (int y = 0; y < p.height; ++y)
                EXPECT_EQ(p.At(x, y), span.colour) << x << "," << y;
}

#endif

} // namespace
} // namespace tolvane
