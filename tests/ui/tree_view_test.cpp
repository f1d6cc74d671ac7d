#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <set>

#include "items/startup_tree.h"
#include "platform/handles.h"
#include "resource_ids.h"
#include "support/win_test_support.h"
#include "ui/tree_view.h"

namespace tolvane {
namespace {

// The built program, for its resources.
UniqueModule Program() {
    return UniqueModule(LoadLibraryExA((test::BuiltProgramFolder() + "\\Tolvane.exe").c_str(),
                                       nullptr,
                                       LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

TEST(TreeIcons, EachIsInTheProgramAtEverySize) {
    UniqueModule program = Program();
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
        EXPECT_EQ(sizes, (std::set<int>{16, 24, 32, 48})) << id;
        EXPECT_TRUE(UniqueIcon(static_cast<HICON>(
            LoadImageA(program.get(), MAKEINTRESOURCEA(id), IMAGE_ICON, 16, 16, 0))))
            << id;
    }
}

// A window that hands the tree's notifications to the binding, as the main window does.
struct Host {
    TreeModel model;
    std::unique_ptr<TreeViewControl> tree;
    UniqueWindow window;

    static LRESULT CALLBACK Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
        auto* host = reinterpret_cast<Host*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
        if (host && host->tree) {
            LRESULT result = 0;
            if (msg == WM_NOTIFY &&
                host->tree->OnNotify(reinterpret_cast<NMHDR*>(lp), host->model, result))
                return result;
            if (msg == TreeViewControl::kChecksMayHaveChanged) {
                host->tree->ReadChecks(host->model);
                return 0;
            }
        }
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
        for (int i = 0; i < 20; ++i) {
            while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
                TranslateMessage(&msg);
                DispatchMessageA(&msg);
            }
            Sleep(5);
        }
    }
};

struct Shown {
    std::string Text;
    int Depth;
    bool Bold, Checked, Expanded;
    int Image;
    bool operator==(const Shown&) const = default;
    friend void PrintTo(const Shown& s, std::ostream* out) {
        *out << std::string(2 * s.Depth, ' ') << s.Text << (s.Bold ? " bold" : "")
             << (s.Checked ? " checked" : "") << (s.Expanded ? " open" : "") << " image "
             << s.Image;
    }
};

std::vector<Shown> FromControl(HWND tree) {
    std::vector<Shown> out;
    std::function<void(HTREEITEM, int)> walk = [&](HTREEITEM item, int depth) {
        for (; item; item = TreeView_GetNextSibling(tree, item)) {
            char text[512] = {};
            TVITEMA data{};
            data.mask = TVIF_TEXT | TVIF_STATE | TVIF_IMAGE;
            data.hItem = item;
            data.pszText = text;
            data.cchTextMax = sizeof text;
            data.stateMask = TVIS_BOLD | TVIS_EXPANDED | TVIS_STATEIMAGEMASK;
            SendMessageA(tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data));
            out.push_back({text, depth, (data.state & TVIS_BOLD) != 0,
                           (data.state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2),
                           (data.state & TVIS_EXPANDED) != 0, data.iImage});
            walk(TreeView_GetChild(tree, item), depth + 1);
        }
    };
    walk(TreeView_GetRoot(tree), 0);
    return out;
}

std::vector<Shown> FromModel(const TreeModel& model, const std::map<std::string, int>& images) {
    std::vector<Shown> out;
    std::function<void(int, int)> walk = [&](int node, int depth) {
        const TreeNode& n = model.Node(node);
        auto image = images.find(n.Image);
        // A node without children shows as closed, whatever the model says.
        out.push_back({n.Text, depth, n.Bold, n.Checked, n.Expanded && !n.Children.empty(),
                       image == images.end() ? I_IMAGENONE : image->second});
        for (int child : n.Children)
            walk(child, depth + 1);
    };
    for (int root : model.Roots())
        walk(root, 0);
    return out;
}

TEST(TreeViewControl, ShowsTheModelAndHandsTheUsersChangesBack) {
    UniqueModule program = Program();
    ASSERT_TRUE(program);
    Host host(program.get());

    StartupListing listing;
    listing.UserStartupFiles = {"Tool.lnk", "Known.lnk"};
    listing.UserRunValues = {"A=C:\\a.exe"};
    listing.MachineRunValues = {"M=C:\\m.exe"};
    ProgramModel model;
    model.ProgramGroups = {{"Startup", {{"Delayed.lnk", "", "Execute"}}}};
    model.StartupGroupIndex = 0;
    model.StoppedPrograms = {"_REGCU_C:\\s.exe"};
    BuildStartupTree(host.model, listing, model, "Tolvane=x", {[] { return 1LL; }, {}});
    MarkKnown(host.model, {{"Known", "a known one"}});
    host.model.Node(host.model.Find("CurrentUserRoot")).Expanded = true;
    host.model.Node(host.model.Find("CurrentUserStartup")).Expanded = true;
    host.model.Node(host.model.Find("#11#Known.lnk")).Checked = true;
    host.tree->Render(host.model);
    host.Pump();

    std::map<std::string, int> images;
    int index = 0;
    for (const auto& icon : TreeViewControl::StartupTreeIcons())
        images[icon.first] = index++;
    EXPECT_EQ(FromControl(host.tree->Hwnd()), FromModel(host.model, images));

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
    NMTVGETINFOTIPA tip{};
    tip.hdr.hwndFrom = tree;
    tip.hdr.code = TVN_GETINFOTIPA;
    tip.hItem = host.tree->ItemOf(item);
    tip.pszText = buffer;
    tip.cchTextMax = sizeof buffer;
    LRESULT result = 0;
    EXPECT_TRUE(host.tree->OnNotify(&tip.hdr, host.model, result));
    EXPECT_STREQ(buffer, "tip of Tool.lnk");
}

} // namespace
} // namespace tolvane
