#include "ui/tree_view.h"

#include <cstring>
#include <cwchar>

#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "text/code_page.h"
#include "resource_ids.h"
#include "ui/window.h"

namespace tolvane {

namespace {

UINT StateImage(bool checked) {
    return INDEXTOSTATEIMAGEMASK(checked ? 2 : 1);
}

} // namespace

std::vector<std::pair<std::string, int>> TreeViewControl::StartupTreeIcons() {
    return {{"User", IDI_TREE_USER},       {"Group", IDI_TREE_GROUP},
            {"Startup", IDI_TREE_STARTUP}, {"Registry", IDI_TREE_REGISTRY},
            {"Delay", IDI_TREE_DELAY},     {"Stopped", IDI_TREE_STOPPED}};
}

TreeViewControl::TreeViewControl(HWND parent, int id, HMODULE iconModule, bool checkBoxes)
    : parent_(parent), iconModule_(iconModule) {
    EnsureCommonControls();
    tree_ = (CreateWindowExA(WS_EX_CLIENTEDGE, WC_TREEVIEWA, "",
                             WS_CHILD | WS_VISIBLE | WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS |
                                 TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_INFOTIP,
                             0, 0, 100, 100, parent, reinterpret_cast<HMENU>(INT_PTR(id)),
                             GetModuleHandleA(nullptr), nullptr));
    // Check boxes are switched on after the control exists: given at creation, the boxes lose
    // the states set before the first paint.
    if (checkBoxes)
        SetWindowLongPtrA(tree_, GWL_STYLE, GetWindowLongPtrA(tree_, GWL_STYLE) | TVS_CHECKBOXES);
    // A tip of several lines shows them as lines.
    if (HWND tips = reinterpret_cast<HWND>(SendMessageA(tree_, TVM_GETTOOLTIPS, 0, 0)))
        SendMessageA(tips, TTM_SETMAXTIPWIDTH, 0, 480);

    LoadPictures();
}

void TreeViewControl::LoadPictures() {
    if (!iconModule_)
        return; // a tree without pictures
    const int size = SmallIconSize(parent_);
    UniqueImageList images(ImageListCreate(size, size, ILC_COLOR32 | ILC_MASK, 6, 0));
    imageIndex_.clear();
    for (const auto& [key, id] : StartupTreeIcons()) {
        UniqueIcon icon(static_cast<HICON>(
            LoadImageA(iconModule_, MAKEINTRESOURCEA(id), IMAGE_ICON, size, size, 0)));
        if (icon && images)
            imageIndex_[key] = ImageListAddIcon(images.get(), icon.get());
    }
    SendMessageA(tree_, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images.get()));
    images_ = std::move(images); // the tree never owns its list: the old one goes after the swap
}

HTREEITEM TreeViewControl::ItemOf(int node) const {
    return node >= 0 && static_cast<size_t>(node) < items_.size() ? items_[node] : nullptr;
}

int TreeViewControl::NodeOf(HTREEITEM item) const {
    // Each item carries its node's index; an item of an earlier rendering leads nowhere.
    TVITEMA data{};
    data.mask = TVIF_PARAM | TVIF_HANDLE;
    data.hItem = item;
    if (!item || !SendMessageA(tree_, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data)))
        return TreeModel::kNone;
    const LPARAM index = data.lParam;
    return index >= 0 && static_cast<size_t>(index) < items_.size() &&
                   items_[static_cast<size_t>(index)] == item
               ? static_cast<int>(index)
               : TreeModel::kNone;
}

HTREEITEM TreeViewControl::Insert(const TreeModel& model, int index) {
    const TreeNode& node = model.Node(index);
    TVINSERTSTRUCTA insert{};
    insert.hParent = node.Parent == TreeModel::kNone ? TVI_ROOT : items_[node.Parent];
    insert.hInsertAfter = TVI_LAST;
    TVITEMA& item = insert.item;
    item.mask =
        TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE | TVIF_PARAM | TVIF_CHILDREN;
    item.pszText = const_cast<char*>(node.Text.c_str());
    auto image = imageIndex_.find(node.Image);
    // No picture is I_IMAGENONE: -1 would be I_IMAGECALLBACK, and the control would show
    // the first picture of the list.
    item.iImage = item.iSelectedImage = image == imageIndex_.end() ? I_IMAGENONE : image->second;
    item.stateMask = TVIS_BOLD | TVIS_CUT | TVIS_STATEIMAGEMASK;
    item.state = (node.Bold ? TVIS_BOLD : 0) | (node.Cut ? TVIS_CUT : 0) | StateImage(node.Checked);
    item.lParam = static_cast<LPARAM>(index);
    item.cChildren = node.Children.empty() ? 0 : 1; // a closed node shows its button
    HTREEITEM handle = reinterpret_cast<HTREEITEM>(
        SendMessageA(tree_, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insert)));
    items_[static_cast<size_t>(index)] = handle;
    return handle;
}

void TreeViewControl::InsertChildren(const TreeModel& model, int index) {
    for (int child : model.Node(index).Children) {
        if (items_[static_cast<size_t>(child)])
            continue;
        Insert(model, child);
        if (model.Node(child).Expanded)
            InsertChildren(model, child);
    }
}

