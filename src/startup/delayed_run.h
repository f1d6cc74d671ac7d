// The log-on run: wait the main delay, then start the "Startup" group's programs one after
// another, each after its own delay, writing each step to the event log.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/system_load.h"

namespace tolvane {

class AppState;
struct GroupProgram;
struct ImpactKey;

// What the run needs of the main window.
class MainWindowControl {
public:
    virtual ~MainWindowControl() = default;
    // True once the user opened the window during the run.
    virtual bool IsVisible() const = 0;
    // Closes the window for good; with no window left the process ends.
    virtual void Unload() = 0;
    // Shows the window as the user asked for it, built and in front; during the log-on run it
    // counts as opened by the user.
    virtual void Open() = 0;
};

// The time the run goes by, how it waits, and how busy the machine is meanwhile. The program's
// own clock serves the message loop in slices of at most 2 seconds while it waits and asks the
// system for its load; a test moves its own clock on and says what the load was.
class RunClock {
public:
    virtual ~RunClock() = default;
    virtual uint64_t NowMs() = 0;
    // Returns at the deadline, or earlier once stop() turns true.
    virtual void WaitUntil(uint64_t deadlineMs, const std::function<bool()>& stop) = 0;
    // The machine's load since the call before; nothing when it cannot be known. The first call
    // of a wait only starts the count.
    virtual bool CanSampleLoad() { return false; }
    virtual std::optional<LoadSample> SampleLoad() { return std::nullopt; }
};
RunClock& MessageLoopClock();

// Starts a program of this item (none: a start that is not an item's); the program's own is
// LaunchMeasured.
using ProgramLauncher = std::function<void(const std::string& path, const std::string& parameters,
                                           const ImpactKey* item)>;

// A delay of the model in whole milliseconds, rounded half to even; none below 0.
uint64_t DelayMilliseconds(float seconds);

// Waits the time while the message loop is served; stops at once when the program is quitting.
// A wait inside another (a tray command while the log-on run waits) leaves WaitActive as the
// outer wait has it.
void WaitMilliseconds(AppState& app, long long milliseconds);
void WaitMilliseconds(AppState& app, RunClock& clock, long long milliseconds);

// A bare file name ("Word.lnk", "Notes.url", "go.bat") is looked for in the items folders,
// those of the command's own location first, whatever the kind of file and the letter case of
// its name; then where it stands. A shortcut found nowhere gives "": it cannot start. Anything
// else comes back unchanged, and the shell finds it as it would any command.
std::string ItemsFolderLookup(const AppState& app, const std::string& path,
                              std::string_view command);

// How a delayed program starts: its file found in the items folders, and for a Run value that
// Windows would expand (REG_EXPAND_SZ) its environment variables filled in. Nothing when the
// program cannot start (a shortcut that is nowhere).
struct ProgramStart {
    std::string Path;
    std::string Parameters;
};
std::optional<ProgramStart> ResolveDelayedProgram(const AppState& app, const GroupProgram& program);

// With WaitForIdle on, the main delay and each program wait until the machine is idle, at the
// latest their delay and two minutes after the wait began; where the load cannot be read they
// wait their delay. The run ends only once the measurements of what it started are kept.
void DelayedRun(AppState& app, MainWindowControl& window, RunClock& clock,
                const ProgramLauncher& launch);
// With the program's own clock and launcher.
void DelayedRun(AppState& app, MainWindowControl& window);

} // namespace tolvane
