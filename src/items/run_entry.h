// The program's own value "Tolvane" in a Run key, so that Windows starts it with -nogui at
// log-on, kept in step with the StartupType setting.
#pragma once

#include <string>

namespace tolvane {

class EventLog;
class ProgramModel;

inline constexpr const char* kOwnRunValue = "Tolvane";

// Brings the values up to date with the mode: 0 none, 1 only while items are delayed (the
// machine's key when one of them belongs to all users), 2 the user's key, 3 the machine's key;
// any other mode changes nothing. Mode 3 from a program folder inside a user's profile, which
// other users cannot read, keeps the user's own value instead and logs why, wherever the mode
// came from (Options refuses it; proggroup.c or an installer may still hold it). An existing
// value is never rewritten. False when Windows will not start the program as the mode asks (a
// value could not be written or removed, or one of another program stands in the way); every
// problem is logged.
// A start-up type that the administrator's policy fixes stands in for the mode, whoever asks.
// runCommand: the command of this copy of the program; model: its delayed items.
[[nodiscard]] bool UpdateRunEntry(int mode, const std::string& runCommand,
                                  const ProgramModel& model, EventLog& log);

// Removes the values that start this copy of the program, for its uninstall.
void RemoveOwnRunEntries(const std::string& runCommand, EventLog& log);

} // namespace tolvane
