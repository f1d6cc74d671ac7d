// The Last Log-on window on a real main window: opened from the View menu and the toolbar, one
// at a time, and its picture as its own paint function draws it.
#include <gtest/gtest.h>

#include <windows.h>

#include "config/delay_load.h"
#include "config/logon_history.h"
#include "models/command_ids.h"
#include "ui/main_window_fixture.h"
#include "ui/timeline/timeline_window.h"

namespace tolvane {
namespace {

using test::MainWindowTest;

// View > Last Log-on shows the newest run of the history; the toolbar's button brings the same
// window to the front. Painted into a bitmap, each bar shows its rating's colour where the
// model put it, over the shaded main wait. An earlier run chosen from the list says that
// nothing was measured; with no history at all the window says so.
TEST_F(MainWindowTest, LastLogonPaintsEachBarInItsRatingsColourAndOpensOnce) {
    const std::string file = HistoryFileBeside(app.Store().File().ImpactFilePath());
    const RunProgram low{{kUserRun, "Low"}, "x.exe", 9000, 1500, 100, 0, 0, 30000};
    RunProgram medium = low, high = low;
    medium.CpuMs = 600;
    high.ReadBytes = 8 << 20;
    high.ReadyMs.reset();
    test::WriteFileBytes(
        file, FormatHistoryFile({{"1", "2026-11-23 08:00:00", {}, {}},
                                 {"2", "2026-11-24 08:00:00", 8000, {low, medium, high}}}));
    Open();
    test::Chord({VK_MENU, 'V'});
    test::Type({'L'});
    test::PumpUntilIdle();
    ASSERT_TRUE(window->Timeline());
    const HWND timeline = window->Timeline()->Hwnd();
    EXPECT_EQ(GetWindow(timeline, GW_OWNER), hwnd);
    SetForegroundWindow(hwnd);
    ClickButton(ID_CMD_LAST_LOGON);
    EXPECT_EQ(window->Timeline()->Hwnd(), timeline);
    EXPECT_TRUE(test::PumpUntil([&] { return GetForegroundWindow() == timeline; }));

    const HWND list = window->Timeline()->RunList();
    char entry[128] = {};
    SendMessageA(list, CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(entry));
    EXPECT_EQ(std::string(entry), "2026-11-24 08:00:00 - 3 programs");
    const TimelineLayout& layout = window->Timeline()->Layout();
    ASSERT_EQ(layout.Rows.size(), 3u);
    RECT client{};
    GetClientRect(timeline, &client);
    const UniqueDc dc(CreateCompatibleDC(nullptr));
    const UniqueGdiObject bitmap(CreateBitmap(client.right, client.bottom, 1, 32, nullptr));
    const ScopedSelection picture(dc.get(), bitmap.get());
    PaintTimeline(dc.get(), client.right, client.bottom, layout, BuiltInTimelineTexts(), "");
    for (size_t i = 0; i < 3; ++i) {
        const TimelineRect& bar = layout.Rows[i].Bar;
        EXPECT_EQ(layout.Rows[i].Rating, static_cast<ImpactRating>(i));
        EXPECT_EQ(GetPixel(dc.get(), (bar.Left + bar.Right) / 2, (bar.Top + bar.Bottom) / 2),
                  RatingColour(layout.Rows[i].Rating))
            << layout.Rows[i].Label;
    }
    const TimelineRect& wait = layout.MainDelay;
    EXPECT_EQ(GetPixel(dc.get(), wait.Right - 2, wait.Top + 2), RGB(224, 224, 232));

    SendMessageA(list, CB_SETCURSEL, 1, 0);
    SendMessageA(timeline, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(list));
    EXPECT_FALSE(window->Timeline()->Layout().Measured);
    EXPECT_EQ(window->Timeline()->Message(), BuiltInTimelineTexts()[kTimelineNothingMeasured]);

    SendMessageA(timeline, WM_CLOSE, 0, 0);
    EXPECT_FALSE(window->Timeline());
    DeleteFileA(file.c_str());
    SendMessageA(hwnd, WM_COMMAND, ID_CMD_LAST_LOGON, 0);
    ASSERT_TRUE(window->Timeline());
    EXPECT_EQ(window->Timeline()->Message(), BuiltInTimelineTexts()[kTimelineNoHistory]);
}

} // namespace
} // namespace tolvane
