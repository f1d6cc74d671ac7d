// The main window as the user meets it, in this process against the prefix's real startup
// locations: its menus and toolbar as rendered, items ticked and moved with real keys and clicks,
// the item popup, the language choice, help and links, the close rules and the minimum size.
#include <windows.h>
#include <commctrl.h>

#include <functional>

#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "items/run_entry.h"
#include "models/menu_model.h"
#include "platform/min_size.h"
#include "platform/registry.h"
#include "resource_ids.h"
#include "text/placeholders.h"
#include "text/strings.h"
#include "ui/main_window_fixture.h"

namespace tolvane {
namespace {

using test::MainWindowTest;

TEST_F(MainWindowTest, MenusAndToolbarAsRenderedAndTickedItemsMoveFromTheToolbar) {
    Shortcut(places.UserFolder, "Tool.lnk");
    RunValue(RegistryRoot::CurrentUser, "Alpha", "C:\\alpha.exe /a");
    RunValue(RegistryRoot::CurrentUser, "Beta", "C:\\beta.exe");
    Open();

    EXPECT_EQ(Outline(GetMenu(hwnd)), "&File\n"
                                      "  &Save\tCtrl+S\n"
                                      "  &Refresh\tF5\n"
                                      "  -\n"
                                      "  &Minimize to Tray\n"
                                      "  E&xit\n"
                                      "&Program Groups\n"
                                      "  &Modify\n"
                                      "&Tools\n"
                                      "  &Options\n"
                                      "&Language\n"
                                      "  English v\n"
                                      "  Deutsch\n"
                                      "&Help\n"
                                      "  &Help\tF1\n"
                                      "  -\n"
                                      "  &About Tolvane\n"
                                      "  -\n"
                                      "  &Tips\n"
                                      "  -\n"
                                      "  &Online\n"
                                      "    &Forums\n"
                                      "    &Support E-Mail\n"
                                      "    &Main Page\n");
    const std::string untouched = "40004 Save on\n-\n40003  on\n-\n40021 Stop off\n"
                                  "40020 Delay off\n40022 Run off\n40006 Properties on\n";
    EXPECT_EQ(Toolbar(), untouched);

    // A current-user shortcut ticked with the space bar allows Stop and Delay.
    Tick("CurrentUserStartup", "Tool.lnk");
    EXPECT_EQ(Toolbar(), "40004 Save on\n-\n40003  on\n-\n40021 Stop on\n"
                         "40020 Delay on\n40022 Run off\n40006 Properties on\n");
    ClickButton(ID_CMD_DELAY_CHECKED);
    EXPECT_FALSE(test::PathExists(UserStartup("Tool.lnk")));
    EXPECT_TRUE(test::PathExists(UserItems("Tool.lnk")));
    tree = window->Tree();
    EXPECT_EQ(Items("DelayedItemsStartupCurrentUser"), std::vector<std::string>{"Tool.lnk"});
    EXPECT_NE(File().find("Tool.lnk"), std::string::npos);
    EXPECT_EQ(Toolbar(), untouched); // the rebuilt tree has nothing ticked

    // The popup's moves follow the selected item's state.
    auto popup = [&] {
        std::string out;
        for (int id : {ID_CMD_DELAY, ID_CMD_STOP, ID_CMD_RUN, ID_CMD_PROPERTIES})
            out += window->Commands().Enabled(id) ? "1" : "0";
        return out;
    };
    SelectItem("DelayedItemsStartupCurrentUser", "Tool.lnk");
    EXPECT_EQ(popup(), "0111");
    // Properties opens the editor on the delayed item's own record, also after a change since
    // the refresh (the tip box, Options, another copy) put another program in its place.
    app.Store().Change([](ProgramModel& file) {
        auto& programs = file.StartupGroup()->Programs;
        programs.insert(programs.begin(), {"C:\\first.exe", "", "ExecuteReg", 0, "First"});
    });
    std::optional<GroupProgram> editedRecord;
    window->OpenGroupEditor = [&](std::optional<GroupProgram> record) { editedRecord = record; };
    EXPECT_TRUE(window->Commands().Execute(ID_CMD_PROPERTIES));
    ASSERT_TRUE(editedRecord);
    EXPECT_EQ(editedRecord->Command + "|" + editedRecord->Path, "Execute|Tool.lnk");
    SelectItem("CurrentUserRoot", "Registry Run (2)");
    EXPECT_EQ(popup(), "0000"); // a container offers no popup
    SelectItem("CurrentUserRegistry", "Alpha=C:\\alpha.exe /a");
    EXPECT_EQ(popup(), "1100");

    // Stop from the popup, opened with the keyboard: Delay, then Stop.
    test::Type({VK_APPS, VK_DOWN, VK_DOWN, VK_RETURN});
    Pump(60);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "(none)");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_NE(File().find("_REGCU_Alpha=C:\\alpha.exe /a"), std::string::npos) << File();
    SelectItem("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a");
    EXPECT_EQ(popup(), "1010");

