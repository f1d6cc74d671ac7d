// The program's entry: loads the texts, lists and model, refuses a second instance, finds the
// folders and chooses the mode.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace tolvane {

class AppState;
class UserMessages;

// Language, texts, the online-search template and the safe list.
void InitGlobals(AppState& app);

// -nogui anywhere in the arguments, in any letter case, chooses the log-on mode.
bool ArgumentsAskForLogOnMode(std::string_view arguments);

// The installer's two steps: -uninstall before it removes the program's files (also when an
// upgrade removes the older version), -installed after it has put them in place.
bool ArgumentsAskForUninstall(std::string_view arguments);
bool ArgumentsTellInstalled(std::string_view arguments);

// The folder of the running exe, without a trailing backslash.
std::string RunningProgramFolder();

// Runs the program to its end; returns the process's exit code.
int RunTolvane(HINSTANCE instance, std::string_view arguments, UserMessages& messages);

} // namespace tolvane
