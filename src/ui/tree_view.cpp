#include "ui/tree_view.h"

#include <shellapi.h>
#include <windowsx.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

#include "platform/environment.h"
#include "platform/processes.h"
#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "ui/window.h"

namespace tolvane {

namespace {

// No box at all for a node that cannot be ticked.
UINT StateImage(const TreeNode& node) {
    return node.Tickable ? INDEXTOSTATEIMAGEMASK(node.Checked ? 2 : 1) : 0;
}

// The picture of a file that is not there, and the overlay of an item that will not start.
constexpr const char* kNotFound = "NotFound";
constexpr int kWarningOverlay = 1;

// An item that will not start, or whose program is not there, wears the warning sign.
UINT Overlay(const TreeNode& node) {
    return node.Notice.empty() && !node.Missing ? 0 : INDEXTOOVERLAYMASK(kWarningOverlay);
}

// Program icons read per message: a few dozen keep the window answering between them.
constexpr size_t kIconsPerRound = 24;

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
                                 TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_NOTOOLTIPS,
                             0, 0, 100, 100, parent, reinterpret_cast<HMENU>(INT_PTR(id)),
                             GetModuleHandleA(nullptr), nullptr));
    // Check boxes are switched on after the control exists: given at creation, the boxes lose
    // the states set before the first paint.
    if (checkBoxes)
        SetWindowLongPtrA(tree_, GWL_STYLE, GetWindowLongPtrA(tree_, GWL_STYLE) | TVS_CHECKBOXES);
    // The tips are the tree's own: the control's info tips are not there in every version of
    // the common controls (Wine's has none). The tree says when the pointer rests on a row, and
    // the tip shows there until it moves to another.
    tips_ = CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_NOPREFIX, 0, 0,
                            0, 0, parent, nullptr, GetModuleHandleA(nullptr), nullptr);
    TOOLINFOW tool{sizeof tool, TTF_TRACK | TTF_ABSOLUTE, tree_, 1};
    tool.lpszText = const_cast<wchar_t*>(L"");
    SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    // A tip of several lines shows them as lines.
    SendMessageA(tips_, TTM_SETMAXTIPWIDTH, 0, 480);
    // The tree's own procedure comes after this one's, in the narrow calls the program uses: the
    // common controls' subclassing would pass every message through a wide one, which costs
    // Wine as much as the tree's work itself.
    SetWindowLongPtrA(tree_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    treeProc_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(tree_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TreeProc)));

    LoadPictures();
}

TreeViewControl::~TreeViewControl() {
    // A tree that outlives this object goes on as the control alone.
    if (IsWindow(tree_) && treeProc_)
        SetWindowLongPtrA(tree_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(treeProc_));
}

LRESULT CALLBACK TreeViewControl::TreeProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    auto* tree = reinterpret_cast<TreeViewControl*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    const POINT at{GET_X_LPARAM(lp), GET_Y_LPARAM(lp)};
    switch (msg) {
    case WM_MOUSEMOVE:
        tree->PointerAt(at);
        break;
    case WM_MOUSEHOVER:
        tree->ShowTip();
        break;
    case WM_MOUSELEAVE:
        tree->HideTip();
        tree->tipItem_ = nullptr;
        break;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        tree->HideTip();
        if (tree->TickAt(at))
            return 0;
        break;
    case WM_KEYDOWN:
    case WM_CHAR:
        tree->HideTip();
        // The space bar ticks the selected item's box; an item without one stays without.
        if (wp == VK_SPACE && (GetWindowLongPtrA(hwnd, GWL_STYLE) & TVS_CHECKBOXES) &&
            !tree->HasBox(
                reinterpret_cast<HTREEITEM>(SendMessageA(hwnd, TVM_GETNEXTITEM, TVGN_CARET, 0))))
            return 0;
        break;
    case WM_RBUTTONDOWN:
    case WM_MOUSEWHEEL:
    case WM_VSCROLL:
        tree->HideTip();
        break;
    case WM_NCDESTROY:
        SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(tree->treeProc_));
        return CallWindowProcA(std::exchange(tree->treeProc_, nullptr), hwnd, msg, wp, lp);
    }
    return CallWindowProcA(tree->treeProc_, hwnd, msg, wp, lp);
}

