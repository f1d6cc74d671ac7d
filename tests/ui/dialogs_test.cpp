// The options, the tip of the day and the group editor as the user meets them: opened with real
// keys (the editor on its own), filled in with real keys and clicks, and what each leaves in
// proggroup.c and the Run key afterwards; every text of every window fits in every language.
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

std::string TextOf(HWND window) {
    char text[512] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}

// The font of a window as it is made at a density, from the one made at 96 dpi.
UniqueGdiObject FontAt(HWND window, int dpi) {
    LOGFONTA face{};
    GetObjectA(reinterpret_cast<HFONT>(SendMessageA(window, WM_GETFONT, 0, 0)), sizeof face, &face);
    face.lfHeight = -MulDiv(MulDiv(-face.lfHeight, 72, 96), dpi, 72);
    return UniqueGdiObject(CreateFontIndirectA(&face));
}

// What the text needs in the window's font at a density, within the width for word breaks.
SIZE Needs(HWND window, int dpi, const std::string& text, int width, UINT format) {
    const UniqueGdiObject font = FontAt(window, dpi);
    const UniqueDc dc(CreateCompatibleDC(nullptr)); // let go first, the font then unselected
    SelectObject(dc.get(), font.get());
    RECT need{0, 0, width, 0};
    DrawTextA(dc.get(), text.c_str(), -1, &need, DT_CALCRECT | format);
    return {need.right, need.bottom};
}

// The average character of the dialog's font at a density, by which Windows lays out its
// controls (the dialog base units).
SIZE BaseUnits(HWND dialog, int dpi) {
    const SIZE letters = Needs(dialog, dpi, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz",
                               0, DT_SINGLELINE);
    return {(letters.cx / 26 + 1) / 2, Needs(dialog, dpi, "A", 0, DT_SINGLELINE).cy};
}

// Every text that a label, button or combo box of the dialog shows fits it, at 100 % and at
// 150 % (the fonts made at 144 dpi, each control grown as the dialog's base units do); no
// access key names two of its controls. What does not, is added to the problems.
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
        int frame = 0; // what the control needs beside its text, at 96 dpi
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
                problems.insert("\"" + keys[key] + "\" and \"" + texts[0] +
                                "\" share one access key");
        }
        if (!(style & WS_VISIBLE))
            continue;
        RECT client{};
        GetClientRect(control, &client);
        const UINT format = (button || !label ? DT_SINGLELINE : DT_WORDBREAK) |
                            (label && (style & SS_NOPREFIX) ? DT_NOPREFIX : 0);
        const SIZE base = BaseUnits(dialog, 96);
        for (int dpi : {96, 144}) {
            const SIZE scaled = BaseUnits(dialog, dpi);
            const int width = MulDiv(client.right, scaled.cx, base.cx) - MulDiv(frame, dpi, 96);
            const int height = MulDiv(client.bottom, scaled.cy, base.cy);
            for (const std::string& text : texts)
                if (const SIZE need = Needs(control, dpi, text, width, format);
                    need.cx > width || need.cy > height)
                    problems.insert("control " + std::to_string(GetDlgCtrlID(control)) + " at " +
                                    std::to_string(dpi) + " dpi: \"" + text + "\" needs " +
                                    std::to_string(need.cx) + " x " + std::to_string(need.cy));
        }
    }
}

// The main window: the status line's text beside the progress part, and each toolbar caption,
// within the room they have (laid out in pixels from twips, the room grows by half at
// 150 %).
void FindMainWindowMisfits(HWND window, std::set<std::string>& problems) {
    std::vector<std::tuple<HWND, int, std::string>> texts; // the control, its room, the text
    HWND status = FindWindowExA(window, nullptr, STATUSCLASSNAMEA, nullptr);
    RECT part{}, progress{};
    SendMessageA(status, SB_GETRECT, 0, reinterpret_cast<LPARAM>(&part));
    GetWindowRect(GetWindow(status, GW_CHILD), &progress);
    MapWindowPoints(nullptr, status, reinterpret_cast<POINT*>(&progress), 2);
    if (progress.left < part.right)
        problems.insert("the progress part covers the status line");
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
            problems.insert("toolbar button " + std::to_string(b.idCommand) + " is cut off");
        char caption[128] = {};
        if (!(b.fsStyle & BTNS_SEP) && SendMessageA(tools, TB_GETBUTTONTEXTA, b.idCommand,
                                                    reinterpret_cast<LPARAM>(caption)) > 0)
            texts.emplace_back(tools, r.right - r.left - image, caption);
    }
    for (int dpi : {96, 144})
        for (const auto& [control, room, text] : texts)
            if (Needs(control, dpi, text, 0, DT_SINGLELINE).cx > MulDiv(room, dpi, 96))
                problems.insert("\"" + text + "\" at " + std::to_string(dpi) + " dpi is cut");
}

