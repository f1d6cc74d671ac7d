// Looking an unknown startup item up on the web: the file name of its program put into the
// search address of "data\online.txt", escaped so that the shell opens it as one address. No
// folder goes out with it: a path may name the user.
#pragma once

#include <string>
#include <string_view>

#include "items/startup_tree.h"

namespace tolvane {

// Escapes ^ & ` { } | ] [ " < > \ and blanks, each as its "%XX"; every other character,
// "%" included, stays as it is.
std::string URLEncode(std::string_view text);

// What to search for: a shortcut's file name as it is; for a Run value the file name of its
// program (the item's File), or the value's name when that program only hosts what its command
// names (rundll32.exe, cmd.exe, powershell.exe, wscript.exe, ...) or there is none.
std::string SearchTerms(const StartupItem& item);

// The address to open: the template with every "{SEARCHTERMS}" replaced, escaped as a whole.
// "" when there is no template or the item has nothing to search for.
std::string SearchAddress(std::string_view searchTemplate, const StartupItem& item);

} // namespace tolvane
