// Moving startup items between active, delayed and stopped: shortcuts between a Startup folder
// and the program's items folders, Run values between a Run key and the saved copies, each
// recorded in the program-group model and its file.
//
// The user's data comes first. Every step on disk or in the registry is checked, and a move
// whose step failed is taken back, so that at every moment each item is in its Startup folder
// or Run key, or held by the program (a file in an items folder, a saved copy) and recorded in
// the model. Nothing of the same name is ever overwritten with something else. An item is its
// location and its own name (the shortcut's file name, the Run value's name): two values that
// start the same program are two items, and a move of one never touches the other.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include <functional>

#include "config/program_model.h"
#include "items/checked_items.h"
#include "items/move_steps.h"
#include "items/startup_tree.h"
#include "models/tree_model.h"

namespace tolvane {

class AppState;

class ItemMoves {
public:
    // The passes move the tree's checked items.
    ItemMoves(AppState& app, TreeModel& tree, HWND owner);

    // A shortcut (code 3 the current user's, any other the all users' Startup folder), from
    // the state the list shows it in. Refusals and failures are told the user.
    bool DelayStartupItem(std::string_view name, int code, bool stop, ItemState from);
    void RestoreStartupItem(std::string_view name, int code, bool fromStopped);
    bool DelayCheckedStartupItems(bool stop, bool stoppedToDelayed);
    bool RestoreCheckedStartupItems();

    // A Run value (code 1 the current user's, 0 the machine's) by its text in the list:
    // "name=data" when active, "name=path parameters" when delayed, its stopped entry (without
    // the prefix) when stopped. wow32: a machine value of the 32-bit view, which it never leaves.
    bool DelayRegistryItem(std::string_view text, int code, bool stop, ItemState from,
                           bool wow32 = false);
    void RestoreRegistryItem(std::string_view text, int code, bool fromStopped, bool wow32 = false);
    // Puts an item back where Windows starts it: a restore, or for an active item only its
    // switch in Task Manager turned on.
    void RunItem(std::string_view text, const ItemPlace& place);
    bool DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed);
    bool RestoreCheckedRegistryItems();

    // How shortcuts are moved; the shell's move unless set.
    void SetFileMover(FileMover mover) { mover_ = std::move(mover); }

private:
    AppState& app_;
    TreeModel& tree_;
    HWND owner_;
    FileMover mover_;
};

// The toolbar's and Save's passes over the ticked items, by the moves above; each pass writes the
// file once. The refresh rebuilds whatever shows the tree.
class ItemMovePasses : public CheckedPasses {
public:
    ItemMovePasses(AppState& app, TreeModel& tree, HWND owner, std::function<void()> refresh)
        : app_(app), moves_(app, tree, owner), refresh_(std::move(refresh)) {}
    void DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed) override {
        (void)moves_.DelayCheckedRegistryItems(stop, stoppedToDelayed);
    }
    void DelayCheckedStartupItems(bool stop, bool stoppedToDelayed) override {
        (void)moves_.DelayCheckedStartupItems(stop, stoppedToDelayed);
    }
    void RestoreCheckedRegistryItems() override { (void)moves_.RestoreCheckedRegistryItems(); }
    void RestoreCheckedStartupItems() override { (void)moves_.RestoreCheckedStartupItems(); }
    void WriteItems() override;
    void RefreshData() override {
        if (refresh_)
            refresh_();
    }

private:
    AppState& app_;
    ItemMoves moves_;
    std::function<void()> refresh_;
};

} // namespace tolvane
