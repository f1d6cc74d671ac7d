// Starts one program the way the shell starts what the user opens: an exe, a shortcut, a
// batch file or a document. It neither waits for the program nor watches it.
#pragma once

#include <string_view>

namespace tolvane {

class AppState;

// A program that cannot be started is logged ("Program: <path> failed to start.") and
// nothing else happens; a path in quotes is tried once more without them.
void LaunchProgram(AppState& app, std::string_view path, std::string_view parameters);

} // namespace tolvane
