// Command lines read against this machine: its files, its program search and its environment.
#pragma once

#include "config/run_data.h"

namespace tolvane {

// Files as CreateProcess finds them: a path names a file (not a folder); a bare name is looked
// for in the program search order (the program's folder, the current folder, the system
// folders, PATH) and among the programs Windows registers under App Paths, which the shell
// starts by their bare names.
const CommandLineSystem& SystemCommandLine();

} // namespace tolvane
