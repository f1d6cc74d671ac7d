// Win32 menus made from the plain menu models.
#pragma once

#include <windows.h>

#include <vector>

#include "models/command_table.h"
#include "models/menu_model.h"
#include "platform/handles.h"

namespace tolvane {

// Appends the items; a submenu is owned by its parent menu once appended.
void AppendMenuItems(HMENU menu, const std::vector<MenuItem>& items);

UniqueMenu MakeMenuBar(const std::vector<MenuItem>& items);
UniqueMenu MakePopupMenu(const std::vector<MenuItem>& items);

// Enables or grays every command of the menu that the table knows (not its submenus' own
// entries): a menu about to open shows what can be done now. Entries the table does not know
// (the tray's programs, the languages) are left as they are.
void ShowEnabled(HMENU menu, const CommandTable& commands);

} // namespace tolvane
