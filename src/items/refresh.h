// Rebuilding the startup tree from the Startup folders, the Run keys and the program-group
// file, as the main window does at its start, after every move and for "Refresh".
#pragma once

#include <functional>

#include "items/startup_tree.h"

namespace tolvane {

// Brings the program's own Run value up to date, reloads the model, lists the five locations,
// Task Manager's switches and the measurements of started programs, and rebuilds the tree,
// then marks the known items. A failure is logged ("RefreshData Error:
// ...") and ends the refresh; the tree keeps what was built. False then.
// ownRunEntry false: a look that changes nothing, neither the program's own Run value nor a
// missing program-group file, which is not written then.
bool RefreshData(AppState& app, TreeModel& tree, StartupListing& listing,
                 const std::function<void(double)>& progress = {}, bool ownRunEntry = true);

// Seconds since midnight, rounded (a half to the even second).
long long SecondsSinceMidnight();

} // namespace tolvane
