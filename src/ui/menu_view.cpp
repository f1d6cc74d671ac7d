#include "ui/menu_view.h"

namespace tolvane {

void AppendMenuItems(HMENU menu, const std::vector<MenuItem>& items) {
    for (const MenuItem& e : items) {
        const UINT state = (e.Enabled ? 0 : MF_GRAYED) | (e.Checked ? MF_CHECKED : 0);
        switch (e.Type) {
        case MenuItem::Kind::Separator:
            AppendMenuA(menu, MF_SEPARATOR, static_cast<UINT_PTR>(e.Number), nullptr);
            break;
        case MenuItem::Kind::Command:
            AppendMenuA(menu, MF_STRING | state, static_cast<UINT_PTR>(e.Number),
                        e.Caption.c_str());
            break;
        case MenuItem::Kind::Submenu: {
            UniqueMenu sub(CreatePopupMenu());
            AppendMenuItems(sub.get(), e.Entries);
            if (AppendMenuA(menu, MF_POPUP | MF_STRING | state,
                            reinterpret_cast<UINT_PTR>(sub.get()), e.Caption.c_str()))
                sub.release();
            break;
        }
        }
    }
}

UniqueMenu MakeMenuBar(const std::vector<MenuItem>& items) {
    UniqueMenu menu(CreateMenu());
    if (menu)
        AppendMenuItems(menu.get(), items);
    return menu;
}

UniqueMenu MakePopupMenu(const std::vector<MenuItem>& items) {
    UniqueMenu menu(CreatePopupMenu());
    if (menu)
        AppendMenuItems(menu.get(), items);
    return menu;
}

void ShowEnabled(HMENU menu, const CommandTable& commands) {
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        const UINT id = GetMenuItemID(menu, i);
        if (id != static_cast<UINT>(-1) && id != 0 && commands.Has(static_cast<int>(id)))
            EnableMenuItem(menu, static_cast<UINT>(i),
                           MF_BYPOSITION |
                               (commands.Enabled(static_cast<int>(id)) ? MF_ENABLED : MF_GRAYED));
    }
}

} // namespace tolvane
