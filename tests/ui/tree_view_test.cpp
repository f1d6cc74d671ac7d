#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <algorithm>
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
        if (host && host->tree && msg == TreeViewControl::kLoadIcons)
            host->tree->LoadIcons(host->model, wp);
        return DefWindowProcA(hwnd, msg, wp, lp);
    }

    explicit Host(HMODULE icons) {
        WNDCLASSA wc{};
        wc.lpfnWndProc = Proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "TreeViewTestHost";
        RegisterClassA(&wc);
        window.reset(CreateWindowA(wc.lpszClassName, "host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100,
                                   100, 600, 700, nullptr, nullptr, wc.hInstance, nullptr));
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
    // Serves the window until the condition holds, for at most about five seconds.
    bool PumpUntil(const std::function<bool()>& done) {
        for (int i = 0; i < 100 && !done(); ++i)
            Pump();
        return done();
    }
};

// The colours of an item's row as the control paints it: the label, or the picture left of it.
std::set<COLORREF> Painted(HWND tree, HTREEITEM item, bool picture = false) {
    RECT client{}, label{};
    GetClientRect(tree, &client);
    TreeView_GetItemRect(tree, item, &label, TRUE);
    UniqueDc dc(CreateCompatibleDC(nullptr));
    const BITMAPINFO info{{sizeof(BITMAPINFOHEADER), client.right, -client.bottom, 1, 32}};
    void* bits = nullptr;
    UniqueGdiObject bitmap(CreateDIBSection(dc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    ScopedSelection chosen(dc.get(), bitmap.get());
    SendMessageA(tree, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc.get()),
                 PRF_CLIENT | PRF_ERASEBKGND);
    const int size = GetSystemMetrics(SM_CXSMICON);
    const int left = picture ? label.left - size - 1 : label.left;
    const int right = picture ? label.left - 1 : label.right;
    std::set<COLORREF> colours;
    for (int y = label.top; y < label.bottom; ++y)
        for (int x = std::max(0, left); x < right; ++x)
            colours.insert(GetPixel(dc.get(), x, y));
    return colours;
}

// One node as the user sees it: indented by depth, with its marks and its image's index.
std::string Shown(int depth, const std::string& text, bool bold, bool cut, int box, bool open,
                  int image, bool warned = false) {
    return std::string(2 * depth, ' ') + text + (bold ? " bold" : "") + (cut ? " cut" : "") +
           (warned ? " warned" : "") +
           (box == 2   ? " checked"
            : box == 0 ? " no box"
                       : "") +
           (open ? " open" : "") + " image " + std::to_string(image);
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
            data.stateMask =
                TVIS_BOLD | TVIS_CUT | TVIS_EXPANDED | TVIS_STATEIMAGEMASK | TVIS_OVERLAYMASK;
            SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&data));
            out.push_back(
                Shown(depth, Narrow(text, CP_UTF8), data.state & TVIS_BOLD, data.state & TVIS_CUT,
                      static_cast<int>((data.state & TVIS_STATEIMAGEMASK) >> 12),
                      data.state & TVIS_EXPANDED, data.iImage, data.state & TVIS_OVERLAYMASK));
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
        out.push_back(Shown(depth, n.Text, n.Bold, n.Cut, n.Tickable ? 1 + n.Checked : 0,
                            n.Expanded && !n.Children.empty(),
                            image == images.end() ? I_IMAGENONE : image->second,
                            !n.Notice.empty()));
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

    // The containers of every place, with all six pictures, and the user's items, one of them
    // switched off in Task Manager, and an all users' one, which has no box.
    StartupListing listing;
    listing.UserStartupFiles = {"Tool.lnk", "Known.lnk", "📅 Ноутбук 微信.lnk"};
    listing.CommonStartupFiles = {"Common.lnk"};
    listing.OffUserFolder =
        SwitchedOffNames({{"tool.lnk", {kBinaryType, {0x03}}}}, CDirStruct::CompareNames);
    BuildStartupTree(host.model, listing, ProgramModel(), {"Tolvane", "x"},
                     {[] { return 1LL; }, {}});
    MarkKnown(host.model, {{"Known", "a known one"}});
    host.model.Node(host.model.Find("CurrentUserRoot")).Expanded = true;
    for (const char* key : {"CurrentUserStartup", "AllUsersRoot", "AllUsersStartup"})
        host.model.Node(host.model.Find(key)).Expanded = true;
    const int known = host.model.Find("#11#Known.lnk");
    host.model.Node(known).Checked = true;
    host.model.Node(host.model.Find("#12#📅 Ноутбук 微信.lnk")).Notice = "will not start";
    host.tree->Render(host.model);
    host.Pump();

    EXPECT_EQ(FromControl(host.tree->Hwnd()), FromModel(host.model));
    EXPECT_EQ(FromControl(host.tree->Hwnd())[2], "    Tool.lnk cut image -2");
    EXPECT_EQ(FromControl(host.tree->Hwnd())[8], "    Common.lnk no box image -2");
    // Switched off: its text is greyed.
    const COLORREF grey = GetSysColor(COLOR_GRAYTEXT);
    EXPECT_TRUE(
        Painted(host.tree->Hwnd(), host.tree->ItemOf(host.model.Find("#10#Tool.lnk"))).count(grey));
    EXPECT_FALSE(Painted(host.tree->Hwnd(), host.tree->ItemOf(known)).count(grey));

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
    // An item without a box stays without one.
    TreeView_SelectItem(tree, host.tree->ItemOf(host.model.Find("#10#Common.lnk")));
    SendMessageA(tree, WM_KEYDOWN, VK_SPACE, 0);
    SendMessageA(tree, WM_KEYUP, VK_SPACE, 0);
    host.Pump();
    EXPECT_EQ(FromControl(tree)[8], "    Common.lnk no box image -2");
    TreeView_SelectItem(tree, host.tree->ItemOf(item));
    host.Pump();

    // A click on a box ticks it and nothing else: only the selected row is highlighted.
    RECT label{};
    TreeView_GetItemRect(tree, host.tree->ItemOf(known), &label, TRUE);
    TVHITTESTINFO hit{{0, (label.top + label.bottom) / 2}};
    for (; hit.pt.x < label.left; ++hit.pt.x)
        if (TreeView_HitTest(tree, &hit) && (hit.flags & TVHT_ONITEMSTATEICON))
            break;
    SendMessageA(tree, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(hit.pt.x, hit.pt.y));
    SendMessageA(tree, WM_LBUTTONUP, 0, MAKELPARAM(hit.pt.x, hit.pt.y));
    host.Pump();
    EXPECT_FALSE(host.model.Node(known).Checked);
    EXPECT_EQ(host.model.Selected(), item);
    auto highlighted = [&](int node) {
        const std::set<COLORREF> colours = Painted(tree, host.tree->ItemOf(node));
        return colours.count(GetSysColor(COLOR_HIGHLIGHT)) ||
               colours.count(GetSysColor(COLOR_BTNFACE));
    };
    EXPECT_TRUE(highlighted(item));
    EXPECT_FALSE(highlighted(known));

    // A tip shows while the pointer rests on an item, with the text the model gives that item.
    host.tree->ToolTip = [&](int node) { return "tip of " + host.model.Node(node).Text; };
    TreeView_GetItemRect(tree, host.tree->ItemOf(known), &label, TRUE);
    POINT at{(label.left + label.right) / 2, (label.top + label.bottom) / 2};
    ClientToScreen(tree, &at);
    SetCursorPos(at.x, at.y);
    ScreenToClient(tree, &at);
    SendMessageA(tree, WM_MOUSEMOVE, 0, MAKELPARAM(at.x, at.y));
    wchar_t shown[64] = {};
    EXPECT_TRUE(host.PumpUntil([&] {
        return IsWindowVisible(host.tree->Tips()) && GetWindowTextW(host.tree->Tips(), shown, 64);
    }));
    EXPECT_EQ(Narrow(shown, CP_UTF8), "tip of Known.lnk");
}

