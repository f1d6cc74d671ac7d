#include "startup/delayed_run.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>

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

void LogInfo(EventLog& log, const std::string& text) {
    log.WriteLog(text, kLogInfo);
}

// Waits until the delay has passed since the later of `notBefore` and the last start, by the
// run or by hand: a start made meanwhile from the tray moves the turn on, and one of this very
// program (`started`) ends the wait.
void WaitForTurn(
    const RunNeeds& run, RunClock& clock, uint64_t notBefore, uint64_t delayMs,
    const std::function<bool()>& started, const std::function<void()>& beforeWaiting = [] {}) {
    while (!run.Wait.QuitRequested && !started()) {
        const uint64_t deadline = std::max(notBefore, run.Starts.LastMs.value_or(0)) + delayMs;
        if (clock.NowMs() >= deadline)
            return;
        beforeWaiting();
        const unsigned seen = run.Starts.Changes;
        WaitUntil(run.Wait, run.Log, clock, deadline, [&] { return run.Starts.Changes != seen; });
    }
}

// Waits, from now, until the machine has been idle long enough or the delay and the longest
// extra time have passed. Where the load cannot be read, the delay alone is waited. A program's
// wait (`spaced`) also ends no sooner than its delay after the last start, by the run or by
// hand: an idle machine does not let two programs start closer together than the later one's
// delay, and a start made from the tray meanwhile moves the earliest moment on.
void WaitForIdleMachine(
    const RunNeeds& run, RunClock& clock, uint64_t delayMs, bool spaced,
    const std::function<bool()>& started = [] { return false; }) {
    const uint64_t begun = clock.NowMs();
    auto earliest = [&] { return spaced && run.Starts.LastMs ? *run.Starts.LastMs + delayMs : 0; };
    auto latest = [&] { return std::max(begun + delayMs + kIdleLongestExtraMs, earliest()); };
    auto delayOnly = [&] {
        if (spaced)
            WaitForTurn(run, clock, begun, delayMs, started);
        else
            WaitUntil(run.Wait, run.Log, clock, begun + delayMs);
    };
    if (!clock.CanSampleLoad()) {
        delayOnly();
        return;
    }
    IdleDetector detector;
    (void)clock.SampleLoad(); // starts the count: what came before this wait is not asked
    bool idle = false;
    while (!run.Wait.QuitRequested && !started()) {
        const uint64_t now = clock.NowMs();
        if (now >= latest() || (idle && now >= earliest()))
            return;
        WaitUntil(run.Wait, run.Log, clock, std::min(latest(), now + kIdleWindowMs));
        if (run.Wait.QuitRequested)
            return;
        const std::optional<LoadSample> load = clock.SampleLoad();
        if (!load) {
            delayOnly();
            return;
        }
        idle = detector.Add(*load);
    }
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

RunNeeds RunNeedsOf(AppState& app) {
    return RunNeeds{app.Store(), app.wait, app.starts, app.log, app.watcher, app.ShowGui};
}

void WaitMilliseconds(WaitFlags& wait, EventLog& log, RunClock& clock, long long milliseconds) {
    if (milliseconds <= 0)
        return;
    WaitUntil(wait, log, clock, clock.NowMs() + static_cast<uint64_t>(milliseconds));
}

void StartDelayedProgram(StartLog& starts, RunClock& clock, const GroupProgram& program,
                         const ProgramStart& start, const ProgramLauncher& launch) {
    starts.Add(DelayedProgramId(program), clock.NowMs());
    const std::optional<ImpactKey> item = ImpactKeyOf(program);
    launch(start.Path, start.Parameters, item ? &*item : nullptr);
}

ProgramLauncher MeasuredLauncher(const RunNeeds& run) {
    EventLog& log = run.Log;
    StartWatcher* watcher = run.Watcher;
    return [&log, watcher](const std::string& path, const std::string& parameters,
                           const ImpactKey* item) {
        LaunchMeasured(log, watcher, path, parameters, item);
    };
}

void DelayedRun(const RunNeeds& run, MainWindowControl& window) {
    DelayedRun(run, window, MessageLoopClock(), MeasuredLauncher(run));
}

void DelayedRun(const RunNeeds& run, MainWindowControl& window, RunClock& clock,
                const ProgramLauncher& launch) {
    ProgramModel& model = run.Store.Model();
    const std::vector<std::string> notAllowed =
        model.RemoveDisallowed([](const GroupProgram& p) { return StartedCommand(p); });
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
        if (run.Starts.LastMs)
            WaitUntil(run.Wait, run.Log, clock, *run.Starts.LastMs + kHeadStartMs);
        window.Ready();
    };

    if (!startup) {
        LogInfo(run.Log, "Start Delay was called, but there weren't delayed items!");
    } else if (std::any_of(programs.begin(), programs.end(),
                           [](const GroupProgram& p) { return !p.Path.empty(); })) {
        LogInfo(run.Log, TimeOfDayText() + "  Waiting for " + FormatSingle(model.MainStartupDelay) +
                             " seconds.");
        const uint64_t mainDelay = DelayMilliseconds(model.MainStartupDelay);
        if (waitForIdle || mainDelay > 0)
            ready();
        if (waitForIdle)
            WaitForIdleMachine(run, clock, mainDelay, false);
        else
            WaitUntil(run.Wait, run.Log, clock, runStart + mainDelay);
        const uint64_t mainWaitOver = clock.NowMs();
        LogInfo(run.Log, TimeOfDayText() + "  Wait over.");

        for (size_t i = 0; i < programs.size(); ++i) {
            const GroupProgram& program = programs[i];
            if (program.Path.empty() || run.Wait.QuitRequested)
                continue;
            const std::string id = DelayedProgramId(program);
            const size_t alike = AlikeBefore(programs, i);
            if (run.Starts.Has(id, alike))
                continue; // started by hand from the tray meanwhile
            const std::optional<ProgramStart> start =
                ResolveDelayedProgram(run.Store.Folders(), program);
            if (!start) {
                // Not there: said in the log, and the others still start.
                run.Log.WriteLog("Startup Item Not Found: " + Trim(program.Path), kLogWarning);
                continue;
            }
            LogInfo(run.Log,
                    TimeOfDayText() + " Waiting for " + FormatSingle(program.Delay) + " seconds.");
            const uint64_t delay = DelayMilliseconds(program.Delay);
            auto started = [&] { return run.Starts.Has(id, alike); };
            if (waitForIdle)
                WaitForIdleMachine(run, clock, delay, true, started);
            else
                WaitForTurn(run, clock, mainWaitOver, delay, started, ready);
            if (run.Wait.QuitRequested || run.Starts.Has(id, alike))
                continue;
            // All four commands start: an all-users item is delayed for every user who logs
            // on, which is why the program enters itself in the machine's Run key for them.
            LogInfo(run.Log, TimeOfDayText() + "  " + program.Path + " " + program.Parameters);
            StartDelayedProgram(run.Starts, clock, program, *start, launch);
        }
    }
    ready();

    // The program ends after the run: first the measurements of what it started are kept,
    // with the tray still there. Opening the window meanwhile keeps the program.
    auto ends = [&] { return !window.IsVisible() && model.StartupType == 1; };
    if (!run.Wait.QuitRequested && ends() && run.Watcher)
        WaitUntil(run.Wait, run.Log, clock, clock.NowMs() + kImpactWatchMs + kSliceMs,
                  [&] { return !run.Watcher->Busy() || !ends(); });
    if (!run.Wait.QuitRequested) {
        if (ends())
            window.Unload();
        else
            run.ShowGui = true; // stays in the tray, as if started by the user
    }
    for (const std::string& path : notAllowed)
        if (!path.empty())
            run.Log.WriteLog("Startup Item Not Allowed: " + path, kLogWarning);
}

} // namespace tolvane
