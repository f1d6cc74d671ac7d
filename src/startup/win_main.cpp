// The program's entry.
#include <windows.h>
#include <commctrl.h>

#include "config/delay_load.h"
#include "platform/handles.h"
#include "resource_ids.h"
#include "startup/app_state.h"
#include "version.h"

namespace {

class MessageBoxes : public tolvane::UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override {
        return MessageBoxA(nullptr, std::string(text).c_str(), std::string(title).c_str(), style);
    }
};

std::string ProgramFolder() {
    char path[MAX_PATH * 4] = {};
    DWORD n = GetModuleFileNameA(nullptr, path, sizeof path);
    std::string p(path, n);
    return p.substr(0, p.find_last_of('\\'));
}

LRESULT CALLBACK WindowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    INITCOMMONCONTROLSEX icc{sizeof icc, ICC_WIN95_CLASSES | ICC_BAR_CLASSES};
    InitCommonControlsEx(&icc);

    MessageBoxes messages;
    tolvane::AppState app(ProgramFolder(), messages);
    tolvane::CDelayLoad delayLoad(app);

    WNDCLASSA wc{};
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = instance;
    wc.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(IDI_TOLVANE));
    wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    wc.lpszClassName = "TolvaneMain";
    RegisterClassA(&wc);
    HWND hwnd = CreateWindowExA(0, wc.lpszClassName, "Tolvane Tolvane & Program Manager",
                                WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, 720, 440,
                                nullptr, nullptr, instance, nullptr);
    std::string text =
        "Tolvane " TOLVANE_VERSION_TEXT "\r\nProgram groups: " + delayLoad.FilePath();
    CreateWindowExA(0, "STATIC", text.c_str(), WS_CHILD | WS_VISIBLE, 16, 16, 680, 60, hwnd,
                    nullptr, instance, nullptr);
    ShowWindow(hwnd, show);

    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return 0;
}