class DialogsTest : public test::MainWindowTest {
protected:
    void ClickOn(HWND dialog, int control) {
        RECT r{};
        GetWindowRect(GetDlgItem(dialog, control), &r);
        test::Click({(r.left + 6), (r.top + r.bottom) / 2});
        test::PumpUntilIdle();
    }
    // Replaces the text of the box (an edit box or a combo box's) by typing into it.
    void TypeInto(HWND dialog, int control, std::initializer_list<unsigned short> keys) {
        HWND box = GetDlgItem(dialog, control);
        SetFocus(box);
        SendMessageA(box, EM_SETSEL, 0, -1);
        SendMessageA(box, CB_SETEDITSEL, 0, MAKELPARAM(0, -1));
        test::Type(keys);
        test::PumpUntilIdle();
    }
    // Opens a dialog from the menu bar by the access keys of its menu and its entry.
    void FromMenu(unsigned short menu, unsigned short entry) {
        test::Chord({VK_MENU, menu});
        test::Type({entry});
        test::PumpUntilIdle();
    }
};

TEST_F(DialogsTest, OptionsFromTheToolsMenuStoreWhatOkFindsAndEscapeNothing) {
    Open();
    FromMenu('T', 'O');
    ASSERT_TRUE(window->Options());
    HWND options = window->Options()->Hwnd();
    EXPECT_EQ(TextOf(GetDlgItem(options, IDC_OPT_DELAY)), "30");
    ClickOn(options, IDC_OPT_WAIT_IDLE);
    // A letter, a minus and Backspace do nothing; Delete and typing over edit.
    TypeInto(options, IDC_OPT_DELAY,
             {'1', 'A', VK_OEM_MINUS, VK_BACK, VK_HOME, VK_DELETE, '2', VK_OEM_PERIOD, '5'});
    EXPECT_EQ(TextOf(GetDlgItem(options, IDC_OPT_DELAY)), "2.5");
    SetFocus(GetDlgItem(options, IDC_OPT_CLOSE)); // the close button ends the program
    test::Type({VK_UP});
    test::PumpUntilIdle();                      // handled before the keyboard moves on
    SetFocus(GetDlgItem(options, IDC_OPT_RUN)); // started at log-on for this user
    test::Type({VK_DOWN, VK_DOWN});
    ClickOn(options, IDOK);
    EXPECT_FALSE(window->Options());
    for (const char* line : {"const MainStartupDelay = 2.5;", "const CloseType = 0;",
                             "const WaitForIdle = 1;", "const StartupType = 2;"})
        EXPECT_NE(File().find(line), std::string::npos) << line;
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, kOwnRunValue), app.folders.RunCommand);

    // Opened again it shows what was stored; a delay that is no number keeps it open, and
    // Escape closes it, changing nothing.
    FromMenu('T', 'O');
    ASSERT_TRUE(window->Options());
    options = window->Options()->Hwnd();
    EXPECT_EQ(IsDlgButtonChecked(options, IDC_OPT_WAIT_IDLE), BST_CHECKED);
    TypeInto(options, IDC_OPT_DELAY, {'1', VK_OEM_PERIOD, '2', VK_OEM_PERIOD, '3'});
    ClickOn(options, IDOK);
    ASSERT_TRUE(window->Options());
    ASSERT_FALSE(messages.shown.empty());
    EXPECT_EQ(messages.shown.back().Text, app.text.Message(7));
    SetFocus(GetDlgItem(options, IDC_OPT_DELAY));
    test::Type({VK_ESCAPE});
    test::PumpUntilIdle();
    EXPECT_FALSE(window->Options());
    EXPECT_NE(File().find("const MainStartupDelay = 2.5;"), std::string::npos);
}

TEST_F(DialogsTest, TipOfTheDayFromTheHelpMenuKeepsItsBoxWithOkAndEscape) {
    Open();
    auto openTip = [&] {
        FromMenu('H', 'T');
        return window->Tip() ? window->Tip()->Hwnd() : nullptr;
    };
    // Unticked and closed with OK; ticked again and closed with Escape.
    HWND tip = openTip();
    ASSERT_TRUE(tip);
    ClickOn(tip, IDC_TIP_SHOW);
    ClickOn(tip, IDOK);
    EXPECT_FALSE(window->Tip());
    EXPECT_NE(File().find("const ShowTipsAtStartup = 0;"), std::string::npos);
    ASSERT_TRUE(tip = openTip());
    EXPECT_EQ(IsDlgButtonChecked(tip, IDC_TIP_SHOW), BST_UNCHECKED);
    ClickOn(tip, IDC_TIP_SHOW);
    test::Type({VK_ESCAPE});
    test::PumpUntilIdle();
    EXPECT_FALSE(window->Tip());
    EXPECT_NE(File().find("const ShowTipsAtStartup = 1;"), std::string::npos);
}