void TreeViewControl::Render(const TreeModel& model) {
    HWND tree = tree_;
    // One repaint for the whole tree instead of one per node.
    SendMessageA(tree, WM_SETREDRAW, FALSE, 0);
    SendMessageA(tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    items_.assign(model.Count(), nullptr);
    // Parents come before their children in the model's order. A lazy tree leaves the items
    // of a closed node out until it first opens.
    for (size_t i = 0; i < model.Count(); ++i) {
        const int parent = model.Node(static_cast<int>(i)).Parent;
        if (parent == TreeModel::kNone ||
            (items_[static_cast<size_t>(parent)] && (!lazy_ || model.Node(parent).Expanded)))
            Insert(model, static_cast<int>(i));
    }
    for (size_t i = 0; i < model.Count(); ++i)
        if (model.Node(static_cast<int>(i)).Expanded && items_[i])
            SendMessageA(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(items_[i]));
    if (HTREEITEM selected = ItemOf(model.Selected()))
        SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(selected));
    SendMessageA(tree, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(tree, nullptr, TRUE);
}

HTREEITEM TreeViewControl::Reveal(const TreeModel& model, int node) {
    if (node < 0 || static_cast<size_t>(node) >= model.Count() || items_.size() != model.Count())
        return nullptr;
    if (!items_[static_cast<size_t>(node)]) {
        const int parent = model.Node(node).Parent;
        if (parent == TreeModel::kNone || !Reveal(model, parent))
            return nullptr;
        InsertChildren(model, parent);
    }
    return items_[static_cast<size_t>(node)];
}

std::vector<int> TreeViewControl::ReadChecks(TreeModel& model) const {
    std::vector<int> changed;
    for (size_t i = 0; i < items_.size() && i < model.Count(); ++i) {
        const UINT state = static_cast<UINT>(SendMessageA(
            tree_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(items_[i]), TVIS_STATEIMAGEMASK));
        const bool checked = (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
        TreeNode& node = model.Node(static_cast<int>(i));
        if (node.Checked != checked) {
            node.Checked = checked;
            changed.push_back(static_cast<int>(i));
        }
    }
    return changed;
}

void TreeViewControl::ShowChecks(const TreeModel& model) const {
    for (size_t i = 0; i < items_.size() && i < model.Count(); ++i) {
        TVITEMA item{};
        item.mask = TVIF_STATE;
        item.hItem = items_[i];
        item.stateMask = TVIS_STATEIMAGEMASK;
        item.state = StateImage(model.Node(static_cast<int>(i)).Checked);
        SendMessageA(tree_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
    }
}

bool TreeViewControl::OnNotify(const NMHDR* header, TreeModel& model, LRESULT& result) {
    if (header->hwndFrom != tree_)
        return false;
    result = 0;
    switch (header->code) {
    case TVN_ITEMEXPANDINGA:
    case TVN_ITEMEXPANDINGW: {
        // A lazy tree puts a node's items in as it opens.
        const auto* view = reinterpret_cast<const NMTREEVIEWA*>(header);
        const int node = NodeOf(view->itemNew.hItem);
        if (lazy_ && node != TreeModel::kNone && (view->action & TVE_EXPAND))
            InsertChildren(model, node);
        return true;
    }
    case TVN_ITEMEXPANDEDA:
    case TVN_ITEMEXPANDEDW: {
        const auto* view = reinterpret_cast<const NMTREEVIEWA*>(header);
        const int node = NodeOf(view->itemNew.hItem);
        if (node != TreeModel::kNone)
            model.Node(node).Expanded = (view->action & TVE_EXPAND) != 0;
        return true;
    }
    case TVN_SELCHANGEDA:
    case TVN_SELCHANGEDW: {
        const auto* view = reinterpret_cast<const NMTREEVIEWA*>(header);
        model.Select(NodeOf(view->itemNew.hItem));
        return true;
    }
    case NM_CLICK:
    case TVN_KEYDOWN:
        // The box changes after this notification: the parent reads the boxes once it has.
        PostMessageA(parent_, kChecksMayHaveChanged, 0, 0);
        return true;
    case TVN_GETINFOTIPA: {
        auto* tip = reinterpret_cast<NMTVGETINFOTIPA*>(const_cast<NMHDR*>(header));
        tipText_ = ToolTip ? ToolTip(NodeOf(tip->hItem)) : std::string();
        if (tip->pszText && tip->cchTextMax > 0) {
            const std::string_view text = CutAtCharacter(tipText_, tip->cchTextMax - 1);
            std::memcpy(tip->pszText, text.data(), text.size());
            tip->pszText[text.size()] = '\0';
        }
        return true;
    }
    case TVN_GETINFOTIPW: {
        auto* tip = reinterpret_cast<NMTVGETINFOTIPW*>(const_cast<NMHDR*>(header));
        tipText_ = ToolTip ? ToolTip(NodeOf(tip->hItem)) : std::string();
        if (tip->pszText && tip->cchTextMax > 0) {
            // A long tip is cut, never dropped, and never between the two halves of a character.
            const std::wstring text = Wide(tipText_);
            size_t n = std::min<size_t>(text.size(), tip->cchTextMax - 1);
            if (n < text.size() && n > 0 && IS_HIGH_SURROGATE(text[n - 1]))
                --n;
            std::wmemcpy(tip->pszText, text.data(), n);
            tip->pszText[n] = L'\0';
        }
        return true;
    }
    }
    return false;
}

} // namespace tolvane
