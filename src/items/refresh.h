// Rebuilding the startup tree from the Startup folders, the Run keys and the program-group
// file, as the main window does at its start, after every move and for "Refresh".
#pragma once

#include <functional>

#include "config/program_group_store.h"
#include "items/startup_tree.h"
#include "platform/event_log.h"
#include "text/text_tables.h"

namespace tolvane {

// Reloads the model from the store, lists the five locations, Task Manager's switches and the
// measurements of started programs, and rebuilds the tree, its delayed items' tips in the texts
// given, then marks the items of the safe list. A failure is logged ("RefreshData Error: ...")
// and ends the refresh; the tree keeps what was built. False then.
// A refresh only reads, but for a missing program-group file, which is written with the model
// of a first start unless this is a look. The program's own Run value is its caller's to bring
// in step with the model read (UpdateRunEntry), after a change of its own.
[[nodiscard]] bool RefreshData(ProgramGroupStore store, const TextTables& text,
                               const std::vector<SafeEntry>& safeList, EventLog& log,
                               TreeModel& tree, StartupListing& listing,
                               const std::function<void(double)>& progress = {}, bool look = false);

// Seconds since midnight, rounded (a half to the even second).
long long SecondsSinceMidnight();

} // namespace tolvane