    // Run on the ticked stopped value puts it back as it was.
    Tick("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a");
    ClickButton(ID_CMD_RUN_CHECKED);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Alpha"), "(none)");
    EXPECT_EQ(File().find("_REGCU_Alpha"), std::string::npos);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Beta"), "C:\\beta.exe");
    EXPECT_TRUE(messages.shown.empty());
}

// The window is open while a script delays an item with tolvanec: the tree follows within a
// second, keeping the user's selection and ticks, and the window's next move is made on the
// file as it is then, so both items stay delayed, in the file and in the tree.
TEST_F(MainWindowTest, AMoveMadeMeanwhileByTolvanecIsShownAndKept) {
    const std::string built = test::BuiltProgramFolder();
    ASSERT_TRUE(
        CopyFileA((built + "\\tolvanec.exe").c_str(), (folder / "tolvanec.exe").c_str(), FALSE));
    RunValue(RegistryRoot::CurrentUser, "Alpha", "C:\\alpha.exe /a");
    RunValue(RegistryRoot::CurrentUser, "Beta", "C:\\beta.exe");
    Shortcut(places.UserFolder, "Tool.lnk");
    // The same value in both of the machine's views, both delayed: two items of one text.
    RunValue(RegistryRoot::LocalMachine, "Dup", "C:\\dup.exe");
    RunValue(RegistryRoot::LocalMachine32, "Dup", "C:\\dup.exe");
    Refresh();
    for (int leaf : Leaves("AllUsersRegistry"))
        ASSERT_TRUE(Moves().Move(*ItemOfNode(tree, listing, leaf), ItemState::Delayed));
    Open();
    Tick("CurrentUserStartup", "Tool.lnk");
    Tick("DelayedItemsRegistryAllUsers", "Dup=C:\\dup.exe"); // the first: the 64-bit one
    test::ChildProcess script("\"" + folder / "tolvanec.exe" + "\" delay Alpha");
    unsigned long code = 99;
    ASSERT_TRUE(script.WaitForExit(30000, &code));
    EXPECT_EQ(code, 0u);
    EXPECT_NE(File().find("\"Alpha\");"), std::string::npos);

    auto delayedShown = [&] {
        tree = window->Tree();
        return Leaves("DelayedItemsRegistryCurrentUser").size();
    };
    for (int i = 0; i < 1000 && delayedShown() == 0; ++i)
        Pump(1);
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              std::vector<std::string>{"Alpha=C:\\alpha.exe /a"});
    // The selection and the ticks stay on the items themselves, not on their text.
    const int selected = tree.Selected();
    ASSERT_NE(selected, TreeModel::kNone);
    EXPECT_EQ(tree.Node(selected).Text, "Dup=C:\\dup.exe");
    EXPECT_FALSE(PlaceOf(tree, selected)->Wow32);
    std::string dupTicks;
    for (int leaf : Leaves("DelayedItemsRegistryAllUsers"))
        dupTicks += std::string(PlaceOf(tree, leaf)->Wow32 ? "32:" : "64:") +
                    (tree.Node(leaf).Checked ? "on " : "off ");
    EXPECT_EQ(dupTicks, "64:on 32:off ");
    EXPECT_TRUE(tree.Node(Node("CurrentUserStartup", "Tool.lnk")).Checked);
    EXPECT_NE(Toolbar().find("40020 Delay on"), std::string::npos); // the tick still counts

