// The main window and its dialogs as the user meets them, in this process against the prefix's
// real startup locations and with the program's language files: the tree and the tips as the
// controls show them, items ticked and moved with real keys and clicks while a script moves
// others, the language choice, its kept place and close rules; the options and the group editor
// filled in with real keys and clicks, and what each leaves in proggroup.c and the Run key.
#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <memory>

#include "config/language_files.h"
#include "config/program_group_file.h"
#include "items/run_entry.h"
#include "items/startup_approved.h"
#include "models/menu_model.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "text/placeholders.h"
#include "ui/group_editor/group_editor_dialog.h"
#include "ui/group_editor/group_editor_ids.h"
#include "ui/main_window_fixture.h"
#include "ui/options/options_dialog.h"
#include "ui/options/options_ids.h"

namespace tolvane {
namespace {

using test::MainWindowTest;
using test::TextOf;

// Every node of the control, indented by depth, greyed, without a box or with the warning sign
// as it shows; the text as the control holds it, in UTF-16.
std::vector<std::string> Shown(HWND tree) {
    std::vector<std::string> out;
    std::function<void(HTREEITEM, int)> walk = [&](HTREEITEM item, int depth) {
        for (; item; item = TreeView_GetNextSibling(tree, item)) {
            wchar_t text[512] = {};
            TVITEMW data{TVIF_TEXT | TVIF_STATE, item};
            data.pszText = text;
            data.cchTextMax = 512;
            data.stateMask = TVIS_CUT | TVIS_STATEIMAGEMASK | TVIS_OVERLAYMASK;
            SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
            out.push_back(std::string(2 * depth, ' ') + Narrow(text, CP_UTF8) +
                          (data.state & TVIS_CUT ? " grey" : "") +
                          (data.state & TVIS_STATEIMAGEMASK ? "" : " no box") +
                          (data.state & TVIS_OVERLAYMASK ? " warned" : ""));
            walk(TreeView_GetChild(tree, item), depth + 1);
        }
    };
    walk(TreeView_GetRoot(tree), 0);
    return out;
}

// The items of both Startup folders and the Run key show with their marks (one switched off
// in Task Manager is greyed, all users' active ones have no box, one whose program is not there
// wears the warning sign); resting the pointer on an item shows its tip, which says what keeps an
// item from starting or moving, a delayed item's last measurement from the impact file, and who
// made its program and whether its signature holds; a click on a box ticks it.
TEST_F(MainWindowTest, TheTreeShowsTheRealItemsTipsAndTicks) {
    ASSERT_TRUE(test::TrustTestRoot());
    Shortcut(places.UserFolder, "Tool.lnk");
    Shortcut(places.UserFolder, "Off.lnk");
    Shortcut(places.CommonFolder, "Résumé.lnk");
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kApprovedFolderKey, "Off.lnk",
                             {kBinaryType, std::vector<uint8_t>(kApprovedFlagSize, 3)}));
    RunValue(RegistryRoot::CurrentUser, "Gone", "C:\\nowhere\\gone.exe");
    const std::string signedCopy = test::SignedCopy("trusted.exe");
    RunValue(RegistryRoot::CurrentUser, "Signed", signedCopy);
    const std::string measured = "Résumé.lnk"; // measured as "RÉSUMÉ.LNK": one name
    app.model.ProgramGroups[0].Programs = {{measured, "", "Execute", 0, ""},
                                           {"Gone.lnk", "", "Execute", 0, ""},
                                           {"cmd.exe", "/c del C:\\x", "ExecuteReg", 0, "Wipe"}};
    test::MakeFolder(app.folders.UserItemsFolder);
    test::WriteFileBytes(app.folders.UserItemsFolder + measured, "x");
    app.Store().File().WriteItems();
    test::WriteFileBytes(
        app.Store().File().ImpactFilePath(),
        FormatImpactFile({{{kUserStartup, "RÉSUMÉ.LNK"}, "", 4140, 2260, 45 << 20, 0, 9000}}));
    Open();
    tree = window->Tree();
    const std::string decimal = LocaleDecimalSeparator();
    const struct {
        std::string container, item;
        std::string tip; // before the line of what the item starts
    } expected[] = {
        {"DelayedItemsStartupCurrentUser", "Résumé.lnk",
         "High: 2" + decimal + "3 s CPU, 45 MB read, ready after 4" + decimal + "1 s\r\n" +
             app.text.Message(50)},
        {"DelayedItemsStartupCurrentUser", "Gone.lnk",
         FillIn(app.text.Message(29), {"Gone.lnk"}) + "\r\n" + app.text.Message(51)},
        {"DelayedItemsRegistryCurrentUser", "Wipe=cmd.exe /c del C:\\x",
         FillIn(app.text.Message(27), {"del"}) + "\r\n" + app.text.Message(50)},
        {"AllUsersStartup", "Résumé.lnk", app.text.Message(35) + "\r\n" + app.text.Message(50)},
        {"CurrentUserRegistry", "Gone=C:\\nowhere\\gone.exe", app.text.Message(51)},
        {"CurrentUserRegistry", "Signed=" + signedCopy,
         FillIn(app.text.Message(45), {"Hexmoor Clock, Hexmoor Ltd"})}};
    auto tipOf = [&](const auto& c) {
        const std::string tip = window->TreeView()->ToolTip(Node(c.container, c.item));
        return tip.substr(0, tip.rfind("\r\n"));
    };
    // The programs' facts come in after the tree shows.
    EXPECT_TRUE(test::PumpUntil([&] {
        return std::all_of(std::begin(expected), std::end(expected),
                           [&](const auto& c) { return tipOf(c) == c.tip; });
    }));
    for (const auto& c : expected)
        EXPECT_EQ(tipOf(c), c.tip) << c.item;
    const std::vector<std::string> shown = Shown(TreeHwnd());
    ASSERT_GE(shown.size(), 11u);
    EXPECT_EQ(std::vector(shown.begin(), shown.begin() + 11),
              (std::vector<std::string>{
                  "Current User (4)", "  Startup Folder (2)", "    Off.lnk grey", "    Tool.lnk",
                  "  Registry Run (2)", "    Gone=C:\\nowhere\\gone.exe warned",
                  "    Signed=" + signedCopy, "All Users (1)", "  Startup Folder (1)",
                  "    Résumé.lnk no box", "  Registry Run (0)"}));

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

