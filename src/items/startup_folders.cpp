#include "items/startup_folders.h"

#include <windows.h>
#include <shlobj.h>

#include "config/app_folders.h"
#include "platform/handles.h"
#include "platform/wide_text.h"

namespace tolvane {

std::string GetSpecialFolder(int csidl) {
    UniquePidl folder;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, folder.put())) || !folder)
        return std::string();
    // The wide call: the narrow one cuts at 260 bytes, which a profile path in Cyrillic or
    // Chinese may pass in UTF-8 well below 260 characters.
    wchar_t path[MAX_PATH] = {};
    if (!SHGetPathFromIDListW(folder.get(), path))
        return std::string();
    return Narrow(path);
}

void EnsureStartupFolders(AppFolders& folders) {
    if (folders.UserStartupFolder.empty())
        folders.UserStartupFolder = GetSpecialFolder(CSIDL_STARTUP);
    if (folders.CommonStartupFolder.empty())
        folders.CommonStartupFolder = GetSpecialFolder(CSIDL_COMMON_STARTUP);
}

} // namespace tolvane
