// Path text rules of the folder services, free of the platform so they are tested natively.
#pragma once

#include <string>
#include <string_view>

namespace tolvane {

// Folder and name joined for a directory search: a "\" is put between them when the folder
// has none, then every "\\" becomes "\" (left to right, so three become two). A leading "\\"
// of a network path stays: without it the search would look on the current drive instead.
std::string JoinSearchPath(std::string_view folder, std::string_view name);

// The folder with exactly one trailing "\" added when it has none.
std::string WithTrailingBackslash(std::string_view folder);

} // namespace tolvane
