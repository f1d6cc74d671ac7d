// Where a delayed program is and how it starts: a shortcut kept in the items folders, a Run
// value's command read as Windows reads it, and what keeps one from starting.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/app_folders.h"
#include "config/program_model.h"
#include "config/run_data.h"
#include "text/text_tables.h"

namespace tolvane {

// A bare file name ("Word.lnk", "Notes.url", "go.bat") is looked for in the items folders,
// those of the command's own location first, whatever the kind of file and the letter case of
// its name; then where it stands. A shortcut found nowhere gives "": it cannot start. Anything
// else comes back unchanged, and the shell finds it as it would any command.
std::string ItemsFolderLookup(const AppFolders& folders, const std::string& path,
                              std::string_view command);

// How a delayed program starts: its file found in the items folders, or for a Run value its
// command read as Windows reads it, its variables filled in where Windows would expand them
// (REG_EXPAND_SZ). Nothing when the program cannot start because its shortcut or program file
// is not there.
struct ProgramStart {
    std::string Path;
    std::string Parameters;
};
std::optional<ProgramStart> ResolveDelayedProgram(const AppFolders& folders,
                                                  const GroupProgram& program);

// What a delayed program starts with on this machine (StartedCommand), and the disallowed word
// that keeps it from starting (StartBlockingWord), "" when none.
RunCommandParts StartedCommand(const GroupProgram& program);
std::string StartBlockingWord(const ProgramModel& model, const GroupProgram& program);

// Why the log-on run will not start a program of the Startup group: the tip line of its item,
// from the language's texts (the disallowed word that blocks it, or its file that is not there);
// "" when it will start. expandable: its value's saved copy is an expandable string.
std::string WhyNotStarted(const GroupProgram& program, bool expandable, const ProgramModel& model,
                          const AppFolders& folders, const TextTables& text);

} // namespace tolvane
