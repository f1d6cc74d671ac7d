// What the toolbar and "Save" do with the items the user ticked: which moves the ticked items
// allow, and the passes over them in their order. Plain C++; the passes themselves are the
// item moves.
#pragma once

#include "models/tree_model.h"

namespace tolvane {

struct ToolbarMoves {
    bool Stop = false;
    bool Delay = false;
    bool Run = false;
    bool Unticked = false; // some all-users items lost their ticks: show the ticks again
};

// Unticks the active items of all users (and their containers), which no pass moves; then the
// moves that the ticked nodes allow: a delayed one Stop and Run, a stopped one Delay and Run,
// an active one Delay and Stop. A node's state is its top container's.
ToolbarMoves CheckForOptions(TreeModel& tree);

bool AnyChecked(const TreeModel& tree);

// The passes over the ticked items, by the item moves.
class CheckedPasses {
public:
    virtual ~CheckedPasses() = default;
    virtual void DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed) = 0;
    virtual void DelayCheckedStartupItems(bool stop, bool stoppedToDelayed) = 0;
    virtual void RestoreCheckedRegistryItems() = 0;
    virtual void RestoreCheckedStartupItems() = 0;
    virtual void WriteItems() = 0;
    virtual void RefreshData() = 0;
};

enum class CheckedMove {
    Save,  // active items delayed, delayed and stopped ones back to Windows' own start
    Delay, // every ticked item delayed (stopped ones too)
    Stop,  // every ticked item stopped
    Run,   // every ticked item back to Windows' own start
};

// Runs the move's passes over the ticked items and rebuilds the tree; nothing at all, the file
// not even rewritten, when no item is ticked. False then.
bool RunCheckedMove(CheckedMove move, const TreeModel& tree, CheckedPasses& passes);

} // namespace tolvane
