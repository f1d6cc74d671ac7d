#include "platform/message_pump.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace tolvane {

namespace {

// One thread, the user interface's: no lock.
std::vector<HWND>& DialogWindows() {
    static std::vector<HWND> windows;
    return windows;
}
HWND acceleratorWindow = nullptr;
HACCEL acceleratorTable = nullptr;

void Dispatch(MSG& msg) {
    if (PreTranslate(msg))
        return;
    TranslateMessage(&msg);
    DispatchMessageA(&msg);
}

// Returns false when a quit message came (it is posted again for the main loop).
bool DispatchWaiting() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(msg.wParam));
            return false;
        }
        Dispatch(msg);
    }
    return true;
}

} // namespace

void AddDialogWindow(HWND dialog) {
    DialogWindows().push_back(dialog);
}

void RemoveDialogWindow(HWND dialog) {
    auto& windows = DialogWindows();
    windows.erase(std::remove(windows.begin(), windows.end(), dialog), windows.end());
}

void SetAccelerators(HWND window, HACCEL table) {
    acceleratorWindow = window;
    acceleratorTable = table;
}

bool PreTranslate(MSG& msg) {
    if (acceleratorTable && IsWindow(acceleratorWindow) &&
        (msg.hwnd == acceleratorWindow || IsChild(acceleratorWindow, msg.hwnd)) &&
        TranslateAcceleratorA(acceleratorWindow, acceleratorTable, &msg))
        return true;
    for (HWND dialog : DialogWindows())
        if (IsDialogMessageA(dialog, &msg))
            return true;
    return false;
}

int RunMessageLoop() {
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0)
        Dispatch(msg);
    return static_cast<int>(msg.wParam);
}

void YieldToMessageLoop() {
    DispatchWaiting();
}

uint64_t NowMs() {
    return GetTickCount64();
}

void WaitServingMessages(uint64_t deadlineMs, const std::function<bool()>& stop) {
    for (;;) {
        const uint64_t now = NowMs();
        if (now >= deadlineMs)
            return;
        DWORD wait = static_cast<DWORD>(std::min<uint64_t>(deadlineMs - now, 0x7FFFFFFF));
        DWORD rc = MsgWaitForMultipleObjectsEx(0, nullptr, wait, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (rc == WAIT_TIMEOUT)
            return;
        if (!DispatchWaiting() || (stop && stop()))
            return;
    }
}

} // namespace tolvane
