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

bool Below(const std::string& folder, std::string parent) {
    while (!parent.empty() && parent.back() == '\\')
        parent.pop_back();
    if (parent.empty() || folder.size() <= parent.size() || folder[parent.size()] != '\\')
        return false;
    return ToLower(folder.substr(0, parent.size())) == ToLower(parent);
}

} // namespace

bool FolderInUserProfile(const std::string& folder) {
    // The profiles folder as Windows keeps it ("%SystemDrive%\Users"), and the public profile
    // beside the users' own, read from the registry (and expanded there) rather than through
    // userenv, which the waiting log-on process would load for nothing.
    auto profileList = [](const char* name) {
        char path[MAX_PATH * 2] = {};
        DWORD size = sizeof path;
        return RegGetValueA(HKEY_LOCAL_MACHINE,
                            "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList", name,
                            RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ, nullptr, path,
                            &size) == ERROR_SUCCESS
                   ? std::string(path)
                   : std::string();
    };
    // The public profile (C:\Users\Public) is there for every user to read.
    std::string shared = profileList("Public");
    if (shared.empty())
        shared = ExpandEnvironment("%PUBLIC%");
    if (shared.find('%') == std::string::npos && !shared.empty() &&
        (Below(folder, shared) || ToLower(folder) == ToLower(shared)))
        return false;
    return Below(folder, profileList("ProfilesDirectory")) ||
           Below(folder, ExpandEnvironment("%USERPROFILE%"));
}

} // namespace tolvane
