// What the system tells of a running or ended process: the CPU time and disk traffic it has
// used, and, for a program the shell started without handing over its process (a shortcut),
// which new process it is.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"

namespace tolvane {

// A FILETIME as one number of 100 ns steps.
inline uint64_t FileTimeTicks(const FILETIME& t) {
    return (static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
}

struct ProcessFigures {
    uint64_t CpuMs = 0; // user and kernel time
    uint64_t ReadBytes = 0;
    uint64_t WriteBytes = 0;
};
// Nothing when the handle cannot be asked (no query right).
std::optional<ProcessFigures> ReadProcessFigures(HANDLE process);

// The time as process creation times count it (100 ns since 1601).
uint64_t SystemTimeNow();

// A process created at or after `since` that is not among `claimed`, opened to be watched:
// named `exeName` (letter case ignored), or, with no exe name to look for, a child of this
// process. No handle when there is none.
struct FoundProcess {
    UniqueHandle Handle;
    DWORD Id = 0;
};
FoundProcess FindNewProcess(const std::string& exeName, uint64_t since,
                            const std::vector<DWORD>& claimed);

// The target a shell shortcut (.lnk) points to; "" when it cannot be read.
std::string ShortcutTarget(const std::string& link);
// The program that a shortcut file (".lnk" in any letter case, variables allowed) starts, its
// variables expanded; "" for any other file and for a shortcut that cannot be read.
std::string ProgramOfShortcut(const std::string& file);

} // namespace tolvane
