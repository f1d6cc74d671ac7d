// Moving startup items between active, delayed and stopped: shortcuts between a Startup folder
// and the program's items folders, Run values between a Run key and the saved copies, each
// recorded in the program-group model and its file.
//
// The user's data comes first. Every step on disk or in the registry is checked, and a move
// whose step failed is taken back, so that at every moment each item is in its Startup folder
// or Run key, or held by the program (a file in an items folder, a saved copy) and recorded in
// the model. Nothing of the same name is ever overwritten with something else.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "ui/tree_model.h"

namespace tolvane {

class AppState;

class ItemMoves {
public:
    // The moves read the tree: its checked items (the passes) and its selected item.
    ItemMoves(AppState& app, TreeModel& tree, HWND owner);

    // A shortcut (code 3 the current user's, any other the all users' Startup folder).
    bool DelayStartupItem(std::string_view name, int code, bool stop);
    void RestoreStartupItem(std::string_view name, int code, bool fromStopped);
    bool DelayCheckedStartupItems(bool stop, bool stoppedToDelayed);
    bool RestoreCheckedStartupItems();

    // A Run value (code 1 the current user's, 0 the machine's): "name=data", or the path of a
    // stopped value.
    bool DelayRegistryItem(std::string_view text, int code, bool stop);
    void RestoreRegistryItem(std::string_view text, int code, bool fromStopped);
    bool DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed);
    bool RestoreCheckedRegistryItems();

private:
    AppState& app_;
    TreeModel& tree_;
    HWND owner_;
};

} // namespace tolvane