void TreeViewControl::PointerAt(POINT at) {
    TVHITTESTINFO hit{at};
    SendMessageA(tree_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    HTREEITEM item = (hit.flags & TVHT_ONITEM) ? hit.hItem : nullptr;
    if (item != tipItem_) {
        HideTip();
        tipItem_ = item;
    }
    // Told again after each rest: the next rest on this row or another shows its tip.
    if (item && !tipShown_) {
        TRACKMOUSEEVENT track{sizeof track, TME_HOVER | TME_LEAVE, tree_, HOVER_DEFAULT};
        TrackMouseEvent(&track);
    }
}

void TreeViewControl::ShowTip() {
    const int node = NodeOf(tipItem_);
    if (node == TreeModel::kNone || !ToolTip || tipShown_)
        return;
    std::wstring text;
    try {
        text = Wide(ToolTip(node));
    } catch (const std::exception&) {
        return; // no tip rather than an exception through the control
    }
    if (text.empty())
        return;
    TOOLINFOW tool{sizeof tool, TTF_TRACK | TTF_ABSOLUTE, tree_, 1};
    tool.lpszText = text.data();
    SendMessageW(tips_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    // Below the pointer, where it hides nothing it points at.
    POINT at{};
    GetCursorPos(&at);
    SendMessageW(tips_, TTM_TRACKPOSITION, 0,
                 MAKELPARAM(at.x, at.y + GetSystemMetrics(SM_CYCURSOR) / 2));
    SendMessageW(tips_, TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&tool));
    tipShown_ = true;
}

void TreeViewControl::HideTip() {
    if (!tipShown_)
        return;
    TOOLINFOW tool{sizeof tool, TTF_TRACK | TTF_ABSOLUTE, tree_, 1};
    SendMessageW(tips_, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&tool));
    tipShown_ = false;
}

bool TreeViewControl::HasBox(HTREEITEM item) const {
    return item && (SendMessageA(tree_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item),
                                 TVIS_STATEIMAGEMASK) &
                    TVIS_STATEIMAGEMASK);
}

bool TreeViewControl::TickAt(POINT at) {
    TVHITTESTINFO hit{at};
    SendMessageA(tree_, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    if (!hit.hItem || !(hit.flags & TVHT_ONITEMSTATEICON) || !HasBox(hit.hItem))
        return false;
    const UINT state = static_cast<UINT>(SendMessageA(
        tree_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(hit.hItem), TVIS_STATEIMAGEMASK));
    // The box is ticked here rather than by the control, which would also draw the row as the
    // one clicked (Wine's keeps it highlighted beside the selected one).
    TVITEMA item{TVIF_STATE, hit.hItem};
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state =
        INDEXTOSTATEIMAGEMASK((state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2) ? 1 : 2);
    SendMessageA(tree_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
    SetFocus(tree_);
    PostMessageA(parent_, kChecksMayHaveChanged, 0, 0);
    return true;
}

void TreeViewControl::LoadPictures() {
    if (!iconModule_)
        return; // a tree without pictures
    const int size = SmallIconSize(parent_);
    // Room for the programs' icons grows by many at once, not one bitmap copy per icon.
    UniqueImageList images(ImageListCreate(size, size, ILC_COLOR32 | ILC_MASK, 8, 64));
    imageIndex_.clear();
    for (const auto& [key, id] : StartupTreeIcons()) {
        UniqueIcon icon(static_cast<HICON>(
            LoadImageA(iconModule_, MAKEINTRESOURCEA(id), IMAGE_ICON, size, size, 0)));
        if (icon && images)
            imageIndex_[key] = ImageListAddIcon(images.get(), icon.get());
    }
    // The system's warning sign: a file not found, an item that will not start. Shared: it is
    // never destroyed.
    if (HICON warning = static_cast<HICON>(
            LoadImageA(nullptr, MAKEINTRESOURCEA(32515), IMAGE_ICON, size, size, LR_SHARED));
        warning && images) {
        const int index = ImageListAddIcon(images.get(), warning);
        imageIndex_[kNotFound] = index;
        ImageListSetOverlay(images.get(), index, kWarningOverlay);
    }
    SendMessageA(tree_, TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images.get()));
    images_ = std::move(images); // the tree never owns its list: the old one goes after the swap
    // The programs' icons of the old list are read again at the new size.
    programImages_.clear();
    StartIcons();
}

void TreeViewControl::StartIcons() {
    nextIcon_ = 0;
    ++iconRound_;
    if (images_ && !iconNodes_.empty())
        PostMessageA(parent_, kLoadIcons, iconRound_, 0);
}

int TreeViewControl::ProgramImage(const std::string& file) {
    if (auto known = programImages_.find(file); known != programImages_.end())
        return known->second;
    std::wstring path = Wide(ExpandEnvironment(file));
    // A bare program name is found where Windows looks for it.
    if (path.find(L'\\') == std::wstring::npos) {
        wchar_t found[MAX_PATH];
        const DWORD n = SearchPathW(nullptr, path.c_str(), L".exe", MAX_PATH, found, nullptr);
        if (n > 0 && n < MAX_PATH)
            path = found;
    }
    // A shortcut shows its program's icon.
    if (const std::string target = ProgramOfShortcut(Narrow(path)); !target.empty())
        path = Wide(target);
    int image = I_IMAGENONE;
    HICON small = nullptr;
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const auto notFound = imageIndex_.find(kNotFound);
        image = notFound == imageIndex_.end() ? I_IMAGENONE : notFound->second;
    } else if (ExtractIconExW(path.c_str(), 0, nullptr, &small, 1) > 0 && small) {
        // A program's own first icon, read from its file: far quicker than asking the shell.
        UniqueIcon icon(small);
        image = ImageListAddIcon(images_.get(), icon.get());
    } else {
        // Any other file shows the icon of its kind, read once per kind.
        const size_t dot = path.find_last_of(L"\\.");
        const std::wstring kind =
            dot != std::wstring::npos && path[dot] == L'.' ? path.substr(dot) : L".";
        if (auto known = kindImages_.find(kind); known != kindImages_.end()) {
            image = known->second;
        } else {
            SHFILEINFOW info{};
            if (SHGetFileInfoW(kind.c_str(), FILE_ATTRIBUTE_NORMAL, &info, sizeof info,
                               SHGFI_USEFILEATTRIBUTES | SHGFI_ICON | SHGFI_SMALLICON)) {
                UniqueIcon icon(info.hIcon);
                image = ImageListAddIcon(images_.get(), icon.get());
            }
            kindImages_.emplace(kind, image);
        }
    }
    programImages_.emplace(file, image);
    return image;
}

