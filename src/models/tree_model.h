// A tree of keyed nodes as the program's windows show it: the startup items of the main
// window, the groups of the group editor. The item moves read it; a Win32 TreeView renders it.
// Plain C++, so every rule on it is testable without a window.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

struct TreeNode {
    std::string Key; // unique in the tree; "" for a node without a key
    std::string Text;
    std::string Tag;
    std::string Image; // key of the picture in the tree's image list; "" for none
    bool Checked = false;
    bool Expanded = false;
    bool Bold = false;
    bool Cut = false;     // shown dimmed, as the shell shows a cut item
    int Data = 0;         // the owner's own mark for the node
    int Item = -1;        // the owner's item that a leaf shows; -1 for none
    std::string Notice;   // a line the node's tip adds: why its item will not start
    bool Missing = false; // what the item starts is not there
    // What an item is, the same in every state: its own name (the shortcut's, the Run value's)
    // and the file whose picture it shows (the shortcut, or the program a Run value starts,
    // variables as written); "" where not known.
    std::string Name;
    std::string File;
    bool Tickable = true; // shows a tick box
    int Parent = -1;
    std::vector<int> Children;
};

// Adding a node whose key the tree already holds, or below a parent it does not hold.
class TreeKeyError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class TreeModel {
public:
    static constexpr int kNone = -1;

    void Clear();
    // Adds a node as the last child of the parent ("" = a root). Throws TreeKeyError.
    int Add(std::string_view parentKey, std::string_view key, std::string_view text,
            std::string_view image = "");
    int AddChild(int parent, std::string_view key, std::string_view text,
                 std::string_view image = "");

    int Find(std::string_view key) const;
    size_t Count() const { return nodes_.size(); }
    bool Empty() const { return nodes_.empty(); }
    // Nodes in the tree's own order: the order in which they were added.
    TreeNode& Node(int index) { return nodes_.at(static_cast<size_t>(index)); }
    const TreeNode& Node(int index) const { return nodes_.at(static_cast<size_t>(index)); }
    const std::vector<int>& Roots() const { return roots_; }

    int Selected() const { return selected_; }
    void Select(int index) { selected_ = index; }

private:
    std::vector<TreeNode> nodes_;
    std::vector<int> roots_;
    std::map<std::string, int, std::less<>> byKey_;
    int selected_ = kNone;
};

} // namespace tolvane
