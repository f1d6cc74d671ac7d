// Moving startup items between active, delayed and stopped: shortcuts between a Startup folder
// and the program's items folders, Run values between a Run key and the saved copies, each
// recorded in the program-group model and its file.
//
// The user's data comes first. Every step on disk or in the registry is checked, and a move
// whose step failed is taken back, so that at every moment each item is in its Startup folder
// or Run key, or held by the program (a file in an items folder, a saved copy) and recorded in
// the model. Nothing of the same name is ever overwritten with something else. An item is its
// location and its own name (the shortcut's file name, the Run value's name): two values that
// start the same program are two items, and a move of one never touches the other. A move is
// made on the file and the registry as they are then: an item moved meanwhile by another copy
// of the program is refused as no longer where the list shows it, never moved twice.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

#include "config/program_group_store.h"
#include "items/checked_items.h"
#include "items/move_steps.h"
#include "items/startup_tree.h"
#include "platform/event_log.h"
#include "models/user_messages.h"
#include "text/text_tables.h"

namespace tolvane {

// An item and where it is to go.
struct ItemMove {
    StartupItem Item;
    ItemState To = ItemState::Active;
};

class ItemMoves {
public:
    // What the moves work with: the program-group store and its folders, and how a move that
    // was not done is logged and told, in the language's texts.
    struct Needs {
        ProgramGroupStore Store;
        const TextTables& Text;
        UserMessages& Messages;
        EventLog& Log;
    };
    // owner: the window that the shell's file moves and the messages belong to; none for a
    // console.
    ItemMoves(Needs needs, HWND owner);

    // Moves the item from the state the list shows it in to the one asked for; one asked to go
    // where it is stays there, once. Asked to go back to Windows while it is there already, an
    // active item has its switch in Task Manager turned on. Refusals and failures are told the
    // user; false when the item was not moved. The administrator's policies are read first: an
    // item they lock, or any item while only the administrator moves items, is refused.
    [[nodiscard]] bool Move(const StartupItem& item, ItemState to);
    // The toolbar's passes and Save: each item where it is asked to go, in order, the file
    // written once. An item that fails is taken back and ends the pass; the items before it
    // stay moved. False when not every item was moved. A pass with an item that the policies
    // refuse moves none.
    [[nodiscard]] bool MovePass(const std::vector<ItemMove>& moves);

    // How shortcuts are moved; the shell's move unless set.
    void SetFileMover(FileMover mover) { mover_ = std::move(mover); }

    ProgramGroupStore Store() const { return needs_.Store; }

private:
    Needs needs_;
    HWND owner_;
    FileMover mover_;
};

// The program of the "Startup" group that stands for the delayed item in the model as it is
// now, found by the item's key (its location, registry view and own name) as a move finds it;
// -1 when it is delayed there no more. The record index a refresh gave the item may point at
// another program once the file has changed.
int FindDelayedRecord(const ProgramModel& model, const StartupItem& item);

// The toolbar's and Save's pass over the ticked items of the tree, by the moves above. The
// refresh rebuilds whatever shows the tree.
class ItemMovePasses : public CheckedPasses {
public:
    ItemMovePasses(ItemMoves moves, const TreeModel& tree, const StartupListing& listing,
                   std::function<void()> refresh)
        : tree_(tree), listing_(listing), moves_(std::move(moves)), refresh_(std::move(refresh)) {}
    void Move(const std::vector<CheckedTarget>& targets) override;
    void WriteItems() override;
    void RefreshData() override {
        if (refresh_)
            refresh_();
    }
    ItemMoves& Moves() { return moves_; }

private:
    const TreeModel& tree_;
    const StartupListing& listing_;
    ItemMoves moves_;
    std::function<void()> refresh_;
};

} // namespace tolvane
