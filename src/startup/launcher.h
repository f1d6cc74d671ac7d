// Starts one program the way the shell starts what the user opens: an exe, a shortcut, a
// batch file or a document. It does not wait for the program.
#pragma once

#include <string>
#include <string_view>

#include "platform/handles.h"

namespace tolvane {

class EventLog;
class StartWatcher;
struct ImpactKey;

// A program that cannot be started is logged ("Program: <path> failed to start.") and
// nothing else happens; a path in quotes is tried once more without them. Returns the started
// process when the shell hands it over (not for a shortcut, a web address or a document that a
// running program opens).
UniqueHandle LaunchProgram(EventLog& log, std::string_view path, std::string_view parameters);

// Starts the item's program and hands it to the watcher, which measures what it costs (none:
// nothing is measured).
void LaunchMeasured(EventLog& log, StartWatcher* watcher, const std::string& path,
                    const std::string& parameters, const ImpactKey* item);

} // namespace tolvane
