#include "ui/tray_menu_view.h"

#include "platform/handles.h"
#include "ui/menu_view.h"

namespace tolvane {

int ShowTrayMenu(HWND owner, const TrayMenu& model) {
    UniqueMenu menu = MakePopupMenu(model.Entries());
    if (!menu)
        return 0;
    // At the pointer, as the notification area's own menus open: wherever the taskbar is.
    POINT at{};
    GetCursorPos(&at);
    // A menu takes the keyboard, and closes on a click elsewhere, only when its owner is in the
    // foreground: so too the hidden window of the log-on wait.
    SetForegroundWindow(owner);
    const int chosen = static_cast<int>(
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, owner, nullptr));
    // The menu closes for good only once the owner has a message after it.
    PostMessageA(owner, WM_NULL, 0, 0);
    return chosen;
}

} // namespace tolvane
