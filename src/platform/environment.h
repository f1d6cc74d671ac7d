// The environment variables of the process, as Windows fills them into a command.
#pragma once

#include <string>

namespace tolvane {

// The text with every %NAME% of a known variable replaced by its value; an unknown one stays as
// it is, as the system leaves it.
std::string ExpandEnvironment(const std::string& text);

} // namespace tolvane
