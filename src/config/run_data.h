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

// Which saved copy ("name=data") each stopped Run entry of one key stands for. `stopped` holds
// the entries without prefix, in the model's order; `delayedNames` the names of the key's
// delayed values, whose copies are theirs. An entry that names its value gets that value's
// copy. An older entry that holds only a path gets the first copy left whose command has that
// path, else the first left that contains it. No copy goes to two entries. -1 where none.
std::vector<int> MatchStoppedRunValues(const std::vector<std::string>& saved,
                                       const std::vector<std::string>& stopped,
                                       const std::vector<std::string>& delayedNames);

// The saved copy of the model's stopped Run entry at the index: an index into `saved`, the
// listing of that entry's saved-copies key; -1 when none is left, or the entry is no Run value.
int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<std::string>& saved);

} // namespace tolvane
