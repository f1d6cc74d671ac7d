// Baseline for Tolvane's memory while it waits: a program that only shows a tray icon.
#include <windows.h>
#include <shellapi.h>

static LRESULT CALLBACK Proc(HWND h, UINT m, WPARAM w, LPARAM l) {
    if (m == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(h, m, w, l);
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = Proc;
    wc.hInstance = instance;
    wc.lpszClassName = "TrayBaseline";
    RegisterClassA(&wc);
    HWND window = CreateWindowA(wc.lpszClassName, "Tray baseline", WS_OVERLAPPEDWINDOW, 0, 0, 100,
                                100, nullptr, nullptr, instance, nullptr);
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = window;
    data.uID = 1;
    data.uFlags = NIF_ICON | NIF_TIP;
    data.hIcon = LoadIconA(nullptr, MAKEINTRESOURCEA(32512));
    lstrcpyA(data.szTip, "Baseline");
    Shell_NotifyIconA(NIM_ADD, &data);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0)
        DispatchMessageA(&msg);
    Shell_NotifyIconA(NIM_DELETE, &data);
    return 0;
}