// Each item shows its program's own icon, read once the tree shows; a file that is not there
// shows the "not found" picture.
TEST(TreeViewControl, ShowsEachProgramsOwnIcon) {
    // .exe files are programs, as on Windows (a fresh Wine prefix lacks the key).
    HKEY key = nullptr;
    DWORD made = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CLASSES_ROOT, ".exe", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, &made),
              ERROR_SUCCESS);
    UniqueHKey exe(key);
    struct Remove {
        bool made;
        ~Remove() {
            if (made)
                RegDeleteKeyA(HKEY_CLASSES_ROOT, ".exe");
        }
    } remove{made == REG_CREATED_NEW_KEY};
    if (remove.made) {
        ASSERT_EQ(RegSetValueExA(key, "", 0, REG_SZ, reinterpret_cast<const BYTE*>("exefile"), 8),
                  ERROR_SUCCESS);
    }

    UniqueModule program(LoadLibraryExA((test::BuiltProgramFolder() + "\\Tolvane.exe").c_str(),
                                        nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    Host host(program.get());
    const std::pair<const char*, const char*> files[] = {
        {"Notepad", "C:\\windows\\system32\\notepad.exe"},
        {"Mines", "%SystemRoot%\\system32\\winemine.exe"},
        {"Gone", "C:\\nowhere\\gone.exe"},
        {"Notepad again", "notepad.exe"}, // found where Windows looks
    };
    auto render = [&](bool reversed) {
        host.model.Clear();
        host.model.Node(host.model.Add("", "root", "Programs", "User")).Expanded = true;
        for (size_t i = 0; i < std::size(files); ++i) {
            const auto& [text, file] = files[reversed ? std::size(files) - 1 - i : i];
            host.model.Node(host.model.Add("root", text, text)).File = file;
        }
        host.tree->Render(host.model);
    };
    // Rendered again before the first rendering's icons came: each item still gets its own.
    render(false);
    render(true);
    HWND tree = host.tree->Hwnd();
    auto image = [&](const char* key) {
        TVITEMA item{TVIF_IMAGE, host.tree->ItemOf(host.model.Find(key))};
        TreeView_GetItem(tree, &item);
        return item.iImage;
    };
    ASSERT_TRUE(host.PumpUntil([&] {
        return std::all_of(std::begin(files), std::end(files),
                           [&](const auto& f) { return image(f.first) != I_IMAGENONE; });
    }));
    auto picture = [&](const char* key) {
        return Painted(tree, host.tree->ItemOf(host.model.Find(key)), true);
    };
    EXPECT_EQ(picture("Notepad"), picture("Notepad again"));
    EXPECT_NE(picture("Notepad"), picture("Mines"));
    EXPECT_NE(picture("Gone"), picture("Notepad"));
    // The "not found" picture comes right after the tree's own.
    EXPECT_EQ(image("Gone"), static_cast<int>(TreeViewControl::StartupTreeIcons().size()));
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
