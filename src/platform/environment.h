// The environment variables of the process, as Windows fills them into a command.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tolvane {

// The text with every %NAME% of a known variable replaced by its value; an unknown one stays as
// it is, as the system leaves it.
std::string ExpandEnvironment(const std::string& text);

// The folders of this user's profile that a command names by a variable, as {name, folder}:
// LOCALAPPDATA, APPDATA and USERPROFILE from the environment or, missing there, the shell.
std::vector<std::pair<std::string, std::string>> ProfileVariables();

// The folder lies inside a user profile (below the profiles folder, or the user's own profile
// wherever it is), where other users cannot read it. The public profile (C:\Users\Public), which
// every user reads, is none.
[[nodiscard]] bool FolderInUserProfile(std::string_view folder);

} // namespace tolvane
