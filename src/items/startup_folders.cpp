#include "items/startup_folders.h"

#include <windows.h>
#include <shlobj.h>

#include "config/app_state.h"
#include "platform/handles.h"

namespace tolvane {

std::string GetSpecialFolder(int csidl) {
    UniquePidl folder;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, folder.put())) || !folder)
        return std::string();
    char path[512] = {};
    if (!SHGetPathFromIDListA(folder.get(), path))
        return std::string();
    return std::string(path, strnlen(path, sizeof path));
}

void EnsureStartupFolders(AppState& app) {
    if (app.folders.UserStartupFolder.empty())
        app.folders.UserStartupFolder = GetSpecialFolder(CSIDL_STARTUP);
    if (app.folders.CommonStartupFolder.empty())
        app.folders.CommonStartupFolder = GetSpecialFolder(CSIDL_COMMON_STARTUP);
}

} // namespace tolvane
