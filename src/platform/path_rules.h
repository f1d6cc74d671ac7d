// Path text rules of the folder services, free of the platform so they are tested natively.
// Every "\" they look for is a whole character of the code page, never the second byte of a
// double-byte one.
#pragma once

#include <string>
#include <string_view>

#include "text/code_page.h"

namespace tolvane {

// Folder and name joined for a directory search: a "\" is put between them when the folder
// has none, then every "\\" becomes "\" (left to right, so three become two). A leading "\\"
// of a network path stays: without it the search would look on the current drive instead.
std::string JoinSearchPath(std::string_view folder, std::string_view name,
                           unsigned codePage = ActiveCodePage());

// The folder with exactly one trailing "\" added when it has none.
std::string WithTrailingBackslash(std::string_view folder, unsigned codePage = ActiveCodePage());

// The name at the end of a path: what follows its last "\", "/" or ":"; the whole path when it
// has none of them.
std::string_view PathLastPart(std::string_view path, unsigned codePage = ActiveCodePage());

// Sixteen hex digits that stand for a path in any letter case: the part of the name of a lock
// or other named object that belongs to that file, the same in every process.
std::string PathHashText(std::string_view path);

} // namespace tolvane
