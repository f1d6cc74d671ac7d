// What the toolbar and "Save" do with the items the user ticked: which moves the ticked items
// allow, and the passes over them in their order. Plain C++; the passes themselves are the
// item moves.
#pragma once

#include <vector>

#include "config/program_model.h"
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

enum class CheckedMove {
    Save,  // active items delayed, delayed and stopped ones back to Windows' own start
    Delay, // every ticked item delayed (stopped ones too)
    Stop,  // every ticked item stopped
    Run,   // every ticked delayed or stopped item back to Windows' own start
};

// A ticked node and the state the move takes its item to.
struct CheckedTarget {
    int Node = -1;
    ItemState To = ItemState::Active;
};

// Where the move takes each ticked item that it moves, in the tree's order. Items of every
// location are moved; an item that offers no moves (an active one of all users) is passed
// over, and so is one that is where the move would take it.
std::vector<CheckedTarget> CheckedTargets(CheckedMove move, const TreeModel& tree);

// The pass over the ticked items, by the item moves.
class CheckedPasses {
public:
    virtual ~CheckedPasses() = default;
    // One pass: each item to its state, the file written once.
    virtual void Move(const std::vector<CheckedTarget>& targets) = 0;
    // Writes the file as it is now (Save writes it even when nothing moved).
    virtual void WriteItems() = 0;
    virtual void RefreshData() = 0;
};

// Runs the move's pass over the ticked items and rebuilds the tree; nothing at all, the file
// not even rewritten, when no item is ticked. False then.
[[nodiscard]] bool RunCheckedMove(CheckedMove move, const TreeModel& tree, CheckedPasses& passes);

} // namespace tolvane
