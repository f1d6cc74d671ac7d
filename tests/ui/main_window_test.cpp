// The main window as the user meets it, in this process against the prefix's real startup
// locations: the tree as the control shows it, items ticked and moved with real keys and clicks,
// help, links, the language choice, tips, the tray menu, its place, size and close rules.
#include <windows.h>
#include <commctrl.h>

#include <functional>

#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "items/run_entry.h"
#include "items/startup_approved.h"
#include "models/menu_model.h"
#include "platform/min_size.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "text/placeholders.h"
#include "ui/main_window_fixture.h"

namespace tolvane {
namespace {

using test::MainWindowTest;

// Every node of the control, indented by depth, greyed or without a box as it shows; the text
// as the control holds it, in UTF-16.
std::vector<std::string> Shown(HWND tree) {
    std::vector<std::string> out;
    std::function<void(HTREEITEM, int)> walk = [&](HTREEITEM item, int depth) {
        for (; item; item = TreeView_GetNextSibling(tree, item)) {
            wchar_t text[512] = {};
            TVITEMW data{TVIF_TEXT | TVIF_STATE, item};
            data.pszText = text;
            data.cchTextMax = 512;
            data.stateMask = TVIS_CUT | TVIS_STATEIMAGEMASK;
            SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
            out.push_back(std::string(2 * depth, ' ') + Narrow(text, CP_UTF8) +
                          (data.state & TVIS_CUT ? " grey" : "") +
                          (data.state & TVIS_STATEIMAGEMASK ? "" : " no box"));
            walk(TreeView_GetChild(tree, item), depth + 1);
        }
    };
    walk(TreeView_GetRoot(tree), 0);
    return out;
}

// The items of both Startup folders and the Run key show with their marks (one switched off
// in Task Manager is greyed, all users' active ones have no box); a click on a box ticks it;
// resting the pointer on an item shows its tip.
TEST_F(MainWindowTest, TheTreeShowsTheRealItemsTicksAndTips) {
    Shortcut(places.UserFolder, "Tool.lnk");
    Shortcut(places.UserFolder, "Off.lnk");
    Shortcut(places.CommonFolder, "Résumé.lnk");
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kApprovedFolderKey, "Off.lnk",
                             {kBinaryType, std::vector<uint8_t>(kApprovedFlagSize, 3)}));
    RunValue(RegistryRoot::CurrentUser, "Gone", "C:\\nowhere\\gone.exe");
    Open();
    const std::vector<std::string> shown = Shown(TreeHwnd());
    ASSERT_GE(shown.size(), 10u);
    EXPECT_EQ(std::vector(shown.begin(), shown.begin() + 10),
              (std::vector<std::string>{
                  "Current User (3)", "  Startup Folder (2)", "    Off.lnk grey", "    Tool.lnk",
                  "  Registry Run (1)", "    Gone=C:\\nowhere\\gone.exe", "All Users (1)",
                  "  Startup Folder (1)", "    Résumé.lnk no box", "  Registry Run (0)"}));

    // The pointer resting on an item shows the item's tip.
    const HTREEITEM tool = window->TreeView()->ItemOf(SelectItem("CurrentUserStartup", "Tool.lnk"));
    RECT label{};
    TreeView_GetItemRect(TreeHwnd(), tool, &label, TRUE);
    POINT at{(label.left + label.right) / 2, (label.top + label.bottom) / 2};
    ClientToScreen(TreeHwnd(), &at);
    SetCursorPos(at.x, at.y);
    ScreenToClient(TreeHwnd(), &at);
    SendMessageA(TreeHwnd(), WM_MOUSEMOVE, 0, MAKELPARAM(at.x, at.y));
    HWND tips = window->TreeView()->Tips();
    wchar_t tip[512] = {};
    EXPECT_TRUE(test::PumpUntil(
        [&] { return IsWindowVisible(tips) && GetWindowTextW(tips, tip, 512) > 0; }));
    EXPECT_EQ(Narrow(tip, CP_UTF8),
              window->TreeView()->ToolTip(Node("CurrentUserStartup", "Tool.lnk")));

