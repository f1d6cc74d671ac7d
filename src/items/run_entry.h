// The program's own value "Tolvane" in a Run key, so that Windows starts it with -nogui at
// log-on, kept in step with the StartupType setting.
#pragma once

namespace tolvane {

class AppState;

inline constexpr const char* kOwnRunValue = "Tolvane";

// Mode -1 asks whether the program is to run at log-on. Modes 0 to 3 bring the values up to
// date: 0 none, 1 only while items are delayed (the machine's key when one of them belongs to
// all users), 2 the user's key, 3 the machine's key. An existing value is never rewritten.
bool UpdateRunEntry(AppState& app, int mode);

// Removes the values that start this copy of the program, for its uninstall.
void RemoveOwnRunEntries(AppState& app);

} // namespace tolvane
