#include "ui/main_window.h"

#include <exception>

#include "platform/runtime_libraries.h"
#include "resource_ids.h"
#include "startup/app_state.h"
#include "startup/main.h"
#include "startup/run_entry.h"

namespace tolvane {

namespace {

constexpr const char* kClassName = "TolvaneStartupItems";
enum : UINT { kMenuOpen = 1, kMenuQuit = 2 };

} // namespace

MainWindow::MainWindow(AppState& app, HINSTANCE instance) : app_(app), instance_(instance) {}

MainWindow::~MainWindow() {
    tray_.Remove();
    if (window_) {
        SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
    }
}

bool MainWindow::Load() {
    WNDCLASSEXA wc{sizeof wc};
    if (!GetClassInfoExA(instance_, kClassName, &wc)) {
        wc.cbSize = sizeof wc;
        wc.lpfnWndProc = WindowProc;
        wc.hInstance = instance_;
        wc.hIcon = LoadIconA(instance_, MAKEINTRESOURCEA(IDI_TOLVANE));
        wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        wc.lpszClassName = kClassName;
        if (!RegisterClassExA(&wc))
            return false;
    }
    window_ = CreateWindowExA(0, kClassName, kMainWindowTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                              CW_USEDEFAULT, 760, 520, nullptr, nullptr, instance_, this);
    if (!window_)
        return false;
    icon_.reset(
        static_cast<HICON>(LoadImageA(instance_, "clock", IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                      GetSystemMetrics(SM_CYSMICON), 0)));
    tray_.Add(window_, icon_.get(), "Tolvane");
    if (app_.ShowGui) {
        ShowWindowNow(SW_SHOWNORMAL);
        UpdateWindow(window_);
    }
    return true;
}

void MainWindow::EnsureContent() {
    if (label_)
        return;
    EnsureCommonControls();
    EnsureStartupFolders(app_);
    RECT client{};
    GetClientRect(window_, &client);
    label_ = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 16, 16, client.right - 32,
                             client.bottom - 32, window_, nullptr, instance_, nullptr);
}

void MainWindow::ShowWindowNow(int command) {
    EnsureContent();
    ShowWindow(window_, command);
}

void MainWindow::Open() {
    if (IsIconic(window_)) {
        ShowWindowNow(SW_RESTORE);
        return;
    }
    if (!app_.ShowGui)
        isVisible_ = true;
    ShowWindowNow(SW_SHOW);
    SetForegroundWindow(window_);
}

void MainWindow::Unload() {
    EndForGood();
}

void MainWindow::EndForGood() {
    if (ending_ || !window_)
        return;
    ending_ = true;
    // A running wait sees this as soon as this handler returns, and starts nothing more.
    app_.wait.QuitRequested = true;
    tray_.Remove();
    DestroyWindow(window_);
    if (app_.model.StartupType == 1)
        UpdateRunEntry(app_, 1);
}

void MainWindow::TrayMessage(UINT mouse) {
    if (mouse == WM_LBUTTONDBLCLK) {
        ShowWindowNow(IsIconic(window_) ? SW_RESTORE : SW_SHOW);
        SetForegroundWindow(window_);
        return;
    }
    if (mouse != WM_RBUTTONUP)
        return;
    UniqueMenu menu(CreatePopupMenu());
    AppendMenuA(menu.get(), MF_STRING, kMenuOpen, "&Open");
    AppendMenuA(menu.get(), MF_STRING, kMenuQuit, "&Quit Program");
    POINT at{};
    GetCursorPos(&at);
    SetForegroundWindow(window_); // or the menu would not close when clicked elsewhere
    const UINT chosen =
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, window_, nullptr);
    if (chosen == kMenuOpen)
        Open();
    else if (chosen == kMenuQuit)
        EndForGood();
}

LRESULT MainWindow::Handle(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case TrayIcon::kCallbackMessage:
        TrayMessage(static_cast<UINT>(lp));
        return 0;
    case WM_SIZE:
        if (label_)
            MoveWindow(label_, 16, 16, LOWORD(lp) - 32, HIWORD(lp) - 32, TRUE);
        return 0;
    case WM_CLOSE:
        // The close button keeps the program in the tray when the settings ask for it.
        if (app_.model.CloseType == 1) {
            ShowWindow(hwnd, SW_HIDE);
            return 0;
        }
        EndForGood();
        return 0;
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        if (wp)
            EndForGood();
        return 0;
    case WM_DESTROY:
        tray_.Remove();
        window_ = nullptr;
        PostQuitMessage(0);
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        break;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

LRESULT CALLBACK MainWindow::WindowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_NCCREATE) {
        auto* self = static_cast<MainWindow*>(reinterpret_cast<CREATESTRUCTA*>(lp)->lpCreateParams);
        self->window_ = hwnd;
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (!self)
        return DefWindowProcA(hwnd, msg, wp, lp);
    try {
        return self->Handle(hwnd, msg, wp, lp);
    } catch (const std::exception& e) {
        // No failure leaves the window procedure: the program goes on with its next message.
        self->app_.log.WriteLog(std::string("Startup Items Error! Reported: ") + e.what(),
                                kLogError);
        return DefWindowProcA(hwnd, msg, wp, lp);
    }
}

} // namespace tolvane
