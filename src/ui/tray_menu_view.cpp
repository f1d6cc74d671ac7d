#include "ui/tray_menu_view.h"

#include "platform/handles.h"

namespace tolvane {

namespace {

// Appends the entries; a submenu is owned by its parent menu once appended.
void Append(HMENU menu, const std::vector<TrayMenuEntry>& entries) {
    for (const TrayMenuEntry& e : entries) {
        switch (e.Type) {
        case TrayMenuEntry::Kind::Separator:
            AppendMenuA(menu, MF_SEPARATOR, static_cast<UINT_PTR>(e.Number), nullptr);
            break;
        case TrayMenuEntry::Kind::Command:
            AppendMenuA(menu, MF_STRING, static_cast<UINT_PTR>(e.Number), e.Caption.c_str());
            break;
        case TrayMenuEntry::Kind::Submenu: {
            UniqueMenu sub(CreatePopupMenu());
            Append(sub.get(), e.Entries);
            if (AppendMenuA(menu, MF_POPUP | MF_STRING, reinterpret_cast<UINT_PTR>(sub.get()),
                            e.Caption.c_str()))
                sub.release();
            break;
        }
        }
    }
}

} // namespace

int ShowTrayMenu(HWND owner, const TrayMenu& model) {
    UniqueMenu menu(CreatePopupMenu());
    if (!menu)
        return 0;
    Append(menu.get(), model.Entries());
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
