#include "startup/delayed_run.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>

#include "config/delay_load.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/environment.h"
#include "platform/message_pump.h"
#include "config/app_state.h"
#include "startup/idle_detector.h"
#include "startup/launcher.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr uint64_t kSliceMs = 2000;
constexpr uint64_t kHeadStartMs = 100;

class LoopClock : public RunClock {
public:
    uint64_t NowMs() override { return tolvane::NowMs(); }
    bool CanSampleLoad() override { return true; } // the processors' times always are there
    std::optional<LoadSample> SampleLoad() override {
        if (!load_)
            load_ = std::make_unique<SystemLoad>(); // only a run that waits for idle asks
        return load_->Sample();
    }
    void WaitUntil(uint64_t deadline, const std::function<bool()>& stop) override {
        while (!stop()) {
            const uint64_t now = NowMs();
            if (now >= deadline)
                return;
            WaitServingMessages(std::min(deadline, now + kSliceMs), stop);
        }
    }

private:
    std::unique_ptr<SystemLoad> load_;
};

// Waits until the deadline, or until `done` turns true, with the wait flags as the tray and the
// window read them.
void WaitUntil(WaitFlags& wait, EventLog& log, RunClock& clock, uint64_t deadline,
               const std::function<bool()>& done = nullptr) {
    const bool outer = wait.WaitActive;
    wait.WaitActive = true;
    try {
        clock.WaitUntil(deadline, [&] { return wait.QuitRequested || (done && done()); });
    } catch (const std::exception& e) {
        log.WriteLog(std::string("Error in wait: ") + e.what(), kLogWarning);
    }
    wait.WaitActive = outer;
}

// Waits, from now, until the machine has been idle long enough or the delay and the longest
// extra time have passed. Where the load cannot be read, the delay alone is waited.
void WaitForIdleMachine(AppState& app, RunClock& clock, uint64_t delayMs) {
    const uint64_t begun = clock.NowMs();
    const uint64_t latest = begun + delayMs + kIdleLongestExtraMs;
    if (!clock.CanSampleLoad()) {
        WaitUntil(app.wait, app.log, clock, begun + delayMs);
        return;
    }
    IdleDetector detector;
    (void)clock.SampleLoad(); // starts the count: what came before this wait is not asked
    while (!app.wait.QuitRequested) {
        const uint64_t now = clock.NowMs();
        if (now >= latest)
            return;
        WaitUntil(app.wait, app.log, clock, std::min(latest, now + kIdleWindowMs));
        if (app.wait.QuitRequested)
            return;
        const std::optional<LoadSample> load = clock.SampleLoad();
        if (!load) {
            WaitUntil(app.wait, app.log, clock, begun + delayMs);
            return;
        }
        if (detector.Add(*load))
            return;
    }
}

void LogInfo(AppState& app, const std::string& text) {
    app.log.WriteLog(text, kLogInfo);
}

} // namespace

uint64_t DelayMilliseconds(float seconds) {
    const long long ms = RoundHalfEven(static_cast<double>(seconds) * 1000.0);
    return ms > 0 ? static_cast<uint64_t>(ms) : 0;
}

RunClock& MessageLoopClock() {
    static LoopClock clock;
    return clock;
}

void WaitMilliseconds(WaitFlags& wait, EventLog& log, RunClock& clock, long long milliseconds) {
    if (milliseconds <= 0)
        return;
    WaitUntil(wait, log, clock, clock.NowMs() + static_cast<uint64_t>(milliseconds));
}

void StartDelayedProgram(AppState& app, RunClock& clock, const GroupProgram& program,
                         const ProgramStart& start, const ProgramLauncher& launch) {
    app.starts.Add(DelayedProgramId(program), clock.NowMs());
    const std::optional<ImpactKey> item = ImpactKeyOf(program);
    launch(start.Path, start.Parameters, item ? &*item : nullptr);
}

void DelayedRun(AppState& app, MainWindowControl& window) {
    DelayedRun(app, window, MessageLoopClock(),
               [&](const std::string& path, const std::string& parameters, const ImpactKey* item) {
                   LaunchMeasured(app.log, app.watcher, path, parameters, item);
               });
}