    SelectItem("CurrentUserRegistry", "Beta=C:\\beta.exe");
    EXPECT_TRUE(window->Commands().Execute(ID_CMD_DELAY));
    Pump(60);
    for (const char* line : {"ExecuteReg (\"C:\\alpha.exe\", \"/a\", 0, \"Alpha\");",
                             "ExecuteReg (\"C:\\beta.exe\", \"\", 0, \"Beta\");"})
        EXPECT_NE(File().find(line), std::string::npos) << line << "\n" << File();
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Beta"), "C:\\beta.exe");
    tree = window->Tree();
    EXPECT_EQ(Leaves("DelayedItemsRegistryCurrentUser").size(), 2u);
    EXPECT_TRUE(Leaves("CurrentUserRegistry").empty());
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(MainWindowTest, SaveHelpLinksSearchAndLanguage) {
    Shortcut(places.UserFolder, "Tool.lnk");
    Open();
    const std::string file = folder / (WindowsUserName() + "\\proggroup.c");

    // Ctrl+S with nothing ticked rewrites nothing.
    ASSERT_TRUE(DeleteFileA(file.c_str()));
    test::Chord({VK_CONTROL, 'S'});
    Pump();
    EXPECT_FALSE(test::PathExists(file));

    // F1 opens the help file only when there is one.
    test::Type({VK_F1});
    Pump();
    EXPECT_TRUE(opened.empty());
    test::WriteFileBytes(folder / "Tolvane.chm", "help");
    test::Type({VK_F1});
    Pump();
    EXPECT_EQ(opened, std::vector<std::string>{folder / "Tolvane.chm"});

    // Help > Online > Support E-Mail, by its letters.
    test::Chord({VK_MENU, 'H'});
    test::Type({'O', 'S'});
    Pump();
    EXPECT_EQ(opened.back(), "mailto:support@hexmoor.com?subject=Tolvane%202");

    // Search Online, the popup's last entry.
    SelectItem("CurrentUserStartup", "Tool.lnk");
    test::Type({VK_APPS, VK_UP, VK_RETURN});
    Pump(60);
    EXPECT_EQ(opened.back(), "https://s.example/?q=Tool.lnk");
    // No program opens it: the user is told, and may copy the address.
    shellOpens = false;
    messages.answer = kIdYes;
    test::Type({VK_APPS, VK_UP, VK_RETURN});
    Pump(60);
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
    messages.shown.clear();

    // Another language: its texts and the file, the list's headings at once, and the user told
    // in it that the window's own texts follow at the next start; the same one again does
    // nothing.
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(1), 0);
    Pump();
    EXPECT_EQ(app.model.Language, "de");
    EXPECT_EQ(app.text.Menus[0], "&Datei");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    tree = window->Tree();
    EXPECT_EQ(tree.Node(tree.Find("CurrentUserStartup")).Text, app.text.Toolbar.at(10) + " (1)");
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text, app.text.Message(41));
    EXPECT_NE(messages.shown[0].Text, TextTables().Message(41));
    HMENU bar = GetMenu(hwnd);
    EXPECT_EQ(GetMenuState(bar, LanguageCommand(0), MF_BYCOMMAND) & MF_CHECKED, 0u);
    EXPECT_NE(GetMenuState(bar, LanguageCommand(1), MF_BYCOMMAND) & MF_CHECKED, 0u);

    // A file that cannot be written: the status line says the choice was not kept, also once
    // the window followed the traces of the failed write (in the texts the file names).
    test::MakeFolder(file + ".new");
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(0), 0);
    Pump(60);
    test::RemoveTree(file + ".new");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    ASSERT_FALSE(app.text.Message(39).empty());
    EXPECT_EQ(StatusLine(), app.text.Message(39));
    EXPECT_EQ(messages.shown.size(), 1u); // no next start to promise
    test::Type({VK_F5});                  // the user's own refresh: the line is free again
    Pump();
    EXPECT_EQ(StatusLine(), app.text.Toolbar.at(6)); // how the window is used
    ASSERT_TRUE(DeleteFileA(file.c_str()));
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(1), 0);
    Pump();
    EXPECT_FALSE(test::PathExists(file));
}

