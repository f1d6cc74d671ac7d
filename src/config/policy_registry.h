// The administrator's policies as the registry holds them now. Read where they take effect,
// each time: Group Policy rewrites the keys while the program runs.
#pragma once

#include "config/policies.h"

namespace tolvane {

class EventLog;

// The machine's policy key (its 64-bit view, whatever the process) over the user's, both only
// read. A value that is ignored is logged as a warning, once in the process.
Policies ReadPolicies(const EventLog& log);

} // namespace tolvane
