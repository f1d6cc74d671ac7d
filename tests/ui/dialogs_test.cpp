// The options and the group editor as the user meets them: opened with real keys (the editor on
// its own), filled in with real keys and clicks, and what each leaves in proggroup.c and the Run
// key afterwards; every text of every window fits in every language.
#include <map>
#include <set>

#include "items/run_entry.h"
#include "platform/min_size.h"
#include "text/language.h"
#include "ui/about/about_dialog.h"
#include "ui/group_editor/group_editor_dialog.h"
#include "ui/group_editor/group_editor_ids.h"
#include "ui/main_window_fixture.h"
#include "ui/options/options_dialog.h"
#include "ui/options/options_ids.h"
#include "ui/tips/tip_dialog.h"
#include "ui/tips/tip_ids.h"

namespace tolvane {
namespace {

using test::MainWindowTest;
using test::TextOf;

// What the text needs in the window's font, within the width for word breaks.
SIZE Needs(HWND window, const std::string& text, int width, UINT format) {
    const UniqueDc dc(CreateCompatibleDC(nullptr));
    SelectObject(dc.get(), reinterpret_cast<HFONT>(SendMessageA(window, WM_GETFONT, 0, 0)));
    RECT need{0, 0, width, 0};
    DrawTextA(dc.get(), text.c_str(), -1, &need, DT_CALCRECT | format);
    return {need.right, need.bottom};
}

// Every text that a label, button or combo box of the dialog shows fits it; no access key names
// two of its controls. What does not, is added to the problems.
void FindDialogMisfits(HWND dialog, std::set<std::string>& problems) {
    std::map<std::string, std::string> keys;
    for (HWND control = GetWindow(dialog, GW_CHILD); control;
         control = GetWindow(control, GW_HWNDNEXT)) {
        char kind[32] = {};
        GetClassNameA(control, kind, sizeof kind);
        const LONG style = GetWindowLongA(control, GWL_STYLE);
        const bool label = !lstrcmpiA(kind, "Static"), button = !lstrcmpiA(kind, "Button");
        const LONG type = style & (button ? BS_TYPEMASK : SS_TYPEMASK);
        std::vector<std::string> texts;
        int frame = 0; // what the control needs beside its text
        if (!lstrcmpiA(kind, "ComboBox")) {
            for (int i = 0; i < SendMessageA(control, CB_GETCOUNT, 0, 0); ++i) {
                char item[512] = {};
                SendMessageA(control, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(item));
                texts.push_back(item);
            }
            frame = GetSystemMetrics(SM_CXVSCROLL) + 8;
        } else if ((label && type <= SS_RIGHT) || button) {
            texts.push_back(TextOf(control));
            frame = !button                    ? 0
                    : type <= BS_DEFPUSHBUTTON ? 8
                    : type == BS_GROUPBOX      ? 16
                                               : GetSystemMetrics(SM_CXMENUCHECK) + 4;
            const std::string key = label && (style & SS_NOPREFIX) ? "" : test::AccessKey(texts[0]);
            if (!key.empty() && !keys.emplace(key, texts[0]).second)
                problems.insert(TextOf(dialog) + ": \"" + keys[key] + "\" and \"" + texts[0] +
                                "\" share one access key");
        }
        if (!(style & WS_VISIBLE))
            continue;
        RECT client{};
        GetClientRect(control, &client);
        const UINT format = (button || !label ? DT_SINGLELINE : DT_WORDBREAK) |
                            (label && (style & SS_NOPREFIX) ? DT_NOPREFIX : 0);
        for (const std::string& text : texts)
            if (const SIZE need = Needs(control, text, client.right - frame, format);
                need.cx > client.right - frame || need.cy > client.bottom)
                problems.insert(
                    TextOf(dialog) + ", control " + std::to_string(GetDlgCtrlID(control)) + ": \"" +
                    text + "\" needs " + std::to_string(need.cx) + " x " + std::to_string(need.cy));
    }
}

// The main window: the status line's text beside the progress part, and each toolbar caption,
// within the room they have.
void FindMainWindowMisfits(HWND window, std::set<std::string>& problems) {
    std::vector<std::tuple<HWND, int, std::string>> texts; // the control, its room, the text
    HWND status = FindWindowExA(window, nullptr, STATUSCLASSNAMEA, nullptr);
    RECT part{}, progress{};
    SendMessageA(status, SB_GETRECT, 0, reinterpret_cast<LPARAM>(&part));
    GetWindowRect(GetWindow(status, GW_CHILD), &progress);
    MapWindowPoints(nullptr, status, reinterpret_cast<POINT*>(&progress), 2);
    if (progress.left < part.right)
        problems.insert("main window: the progress part covers the status line");
    texts.emplace_back(status, part.right - part.left - 8, TextOf(status));
    HWND tools = FindWindowExA(window, nullptr, TOOLBARCLASSNAMEA, nullptr);
    RECT bar{};
    GetClientRect(tools, &bar);
    const int image = HIWORD(SendMessageA(tools, TB_GETBUTTONSIZE, 0, 0)); // square pictures
    for (int i = 0; i < SendMessageA(tools, TB_BUTTONCOUNT, 0, 0); ++i) {
        TBBUTTON b{};
        RECT r{};
        SendMessageA(tools, TB_GETBUTTON, i, reinterpret_cast<LPARAM>(&b));
        SendMessageA(tools, TB_GETITEMRECT, i, reinterpret_cast<LPARAM>(&r));
        if (r.right > bar.right)
            problems.insert("main window: button " + std::to_string(b.idCommand) + " is cut off");
        char caption[128] = {};
        if (!(b.fsStyle & BTNS_SEP) && SendMessageA(tools, TB_GETBUTTONTEXTA, b.idCommand,
                                                    reinterpret_cast<LPARAM>(caption)) > 0)
            texts.emplace_back(tools, r.right - r.left - image, caption);
    }
    for (const auto& [control, room, text] : texts)
        if (Needs(control, text, 0, DT_SINGLELINE).cx > room)
            problems.insert("main window: \"" + text + "\" is cut");
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
    EXPECT_NE(File().find("void tools()"), std::string::npos) << File();

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
    EXPECT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(File().find("void tools()"), std::string::npos);
    EXPECT_EQ(File().find("Execute (\"" + folder / "Clock.exe"), std::string::npos);
    EXPECT_NE(File().find("void Startup()"), std::string::npos);
}

// Each dialog and the main window at its smallest in each language of the list, with the other
// texts that its controls may show: the editor's Update and the reasons on its message line,
// every tip of the day.
TEST_F(MainWindowTest, EveryTextFitsAndNamesItsOwnAccessKeyInEveryLanguage) {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    for (const LanguageEntry& language : app.text.Languages) {
        app.model.Language = language.Code;
        LoadLanguageFiles(app.folders.ProgramFolder, language.Code, app.text);
        OptionsDialog options(app.Store(), app.text, messages, app.log);
        TipDialog tip(app.Store(), app.text, app.log);
        AboutDialog about(app.text, app.log);
        GroupEditorDialog editor(app.Store(), app.text, messages, app.log);
        ASSERT_TRUE(options.ShowModeless(instance, nullptr) &&
                    tip.ShowModeless(instance, nullptr) && about.ShowModeless(instance, nullptr) &&
                    editor.ShowModeless(instance, nullptr));
        // Each dialog as it opens, then with each other text that one of its controls shows.
        std::vector<std::tuple<HWND, int, std::string>> shown = {
            {options.Hwnd(), 0, ""},
            {about.Hwnd(), 0, ""},
            {editor.Hwnd(), 0, ""},
            {editor.Hwnd(), IDC_GE_ADD, app.text.Buttons.at(7)}};
        for (size_t reason = 31; reason <= 34; ++reason)
            shown.emplace_back(editor.Hwnd(), IDC_GE_MESSAGE, app.text.Message(reason));
        for (const std::string& text : SplitTextLines(test::ReadFileBytes(
                 folder / ("lang\\" + language.Code + "\\tipofday." + language.Code))))
            shown.emplace_back(tip.Hwnd(), IDC_TIP_TEXT, text);
        std::set<std::string> problems;
        for (const auto& [dialog, control, text] : shown) {
            if (control)
                SetDlgItemTextA(dialog, control, text.c_str());
            FindDialogMisfits(dialog, problems);
        }
        Open();
        SetWindowPos(hwnd, nullptr, 0, 0, TwipsToPixels(kMinimumWidthTwips, 96),
                     TwipsToPixels(kMinimumHeightTwips, 96), SWP_NOMOVE | SWP_NOZORDER);
        test::PumpUntilIdle();
        FindMainWindowMisfits(hwnd, problems);
        for (const std::string& problem : problems)
            ADD_FAILURE() << language.Code << ", " << problem;
    }
}

} // namespace
} // namespace tolvane
