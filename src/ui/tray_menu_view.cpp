#include "ui/tray_menu_view.h"

#include "platform/handles.h"
#include "ui/menu_view.h"

namespace tolvane {

int ShowTrayMenu(HWND owner, const TrayMenu& model) {
    UniqueMenu menu = MakePopupMenu(model.Entries());
    if (!menu)
        return 0;
    // At the screen's right edge, on the top of the taskbar: where the notification area is.
    POINT at{GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    RECT work{};
    if (SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0))
        at.y = work.bottom;
    SetForegroundWindow(owner);
    const int chosen = static_cast<int>(
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, owner, nullptr));
    // The menu closes for good only once the owner has a message after it.
    PostMessageA(owner, WM_NULL, 0, 0);
    return chosen;
}

} // namespace tolvane
