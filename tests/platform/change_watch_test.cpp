#include <gtest/gtest.h>

#include <windows.h>

#include "platform/change_watch.h"
#include "platform/handles.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

constexpr UINT kChanged = WM_APP + 7;

// Whether the watch posted its message within a bounded wait; takes every one that came.
bool Told(HWND window) {
    for (int i = 0; i < 400; ++i) {
        MSG msg;
        bool told = false;
        while (PeekMessageA(&msg, window, kChanged, kChanged, PM_REMOVE))
            told = true;
        if (told)
            return true;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 25, QS_POSTMESSAGE);
    }
    return false;
}

// A key that is not there yet (Task Manager makes its keys with its first switch) is waited for
// and, once made, watched itself: a value set in it afterwards is told too.
TEST(ChangeWatch, AKeyMadeAfterTheWatchStartedIsWatchedOnceItIsThere) {
    const test::ScratchKey scratch;
    const std::string awaited = scratch.Path() + "\\StartupApproved";
    const UniqueWindow window(
        CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
    ASSERT_TRUE(window);
    ChangeWatch watch(window.get(), kChanged);
    watch.Key(RegistryRoot::CurrentUser, awaited);
    ASSERT_EQ(watch.Watching(), 1u);
    ASSERT_TRUE(watch.Start());

    HKEY made = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, awaited.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                              nullptr, &made, nullptr),
              ERROR_SUCCESS);
    const UniqueHKey key(made);
    EXPECT_TRUE(Told(window.get()));
    const DWORD on = 2;
    ASSERT_EQ(RegSetValueExA(key.get(), "Tool", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&on),
                             sizeof on),
              ERROR_SUCCESS);
    EXPECT_TRUE(Told(window.get()));
}

} // namespace
} // namespace tolvane
