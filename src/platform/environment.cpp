#include "platform/environment.h"

#include <windows.h>

#include <string>

#include "text/strings.h"

namespace tolvane {

std::string ExpandEnvironment(const std::string& text) {
    if (text.find('%') == std::string::npos)
        return text;
    const DWORD n = ExpandEnvironmentStringsA(text.c_str(), nullptr, 0);
    if (n == 0)
        return text;
    // The size asked for first may count a double-byte character twice: the text ends at its
    // NUL, not at the size.
    std::string out(n + 1, '\0');
    const DWORD written = ExpandEnvironmentStringsA(text.c_str(), out.data(), n + 1);
    if (written == 0 || written > n + 1)
        return text;
    out.resize(std::char_traits<char>::length(out.c_str()));
    return out;
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