namespace {

// Waits until the delay has passed since the later of `notBefore` and the last start, by the
// run or by hand: a start made meanwhile from the tray moves the turn on, and one of this very
// program ends the wait.
void WaitForTurn(AppState& app, RunClock& clock, uint64_t notBefore, uint64_t delayMs,
                 const std::string& id, const std::function<void()>& beforeWaiting) {
    while (!app.wait.QuitRequested && !app.starts.Has(id)) {
        const uint64_t deadline = std::max(notBefore, app.starts.LastMs.value_or(0)) + delayMs;
        if (clock.NowMs() >= deadline)
            return;
        beforeWaiting();
        const unsigned seen = app.starts.Changes;
        WaitUntil(app.wait, app.log, clock, deadline, [&] { return app.starts.Changes != seen; });
    }
}

} // namespace

void DelayedRun(AppState& app, MainWindowControl& window, RunClock& clock,
                const ProgramLauncher& launch) {
    ProgramModel& model = app.model;
    const std::vector<std::string> notAllowed = model.RemoveDisallowed();
    const uint64_t runStart = clock.NowMs();

    // The run works on the programs as they are now. A refresh while it waits (the user opened
    // the window) reloads the model from the file, which would bring back the paths of
    // disallowed programs and move the others to other places in the list.
    const ProgramGroup* startup = model.StartupGroup();
    const std::vector<GroupProgram> programs =
        startup ? startup->Programs : std::vector<GroupProgram>();
    const bool waitForIdle = model.WaitForIdle != 0;
    bool readied = false;
    auto ready = [&] {
        if (readied)
            return;
        readied = true;
        // A program started before the window gets a head start: making the window and its
        // tray icon at that very moment would compete with the program's own start.
        if (app.starts.LastMs)
            WaitUntil(app.wait, app.log, clock, *app.starts.LastMs + kHeadStartMs);
        window.Ready();
    };

    if (!startup) {
        LogInfo(app, "Start Delay was called, but there weren't delayed items!");
    } else if (std::any_of(programs.begin(), programs.end(),
                           [](const GroupProgram& p) { return !p.Path.empty(); })) {
        LogInfo(app, TimeOfDayText() + "  Waiting for " + FormatSingle(model.MainStartupDelay) +
                         " seconds.");
        const uint64_t mainDelay = DelayMilliseconds(model.MainStartupDelay);
        if (waitForIdle || mainDelay > 0)
            ready();
        if (waitForIdle)
            WaitForIdleMachine(app, clock, mainDelay);
        else
            WaitUntil(app.wait, app.log, clock, runStart + mainDelay);
        const uint64_t mainWaitOver = clock.NowMs();
        LogInfo(app, TimeOfDayText() + "  Wait over.");

        for (const GroupProgram& program : programs) {
            if (program.Path.empty() || app.wait.QuitRequested)
                continue;
            const std::string id = DelayedProgramId(program);
            if (app.starts.Has(id))
                continue; // started by hand from the tray meanwhile
            const std::optional<ProgramStart> start = ResolveDelayedProgram(app.folders, program);
            if (!start) {
                // Not there: said in the log, and the others still start.
                app.log.WriteLog("Startup Item Not Found: " + Trim(program.Path), kLogWarning);
                continue;
            }
            LogInfo(app,
                    TimeOfDayText() + " Waiting for " + FormatSingle(program.Delay) + " seconds.");
            if (waitForIdle)
                WaitForIdleMachine(app, clock, DelayMilliseconds(program.Delay));
            else
                WaitForTurn(app, clock, mainWaitOver, DelayMilliseconds(program.Delay), id, ready);
            if (app.wait.QuitRequested || app.starts.Has(id))
                continue;
            // All four commands start: an all-users item is delayed for every user who logs
            // on, which is why the program enters itself in the machine's Run key for them.
            LogInfo(app, TimeOfDayText() + "  " + program.Path + " " + program.Parameters);
            StartDelayedProgram(app, clock, program, *start, launch);
        }
    }
    ready();

    // The program ends after the run: first the measurements of what it started are kept,
    // with the tray still there. Opening the window meanwhile keeps the program.
    auto ends = [&] { return !window.IsVisible() && model.StartupType == 1; };
    if (!app.wait.QuitRequested && ends() && app.watcher)
        WaitUntil(app.wait, app.log, clock, clock.NowMs() + kImpactWatchMs + kSliceMs,
                  [&] { return !app.watcher->Busy() || !ends(); });
    if (!app.wait.QuitRequested) {
        if (ends())
            window.Unload();
        else
            app.ShowGui = true; // stays in the tray, as if started by the user
    }
    for (const std::string& path : notAllowed)
        if (!path.empty())
            app.log.WriteLog("Startup Item Not Allowed: " + path, kLogWarning);
}

} // namespace tolvane
