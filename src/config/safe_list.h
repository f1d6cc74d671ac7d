// The list of programs known to be safe to start later, read at start: each a name that an
// item's text holds and what the program is.
#pragma once

#include <string>

namespace tolvane {

struct SafeEntry {
    std::string Name;
    std::string Description;
};

} // namespace tolvane
