// The size baseline: a bare static Win32 program with one window, built and linked as
// Tolvane.exe is (same compiler options, static runtime, stripped, unused code dropped).
#include <windows.h>

static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(window, message, w, l);
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = Procedure;
    wc.hInstance = instance;
    wc.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wc.lpszClassName = "BareWindow";
    RegisterClassA(&wc);
    HWND window = CreateWindowA("BareWindow", "Bare", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                CW_USEDEFAULT, 400, 300, nullptr, nullptr, instance, nullptr);
    ShowWindow(window, show);
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return 0;
}
