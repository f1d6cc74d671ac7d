// A Win32 TreeView, a child of its parent window, that shows a TreeModel: texts, pictures, check
// boxes, bold, greyed and open nodes, each item's program's own small icon and a tip on hover,
// and that hands the user's checks, openings and selection back to the model.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "models/tree_model.h"

namespace tolvane {

class TreeViewControl {
public:
    // The pictures of the startup tree, by the keys the model uses, from the icons of the
    // module's resources (the program's own, or a test's copy of it). A tree made without a
    // module has no pictures.
    static std::vector<std::pair<std::string, int>> StartupTreeIcons();

    TreeViewControl(HWND parent, int id, HMODULE iconModule, bool checkBoxes = true);
    ~TreeViewControl();
    TreeViewControl(const TreeViewControl&) = delete;
    TreeViewControl& operator=(const TreeViewControl&) = delete;

    HWND Hwnd() const { return tree_; }

    // Shows the model, node for node, in its order.
    void Render(const TreeModel& model);
    // A lazy tree puts the items of a closed node into the control only when it first opens:
    // a large tree of closed groups shows at once.
    void SetLazy(bool lazy) { lazy_ = lazy; }
    // The node's item, put into the control (with its brothers and the items above it) when a
    // lazy tree had left it out.
    HTREEITEM Reveal(const TreeModel& model, int node);

    // A notification from the control, handed over by the parent window; true when it was
    // the tree's. Openings and the selection go into the model at once; a click or a key that
    // may have ticked a box asks the parent (with kChecksMayHaveChanged) to read the boxes.
    bool OnNotify(const NMHDR* header, TreeModel& model, LRESULT& result);
    static constexpr UINT kChecksMayHaveChanged = WM_APP + 20;

    // The check boxes as the user left them, into the model; the nodes whose box changed.
    std::vector<int> ReadChecks(TreeModel& model) const;
    // Shows the model's check boxes again (after a container passed its state on).
    void ShowChecks(const TreeModel& model) const;

    // The text of a node's tooltip, shown while the pointer rests on the node; "" for none.
    std::function<std::string(int node)> ToolTip;
    // The tip window, which shows the tip of the node under the pointer.
    HWND Tips() const { return tips_; }

    // Each item's program's own icon is read after the tree shows, a few at a time, each time
    // the parent hands this message (posted to it) back with its wParam: the tree paints first,
    // and a large one never waits for the disk. A file that is not there shows the "not found"
    // picture. A rendering since the message was posted has posted its own.
    static constexpr UINT kLoadIcons = WM_APP + 21;
    void LoadIcons(const TreeModel& model, WPARAM round);

    // Shows the node's warning sign again, after the model learnt that its program is missing.
    void ShowMark(const TreeModel& model, int node);

    // The pictures at the size that suits the parent's screen density.
    void LoadPictures();

    HTREEITEM ItemOf(int node) const;
    int NodeOf(HTREEITEM item) const;

private:
    HTREEITEM Insert(const TreeModel& model, int index);
    void InsertChildren(const TreeModel& model, int index);
    void StartIcons();
    int ProgramImage(const std::string& file);
    // The pointer over the tree: the tip follows the node under it, and shows once the pointer
    // rests.
    void PointerAt(POINT at);
    void ShowTip();
    void HideTip();
    bool HasBox(HTREEITEM item) const;
    // A click on a tick box ticks it and leaves the selection alone; true when it was one.
    bool TickAt(POINT at);
    static LRESULT CALLBACK TreeProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    HWND tree_ = nullptr; // the parent's child: destroyed with it

    HWND parent_;
    HMODULE iconModule_;
    UniqueImageList images_;
    std::map<std::string, int, std::less<>> imageIndex_;
    std::vector<HTREEITEM> items_;
    bool lazy_ = false;

    HWND tips_ = nullptr;         // owned by the parent: destroyed with it
    WNDPROC treeProc_ = nullptr;  // the control's own procedure, which this one's calls on
    HTREEITEM tipItem_ = nullptr; // the row under the pointer
    bool tipShown_ = false;

    std::map<std::string, int, std::less<>> programImages_; // by the file as the model names it
    std::map<std::wstring, int> kindImages_; // by the extension of a file without icons
    std::vector<int> iconNodes_; // the nodes whose program's icon is read, in the tree's order
    size_t nextIcon_ = 0;
    WPARAM iconRound_ = 0;
};

} // namespace tolvane