    SelectItem("CurrentUserStartup", "Tool.lnk");
    test::Type({VK_SPACE});
    test::PumpUntilIdle();
    ClickButton(ID_CMD_DELAY_CHECKED);
    EXPECT_FALSE(test::PathExists(UserStartup("Tool.lnk")));
    tree = window->Tree();
    EXPECT_EQ(Items("DelayedItemsStartupCurrentUser"), std::vector<std::string>{"Tool.lnk"});
    EXPECT_FALSE(ButtonOn(ID_CMD_DELAY_CHECKED)); // the rebuilt tree has nothing ticked

    // Stop from the popup: Delay, then Stop.
    SelectItem("CurrentUserRegistry", "Alpha=C:\\alpha.exe /a");
    test::Type({VK_APPS, VK_DOWN, VK_DOWN, VK_RETURN});
    test::PumpUntilIdle();
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "(none)");
    EXPECT_NE(File().find("_REGCU_Alpha=C:\\alpha.exe /a"), std::string::npos) << File();

    SelectItem("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a");
    test::Type({VK_SPACE});
    test::ChildProcess script("\"" + folder / "tolvanec.exe" + "\" delay Beta");
    ASSERT_TRUE(script.WaitForExit(30000));
    EXPECT_TRUE(test::PumpUntil([&] {
        tree = window->Tree();
        return !Leaves("DelayedItemsRegistryCurrentUser").empty();
    }));
    EXPECT_TRUE(tree.Node(Node("StoppedItemsCurrentReg", "Alpha=C:\\alpha.exe /a")).Checked);

    // Run on the ticked stopped value puts it back as it was; the script's move stays.
    ClickButton(ID_CMD_RUN_CHECKED);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Alpha"), "C:\\alpha.exe /a");
    EXPECT_NE(File().find("ExecuteReg (\"C:\\beta.exe\", \"\", 0, \"Beta\");"), std::string::npos)
        << File();
    tree = window->Tree();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              std::vector<std::string>{"Beta=C:\\beta.exe"});
    EXPECT_TRUE(messages.shown.empty());
}

// Another language: its texts and the file, the list's headings at once, and the user told in
// it that the window's own texts follow at the next start; a choice that the file cannot take
// is not kept, and the status line says so.
TEST_F(MainWindowTest, ALanguageChosenIsKeptOrTheUserIsTold) {
    Open();
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(1), 0);
    test::PumpUntilIdle();
    EXPECT_EQ(app.text.Menus[0], "&Datei");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    EXPECT_EQ(window->Tree().Node(window->Tree().Find("CurrentUserStartup")).Text,
              app.text.Toolbar.at(10) + " (0)");
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text, app.text.Message(41));

    test::MakeFolder(FilePath() + ".new");
    PostMessageA(hwnd, WM_COMMAND, LanguageCommand(0), 0);
    test::PumpUntilIdle();
    test::RemoveTree(FilePath() + ".new");
    EXPECT_NE(File().find("const Language = Deutsch;"), std::string::npos);
    EXPECT_EQ(TextOf(FindWindowExA(hwnd, nullptr, STATUSCLASSNAMEA, nullptr)),
              app.text.Message(39));
}

