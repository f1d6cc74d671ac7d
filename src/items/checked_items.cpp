#include "items/checked_items.h"

#include <string_view>

#include "items/startup_tree.h"

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

std::vector<CheckedTarget> CheckedTargets(CheckedMove move, const TreeModel& tree) {
    std::vector<CheckedTarget> targets;
    for (size_t i = 0; i < tree.Count(); ++i) {
        const int node = static_cast<int>(i);
        if (!tree.Node(node).Checked || tree.Node(node).Tag != kPopupTag)
            continue;
        const std::optional<ItemPlace> place = PlaceOf(tree, node);
        if (!place)
            continue;
        const ItemState from = place->State;
        ItemState to = from;
        switch (move) {
        case CheckedMove::Save:
            to = from == ItemState::Active ? ItemState::Delayed : ItemState::Active;
            break;
        case CheckedMove::Delay:
            to = ItemState::Delayed;
            break;
        case CheckedMove::Stop:
            to = ItemState::Stopped;
            break;
        case CheckedMove::Run:
            to = ItemState::Active;
            break;
        }
        if (to != from)
            targets.push_back({node, to});
    }
    return targets;
}

bool RunCheckedMove(CheckedMove move, const TreeModel& tree, CheckedPasses& passes) {
    if (!AnyChecked(tree))
        return false;
    const std::vector<CheckedTarget> targets = CheckedTargets(move, tree);
    if (!targets.empty())
        passes.Move(targets);
    if (move == CheckedMove::Save)
        passes.WriteItems();
    passes.RefreshData();
    return true;
}

} // namespace tolvane
