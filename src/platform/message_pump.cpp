#include "platform/message_pump.h"

#include <windows.h>

namespace tolvane {

namespace {

// Returns false when a quit message came (it is posted again for the main loop).
bool DispatchWaiting() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(msg.wParam));
            return false;
        }
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return true;
}

} // namespace

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