// The close button (Alt+F4 is its key) hides the window with CloseType 1 and ends the program
// with 0; either way the window opens again where it was closed.
TEST_F(MainWindowTest, TheCloseButtonHidesOrEndsAndThePlaceIsKept) {
    for (int closeType : {1, 0}) {
        const RECT at{150, 100 + 50 * closeType, 950, 660 + 50 * closeType}; // one per round
        app.model.CloseType = closeType;
        app.Store().File().WriteItems(); // the window reads its settings from the file
        Open();
        SetWindowPos(hwnd, nullptr, at.left, at.top, at.right - at.left, at.bottom - at.top,
                     SWP_NOZORDER);
        test::Chord({VK_MENU, VK_F4});
        test::PumpUntilIdle();
        EXPECT_EQ(window->Handle() == nullptr, closeType == 0);
        EXPECT_FALSE(IsWindowVisible(hwnd));
        EXPECT_EQ(app.wait.QuitRequested, closeType == 0);
        Open(false);
        RECT r{};
        GetWindowRect(hwnd, &r);
        EXPECT_TRUE(EqualRect(&r, &at)) << r.left << " " << r.top << " " << r.right << " "
                                        << r.bottom << " for CloseType " << closeType;
    }
}

TEST_F(MainWindowTest, OptionsFromTheToolsMenuStoreWhatOkFindsAndEscapeNothing) {
    Open();
    auto open = [&] {
        test::Chord({VK_MENU, 'T'});
        test::Type({'O'});
        test::PumpUntilIdle();
        return window->Options() ? window->Options()->Hwnd() : nullptr;
    };
    HWND options = open();
    ASSERT_TRUE(options);
    auto item = [&](int id) { return GetDlgItem(options, id); };
    ClickOn(item(IDC_OPT_WAIT_IDLE));
    TypeInto(item(IDC_OPT_DELAY), {'2', 'A', VK_OEM_PERIOD, '5'}); // a letter does nothing
    EXPECT_EQ(TextOf(item(IDC_OPT_DELAY)), "2.5");
    SetFocus(item(IDC_OPT_CLOSE)); // the close button ends the program
    test::Type({VK_UP});
    test::PumpUntilIdle();       // handled before the keyboard moves on
    SetFocus(item(IDC_OPT_RUN)); // started at log-on for this user
    test::Type({VK_DOWN, VK_DOWN});
    ClickOn(item(IDOK));
    EXPECT_FALSE(window->Options());
    for (const char* line : {"const MainStartupDelay = 2.5;", "const CloseType = 0;",
                             "const WaitForIdle = 1;", "const StartupType = 2;"})
        EXPECT_NE(File().find(line), std::string::npos) << line;
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, kOwnRunValue), app.folders.RunCommand);

    // Opened again it shows what was stored; Escape closes it, changing nothing.
    ASSERT_TRUE(options = open());
    EXPECT_EQ(IsDlgButtonChecked(options, IDC_OPT_WAIT_IDLE), BST_CHECKED);
    const std::string stored = File();
    ClickOn(item(IDC_OPT_WAIT_IDLE));
    TypeInto(item(IDC_OPT_DELAY), {'9'});
    test::Type({VK_ESCAPE});
    test::PumpUntilIdle();
    EXPECT_FALSE(window->Options());
    EXPECT_EQ(File(), stored);
}

// The group editor, modeless in this process: what proggroup.c holds after each step.
TEST_F(MainWindowTest, TheGroupEditorAddsAndRemovesAGroupWithItsProgram) {
    test::WriteFileBytes(folder / "Clock.exe", "MZ");
    GroupEditorDialog editor(app.Store(), app.text, messages, app.log);
    ASSERT_TRUE(editor.ShowModeless(GetModuleHandleA(nullptr), nullptr));
    SetForegroundWindow(editor.Hwnd());
    auto item = [&](int id) { return GetDlgItem(editor.Hwnd(), id); };
    TypeInto(item(IDC_GE_GROUP), {'T', 'O', 'O', 'L', 'S'});
    ClickOn(item(IDC_GE_ADD_GROUP));

    // A program for it: the path from the file dialog, a delay typed ("a" is dropped).
    messages.chosenFile = folder / "Clock.exe";
    ClickOn(item(IDC_GE_BROWSE));
    TypeInto(item(IDC_GE_DELAY), {'5', 'A'});
    ClickOn(item(IDC_GE_ADD));
    EXPECT_NE(File().find("void tools()\r\n{\r\n     Execute (\"" + folder / "Clock.exe" +
                          "\", \"\", 5, \"\");"),
              std::string::npos)
        << File();

    // The group's node selected, removed with its program after the question.
    const TreeModel& groups = editor.Model().Tree;
    for (size_t i = 0; i < groups.Count(); ++i)
        if (groups.Node(int(i)).Text == "tools")
            TreeView_SelectItem(editor.TreeView()->Hwnd(), editor.TreeView()->ItemOf(int(i)));
    messages.answer = kIdYes;
    ClickOn(item(IDC_GE_REMOVE));
    EXPECT_EQ(File().find("void tools()"), std::string::npos);
    EXPECT_EQ(File().find("Clock.exe"), std::string::npos);
}

} // namespace
} // namespace tolvane