// A delayed item's tip ends with its last measurement, read from the impact file at the
// refresh; an active item that the program never started shows none. What keeps an item from
// starting, or from moving, is said in its tip; what went wrong with the program's own Run
// value, in the status line.
TEST_F(MainWindowTest, TipsAndTheStatusLineSayWhatTheUserMustKnow) {
    Shortcut(places.UserFolder, "Other.lnk");
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
        FormatImpactFile({{{kUserStartup, "RÉSUMÉ.LNK"}, "", 4140, 2260, 45 << 20, 0, 9000},
                          {{kUserStartup, "Other.lnk"}, "", 100, 100, 0, 0, 9000}}));
    Open();
    tree = window->Tree();
    // The text that the tree's tip shows on hover (shown by the control in the tree's tests):
    // what the tip has to say, then, for every item, what it starts.
    auto tip = [&](const std::string& container, const std::string& text) {
        std::string shown = window->TreeView()->ToolTip(Node(container, text));
        const size_t last = shown.rfind("\r\n");
        return std::pair(last == std::string::npos ? "" : shown.substr(0, last),
                         shown.substr(last == std::string::npos ? 0 : last + 2));
    };
    char decimal[8] = {};
    GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, decimal, sizeof decimal);
    EXPECT_EQ(tip("DelayedItemsStartupCurrentUser", tool).first,
              "High: 2" + std::string(decimal) + "3 s CPU, 45 MB read, ready after 4" + decimal +
                  "1 s");
    // Nothing else to say: the shortcut's program alone.
    EXPECT_EQ(ToLower(tip("CurrentUserStartup", "Other.lnk").second), "c:\\windows\\notepad.exe");
    EXPECT_EQ(tip("CurrentUserStartup", "Other.lnk").first, "");
    // What will not start says why.
    EXPECT_EQ(tip("DelayedItemsStartupCurrentUser", "Gone.lnk").first,
              FillIn(app.text.Message(29), {"Gone.lnk"}));
    EXPECT_EQ(tip("DelayedItemsRegistryCurrentUser", "Wipe=cmd.exe /c del C:\\x"),
              std::pair(FillIn(app.text.Message(27), {"del"}), std::string("cmd.exe")));
    EXPECT_EQ(tip("AllUsersStartup", "Word.lnk").first, app.text.Message(35));
    EXPECT_EQ(StatusLine(), app.text.Message(37));
    EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
}

// The tray menu opens at the pointer and takes the keyboard at once, also while the window
// waits hidden for the log-on run: its "&Open" is one key away.
RECT trayMenuAt{};
TEST_F(MainWindowTest, TrayMenuOpensAtThePointerAndTakesTheKeyboardWhileTheWindowWaits) {
    app.ShowGui = false;
    window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
    window->Ready();
    hwnd = window->Handle();
    Pump();
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
    Pump();
    EXPECT_EQ(trayMenuAt.left, 400);
    EXPECT_EQ(trayMenuAt.top, 300);
    EXPECT_TRUE(IsWindowVisible(hwnd));
}

