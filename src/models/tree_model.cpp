#include "models/tree_model.h"

namespace tolvane {

void TreeModel::Clear() {
    nodes_.clear();
    roots_.clear();
    byKey_.clear();
    selected_ = kNone;
}

int TreeModel::Add(std::string_view parentKey, std::string_view key, std::string_view text,
                   std::string_view image) {
    int parent = kNone;
    if (!parentKey.empty()) {
        parent = Find(parentKey);
        if (parent == kNone)
            throw TreeKeyError("no node with the key \"" + std::string(parentKey) + "\"");
    }
    return AddChild(parent, key, text, image);
}

int TreeModel::AddChild(int parent, std::string_view key, std::string_view text,
                        std::string_view image) {
    if (parent != kNone && (parent < 0 || static_cast<size_t>(parent) >= nodes_.size()))
        throw TreeKeyError("no parent node " + std::to_string(parent));
    if (!key.empty() && byKey_.count(key))
        throw TreeKeyError("the key \"" + std::string(key) + "\" is not unique in the tree");
    int index = static_cast<int>(nodes_.size());
    TreeNode node;
    node.Key = std::string(key);
    node.Text = std::string(text);
    node.Image = std::string(image);
    node.Parent = parent;
    nodes_.push_back(std::move(node));
    if (!key.empty())
        byKey_.emplace(std::string(key), index);
    if (parent == kNone)
        roots_.push_back(index);
    else
        nodes_[static_cast<size_t>(parent)].Children.push_back(index);
    return index;
}

int TreeModel::Find(std::string_view key) const {
    auto it = byKey_.find(key);
    return it == byKey_.end() ? kNone : it->second;
}

} // namespace tolvane
