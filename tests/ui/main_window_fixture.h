// The main window in this process against the prefix's real startup locations, with the
// program's language files, and the helpers that drive it with real keys and clicks.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>
#include <string>
#include <vector>

#include "config/language_files.h"
#include "items/startup_fixture.h"
#include "platform/message_pump.h"
#include "platform/registry.h"
#include "ui/main_window.h"

namespace tolvane::test {

class MainWindowTest : public StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        CopyTree(BuiltProgramFolder() + "\\lang", folder / "lang");
        LoadLanguageList(app.folders.ProgramFolder, app.text);
        LoadLanguageFiles(app.folders.ProgramFolder, app.model.Language, app.text);
        app.OnlineSearchTemplate = "https://s.example/?q={SEARCHTERMS}";
    }
    void TearDown() override {
        window.reset();
        TakeQuitMessage();
        StartupFixture::TearDown();
    }
    // The quit message that a window posts as it ends would stop every later pump here.
    static void TakeQuitMessage() {
        MSG msg;
        while (PeekMessageA(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) {
        }
    }
    void Open() {
        window.reset();
        // Each test's window opens where the test puts it, not where the last one was closed.
        (void)CRegistry().DeleteValue(RegistryRoot::CurrentUser, "Software\\Hexmoor\\Tolvane",
                                      "WindowPlacement");
        window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
        window->OpenWithShell = [this](const std::string& target) {
            opened.push_back(target);
            return shellOpens;
        };
        ASSERT_TRUE(window->Load());
        hwnd = window->Handle();
        SetWindowPos(hwnd, HWND_TOP, 120, 80, 800, 560, SWP_SHOWWINDOW);
        SetForegroundWindow(hwnd);
        Pump();
    }
    static void Pump(int rounds = 30) {
        for (int i = 0; i < rounds; ++i, Sleep(10))
            YieldToMessageLoop();
    }
    HWND TreeHwnd() { return window->TreeView()->Hwnd(); }
    // The status line's text when the tip box or the language could not be kept in the file.
    static constexpr const char* kNotKeptLine =
        "Your choice could not be saved in proggroup.c; log.txt in Tolvane's program folder says "
        "why.";
    // The status line's first part, as the control shows it.
    std::string StatusLine() {
        char status[512] = {};
        SendMessageA(FindWindowExA(hwnd, nullptr, "msctls_statusbar32", nullptr), SB_GETTEXTA, 0,
                     reinterpret_cast<LPARAM>(status));
        return status;
    }
    std::string File() { return ReadFileBytes(folder / (WindowsUserName() + "\\proggroup.c")); }
    // The tree's node of an item, selected in the control, with the keyboard in the tree.
    int SelectItem(const std::string& container, const std::string& text) {
        tree = window->Tree();
        const int node = Node(container, text);
        TreeView_SelectItem(TreeHwnd(), window->TreeView()->ItemOf(node));
        SetFocus(TreeHwnd());
        Pump(5);
        return node;
    }
    void Tick(const std::string& container, const std::string& text) {
        SelectItem(container, text);
        Type({VK_SPACE});
        Pump();
    }
    void ClickButton(int command) {
        HWND bar = window->Toolbar()->Hwnd();
        RECT r{};
        SendMessageA(bar, TB_GETRECT, command, reinterpret_cast<LPARAM>(&r));
        POINT at{(r.left + r.right) / 2, (r.top + r.bottom) / 2};
        ClientToScreen(bar, &at);
        Click(at);
        Pump(60);
    }
    // Each button as "id caption on|off"; "-" for a separator.
    std::string Toolbar() {
        HWND bar = window->Toolbar()->Hwnd();
        std::string out;
        const int count = static_cast<int>(SendMessageA(bar, TB_BUTTONCOUNT, 0, 0));
        for (int i = 0; i < count; ++i) {
            TBBUTTON b{};
            SendMessageA(bar, TB_GETBUTTON, i, reinterpret_cast<LPARAM>(&b));
            if (b.fsStyle & BTNS_SEP) {
                out += "-\n";
                continue;
            }
            char text[64] = {};
            SendMessageA(bar, TB_GETBUTTONTEXTA, b.idCommand, reinterpret_cast<LPARAM>(text));
            const bool on = SendMessageA(bar, TB_ISBUTTONENABLED, b.idCommand, 0) != 0;
            out += std::to_string(b.idCommand) + " " + text + (on ? " on" : " off") + "\n";
        }
        return out;
    }
    // The menu as rendered: captions indented by depth, "-" for a separator, "v" for a check
    // mark, "(off)" for a grayed item.
    static std::string Outline(HMENU menu, const std::string& indent = "") {
        std::string out;
        for (int i = 0; i < GetMenuItemCount(menu); ++i) {
            char text[128] = {};
            MENUITEMINFOA info{sizeof info};
            info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_SUBMENU | MIIM_STRING;
            info.dwTypeData = text;
            info.cch = sizeof text;
            GetMenuItemInfoA(menu, i, TRUE, &info);
            if (info.fType & MFT_SEPARATOR) {
                out += indent + "-\n";
                continue;
            }
            out += indent + text + (info.fState & MFS_CHECKED ? " v" : "") +
                   (info.fState & MFS_GRAYED ? " (off)" : "") + "\n";
            if (info.hSubMenu)
                out += Outline(info.hSubMenu, indent + "  ");
        }
        return out;
    }

    std::unique_ptr<MainWindow> window;
    HWND hwnd = nullptr;
    std::vector<std::string> opened;
    bool shellOpens = true; // whether a program opens what the window hands the shell
};

} // namespace tolvane::test
