// Rebuilding the startup tree into a real TreeView under Wine, with 500 and then 1,000 items
// in each of the four startup locations; the larger run against the smaller, measured in the
// same invocation. Uses the prefix's real Startup folders and Run keys, and empties them after.
#include <windows.h>
#include <shlobj.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "config/delay_load.h"
#include "items/refresh.h"
#include "platform/registry.h"
#include "platform/runtime_libraries.h"
#include "ui/tree_view.h"

using namespace tolvane;
using Clock = std::chrono::steady_clock;

namespace {

struct Quiet : UserMessages {
    int ShowMessage(std::string_view, std::string_view, unsigned) override { return 1; }
};

std::string ShellFolderPath(int csidl) {
    char path[MAX_PATH] = {};
    SHGetFolderPathA(nullptr, csidl, nullptr, 0, path);
    return path;
}

void Fill(const std::string& userFolder, const std::string& commonFolder, int count) {
    CRegistry reg;
    for (int i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "Item %04d", i);
        for (const std::string& folder : {userFolder, commonFolder}) {
            HANDLE f = CreateFileA((folder + "\\" + name + ".lnk").c_str(), GENERIC_WRITE, 0,
                                   nullptr, CREATE_ALWAYS, 0, nullptr);
            CloseHandle(f);
        }
        const std::string data =
            std::string("\"C:\\Program Files\\Vendor\\") + name + ".exe\" /background";
        reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, name, data);
        reg.SaveSettingString(RegistryRoot::LocalMachine, kRunKey, name, data);
    }
}

void Empty(const std::string& userFolder, const std::string& commonFolder, int count) {
    CRegistry reg;
    for (int i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "Item %04d", i);
        DeleteFileA((userFolder + "\\" + name + ".lnk").c_str());
        DeleteFileA((commonFolder + "\\" + name + ".lnk").c_str());
        reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, name);
        reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, name);
    }
}

} // namespace

int main() {
    EnsureCommonControls();
    char temp[MAX_PATH];
    GetTempPathA(MAX_PATH, temp);
    const std::string programFolder = std::string(temp) + "tolvane-tree-bench";
    CreateDirectoryA(programFolder.c_str(), nullptr);
    Quiet quiet;
    AppState app(programFolder, quiet);
    app.folders.UserStartupFolder = ShellFolderPath(CSIDL_STARTUP);
    app.folders.CommonStartupFolder = ShellFolderPath(CSIDL_COMMON_STARTUP);
    CDelayLoad(app).LoadItems();

    WNDCLASSA wc{};
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "TreeBench";
    RegisterClassA(&wc);
    HWND window = CreateWindowA(wc.lpszClassName, "tree bench", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0,
                                0, 700, 700, nullptr, nullptr, wc.hInstance, nullptr);
    TreeViewControl view(window, 1, GetModuleHandleA(nullptr));
    MoveWindow(view.Hwnd(), 0, 0, 680, 660, TRUE);

    double best[2] = {1e300, 1e300};
    const int counts[2] = {500, 1000};
    for (int size = 0; size < 2; ++size) {
        Fill(app.folders.UserStartupFolder, app.folders.CommonStartupFolder, counts[size]);
        TreeModel tree;
        StartupListing listing;
        for (int run = 0; run < 5; ++run) {
            const auto t0 = Clock::now();
            RefreshData(app, tree, listing);
            view.Render(tree);
            UpdateWindow(view.Hwnd());
            best[size] = std::min(
                best[size], std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
        }
        if (tree.Count() < static_cast<size_t>(4 * counts[size] + 20))
            std::fprintf(stderr, "only %zu nodes\n", tree.Count());
        Empty(app.folders.UserStartupFolder, app.folders.CommonStartupFolder, counts[size]);
    }
    std::printf("refresh into a TreeView: %d items %.1f ms, %d items %.1f ms, ratio %.2f "
                "(goal: under 150 ms for 2,000 items, ratio at most 2.3)\n",
                4 * counts[0], best[0], 4 * counts[1], best[1], best[1] / best[0]);
    DestroyWindow(window);
    return 0;
}
