// The two Startup folders, as the shell names them.
#pragma once

#include <string>

namespace tolvane {

struct AppFolders;

// The path of a shell special folder (CSIDL), "" when the shell has none.
std::string GetSpecialFolder(int csidl);

// The current user's and the all-users Startup folders, looked up when first needed: the
// log-on run never reads them, and asking the shell costs its first launch time.
void EnsureStartupFolders(AppFolders& folders);

} // namespace tolvane
