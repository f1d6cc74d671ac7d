// Shows the tray menu's model as a popup menu at the pointer.
#pragma once

#include <windows.h>

#include "models/tray_menu.h"

namespace tolvane {

// The chosen entry's number, 0 when the menu was dismissed. The owner comes to the foreground
// first, so that the menu takes the keyboard and closes when the user clicks elsewhere.
int ShowTrayMenu(HWND owner, const TrayMenu& menu);

} // namespace tolvane
