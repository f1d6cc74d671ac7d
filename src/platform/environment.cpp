#include "platform/environment.h"

#include <windows.h>
#include <shlobj.h>

#include <string>

#include "platform/wide_text.h"
#include "text/strings.h"

namespace tolvane {

std::string ExpandEnvironment(const std::string& text) {
    if (text.find('%') == std::string::npos)
        return text;
    // Through the wide call: the narrow one counts its sizes in characters on some systems and in
    // bytes on others, and a profile path in Cyrillic takes twice as many bytes as characters.
    const std::wstring wide = Wide(text);
    const DWORD n = ExpandEnvironmentStringsW(wide.c_str(), nullptr, 0);
    if (n == 0)
        return text;
    std::wstring out(n, L'\0');
    const DWORD written = ExpandEnvironmentStringsW(wide.c_str(), out.data(), n);
    if (written == 0 || written > n)
        return text;
    out.resize(written - 1);
    return Narrow(out);
}

std::vector<std::pair<std::string, std::string>> ProfileVariables() {
    const std::pair<const char*, int> known[] = {{"LOCALAPPDATA", CSIDL_LOCAL_APPDATA},
                                                 {"APPDATA", CSIDL_APPDATA},
                                                 {"USERPROFILE", CSIDL_PROFILE}};
    std::vector<std::pair<std::string, std::string>> variables;
    for (auto [name, csidl] : known) {
        const std::string variable = "%" + std::string(name) + "%";
        std::string folder = ExpandEnvironment(variable);
        wchar_t path[MAX_PATH] = {};
        if (folder == variable)
            folder =
                SUCCEEDED(SHGetFolderPathW(nullptr, csidl, nullptr, 0, path)) ? Narrow(path) : "";
        if (!folder.empty())
            variables.emplace_back(name, folder);
    }
    return variables;
}

namespace {

// The folder lies below the parent; with `orAt`, or is the parent itself.
bool Below(std::string_view folder, std::string_view parent, bool orAt = false) {
    while (!parent.empty() && parent.back() == '\\')
        parent.remove_suffix(1);
    if (parent.empty() || folder.size() < parent.size() ||
        (folder.size() == parent.size() ? !orAt : folder[parent.size()] != '\\'))
        return false;
    return ToLower(folder.substr(0, parent.size())) == ToLower(parent);
}

// A folder of the profile list, expanded; "" when there is none.
std::string ProfileListFolder(const char* name) {
    char path[MAX_PATH * 2] = {};
    DWORD size = sizeof path;
    RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList",
                 name, RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ, nullptr, path, &size);
    return path;
}

} // namespace

bool FolderInUserProfile(std::string_view folder) {
    // The profiles folder as Windows keeps it ("%SystemDrive%\Users"), read from the registry
    // (and expanded there) rather than through userenv, which the waiting log-on process would
    // load for nothing. The public profile beside the users' own is there for every user.
    return !Below(folder, ProfileListFolder("Public"), true) &&
           (Below(folder, ProfileListFolder("ProfilesDirectory")) ||
            Below(folder, ExpandEnvironment("%USERPROFILE%")));
}

} // namespace tolvane
