// How the data of a Run value becomes a program: a path and its parameters.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

// A command as Windows reads it: the program, without quotes, and its arguments, exactly as the
// command holds them after the blanks that part them from the program.
struct RunCommandParts {
    std::string Path;       // the program
    std::string Parameters; // the arguments
};

// What Windows consults when it reads a command line. The program's own answers come from the
// system; a test gives its own files and variables.
class CommandLineSystem {
public:
    virtual ~CommandLineSystem() = default;
    // A file (never a folder) of that path exists; a name without a folder is looked for where
    // Windows looks for a program started by its bare name.
    virtual bool FileExists(const std::string& path) const = 0;
    // The text with its %VARIABLES% filled in.
    virtual std::string Expand(const std::string& text) const = 0;
};

// The one reading of a Run value's data, which every part of the program uses. Windows
// starts the data as CreateProcess reads a command line, so that is how it is read here:
// - a quoted first part is the program: "C:\Program Files\x\y.exe" /a;
// - otherwise the program is the shortest run of blank-separated words that names an existing
//   file, ".exe" added to a word without an extension; the rest are the arguments, whatever
//   they hold (--processStart "Teams.exe"). When no run of words names a file, the first word
//   is the program.
// Expandable data (REG_EXPAND_SZ) is read with its variables filled in, and both parts are
// given back as the value writes them (%ProgramFiles% kept) wherever the parts allow it.
RunCommandParts SplitRunData(std::string_view data, bool expandable,
                             const CommandLineSystem& system);

// The program is there: its variables filled in when the command is expandable, and ".exe"
// added to a name without an extension, as the command line's own reading does.
[[nodiscard]] bool ProgramFound(std::string_view program, bool expandable,
                                const CommandLineSystem& system);

// "name=data" split at the first "=": the name before it, the data (which may hold further
// "=") after it. Without "=" the whole text is the name.
struct NameData {
    std::string Name;
    std::string Data;
};
NameData SplitNameData(std::string_view text);

} // namespace tolvane

namespace tolvane {

class ProgramModel;
struct GroupProgram;

// The command a delayed Run value starts: its program, without the quotes an older version
// kept around it, and its arguments. Older versions cut some commands in the wrong place and
// kept the whole of "Update.exe --processStart Discord.exe" as the program; where the stored
// program is not there, the command is read again as Windows reads it, and a program found
// that way is the one that starts.
RunCommandParts DelayedCommand(const GroupProgram& program, bool expandable,
                               const CommandLineSystem& system);

// The program and the arguments a delayed program starts with, before its file is looked for
// and its variables are filled in: a Run value's command as DelayedCommand reads it (an
// expandable one read with its variables filled in); a file of a Startup folder its path without
// quotes, and its parameters.
RunCommandParts StartedCommand(const GroupProgram& program, bool expandable,
                               const CommandLineSystem& system);

// The disallowed word of the model that keeps a delayed program from starting, "" when none.
// It is looked for in what starts (StartedCommand), never in the record as stored: a whole
// command that an older version kept as the program ("cmd.exe /c del C:\x.exe") starts
// cmd.exe with "/c del C:\x.exe", and blocks on "del". The log-on run, the tray, the tips and
// the delay all ask this one question.
std::string StartBlockingWord(const ProgramModel& model, const GroupProgram& program,
                              bool expandable, const CommandLineSystem& system);

// A stopped Run value as its stopped entry holds it, after the location's prefix: the value's
// name, "=" and its command. The name makes the entry the value's own, since two values of one
// key may start the same program. Quotes and the blanks at the ends are left out: the
// program-group file cannot keep them, and the entry must read back as it was written.
std::string StoppedRunEntry(std::string_view name, std::string_view data);

// The value a stopped Run entry names, when it names one: the name before its first "=", the
// command after it. An entry of an older version holds a path alone, whose "\" comes before
// any "=" ("C:\a=b\x.exe"): it names nothing.
std::optional<NameData> NamedStoppedValue(std::string_view entry);

// Which saved copy each delayed and each stopped Run value of one location (the current user's
// or the machine's Run values) stands for. `saved` lists the location's saved copies, each its
// name and data (a name may hold "="); for the machine, those of both registry views one after
// the other, so that the index tells the view. A delayed value gets the copy of its name whose
// command is its own, else the first of its name; a stopped entry that names its value likewise. An
// older entry that holds only a path gets the first copy left whose command has that path, else the
// first left that contains it. No copy goes to two items. -1 where none, and for items of other
// locations.
struct SavedCopyMatch {
    std::vector<int> Delayed; // one per program of the Startup group
    std::vector<int> Stopped; // one per entry of StoppedPrograms
};
SavedCopyMatch MatchSavedCopies(const ProgramModel& model, int location,
                                const std::vector<NameData>& saved);

// The saved copy of the model's stopped Run entry at the index: an index into `saved`, the
// listing of that entry's saved-copies key; -1 when none is left, or the entry is no Run value.
int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<NameData>& saved);

// The entry stopped for the value, as it was written with StoppedRunEntry, names that value:
// the entry is the value's name and command, or (the command having changed) begins with its
// name and "=". A name that holds "=" is compared whole, never cut at its first "=".
bool StoppedEntryNames(std::string_view entry, std::string_view name);

} // namespace tolvane