// The group editor, modeless in this process: what proggroup.c holds after each step.
TEST_F(DialogsTest, TheGroupEditorAddsRenamesAndRemovesAGroupWithItsProgram) {
    test::WriteFileBytes(folder / "Clock.exe", "MZ");
    GroupEditorDialog editor(app.Store(), app.text, messages, app.log);
    ASSERT_TRUE(editor.ShowModeless(GetModuleHandleA(nullptr), nullptr));
    HWND dialog = editor.Hwnd();
    SetForegroundWindow(dialog);
    auto select = [&](const std::string& text) {
        const TreeModel& groups = editor.Model().Tree;
        for (size_t i = 0; i < groups.Count(); ++i)
            if (groups.Node(int(i)).Text == text)
                TreeView_SelectItem(editor.TreeView()->Hwnd(), editor.TreeView()->ItemOf(int(i)));
        test::PumpUntilIdle();
    };
    TypeInto(dialog, IDC_GE_GROUP, {'T', 'O', 'O', 'L', 'S'});
    ClickOn(dialog, IDC_GE_ADD_GROUP);
    EXPECT_NE(File().find("void tools()"), std::string::npos) << File();

    // A program for it: the path from the file dialog, a delay typed ("a" is dropped).
    messages.chosenFile = folder / "Clock.exe";
    ClickOn(dialog, IDC_GE_BROWSE);
    TypeInto(dialog, IDC_GE_DELAY, {'5', 'A'});
    ClickOn(dialog, IDC_GE_ADD);
    EXPECT_NE(File().find("void tools()\r\n{\r\n     Execute (\"" + folder / "Clock.exe" +
                          "\", \"\", 5, \"\");"),
              std::string::npos)
        << File();

    // Renamed: the group's node is selected, a new name typed, "Edit Group" clicked.
    select("tools");
    TypeInto(dialog, IDC_GE_GROUP, {'K', 'I', 'T'});
    ClickOn(dialog, IDC_GE_EDIT_GROUP);
    EXPECT_NE(File().find("void kit()"), std::string::npos) << File();
    EXPECT_EQ(File().find("void tools()"), std::string::npos);

    // Removed with its program, after the question.
    select("kit");
    messages.answer = kIdYes;
    ClickOn(dialog, IDC_GE_REMOVE);
    ASSERT_FALSE(messages.shown.empty());
    EXPECT_EQ(messages.shown.back().Text, app.text.Message(10));
    EXPECT_EQ(File().find("void kit()"), std::string::npos);
    EXPECT_EQ(File().find("Execute (\"" + folder / "Clock.exe"), std::string::npos);
    EXPECT_NE(File().find("void Startup()"), std::string::npos);
}

// Each dialog and the main window at its smallest in each language of the list, with the other
// texts that its controls may show: the editor's Update and the reasons on its message line,
// every tip of the day.
TEST_F(DialogsTest, EveryTextFitsAndNamesItsOwnAccessKeyInEveryLanguageAndDensity) {
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
        std::vector<std::pair<int, std::string>> tips,
            editorTexts = {{IDC_GE_ADD, app.text.Buttons.at(7)}};
        for (size_t reason = 31; reason <= 34; ++reason)
            editorTexts.push_back({IDC_GE_MESSAGE, app.text.Message(reason)});
        for (const std::string& text : SplitTextLines(test::ReadFileBytes(
                 folder / ("lang\\" + language.Code + "\\tipofday." + language.Code))))
            tips.push_back({IDC_TIP_TEXT, text});
        const std::tuple<const char*, HWND, std::vector<std::pair<int, std::string>>> shown[] = {
            {"options", options.Hwnd(), {}},
            {"tip of the day", tip.Hwnd(), tips},
            {"about", about.Hwnd(), {}},
            {"group editor", editor.Hwnd(), editorTexts}};
        std::set<std::string> problems;
        for (const auto& [name, dialog, others] : shown) {
            FindDialogMisfits(dialog, problems);
            for (const auto& [control, text] : others) {
                SetDlgItemTextA(dialog, control, text.c_str());
                FindDialogMisfits(dialog, problems);
            }
            for (const std::string& problem : problems)
                ADD_FAILURE() << language.Code << " " << name << ", " << problem;
            problems.clear();
        }
        Open();
        SetWindowPos(hwnd, nullptr, 0, 0, TwipsToPixels(kMinimumWidthTwips, 96),
                     TwipsToPixels(kMinimumHeightTwips, 96), SWP_NOMOVE | SWP_NOZORDER);
        test::PumpUntilIdle();
        FindMainWindowMisfits(hwnd, problems);
        for (const std::string& problem : problems)
            ADD_FAILURE() << language.Code << " main window, " << problem;
    }
}

} // namespace
} // namespace tolvane
