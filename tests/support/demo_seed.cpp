// Seeds a Wine prefix with startup items in all four places, so that a newcomer who runs
// Tolvane sees something real: shortcuts in both Startup folders, values in both Run keys.
// Existing items are left alone.
#include <windows.h>
#include <shlobj.h>

#include <cstdio>

#include "platform/registry.h"
#include "support/win_test_support.h"

using namespace tolvane;

int main() {
    const std::tuple<int, const char*, const char*> shortcuts[] = {
        {CSIDL_STARTUP, "Notepad.lnk", "C:\\windows\\notepad.exe"},
        {CSIDL_STARTUP, "Task Manager.lnk", "C:\\windows\\system32\\taskmgr.exe"},
        {CSIDL_COMMON_STARTUP, "Wine Help.lnk", "C:\\windows\\winhlp32.exe"}};
    for (const auto& [csidl, name, target] : shortcuts) {
        const std::string folder = test::ShellFolder(csidl), link = folder + "\\" + name;
        if (!folder.empty() && !test::PathExists(link) && !test::CreateShortcut(link, target))
            std::fprintf(stderr, "demo-seed: could not make %s\n", link.c_str());
    }
    using enum RegistryRoot;
    const std::tuple<RegistryRoot, const char*, const char*> values[] = {
        {CurrentUser, "OneDrive",
         "\"C:\\Program Files\\Microsoft OneDrive\\OneDrive.exe\" /background"},
        {CurrentUser, "Spotify",
         "C:\\Users\\Public\\AppData\\Roaming\\Spotify\\Spotify.exe /minimized"},
        {CurrentUser, "Discord",
         "C:\\Users\\Public\\AppData\\Local\\Discord\\Update.exe --processStart Discord.exe"},
        {LocalMachine, "SecurityHealth", "C:\\Windows\\system32\\SecurityHealthSystray.exe"},
        {LocalMachine, "RtkAudUService",
         "\"C:\\Windows\\System32\\RtkAudUService64.exe\" -background"}};
    CRegistry reg;
    for (const auto& [root, name, data] : values)
        if (reg.GetSettingString(root, kRunKey, name).empty() &&
            !reg.SaveSettingString(root, kRunKey, name, data))
            std::fprintf(stderr, "demo-seed: could not write the Run value %s\n", name);
    return 0;
}
