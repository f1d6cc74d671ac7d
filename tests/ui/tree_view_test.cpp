#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <set>

#include "items/startup_tree.h"
#include "models/tray_menu.h"
#include "platform/dir_struct.h"
#include "platform/handles.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "support/win_test_support.h"
#include "ui/menu_view.h"
#include "ui/tree_view.h"

namespace tolvane {
namespace {

// A window that hands the tree's notifications to the binding, as the main window does.
struct Host {
    TreeModel model;
    std::unique_ptr<TreeViewControl> tree;
    UniqueWindow window;

    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
        auto* host = reinterpret_cast<Host*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
        LRESULT result = 0;
        if (host && host->tree && msg == WM_NOTIFY &&
            host->tree->OnNotify(reinterpret_cast<NMHDR*>(lp), host->model, result))
            return result;
        if (host && host->tree && msg == TreeViewControl::kChecksMayHaveChanged)
            host->tree->ReadChecks(host->model);
        return DefWindowProcA(hwnd, msg, wp, lp);
    }

    explicit Host(HMODULE icons) {
        WNDCLASSA wc{};
        wc.lpfnWndProc = Proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "TreeViewTestHost";
        RegisterClassA(&wc);
        window.reset(CreateWindowA(wc.lpszClassName, "host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                   600, 700, nullptr, nullptr, wc.hInstance, nullptr));
        SetWindowLongPtrA(window.get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        tree = std::make_unique<TreeViewControl>(window.get(), 7, icons);
        MoveWindow(tree->Hwnd(), 0, 0, 580, 650, TRUE);
    }
    void Pump() {
        MSG msg;
        for (int i = 0; i < 20; ++i, Sleep(5))
            while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageA(&msg);
    }
};

// One node as the user sees it: indented by depth, with its marks and its image's index.
std::string Shown(int depth, const std::string& text, bool bold, bool cut, bool checked, bool open,
                  int image) {
    return std::string(2 * depth, ' ') + text + (bold ? " bold" : "") + (cut ? " cut" : "") +
           (checked ? " checked" : "") + (open ? " open" : "") + " image " + std::to_string(image);
}

std::vector<std::string> FromControl(HWND tree) {
    std::vector<std::string> out;
    std::function<void(HTREEITEM, int)> walk = [&](HTREEITEM item, int depth) {
        for (; item; item = TreeView_GetNextSibling(tree, item)) {
            // The text as the control holds it, in UTF-16: a name of any script shows as it is.
            wchar_t text[512] = {};
            TVITEMW data{TVIF_TEXT | TVIF_STATE | TVIF_IMAGE, item};
            data.pszText = text;
            data.cchTextMax = 512;
            data.stateMask = TVIS_BOLD | TVIS_CUT | TVIS_EXPANDED | TVIS_STATEIMAGEMASK;
            SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
            out.push_back(Shown(depth, Narrow(text, CP_UTF8), data.state & TVIS_BOLD,
                                data.state & TVIS_CUT,
                                (data.state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2),
                                data.state & TVIS_EXPANDED, data.iImage));
            walk(TreeView_GetChild(tree, item), depth + 1);
        }
    };
    walk(TreeView_GetRoot(tree), 0);
    return out;
}

std::vector<std::string> FromModel(const TreeModel& model) {
    std::map<std::string, int> images;
    for (const auto& icon : TreeViewControl::StartupTreeIcons())
        images.emplace(icon.first, static_cast<int>(images.size()));
    std::vector<std::string> out;
    std::function<void(int, int)> walk = [&](int node, int depth) {
        const TreeNode& n = model.Node(node);
        auto image = images.find(n.Image);
        // A node without children shows as closed, whatever the model says.
        out.push_back(Shown(depth, n.Text, n.Bold, n.Cut, n.Checked,
                            n.Expanded && !n.Children.empty(),
                            image == images.end() ? I_IMAGENONE : image->second));
        for (int child : n.Children)
            walk(child, depth + 1);
    };
    for (int root : model.Roots())
        walk(root, 0);
    return out;
}

TEST(TreeViewControl, ShowsTheModelWithTheProgramsIconsAndHandsTheUsersChangesBack) {
    UniqueModule program(LoadLibraryExA((test::BuiltProgramFolder() + "\\Tolvane.exe").c_str(),
                                        nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    ASSERT_TRUE(program);
    for (int id = IDI_TREE_USER; id <= IDI_TREE_STOPPED; ++id) {
        // The icon group's directory: a count at byte 4, then 14-byte entries, width first.
        HRSRC group = FindResourceA(program.get(), MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(14));
        ASSERT_NE(group, nullptr) << id;
        const auto* dir =
            static_cast<const BYTE*>(LockResource(LoadResource(program.get(), group)));
        std::set<int> sizes;
        for (int i = 0; i < (dir[4] | dir[5] << 8); ++i)
            sizes.insert(dir[6 + 14 * i]);
        EXPECT_EQ(sizes, (std::set<int>{16, 24, 32})) << id; // small icons, up to twice the size
    }
    Host host(program.get());

    // The containers of every place, with all six pictures, and two items, one of them
    // switched off in Task Manager.
    StartupListing listing;
    listing.UserStartupFiles = {"Tool.lnk", "Known.lnk", "📅 Ноутбук 微信.lnk"};
    listing.OffUserFolder =
        SwitchedOffNames({{"tool.lnk", {kBinaryType, {0x03}}}}, CDirStruct::CompareNames);
    BuildStartupTree(host.model, listing, ProgramModel(), {"Tolvane", "x"},
                     {[] { return 1LL; }, {}});
    MarkKnown(host.model, {{"Known", "a known one"}});
    host.model.Node(host.model.Find("CurrentUserRoot")).Expanded = true;
    host.model.Node(host.model.Find("CurrentUserStartup")).Expanded = true;
    host.model.Node(host.model.Find("#11#Known.lnk")).Checked = true;
    host.tree->Render(host.model);
    host.Pump();

    EXPECT_EQ(FromControl(host.tree->Hwnd()), FromModel(host.model));
    EXPECT_EQ(FromControl(host.tree->Hwnd())[2], "    Tool.lnk cut image -2");

    // The user opens a container with the keyboard and ticks an item with the space bar.
    HWND tree = host.tree->Hwnd();
    const int delayed = host.model.Find("DelayedItemsRoot");
    ASSERT_FALSE(host.model.Node(delayed).Expanded);
    SetFocus(tree);
    TreeView_SelectItem(tree, host.tree->ItemOf(delayed));
    host.Pump();
    EXPECT_EQ(host.model.Selected(), delayed);
    SendMessageA(tree, WM_KEYDOWN, VK_RIGHT, 0);
    host.Pump();
    EXPECT_TRUE(host.model.Node(delayed).Expanded);

    const int item = host.model.Find("#10#Tool.lnk");
    TreeView_SelectItem(tree, host.tree->ItemOf(item));
    SendMessageA(tree, WM_KEYDOWN, VK_SPACE, 0);
    SendMessageA(tree, WM_KEYUP, VK_SPACE, 0);
    host.Pump();
    EXPECT_TRUE(host.model.Node(item).Checked);

    // Tooltips come from the model's text.
    host.tree->ToolTip = [&](int node) { return "tip of " + host.model.Node(node).Text; };
    char buffer[64] = {};
    NMTVGETINFOTIPA tip{{tree, 0, TVN_GETINFOTIPA}, buffer, sizeof buffer, host.tree->ItemOf(item)};
    LRESULT result = 0;
    EXPECT_TRUE(host.tree->OnNotify(&tip.hdr, host.model, result));
    EXPECT_STREQ(buffer, "tip of Tool.lnk");
    // A tip too long for the buffer is cut between characters, never inside one.
    host.tree->ToolTip = [&](int) { return std::string("tip of 微信"); };
    tip.cchTextMax = 9;
    EXPECT_TRUE(host.tree->OnNotify(&tip.hdr, host.model, result));
    EXPECT_STREQ(buffer, "tip of ");
}

// The tray's popup shows each program's name as it is, in any script.
TEST(TrayMenuView, ShowsEveryNameAsItIs) {
    const TrayMenu model = TrayMenu::Build({0,
                                            "Startup",
                                            {"C:\\微信\\微信.exe", "📅 Calendar.lnk"},
                                            {"Ноутбук.lnk"},
                                            "Run All",
                                            "Stopped",
                                            "&Open",
                                            "&Quit Program"});
    const UniqueMenu menu = MakePopupMenu(model.Entries());
    std::set<std::string> shown;
    std::function<void(HMENU)> walk = [&](HMENU m) {
        for (int i = 0; i < GetMenuItemCount(m); ++i) {
            wchar_t text[256] = {};
            GetMenuStringW(m, i, text, 256, MF_BYPOSITION);
            shown.insert(Narrow(text, CP_UTF8));
            if (HMENU sub = GetSubMenu(m, i))
                walk(sub);
        }
    };
    walk(menu.get());
    for (const char* name : {"微信.exe", "📅 Calendar.lnk", "Ноутбук.lnk"})
        EXPECT_TRUE(shown.count(name)) << name;
}

} // namespace
} // namespace tolvane
