// The main window of this process over the test prefix's startup locations, with real clicks
// and keys.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>

#include "config/language_files.h"
#include "items/startup_fixture.h"
#include "ui/main_window.h"

namespace tolvane::test {

inline std::string TextOf(HWND window) {
    char text[512] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}

class MainWindowTest : public StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        CopyTree(BuiltProgramFolder() + "\\lang", folder / "lang");
        LoadLanguageList(app.folders.ProgramFolder, app.text);
        LoadLanguageFiles(app.folders.ProgramFolder, app.model.Language, app.text);
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
    // A new window, in front at a place of its own, or where the kept place puts it.
    void Open(bool place = true) {
        window.reset();
        TakeQuitMessage();
        window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
        ASSERT_TRUE(window->Load());
        hwnd = window->Handle();
        if (place) {
            SetWindowPos(hwnd, HWND_TOP, 120, 80, 800, 560, SWP_SHOWWINDOW);
            SetForegroundWindow(hwnd);
        }
        PumpUntilIdle();
    }
    HWND TreeHwnd() { return window->TreeView()->Hwnd(); }
    std::string FilePath() { return folder / (WindowsUserName() + "\\proggroup.c"); }
    std::string File() { return ReadFileBytes(FilePath()); }
    // The tree's node of an item, selected in the control, with the keyboard in the tree.
    int SelectItem(const std::string& container, const std::string& text) {
        tree = window->Tree();
        const int node = Node(container, text);
        TreeView_SelectItem(TreeHwnd(), window->TreeView()->ItemOf(node));
        SetFocus(TreeHwnd());
        PumpUntilIdle();
        return node;
    }
    // A real click near the left end of a control (on a box's tick), or of a toolbar's button.
    void ClickOn(HWND control, int button = 0) {
        RECT r{};
        GetWindowRect(control, &r);
        if (button) {
            SendMessageA(control, TB_GETRECT, button, reinterpret_cast<LPARAM>(&r));
            MapWindowPoints(control, nullptr, reinterpret_cast<POINT*>(&r), 2);
        }
        Click({r.left + 6, (r.top + r.bottom) / 2});
        PumpUntilIdle();
    }
    void ClickButton(int command) { ClickOn(window->Toolbar()->Hwnd(), command); }
    bool ButtonOn(int command) {
        return SendMessageA(window->Toolbar()->Hwnd(), TB_ISBUTTONENABLED, command, 0) != 0;
    }
    // Keys typed into a control in place of its text (an edit box or a combo box's).
    void TypeInto(HWND box, std::initializer_list<unsigned short> keys) {
        SetFocus(box);
        SendMessageA(box, EM_SETSEL, 0, -1);
        SendMessageA(box, CB_SETEDITSEL, 0, MAKELPARAM(0, -1));
        Type(keys);
        PumpUntilIdle();
    }

    std::unique_ptr<MainWindow> window;
    HWND hwnd = nullptr;
};

} // namespace tolvane::test
