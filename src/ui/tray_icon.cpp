#include "ui/tray_icon.h"

#include <shellapi.h>

#include <algorithm>
#include <cstring>

namespace tolvane {

bool TrayIcon::Add(HWND owner, HICON icon, std::string_view tooltip) {
    if (!icon)
        return false;
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = owner;
    data.uID = 1;
    data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    data.uCallbackMessage = kCallbackMessage;
    data.hIcon = icon;
    const size_t n = std::min(tooltip.size(), sizeof data.szTip - 1);
    std::memcpy(data.szTip, tooltip.data(), n);
    owner_ = owner;
    shown_ = Shell_NotifyIconA(NIM_ADD, &data) != FALSE;
    return shown_;
}

bool TrayIcon::Remove() {
    if (!shown_)
        return true;
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = owner_;
    data.uID = 1;
    Shell_NotifyIconA(NIM_DELETE, &data);
    shown_ = false;
    return true;
}

} // namespace tolvane
