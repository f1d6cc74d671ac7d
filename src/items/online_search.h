// Looking an unknown startup item up on the web: its name (and for a Run value, its program)
// put into the search address of "data\online.txt", escaped so that the shell opens it as one
// address.
#pragma once

#include <string>
#include <string_view>

#include "config/run_data.h"

namespace tolvane {

// Escapes ^ & ` { } | ] [ " < > \ and blanks, each as its "%XX"; every other character,
// "%" included, stays as it is.
std::string URLEncode(std::string_view text);

// What to search for, from an item's text in the tree: a shortcut's file name as it is; a Run
// value ("name=data") as "name, program", the program read from the data as Windows reads it.
std::string SearchTerms(std::string_view itemText, const CommandLineSystem& system);

// The address to open: the template with every "{SEARCHTERMS}" replaced, escaped as a whole.
// "" when there is no template or no item.
std::string SearchAddress(std::string_view searchTemplate, std::string_view itemText,
                          const CommandLineSystem& system);

} // namespace tolvane
