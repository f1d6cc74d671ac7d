// How the data of a Run value becomes a program: a path and its parameters.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

struct RunCommandParts {
    std::string Path;       // not trimmed: ends in a blank when there are parameters
    std::string Parameters; // trimmed
};

// Data that ends in ".exe" (letter case ignored) has no parameters; otherwise they are what
// follows the first ".exe" and the character after it. A command without ".exe" splits after
// its quoted path or at its first blank. The path keeps the blanks in front of the
// parameters, so the path followed by the parameters reads as the command did.
RunCommandParts SplitRunData(std::string_view data);

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

// A stopped Run value as its stopped entry holds it, after the location's prefix: the value's
// name, "=" and its command. The name makes the entry the value's own, since two values of one
// key may start the same program. Quotes and the blanks at the ends are left out: the
// program-group file cannot keep them, and the entry must read back as it was written.
std::string StoppedRunEntry(std::string_view name, std::string_view data);

// The value a stopped Run entry names, when it names one: the name before its first "=", the
// command after it. An entry of an older version holds a path alone, whose "\" comes before
// any "=" ("C:\a=b\x.exe"): it names nothing.
std::optional<NameData> NamedStoppedValue(std::string_view entry);

// Which saved copy ("name=data") each delayed and each stopped Run value of one location (the
// current user's or the machine's Run values) stands for. `saved` lists the location's saved
// copies; for the machine, those of both registry views one after the other, so that the index
// tells the view. A delayed value gets the copy of its name whose command is its own, else the
// first of its name; a stopped entry that names its value likewise. An older entry that holds
// only a path gets the first copy left whose command has that path, else the first left that
// contains it. No copy goes to two items. -1 where none, and for items of other locations.
struct SavedCopyMatch {
    std::vector<int> Delayed; // one per program of the Startup group
    std::vector<int> Stopped; // one per entry of StoppedPrograms
};
SavedCopyMatch MatchSavedCopies(const ProgramModel& model, int location,
                                const std::vector<std::string>& saved);

// The saved copy of the model's stopped Run entry at the index: an index into `saved`, the
// listing of that entry's saved-copies key; -1 when none is left, or the entry is no Run value.
int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<std::string>& saved);

} // namespace tolvane
