#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <vector>

#include "platform/handles.h"
#include "ui/progress_bar.h"

namespace tolvane {
namespace {

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

} // namespace
} // namespace tolvane
