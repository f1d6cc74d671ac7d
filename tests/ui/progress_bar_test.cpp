// The status-bar progress bar: what its model says each column shows (natively too), and
// under Windows the control's real pixels and its place over a status-bar panel.
#include <gtest/gtest.h>

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
// Every pixel of the control, as the screen shows it now or as the control draws itself
// through WM_PRINTCLIENT, against the model: each column of the filled part in its colour,
// the rest in the background colour.
void ExpectShows(HWND window, const ProgressBarModel& model, bool print = false) {
    RECT client{};
    GetClientRect(window, &client);
    ASSERT_GT(client.right, 100);
    ASSERT_GT(client.bottom, 4);
    WindowDc screen(window);
    UniqueDc memory(CreateCompatibleDC(screen.get()));
    UniqueGdiObject bitmap(CreateCompatibleBitmap(screen.get(), client.right, client.bottom));
    ScopedSelection selected(memory.get(), bitmap.get());
    if (print)
        SendMessageA(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory.get()), PRF_CLIENT);
    else
        BitBlt(memory.get(), 0, 0, client.right, client.bottom, screen.get(), 0, 0, SRCCOPY);
    const auto spans = model.FilledSpans(client.right, AdvProgressBar::DrawingColour());
    for (int x = 0; x < client.right; ++x) {
        const Colour want = ColourAt(spans, x) == 0xffffffff ? AdvProgressBar::BackgroundColour()
                                                             : ColourAt(spans, x);
        for (int y = 0; y < client.bottom; ++y)
            if (GetPixel(memory.get(), x, y) != want)
                return ADD_FAILURE() << "pixel " << x << "," << y << " of " << client.right << "x"
                                     << client.bottom << " is " << GetPixel(memory.get(), x, y)
                                     << ", not " << want;
    }
}

// Over the second panel of a real status bar in a top-level window, as the main window has it.
TEST(AdvProgressBar, CoversItsStatusBarPanelAndShowsEachValueAtOnce) {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_BAR_CLASSES};
    InitCommonControlsEx(&icc);
    UniqueWindow frame(CreateWindowExA(0, "STATIC", "progress test", WS_OVERLAPPEDWINDOW, 40, 40,
                                       480, 200, nullptr, nullptr, nullptr, nullptr));
    HWND status = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0,
                                  frame.get(), nullptr, nullptr, nullptr);
    int rights[2] = {240, -1};
    SendMessageA(status, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(rights));
    ShowWindow(frame.get(), SW_SHOWNOACTIVATE);
    AdvProgressBar bar(frame.get());
    bar.SetMyParent(status);
    bar.SetStatusBarPanelIndex(2);
    // In front of the status bar's other children, exactly on the panel.
    EXPECT_EQ(GetWindow(status, GW_CHILD), bar.Hwnd());
    auto onPanel = [&] {
        RECT panel{}, w{};
        SendMessageA(status, SB_GETRECT, 1, reinterpret_cast<LPARAM>(&panel));
        GetWindowRect(bar.Hwnd(), &w);
        MapWindowPoints(nullptr, status, reinterpret_cast<POINT*>(&w), 2);
        return EqualRect(&w, &panel) != 0;
    };
    EXPECT_TRUE(onPanel());
    // The owner has the control follow a change of the panels.
    rights[0] = 150;
    SendMessageA(status, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(rights));
    bar.Reposition();
    EXPECT_TRUE(onPanel());

    UpdateWindow(frame.get());
    ExpectShows(bar.Hwnd(), Bar(0, 100, false));
    // No message is handled between setting and looking: the screen already shows it.
    bar.SetValue(50);
    ExpectShows(bar.Hwnd(), Bar(50, 100, false));
    ExpectShows(bar.Hwnd(), Bar(50, 100, false), true);
    bar.SetValue(0);
    ExpectShows(bar.Hwnd(), Bar(0, 100, false));
    bar.SetGradient(true);
    bar.SetValue(100);
    ExpectShows(bar.Hwnd(), Bar(100));
    // The window dies with its container; the object then holds none.
    frame.reset();
    EXPECT_EQ(bar.Hwnd(), nullptr);
}

#endif

} // namespace
} // namespace tolvane
