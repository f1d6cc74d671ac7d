// The program's icon in the notification area. The control has a message-only window of its
// own, which receives the icon's mouse messages. The shell's "TaskbarCreated" (Explorer started
// again) reaches top-level windows only: the owner hands it on, and the icon is put back.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "ui/window.h"

namespace tolvane {

// The message the shell broadcasts when Explorer starts again.
UINT TaskbarCreatedMessage();

class TrayIcon : public Window<TrayIcon> {
public:
    static constexpr const char* kClassName = "TolvaneTrayIcon";
    // The icon's messages arrive at the control's window as this message.
    static constexpr UINT kCallbackMessage = WM_APP + 1;
    static constexpr UINT kIconId = 1;

    explicit TrayIcon(const EventLog* log = nullptr);
    ~TrayIcon();

    // The control's window.
    bool Create(HINSTANCE instance);

    // The icon; not owned.
    void SetPicture(HICON icon) { picture_ = icon; }
    // What two left clicks do: open the owner's window, as the menu's "&Open" does.
    std::function<void()> Opened;
    // A right click shows the menu; the chosen number (0: none) goes to ItemClicked.
    std::function<int()> BuildMenu;
    std::function<void(int number)> ItemClicked;

    // Puts the icon with its tooltip (up to 63 characters) into the notification area; false
    // without a picture.
    bool LoadTrayIcon(std::string_view tooltip);
    bool RemoveTrayIcon();
    bool ToolTip(std::string_view text);
    bool Loaded() const { return loaded_; }
    // Explorer started again: the icon, if shown, is added anew.
    void TaskbarCreated();

    static void ClassStyle(WNDCLASSEXA&) {}
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    bool Notify(DWORD action);

    HICON picture_ = nullptr;
    std::string tip_;
    bool loaded_ = false;
    int clicks_ = 0;
};

} // namespace tolvane