    // A click on a box ticks it, and Delay is offered; the selection stays where it was.
    const int off = SelectItem("CurrentUserStartup", "Off.lnk");
    TVHITTESTINFO hit{{0, (label.top + label.bottom) / 2}};
    while (hit.pt.x < label.left &&
           !(TreeView_HitTest(TreeHwnd(), &hit) && (hit.flags & TVHT_ONITEMSTATEICON)))
        ++hit.pt.x;
    POINT box = hit.pt;
    ClientToScreen(TreeHwnd(), &box);
    EXPECT_FALSE(ButtonOn(ID_CMD_DELAY_CHECKED));
    test::Click(box);
    EXPECT_TRUE(test::PumpUntil([&] { return ButtonOn(ID_CMD_DELAY_CHECKED); }));
    EXPECT_EQ(window->Tree().Selected(), off);
}

// Moves with the space bar and the toolbar, with the popup opened by the keyboard, and one made
// meanwhile by a script with tolvanec: the window follows it, keeps the user's tick, and makes
// its next move on the file as it is then, so nothing the script did is lost.
TEST_F(MainWindowTest, TickedPopupAndScriptedMovesChangeTheRealItems) {
    ASSERT_TRUE(CopyFileA((test::BuiltProgramFolder() + "\\tolvanec.exe").c_str(),
                          (folder / "tolvanec.exe").c_str(), FALSE));
    Shortcut(places.UserFolder, "Tool.lnk");
    RunValue(RegistryRoot::CurrentUser, "Alpha", "C:\\alpha.exe /a");
    RunValue(RegistryRoot::CurrentUser, "Beta", "C:\\beta.exe");
    Open();

    Tick("CurrentUserStartup", "Tool.lnk");
    ClickButton(ID_CMD_DELAY_CHECKED);
    EXPECT_FALSE(test::PathExists(UserStartup("Tool.lnk")));
    EXPECT_TRUE(test::PathExists(UserItems("Tool.lnk")));
    tree = window->Tree();
    EXPECT_EQ(Items("DelayedItemsStartupCurrentUser"), std::vector<std::string>{"Tool.lnk"});
    EXPECT_NE(File().find("Tool.lnk"), std::string::npos);
    EXPECT_FALSE(ButtonOn(ID_CMD_DELAY_CHECKED)); // the rebuilt tree has nothing ticked

    // Stop from the popup: Delay, then Stop.
    SelectItem("CurrentUserRegistry", "Alpha=C:\\alpha.exe /a");
    test::Type({VK_APPS, VK_DOWN, VK_DOWN, VK_RETURN});
    test::PumpUntilIdle();
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "(none)");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_NE(File().find("_REGCU_Alpha=C:\\alpha.exe /a"), std::string::npos) << File();

    Tick("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a");
    test::ChildProcess script("\"" + folder / "tolvanec.exe" + "\" delay Beta");
    unsigned long code = 99;
    ASSERT_TRUE(script.WaitForExit(30000, &code));
    EXPECT_EQ(code, 0u);
    EXPECT_TRUE(test::PumpUntil([&] {
        tree = window->Tree();
        return !Leaves("DelayedItemsRegistryCurrentUser").empty();
    }));
    EXPECT_TRUE(tree.Node(Node("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a")).Checked);

    // Run on the ticked stopped value puts it back as it was; the script's move stays.
    ClickButton(ID_CMD_RUN_CHECKED);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Alpha"), "(none)");
    EXPECT_EQ(File().find("_REGCU_Alpha"), std::string::npos);
    EXPECT_NE(File().find("ExecuteReg (\"C:\\beta.exe\", \"\", 0, \"Beta\");"), std::string::npos)
        << File();
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Beta"), "C:\\beta.exe");
    tree = window->Tree();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              std::vector<std::string>{"Beta=C:\\beta.exe"});
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(MainWindowTest, SaveHelpSearchAndLanguage) {
    Shortcut(places.UserFolder, "Tool.lnk");
    Open();

    // Ctrl+S with nothing ticked rewrites nothing.
    ASSERT_TRUE(DeleteFileA(FilePath().c_str()));
    test::Chord({VK_CONTROL, 'S'});
    test::PumpUntilIdle();
    EXPECT_FALSE(test::PathExists(FilePath()));

    // F1 opens the help file only when there is one.
    test::Type({VK_F1});
    test::PumpUntilIdle();
    test::WriteFileBytes(folder / "Tolvane.chm", "help");
    test::Type({VK_F1});
    test::PumpUntilIdle();
    EXPECT_EQ(opened, std::vector<std::string>{folder / "Tolvane.chm"});

    // Search Online, the popup's last entry; when no program opens it, the user is told and
    // may copy the address.
    SelectItem("CurrentUserStartup", "Tool.lnk");
    shellOpens = false;
    messages.answer = kIdYes;
    test::Type({VK_APPS, VK_UP, VK_RETURN});
    test::PumpUntilIdle();
    EXPECT_EQ(opened.back(), "https://s.example/?q=Tool.lnk");
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text,
              FillIn(app.text.Message(42), {"https://s.example/?q=Tool.lnk"}));
    ASSERT_TRUE(OpenClipboard(hwnd));
    HANDLE data = GetClipboardData(CF_UNICODETEXT);
    const auto* copied = static_cast<const wchar_t*>(data ? GlobalLock(data) : nullptr);
    EXPECT_EQ(std::wstring(copied ? copied : L""), L"https://s.example/?q=Tool.lnk");
    if (copied)
        GlobalUnlock(data);
    CloseClipboard();

    // Another language: its texts and the file, the list's headings at once, and the user told
    // in it that the window's own texts follow at the next start.
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(1), 0);
    test::PumpUntilIdle();
    EXPECT_EQ(app.text.Menus[0], "&Datei");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    tree = window->Tree();
    EXPECT_EQ(tree.Node(tree.Find("CurrentUserStartup")).Text, app.text.Toolbar.at(10) + " (1)");
    ASSERT_EQ(messages.shown.size(), 2u);
    EXPECT_EQ(messages.shown[1].Text, app.text.Message(41));

    // A file that cannot be written: the status line says the choice was not kept, until the
    // user's own refresh.
    test::MakeFolder(FilePath() + ".new");
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(0), 0);
    test::PumpUntilIdle();
    test::RemoveTree(FilePath() + ".new");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    EXPECT_EQ(StatusLine(), app.text.Message(39));
    test::Type({VK_F5});
    test::PumpUntilIdle();
    EXPECT_EQ(StatusLine(), app.text.Toolbar.at(6)); // how the window is used
}

