#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include "platform/handles.h"
#include "ui/tray_icon.h"

namespace tolvane {
namespace {

// Whether the notification area holds the control's icon: only an icon that is there can be
// changed.
bool Shown(const TrayIcon& tray) {
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = tray.Hwnd();
    data.uID = TrayIcon::kIconId;
    data.uFlags = NIF_TIP;
    return Shell_NotifyIconA(NIM_MODIFY, &data) != FALSE;
}

TEST(TrayIcon, TwoClicksOpenTheWindowAndTheMenuGoesToItemClicked) {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    TrayIcon tray;
    ASSERT_TRUE(tray.Create(instance));
    EXPECT_FALSE(tray.LoadTrayIcon("Tolvane")); // no picture yet
    tray.SetPicture(LoadIconA(nullptr, MAKEINTRESOURCEA(32512)));
    ASSERT_TRUE(tray.LoadTrayIcon("Tolvane"));
    EXPECT_TRUE(Shown(tray));
    EXPECT_TRUE(tray.ToolTip(std::string(70, 'x'))); // cut to the field's 63 characters

    int opened = 0, chosen = -1;
    tray.Opened = [&] { ++opened; };
    tray.BuildMenu = [] { return 5000; };
    tray.ItemClicked = [&](int number) { chosen = number; };
    auto mouse = [&](UINT message) {
        SendMessageA(tray.Hwnd(), TrayIcon::kCallbackMessage, TrayIcon::kIconId, message);
    };
    mouse(WM_LBUTTONUP);
    mouse(WM_RBUTTONUP); // the menu, and the clicks start again
    EXPECT_EQ(chosen, 5000);
    mouse(WM_LBUTTONUP);
    EXPECT_EQ(opened, 0);
    mouse(WM_LBUTTONUP);
    EXPECT_EQ(opened, 1);

    EXPECT_TRUE(tray.RemoveTrayIcon());
    EXPECT_FALSE(Shown(tray));
    EXPECT_TRUE(tray.RemoveTrayIcon()); // none shown: fine too
}

} // namespace
} // namespace tolvane