// The window opens where it was last closed, at its size, never below its minimum and never off
// every screen; its status line shows whole at every size.
TEST_F(MainWindowTest, PlaceSizeAndCloseRules) {
    app.model.CloseType = 1;
    app.model.StartupType = 1;
    const std::string items =
        app.folders.UserItemsFolder.substr(0, app.folders.UserItemsFolder.size() - 1);
    test::MakeFolder(items);
    Shortcut(items, "Kept.lnk");
    app.model.AddProgramToGroup(app.model.StartupGroupIndex, "Execute", "Kept.lnk", "", 0, "");
    app.Store().File().WriteItems();
    const long minimum = TwipsToPixels(kMinimumWidthTwips, 96);
    const long minimumHeight = TwipsToPixels(kMinimumHeightTwips, 96);
    auto load = [&] {
        window.reset();
        TakeQuitMessage();
        window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
        ASSERT_TRUE(window->Load());
        hwnd = window->Handle();
        Pump();
    };
    auto rect = [&] {
        RECT r{};
        GetWindowRect(hwnd, &r);
        return std::to_string(r.left) + " " + std::to_string(r.top) + " " +
               std::to_string(r.right) + " " + std::to_string(r.bottom);
    };
    RECT work{};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    auto centred = [&](long w, long h) {
        const long x = (work.right - work.left - w) / 2, y = (work.bottom - work.top - h) / 2;
        return std::to_string(work.left + x) + " " + std::to_string(work.top + y) + " " +
               std::to_string(work.left + x + w) + " " + std::to_string(work.top + y + h);
    };
    // The kept place as the registry holds it, and where the window opens for it.
    const std::pair<std::string, std::string> places[] = {
        {"200 150 1100 750 0", "200 150 1100 750"},
        {"10 20 110 120 0",
         "10 20 " + std::to_string(10 + minimum) + " " + std::to_string(20 + minimumHeight)},
        {"-30000 -30000 -29000 -29400 0", centred(1000, 600)}, // that screen is gone
    };
    CRegistry registry;
    for (const auto& [kept, expected] : places) {
        ASSERT_TRUE(registry.SaveSettingString(
            RegistryRoot::CurrentUser, "Software\\Hexmoor\\Tolvane", "WindowPlacement", kept));
        load();
        EXPECT_EQ(rect(), expected) << kept;
    }
    // Nothing kept: the first size, above the minimum.
    ASSERT_TRUE(registry.DeleteValue(RegistryRoot::CurrentUser, "Software\\Hexmoor\\Tolvane",
                                     "WindowPlacement"));
    load();
    RECT r{};
    GetWindowRect(hwnd, &r);
    EXPECT_EQ(r.right - r.left, 760);
    EXPECT_EQ(r.bottom - r.top, 520);

    // Closed maximised, it opens maximised, and goes back to the size it had; the status line
    // shows its text whole, beside the progress part, at the smallest size and maximised.
    auto statusShowsWhole = [&] {
        HWND bar = FindWindowExA(hwnd, nullptr, "msctls_statusbar32", nullptr);
        RECT part{}, progress{};
        SendMessageA(bar, SB_GETRECT, 0, reinterpret_cast<LPARAM>(&part));
        GetWindowRect(GetWindow(bar, GW_CHILD), &progress);
        MapWindowPoints(nullptr, bar, reinterpret_cast<POINT*>(&progress), 2);
        HDC dc = GetDC(bar);
        HGDIOBJ old =
            SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(bar, WM_GETFONT, 0, 0)));
        SIZE extent{};
        GetTextExtentPoint32A(dc, StatusLine().c_str(), static_cast<int>(StatusLine().size()),
                              &extent);
        SelectObject(dc, old);
        ReleaseDC(bar, dc);
        return !StatusLine().empty() && part.right - part.left > extent.cx &&
               progress.left >= part.right;
    };
    SetWindowPos(hwnd, nullptr, 0, 0, minimum, minimumHeight, SWP_NOMOVE | SWP_NOZORDER);
    Pump();
    EXPECT_TRUE(statusShowsWhole());
    const std::string normal = rect();
    ShowWindow(hwnd, SW_MAXIMIZE);
    Pump();
    EXPECT_TRUE(statusShowsWhole());
    SendMessageA(hwnd, WM_CLOSE, 0, 0);
    load();
    app.wait.QuitRequested = false;
    EXPECT_TRUE(IsZoomed(hwnd));
    ShowWindow(hwnd, SW_RESTORE);
    Pump();
    EXPECT_EQ(rect(), normal);
    // A screen of another density: the window takes the rectangle Windows suggests.
    RECT suggested{100, 100, 1300, 900};
    SendMessageA(hwnd, WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));
    EXPECT_EQ(rect(), "100 100 1300 900");
    SetWindowPos(hwnd, HWND_TOP, 120, 80, 800, 560, SWP_SHOWWINDOW);
    SetForegroundWindow(hwnd);
    Pump();

    // The left border dragged far to the right stops at the minimum width; the right border
    // stays where it was.
    RECT before{}, after{};
    GetWindowRect(hwnd, &before);
    test::Drag({before.left + 1, (before.top + before.bottom) / 2},
               {before.left + 500, (before.top + before.bottom) / 2});
    Pump(60);
    GetWindowRect(hwnd, &after);
    EXPECT_EQ(after.right - after.left, minimum);
    EXPECT_EQ(after.right, before.right);
    // Program code is not held to it.
    SetWindowPos(hwnd, nullptr, 0, 0, 300, 200, SWP_NOMOVE | SWP_NOZORDER);
    GetWindowRect(hwnd, &after);
    EXPECT_EQ(after.right - after.left, 300);

    // CloseType 1: the close button (Alt+F4 is its key) only hides the window.
    SetForegroundWindow(hwnd);
    test::Chord({VK_MENU, VK_F4});
    Pump();
    ASSERT_TRUE(window->Handle());
    EXPECT_FALSE(IsWindowVisible(hwnd));
    EXPECT_FALSE(app.wait.QuitRequested);

    // File > Exit ends for good and, with StartupType 1, brings the own Run entry up to date:
    // a current-user item is delayed, so the user's Run key starts the program.
    ASSERT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
    window->Open();
    Pump();
    test::Chord({VK_MENU, 'F'});
    test::Type({'X'});
    Pump();
    EXPECT_EQ(window->Handle(), nullptr);
    EXPECT_TRUE(app.wait.QuitRequested);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, kOwnRunValue), app.folders.RunCommand);

    // CloseType 0: the close button ends the program.
    TakeQuitMessage();
    app.model.CloseType = 0;
    app.wait.QuitRequested = false;
    app.Store().File().WriteItems(); // the window reads its settings from the file
    Open();
    test::Chord({VK_MENU, VK_F4});
    Pump();
    EXPECT_EQ(window->Handle(), nullptr);
    EXPECT_TRUE(app.wait.QuitRequested);
}

} // namespace
} // namespace tolvane
