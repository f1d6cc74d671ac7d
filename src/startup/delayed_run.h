// The log-on run: wait the main delay, then start the "Startup" group's programs one after
// another, each after its own delay, writing each step to the event log.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "config/delayed_program.h"
#include "config/program_group_store.h"
#include "config/run_state.h"
#include "platform/system_load.h"

namespace tolvane {

class AppState;
class EventLog;
struct GroupProgram;
struct ImpactKey;

// What the log-on run and the tray's starts use of the process: the program-group store (the
// model, the folders, the file that finds a stopped item's command), the wait under way, the
// programs started so far, the event log and who measures each start. The references stay the
// process's own: a tray command made during the run's wait changes what the run sees.
struct RunNeeds {
    ProgramGroupStore Store;
    WaitFlags& Wait;
    StartLog& Starts;
    EventLog& Log;
    StartWatcher* Watcher; // none: nothing is measured
    bool& ShowGui;         // false in the log-on mode; set once the program stays in the tray
};
// The process state's parts, where a run or a tray command begins.
RunNeeds RunNeedsOf(AppState& app);

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
    // The run is about to wait, or has started its first program: from now on the window and
    // its tray icon are needed. A program due at once starts before them, as soon as a bare
    // launcher would start it. Called once; throws when the window cannot be made.
    virtual void Ready() {}
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
void WaitMilliseconds(WaitFlags& wait, EventLog& log, RunClock& clock, long long milliseconds);

// Starts a delayed program now, by hand or by the run, and notes the start, so that the run
// starts it no second time and spaces its next start from this one.
void StartDelayedProgram(StartLog& starts, RunClock& clock, const GroupProgram& program,
                         const ProgramStart& start, const ProgramLauncher& launch);

// The program's own launcher, which hands each start to the watcher.
ProgramLauncher MeasuredLauncher(const RunNeeds& run);

// Each program waits its own delay after the actual start of the one before, by the run or by
// hand from the tray (the first after the main delay): a run held up (a busy machine, the tray
// menu held open, the process suspended) never starts several programs at once to catch up.
// A program started by hand meanwhile is not started again; of two records alike, each starts
// once. A program whose shortcut or file is missing is logged as a warning, and the run goes on
// with the next one. With WaitForIdle on, the main delay and each program wait until the
// machine is idle, at the latest their delay and two minutes after the wait began; a program
// still starts no sooner than its delay after the start before. Where the load cannot be read
// they wait their delay. The run ends only once the measurements of what it started are kept.
// The main delay, the wait for idle and whether the process ends after the run (StartupType 1)
// are the administrator's where a policy fixes them.
void DelayedRun(const RunNeeds& run, MainWindowControl& window, RunClock& clock,
                const ProgramLauncher& launch);
// With the program's own clock and launcher.
void DelayedRun(const RunNeeds& run, MainWindowControl& window);

} // namespace tolvane
