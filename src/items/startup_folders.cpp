#include "items/startup_folders.h"

#include <windows.h>
#include <shlobj.h>

#include "config/app_folders.h"
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

void EnsureStartupFolders(AppFolders& folders) {
    if (folders.UserStartupFolder.empty())
        folders.UserStartupFolder = GetSpecialFolder(CSIDL_STARTUP);
    if (folders.CommonStartupFolder.empty())
        folders.CommonStartupFolder = GetSpecialFolder(CSIDL_COMMON_STARTUP);
}

} // namespace tolvane
