// Baseline for the interactive start: a bare window that fills a TreeView with check boxes with
// the same nodes that Tolvane shows for the benchmark's items, then waits to be closed.
#include <windows.h>
#include <commctrl.h>

#include <cstdio>
#include <string>

static LRESULT CALLBACK Proc(HWND h, UINT m, WPARAM w, LPARAM l) {
    if (m == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(h, m, w, l);
}

static HTREEITEM Add(HWND tree, HTREEITEM parent, const std::string& text) {
    TVINSERTSTRUCTA insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = const_cast<char*>(text.c_str());
    return reinterpret_cast<HTREEITEM>(
        SendMessageA(tree, TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insert)));
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR arguments, int) {
    const int perPlace = std::atoi(arguments);
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);
    WNDCLASSA wc{};
    wc.lpfnWndProc = Proc;
    wc.hInstance = instance;
    wc.lpszClassName = "TolvaneTreeBaseline";
    RegisterClassA(&wc);
    HWND window = CreateWindowA(wc.lpszClassName, "Tree baseline", WS_OVERLAPPEDWINDOW, 0, 0, 760,
                                520, nullptr, nullptr, instance, nullptr);
    ShowWindow(window, SW_SHOWNORMAL);
    UpdateWindow(window);
    HWND tree =
        CreateWindowExA(WS_EX_CLIENTEDGE, WC_TREEVIEWA, "",
                        WS_CHILD | WS_VISIBLE | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT, 5,
                        5, 730, 460, window, nullptr, instance, nullptr);
    SetWindowLongPtrA(tree, GWL_STYLE, GetWindowLongPtrA(tree, GWL_STYLE) | TVS_CHECKBOXES);
    // The 20 containers of the startup tree, with the items in the four active places.
    const char* roots[] = {"Current User", "All Users", "Delayed Items", "Stopped Items"};
    for (const char* root : roots) {
        HTREEITEM r = Add(tree, TVI_ROOT, root);
        HTREEITEM places[2] = {Add(tree, r, "Startup Folder"), Add(tree, r, "Registry Run")};
        if (root == roots[2] || root == roots[3]) {
            Add(tree, places[0], "Startup Folder");
            Add(tree, places[0], "Registry Run");
            Add(tree, places[1], "Startup Folder");
            Add(tree, places[1], "Registry Run");
            continue;
        }
        for (int i = 0; i < perPlace; ++i) {
            char name[96];
            std::snprintf(name, sizeof name, "Item %04d.lnk", i);
            Add(tree, places[0], name);
            std::snprintf(name, sizeof name,
                          "Item %04d=\"C:\\Program Files\\Vendor\\Item %04d.exe\" /background", i,
                          i);
            Add(tree, places[1], name);
        }
    }
    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0)
        DispatchMessageA(&msg);
    return 0;
}
