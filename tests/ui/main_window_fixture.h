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
    // A new window, opened at the place and size given (the kept one when none is).
    void Open(bool place = true) {
        window.reset();
        TakeQuitMessage();
        window = std::make_unique<MainWindow>(app, GetModuleHandleA(nullptr));
        window->OpenWithShell = [this](const std::string& target) {
            opened.push_back(target);
            return shellOpens;
        };
        ASSERT_TRUE(window->Load());
        hwnd = window->Handle();
        if (place) {
            SetWindowPos(hwnd, HWND_TOP, 120, 80, 800, 560, SWP_SHOWWINDOW);
            SetForegroundWindow(hwnd);
        }
        PumpUntilIdle();
    }
    HWND TreeHwnd() { return window->TreeView()->Hwnd(); }
    // The status line's first part, as the control shows it.
    std::string StatusLine() {
        char status[512] = {};
        GetWindowTextA(FindWindowExA(hwnd, nullptr, STATUSCLASSNAMEA, nullptr), status, 512);
        return status;
    }
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
    // Ticked with the space bar.
    void Tick(const std::string& container, const std::string& text) {
        SelectItem(container, text);
        Type({VK_SPACE});
        PumpUntilIdle();
    }
    void ClickButton(int command) {
        HWND bar = window->Toolbar()->Hwnd();
        RECT r{};
        SendMessageA(bar, TB_GETRECT, command, reinterpret_cast<LPARAM>(&r));
        POINT at{(r.left + r.right) / 2, (r.top + r.bottom) / 2};
        ClientToScreen(bar, &at);
        Click(at);
        PumpUntilIdle();
    }
    bool ButtonOn(int command) {
        return SendMessageA(window->Toolbar()->Hwnd(), TB_ISBUTTONENABLED, command, 0) != 0;
    }

    std::unique_ptr<MainWindow> window;
    HWND hwnd = nullptr;
    std::vector<std::string> opened;
    bool shellOpens = true; // whether a program opens what the window hands the shell
};

} // namespace tolvane::test