void TreeViewControl::LoadIcons(const TreeModel& model, WPARAM round) {
    if (round != iconRound_ || !images_)
        return; // a later rendering reads its own
    // The tree shows before the first icon is read.
    if (nextIcon_ == 0)
        UpdateWindow(tree_);
    const size_t end = std::min(nextIcon_ + kIconsPerRound, iconNodes_.size());
    for (; nextIcon_ < end; ++nextIcon_) {
        const int node = iconNodes_[nextIcon_];
        HTREEITEM handle = ItemOf(node);
        if (!handle || static_cast<size_t>(node) >= model.Count())
            continue; // not shown yet: it takes the icon read by then when it is
        TVITEMA item{TVIF_IMAGE | TVIF_SELECTEDIMAGE, handle};
        item.iImage = item.iSelectedImage = ProgramImage(model.Node(node).File);
        SendMessageA(tree_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
    }
    if (nextIcon_ < iconNodes_.size())
        PostMessageA(parent_, kLoadIcons, iconRound_, 0);
}

void TreeViewControl::ShowMark(const TreeModel& model, int node) {
    HTREEITEM handle = ItemOf(node);
    if (!handle || static_cast<size_t>(node) >= model.Count())
        return; // not shown yet: it takes the mark when it is
    TVITEMA item{TVIF_STATE, handle};
    item.stateMask = TVIS_OVERLAYMASK;
    item.state = Overlay(model.Node(node));
    SendMessageA(tree_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&item));
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
    // the first picture of the list. A program's icon already read shows at once.
    auto program = node.File.empty() ? programImages_.end() : programImages_.find(node.File);
    item.iImage = item.iSelectedImage = program != programImages_.end() ? program->second
                                        : image == imageIndex_.end()    ? I_IMAGENONE
                                                                        : image->second;
    item.stateMask = TVIS_BOLD | TVIS_CUT | TVIS_STATEIMAGEMASK | TVIS_OVERLAYMASK;
    item.state =
        (node.Bold ? TVIS_BOLD : 0) | (node.Cut ? TVIS_CUT : 0) | StateImage(node) | Overlay(node);
    item.lParam = static_cast<LPARAM>(index);
    item.cChildren = node.Children.empty() ? 0 : 1; // a closed node shows its button
    HTREEITEM handle = reinterpret_cast<HTREEITEM>(
        SendMessageA(tree_, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insert)));
    items_[static_cast<size_t>(index)] = handle;
    // A new item of a tree with boxes gets one whatever it was given: taken away again.
    if (!node.Tickable) {
        TVITEMA none{TVIF_STATE, handle};
        none.stateMask = TVIS_STATEIMAGEMASK;
        SendMessageA(tree_, TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&none));
    }
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
    HideTip();
    tipItem_ = nullptr; // the row under the pointer is another item now
    iconNodes_.clear();
    for (size_t i = 0; i < model.Count(); ++i)
        if (!model.Node(static_cast<int>(i)).File.empty())
            iconNodes_.push_back(static_cast<int>(i));
    StartIcons();
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
        item.state = StateImage(model.Node(static_cast<int>(i)));
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
    case NM_CUSTOMDRAW: {
        // An item switched off in Task Manager: greyed text beside its greyed (cut) icon.
        auto* draw = reinterpret_cast<NMTVCUSTOMDRAW*>(const_cast<NMHDR*>(header));
        if (draw->nmcd.dwDrawStage == CDDS_PREPAINT) {
            result = CDRF_NOTIFYITEMDRAW;
        } else if (draw->nmcd.dwDrawStage == CDDS_ITEMPREPAINT) {
            const int node = NodeOf(reinterpret_cast<HTREEITEM>(draw->nmcd.dwItemSpec));
            if (node != TreeModel::kNone && static_cast<size_t>(node) < model.Count() &&
                model.Node(node).Cut && !(draw->nmcd.uItemState & CDIS_SELECTED))
                draw->clrText = GetSysColor(COLOR_GRAYTEXT);
            result = CDRF_DODEFAULT;
        }
        return true;
    }
    }
    return false;
}

} // namespace tolvane
