#include "items/checked_items.h"

#include <string_view>

namespace tolvane {

namespace {

std::string_view TopKey(const TreeModel& tree, int node) {
    while (tree.Node(node).Parent != TreeModel::kNone)
        node = tree.Node(node).Parent;
    return tree.Node(node).Key;
}

} // namespace

ToolbarMoves CheckForOptions(TreeModel& tree) {
    ToolbarMoves moves;
    // Every node is looked at, also once all three moves are allowed: an all-users item ticked
    // further down must still lose its tick, or the user would believe it moved.
    for (size_t i = 0; i < tree.Count(); ++i) {
        TreeNode& node = tree.Node(static_cast<int>(i));
        if (!node.Checked)
            continue;
        const std::string_view top = TopKey(tree, static_cast<int>(i));
        if (top == "AllUsersRoot") {
            node.Checked = false;
            moves.Unticked = true;
        } else if (top == "DelayedItemsRoot") {
            moves.Stop = moves.Run = true;
        } else if (top == "StoppedItemsRoot") {
            moves.Delay = moves.Run = true;
        } else {
            moves.Delay = moves.Stop = true;
        }
    }
    return moves;
}

bool AnyChecked(const TreeModel& tree) {
    for (size_t i = 0; i < tree.Count(); ++i)
        if (tree.Node(static_cast<int>(i)).Checked)
            return true;
    return false;
}

bool RunCheckedMove(CheckedMove move, const TreeModel& tree, CheckedPasses& passes) {
    if (!AnyChecked(tree))
        return false;
    switch (move) {
    case CheckedMove::Save:
        passes.DelayCheckedRegistryItems(false, false);
        passes.DelayCheckedStartupItems(false, false);
        passes.RestoreCheckedRegistryItems();
        passes.RestoreCheckedStartupItems();
        passes.WriteItems();
        break;
    case CheckedMove::Delay:
        passes.DelayCheckedRegistryItems(false, true);
        passes.DelayCheckedStartupItems(false, true);
        break;
    case CheckedMove::Stop:
        passes.DelayCheckedRegistryItems(true, true);
        passes.DelayCheckedStartupItems(true, false);
        break;
    case CheckedMove::Run:
        passes.RestoreCheckedRegistryItems();
        passes.RestoreCheckedStartupItems();
        break;
    }
    passes.RefreshData();
    return true;
}

} // namespace tolvane