// A delayed item's tip holds its last measurement, read from the impact file at the refresh.
// What keeps an item from starting, or from moving, is said in its tip; what went wrong with the
// program's own Run value, in the status line.
TEST_F(MainWindowTest, TipsAndTheStatusLineSayWhatTheUserMustKnow) {
    Shortcut(places.CommonFolder, "Word.lnk");
    // Another program's value of the program's own name: Windows will not start Tolvane.
    RunValue(RegistryRoot::CurrentUser, kOwnRunValue, "C:\\Windows\\notepad.exe");
    SetDefaultModel(app.model);
    app.model.StartupType = 2;
    const std::string tool = "Résumé.lnk"; // measured as "RÉSUMÉ.LNK": one name
    app.model.ProgramGroups[0].Programs = {{tool, "", "Execute", 0, ""},
                                           {"Gone.lnk", "", "Execute", 0, ""},
                                           {"cmd.exe", "/c del C:\\x", "ExecuteReg", 0, "Wipe"}};
    test::MakeFolder(app.folders.UserItemsFolder);
    test::WriteFileBytes(app.folders.UserItemsFolder + tool, "x");
    app.Store().File().WriteItems();
    test::WriteFileBytes(
        app.Store().File().ImpactFilePath(),
        FormatImpactFile({{{kUserStartup, "RÉSUMÉ.LNK"}, "", 4140, 2260, 45 << 20, 0, 9000}}));
    Open();
    tree = window->Tree();
    // What the tip has to say, before the line of what the item starts.
    auto tip = [&](const std::string& container, const std::string& text) {
        const std::string shown = window->TreeView()->ToolTip(Node(container, text));
        return shown.substr(0, shown.rfind("\r\n"));
    };
    char decimal[8] = {};
    GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, decimal, sizeof decimal);
    EXPECT_EQ(tip("DelayedItemsStartupCurrentUser", tool),
              "High: 2" + std::string(decimal) + "3 s CPU, 45 MB read, ready after 4" + decimal +
                  "1 s");
    EXPECT_EQ(tip("DelayedItemsStartupCurrentUser", "Gone.lnk"),
              FillIn(app.text.Message(29), {"Gone.lnk"}));
    EXPECT_EQ(tip("DelayedItemsRegistryCurrentUser", "Wipe=cmd.exe /c del C:\\x"),
              FillIn(app.text.Message(27), {"del"}));
    EXPECT_EQ(tip("AllUsersStartup", "Word.lnk"), app.text.Message(35));
    EXPECT_EQ(StatusLine(), app.text.Message(37));
}

