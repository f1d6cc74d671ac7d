// The window and dialog bases: a failure inside a window procedure is logged and goes no
// further; a child's object learns that its window went with the parent; a dialog runs from
// its template, modal or modeless.
#include <gtest/gtest.h>

#include <windows.h>

#include <stdexcept>

#include "platform/message_pump.h"
#include "support/win_test_support.h"
#include "ui/dialog.h"
#include "ui/window.h"

namespace tolvane {
namespace {

constexpr UINT kThrow = WM_APP + 7;

class TestWindow : public Window<TestWindow> {
public:
    static constexpr const char* kClassName = "TolvaneTestWindow";
    explicit TestWindow(const EventLog* log) : Window(log, "Test Window Error: ") {}
    HWND Make(HWND parent) {
        return Create(GetModuleHandleA(nullptr), 0, "test", parent ? WS_CHILD : WS_OVERLAPPED, 0, 0,
                      10, 10, parent);
    }
    static void ClassStyle(WNDCLASSEXA&) {}
    LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == kThrow)
            throw std::runtime_error("the handler failed");
        return message == WM_APP ? 42 : DefWindowProcA(hwnd, message, wParam, lParam);
    }
};

TEST(WindowBase, AFailureIsLoggedAndAChildGoesWithItsParent) {
    test::TempFolder folder;
    test::WriteFileBytes(folder / "log.txt", "");
    EventLog log(folder / "log.txt");
    TestWindow parent(&log), child(&log);
    ASSERT_TRUE(parent.Make(nullptr));
    ASSERT_TRUE(child.Make(parent.Hwnd()));
    EXPECT_EQ(SendMessageA(child.Hwnd(), WM_APP, 0, 0), 42);
    EXPECT_EQ(SendMessageA(child.Hwnd(), kThrow, 0, 0), 0);
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"),
              "Error: Test Window Error: the handler failed\r\n");
    DestroyWindow(parent.Hwnd());
    EXPECT_EQ(child.Hwnd(), nullptr);
    EXPECT_EQ(parent.Hwnd(), nullptr);
}

class TestDialog : public Dialog<TestDialog> {
public:
    static constexpr int kTemplateId = 100;
    explicit TestDialog(const EventLog* log) : Dialog(log, "Test Dialog Error: ") {}
    void Init() {
        SetText(101, "from the model");
        SetChecked(102, true);
        if (closeAtOnce) { // OK, which fails, then Cancel
            PostMessageA(Hwnd(), WM_COMMAND, IDOK, 0);
            PostMessageA(Hwnd(), WM_COMMAND, IDCANCEL, 0);
        }
    }
    bool OnMessage(UINT message, WPARAM wParam, LPARAM, INT_PTR&) {
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
            text = Text(101);
            ticked = Checked(102);
            throw std::runtime_error("after reading the fields");
        }
        if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL)
            Close(7);
        return message == WM_COMMAND && LOWORD(wParam) == IDCANCEL;
    }
    bool closeAtOnce = true;
    std::string text;
    bool ticked = false;
};

TEST(DialogBase, ATemplateRunsModalAndModeless) {
    test::TempFolder folder;
    test::WriteFileBytes(folder / "log.txt", "");
    EventLog log(folder / "log.txt");
    TestDialog modal(&log);
    // OK throws after it read the fields: logged, and the dialog stays until Cancel ends it.
    EXPECT_EQ(modal.ShowModal(GetModuleHandleA(nullptr), nullptr), 7);
    EXPECT_EQ(modal.text, "from the model");
    EXPECT_TRUE(modal.ticked);
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"),
              "Error: Test Dialog Error: after reading the fields\r\n");
    EXPECT_EQ(modal.Hwnd(), nullptr);

    // Modeless: the program's message loops hand it its keys; Escape is its Cancel.
    TestDialog modeless(&log);
    modeless.closeAtOnce = false;
    ASSERT_TRUE(modeless.ShowModeless(GetModuleHandleA(nullptr), nullptr));
    EXPECT_TRUE(IsWindowVisible(modeless.Hwnd()));
    MSG key{modeless.Hwnd(), WM_KEYDOWN, VK_ESCAPE, 0};
    EXPECT_TRUE(PreTranslate(key));
    YieldToMessageLoop();
    EXPECT_EQ(modeless.Hwnd(), nullptr);
}

} // namespace
} // namespace tolvane
