// A menu as plain data: the menu bar of the main window, the popup of a tree item, the tray's
// menu. A thin layer of the user interface shows it; the command table decides what is enabled.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "models/command_table.h"
#include "text/text_tables.h"

namespace tolvane {

struct MenuItem {
    enum class Kind { Command, Separator, Submenu };
    Kind Type = Kind::Command;
    int Number = 0;      // the command id
    std::string Caption; // menu text: "&" marks the underlined letter
    bool Enabled = true;
    bool Checked = false;
    std::vector<MenuItem> Entries; // of a submenu
};

// A key that runs a command in the main window. The accelerator table and the menus' key texts
// are both made from the one list, so every language shows the keys that work.
struct AcceleratorKey {
    int Command = 0;
    unsigned short Key = 0; // a virtual-key code
    bool Control = false;
    const char* Name = ""; // as a menu shows it after the caption
};
const std::vector<AcceleratorKey>& MainAccelerators();

// The main window's menu bar, captioned from the Menus table; the language menu holds one item
// per language of the list, and the current language's item is checked. A command with a key
// shows it after a tab.
std::vector<MenuItem> BuildMainMenu(const std::vector<std::string>& menus,
                                    const std::vector<LanguageEntry>& languages,
                                    std::string_view currentLanguage);

// The popup of a tree item: Delay, Stop, Run, Properties, Search Online.
std::vector<MenuItem> BuildItemPopup(const std::vector<std::string>& menus);

// A button of the main window's toolbar; a separator has no command.
struct ToolbarButton {
    int Command = 0;
    std::string Caption; // "" for a picture alone
    std::string ToolTip;
};

// Save, separator, Refresh, separator, Stop, Delay, Run, Properties, separator, Last Log-on: the
// captions are the menu entries of the same moves, the tooltips the Toolbar table's entries 0 to
// 5 and 15.
std::vector<ToolbarButton> BuildMainToolbar(const std::vector<std::string>& menus,
                                            const std::vector<std::string>& toolbar);

// Each command's Enabled from the table, at every depth: a command the table does not know is
// grayed. Submenus and languages stay enabled.
void ApplyEnabled(std::vector<MenuItem>& items, const CommandTable& commands);

// The command of language i of the list, and back; nothing for another command.
int LanguageCommand(size_t index);
std::optional<size_t> LanguageOfCommand(int command);

// The caption without its "&" marks ("&&" stays one "&"), for a button.
std::string WithoutMnemonic(std::string_view caption);

} // namespace tolvane