// The tray menu opens at the pointer and takes the keyboard at once, also while the window
// waits hidden for the log-on run: its "&Open" is one key away.
RECT trayMenuAt{};
TEST_F(MainWindowTest, TrayMenuOpensAtThePointerAndTakesTheKeyboardWhileTheWindowWaits) {
    app.ShowGui = false;
    window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
    window->Ready();
    hwnd = window->Handle();
    test::PumpUntilIdle();
    ASSERT_FALSE(IsWindowVisible(hwnd));
    ASSERT_TRUE(SetCursorPos(400, 300));
    // Timers run inside the menu's own loop: the menu is read, then typed at.
    SetTimer(nullptr, 0, 0, [](HWND, UINT, UINT_PTR id, DWORD) {
        KillTimer(nullptr, id);
        GetWindowRect(FindWindowA("#32768", nullptr), &trayMenuAt);
        test::Type({'O'});
        // A menu that did not take the key must not hold the test.
        SetTimer(nullptr, 0, 3000, [](HWND, UINT, UINT_PTR id, DWORD) {
            KillTimer(nullptr, id);
            EndMenu();
        });
    });
    SendMessageA(window->Tray().Hwnd(), TrayIcon::kCallbackMessage, TrayIcon::kIconId,
                 WM_RBUTTONUP);
    EXPECT_TRUE(test::PumpUntil([&] { return IsWindowVisible(hwnd) != FALSE; }));
    EXPECT_EQ(trayMenuAt.left, 400);
    EXPECT_EQ(trayMenuAt.top, 300);
}

// The window opens where it was last closed, never below its minimum size and never off every
// screen; its borders stop at the minimum size; the close button hides it or ends the program.
TEST_F(MainWindowTest, PlaceSizeAndCloseRules) {
    const long minimum = TwipsToPixels(kMinimumWidthTwips, 96);
    const long minimumHeight = TwipsToPixels(kMinimumHeightTwips, 96);
    // Where the window opens for the place kept in the registry.
    auto opensAt = [&](const char* kept) {
        EXPECT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, "Software\\Hexmoor\\Tolvane",
                                          "WindowPlacement", kept));
        Open(false);
        RECT r{};
        GetWindowRect(hwnd, &r);
        return std::vector<long>{r.left, r.top, r.right, r.bottom};
    };
    EXPECT_EQ(opensAt("200 150 1100 750 0"), (std::vector<long>{200, 150, 1100, 750}));
    EXPECT_EQ(opensAt("10 20 110 120 0"),
              (std::vector<long>{10, 20, 10 + minimum, 20 + minimumHeight}));
    RECT work{}; // a place on a screen that is gone: the middle of the main one
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    const long x = work.left + (work.right - work.left - 1000) / 2,
               y = work.top + (work.bottom - work.top - 600) / 2;
    EXPECT_EQ(opensAt("-30000 -30000 -29000 -29400 0"),
              (std::vector<long>{x, y, x + 1000, y + 600}));

    // The left border dragged far to the right stops at the minimum width; the right border
    // stays where it was.
    app.model.CloseType = 1;
    app.Store().File().WriteItems(); // the window reads its settings from the file
    Open();
    RECT before{}, after{};
    GetWindowRect(hwnd, &before);
    const long middle = (before.top + before.bottom) / 2;
    test::Drag({before.left + 1, middle}, {before.left + 500, middle});
    EXPECT_TRUE(test::PumpUntil([&] {
        GetWindowRect(hwnd, &after);
        return after.right - after.left == minimum;
    }));
    EXPECT_EQ(after.right, before.right);

    // CloseType 1: the close button (Alt+F4 is its key) only hides the window; CloseType 0: it
    // ends the program.
    test::Chord({VK_MENU, VK_F4});
    test::PumpUntilIdle();
    ASSERT_TRUE(window->Handle());
    EXPECT_FALSE(IsWindowVisible(hwnd));
    EXPECT_FALSE(app.wait.QuitRequested);
    app.model.CloseType = 0;
    app.Store().File().WriteItems();
    Open();
    test::Chord({VK_MENU, VK_F4});
    test::PumpUntilIdle();
    EXPECT_EQ(window->Handle(), nullptr);
    EXPECT_TRUE(app.wait.QuitRequested);
}

} // namespace
} // namespace tolvane
