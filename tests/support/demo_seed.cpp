// Seeds a Wine prefix with startup items in all four places, so that a newcomer who runs
// Tolvane sees something real: shortcuts in both Startup folders, values in both Run keys.
// Existing items are left alone.
#include <windows.h>
#include <shlobj.h>

#include <cstdio>

#include "platform/registry.h"
#include "support/win_test_support.h"

using namespace tolvane;

namespace {

void Shortcut(int csidl, const char* name, const char* target, const char* args) {
    std::string folder = test::ShellFolder(csidl);
    if (folder.empty())
        return;
    std::string link = folder + "\\" + name;
    if (GetFileAttributesA(link.c_str()) == INVALID_FILE_ATTRIBUTES &&
        !test::CreateShortcut(link, target, args))
        std::fprintf(stderr, "demo-seed: could not make %s\n", link.c_str());
}

void RunValue(RegistryRoot root, const char* name, const char* data) {
    CRegistry reg;
    if (reg.GetSettingString(root, kRunKey, name).empty() &&
        !reg.SaveSettingString(root, kRunKey, name, data))
        std::fprintf(stderr, "demo-seed: could not write the Run value %s\n", name);
}

} // namespace

int main() {
    Shortcut(CSIDL_STARTUP, "Notepad.lnk", "C:\\windows\\notepad.exe", "");
    Shortcut(CSIDL_STARTUP, "Task Manager.lnk", "C:\\windows\\system32\\taskmgr.exe", "");
    Shortcut(CSIDL_COMMON_STARTUP, "Wine Help.lnk", "C:\\windows\\winhlp32.exe", "");
    RunValue(RegistryRoot::CurrentUser, "OneDrive",
             "\"C:\\Program Files\\Microsoft OneDrive\\OneDrive.exe\" /background");
    RunValue(RegistryRoot::CurrentUser, "Spotify",
             "C:\\Users\\Public\\AppData\\Roaming\\Spotify\\Spotify.exe /minimized");
    RunValue(RegistryRoot::CurrentUser, "Discord",
             "C:\\Users\\Public\\AppData\\Local\\Discord\\Update.exe --processStart Discord.exe");
    RunValue(RegistryRoot::LocalMachine, "SecurityHealth",
             "C:\\Windows\\system32\\SecurityHealthSystray.exe");
    RunValue(RegistryRoot::LocalMachine, "RtkAudUService",
             "\"C:\\Windows\\System32\\RtkAudUService64.exe\" -background");
    return 0;
}
