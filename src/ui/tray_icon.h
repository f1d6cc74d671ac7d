// The program's icon in the notification area.
#pragma once

#include <windows.h>

#include <string_view>

namespace tolvane {

class TrayIcon {
public:
    // Messages from the icon arrive at the owner window as this message.
    static constexpr UINT kCallbackMessage = WM_APP + 1;

    TrayIcon() = default;
    ~TrayIcon() { Remove(); }
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    // Puts the icon with its tooltip (up to 63 characters) into the notification area.
    bool Add(HWND owner, HICON icon, std::string_view tooltip);
    bool Remove();
    bool Shown() const { return shown_; }

private:
    HWND owner_ = nullptr;
    bool shown_ = false;
};

} // namespace tolvane
