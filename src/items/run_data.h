// How the data of a Run value becomes a program: a path and its parameters.
#pragma once

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

// The saved "name=data" copy that belongs to a stopped Run path: the one whose command splits
// to exactly that path, else to that path once both are trimmed, else the first that contains
// the path. -1 when none. Containment alone mistakes "C:\a.exe" for the copy of
// "C:\a.exe -x", which would put one value back twice and leave the other stranded.
int FindSavedRunValue(const std::vector<std::string>& saved, std::string_view path);

} // namespace tolvane
