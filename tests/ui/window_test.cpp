// The window and dialog bases: a failure inside a window or dialog procedure is logged and goes
// no further; a child's object learns that its window went with the parent; a dialog runs from
// its template.
#include <gtest/gtest.h>

#include <windows.h>

#include <stdexcept>

#include "support/win_test_support.h"
#include "ui/dialog.h"
#include "ui/window.h"

namespace tolvane {
namespace {

class TestWindow : public Window<TestWindow> {
public:
    static constexpr const char* kClassName = "TolvaneTestWindow";
    explicit TestWindow(const EventLog* log) : Window(log, "Window: ") {}
    using Window::Create;
    static void ClassStyle(WNDCLASSEXA&) {}
    LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_APP)
            throw std::runtime_error("the handler failed");
        return DefWindowProcA(hwnd, message, wParam, lParam);
    }
};

// OK fails after reading the box; Cancel closes.
class TestDialog : public Dialog<TestDialog> {
public:
    static constexpr int kTemplateId = 100;
    explicit TestDialog(const EventLog* log) : Dialog(log, "Dialog: ") {}
    void Init() {
        SetChecked(102, true);
        PostMessageA(Hwnd(), WM_COMMAND, IDOK, 0);
        PostMessageA(Hwnd(), WM_COMMAND, IDCANCEL, 0);
    }
    bool OnMessage(UINT message, WPARAM wParam, LPARAM, INT_PTR&) {
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK)
            throw std::runtime_error(Checked(102) ? "after reading a ticked box" : "unticked");
        if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL)
            Close(7);
        return message == WM_COMMAND;
    }
};

TEST(WindowAndDialogBases, AFailureIsLoggedAndGoesNoFurther) {
    test::TempFolder folder;
    test::WriteFileBytes(folder / "log.txt", "");
    EventLog log(folder / "log.txt");
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    TestWindow parent(&log), child(&log);
    ASSERT_TRUE(parent.Create(instance, 0, "test", WS_OVERLAPPED, 0, 0, 10, 10, nullptr));
    ASSERT_TRUE(child.Create(instance, 0, "test", WS_CHILD, 0, 0, 10, 10, parent.Hwnd()));
    EXPECT_EQ(SendMessageA(child.Hwnd(), WM_APP, 0, 0), 0);
    DestroyWindow(parent.Hwnd());
    EXPECT_EQ(child.Hwnd(), nullptr);
    EXPECT_EQ(parent.Hwnd(), nullptr);

    // The modal dialog stays after the failure of OK, until Cancel ends it.
    TestDialog modal(&log);
    EXPECT_EQ(modal.ShowModal(instance, nullptr), 7);
    EXPECT_EQ(modal.Hwnd(), nullptr);
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"),
              "Error: Window: the handler failed\r\nError: Dialog: after reading a ticked box\r\n");
}

} // namespace
} // namespace tolvane
