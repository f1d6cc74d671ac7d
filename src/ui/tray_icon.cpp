#include "ui/tray_icon.h"

#include <shellapi.h>

#include <algorithm>
#include <cstring>

#include "text/code_page.h"

namespace tolvane {

UINT TaskbarCreatedMessage() {
    static const UINT message = RegisterWindowMessageA("TaskbarCreated");
    return message;
}

TrayIcon::TrayIcon(const EventLog* log) : Window(log, "Tray Icon Error: ") {}

TrayIcon::~TrayIcon() {
    RemoveTrayIcon();
}

bool TrayIcon::Create(HINSTANCE instance) {
    // A message-only window: the icon's messages need nothing more, and it costs the log-on
    // start no window of the desktop.
    return Window::Create(instance, 0, "Tolvane tray", 0, 0, 0, 0, 0, HWND_MESSAGE) != nullptr;
}

void TrayIcon::TaskbarCreated() {
    // Explorer started again with an empty notification area.
    if (loaded_)
        loaded_ = Notify(NIM_ADD);
}

bool TrayIcon::Notify(DWORD action) {
    if (!Hwnd())
        return false;
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = Hwnd();
    data.uID = kIconId;
    if (action != NIM_DELETE) {
        data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
        data.uCallbackMessage = kCallbackMessage;
        data.hIcon = picture_;
        // The tip field holds 63 characters and its NUL as the shell has always shown it.
        const std::string_view tip = CutAtCharacter(tip_, 63);
        std::memcpy(data.szTip, tip.data(), tip.size());
    }
    return Shell_NotifyIconA(action, &data) != FALSE;
}

bool TrayIcon::LoadTrayIcon(std::string_view tooltip) {
    if (!picture_)
        return false;
    tip_ = std::string(tooltip);
    loaded_ = Notify(NIM_ADD);
    return loaded_;
}

bool TrayIcon::RemoveTrayIcon() {
    if (loaded_)
        Notify(NIM_DELETE);
    loaded_ = false;
    return true;
}

bool TrayIcon::ToolTip(std::string_view text) {
    tip_ = std::string(text);
    return !loaded_ || Notify(NIM_MODIFY);
}

LRESULT TrayIcon::HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kCallbackMessage) {
        switch (static_cast<UINT>(lParam)) {
        case WM_LBUTTONUP:
            // Every click counts, a double click too: the second opens the window.
            if (++clicks_ >= 2) {
                clicks_ = 0;
                if (Opened)
                    Opened();
            }
            break;
        case WM_RBUTTONUP: {
            clicks_ = 0;
            const int number = BuildMenu ? BuildMenu() : 0;
            if (ItemClicked)
                ItemClicked(number);
            break;
        }
        }
        return 0;
    }
    if (message == WM_DESTROY)
        RemoveTrayIcon();
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace tolvane
