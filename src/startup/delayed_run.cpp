#include "startup/delayed_run.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>

#include "platform/message_pump.h"
#include "config/app_state.h"
#include "config/policy_registry.h"
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

// A line of the run's log: the time of day, then the parts.
void LogInfo(EventLog& log, std::string_view a, std::string_view b = {}, std::string_view c = {},
             std::string_view d = {}) {
    std::string line = TimeOfDayText();
    line.append(a).append(b).append(c).append(d);
    log.WriteLog(line, kLogInfo);
}

// A start was noted since the wait began: a wait for a turn looks again.
struct StartsChanged {
    const StartLog& Starts;
    unsigned Seen;
    bool operator()() const { return Starts.Changes != Seen; }
};

// The window and its tray icon, made once: when the run is about to wait, or after its first
// start. A program started before the window gets a head start: making the window and its tray
// icon at that very moment would compete with the program's own start.
class Readiness {
public:
    Readiness(const RunNeeds& run, RunClock& clock, MainWindowControl& window)
        : run_(run), clock_(clock), window_(window) {}
    void operator()() {
        if (done_)
            return;
        done_ = true;
        if (run_.Starts.LastMs)
            WaitUntil(run_.Wait, run_.Log, clock_, *run_.Starts.LastMs + kHeadStartMs);
        window_.Ready();
    }

private:
    const RunNeeds& run_;
    RunClock& clock_;
    MainWindowControl& window_;
    bool done_ = false;
};

// The end of the run waits for the measurements of what it started, unless the user opened the
// window meanwhile (or chose to keep the program): then it stays anyway.
struct MeasuredOrKept {
    const RunNeeds& Run;
    MainWindowControl& Window;
    const Policies& Policy;
    bool operator()() const {
        return !Run.Watcher->Busy() || Window.IsVisible() ||
               InForce(Run.Store.Model(), Policy).StartupType != 1;
    }
};

// A program's wait: the program (its DelayedProgramId and the records alike before it), and
// the window made ready before the wait begins. A wait that is no program's (the main delay)
// has none.
struct Turn {
    const std::string* Id = nullptr;
    size_t Alike = 0;
    Readiness* Ready = nullptr;
    bool Started(const StartLog& starts) const { return Id && starts.Has(*Id, Alike); }
};

// Waits until the delay has passed since the later of `notBefore` and the last start, by the
// run or by hand: a start made meanwhile from the tray moves the turn on, and one of this very
// program ends the wait.
void WaitForTurn(const RunNeeds& run, RunClock& clock, uint64_t notBefore, uint64_t delayMs,
                 const Turn& turn) {
    while (!run.Wait.QuitRequested && !turn.Started(run.Starts)) {
        const uint64_t deadline = std::max(notBefore, run.Starts.LastMs.value_or(0)) + delayMs;
        if (clock.NowMs() >= deadline)
            return;
        if (turn.Ready)
            (*turn.Ready)();
        WaitUntil(run.Wait, run.Log, clock, deadline,
                  StartsChanged{run.Starts, run.Starts.Changes});
    }
}

// Waits, from now, until the machine has been idle long enough or the delay and the longest
// extra time have passed. Where the load cannot be read, the delay alone is waited. A program's
// wait also ends no sooner than its delay after the last start, by the run or by hand: an idle
// machine does not let two programs start closer together than the later one's delay, and a
// start made from the tray meanwhile moves the earliest moment on.
void WaitForIdleMachine(const RunNeeds& run, RunClock& clock, uint64_t delayMs,
                        const Turn& turn = {}) {
    const uint64_t begun = clock.NowMs();
    const bool spaced = turn.Id != nullptr;
    auto earliest = [&] { return spaced && run.Starts.LastMs ? *run.Starts.LastMs + delayMs : 0; };
    auto latest = [&] { return std::max(begun + delayMs + kIdleLongestExtraMs, earliest()); };
    IdleDetector detector;
    bool idle = false;
    bool sampled = clock.CanSampleLoad();
    if (sampled)
        (void)clock.SampleLoad(); // starts the count: what came before this wait is not asked
    while (sampled && !run.Wait.QuitRequested && !turn.Started(run.Starts)) {
        const uint64_t now = clock.NowMs();
        if (now >= latest() || (idle && now >= earliest()))
            return;
        WaitUntil(run.Wait, run.Log, clock, std::min(latest(), now + kIdleWindowMs));
        if (run.Wait.QuitRequested)
            return;
        const std::optional<LoadSample> load = clock.SampleLoad();
        sampled = load.has_value();
        idle = sampled && detector.Add(*load);
    }
    if (!sampled) {
        if (spaced)
            WaitForTurn(run, clock, begun, delayMs, turn);
        else
            WaitUntil(run.Wait, run.Log, clock, begun + delayMs);
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

namespace {

struct Measured {
    EventLog& Log;
    StartWatcher* Watcher;
    void operator()(const std::string& path, const std::string& parameters,
                    const ImpactKey* item) const {
        LaunchMeasured(Log, Watcher, path, parameters, item);
    }
};

} // namespace

ProgramLauncher MeasuredLauncher(const RunNeeds& run) {
    return Measured{run.Log, run.Watcher};
}

void DelayedRun(const RunNeeds& run, MainWindowControl& window) {
    DelayedRun(run, window, MessageLoopClock(), MeasuredLauncher(run));
}

void DelayedRun(const RunNeeds& run, MainWindowControl& window, RunClock& clock,
                const ProgramLauncher& launch) {
    ProgramModel& model = run.Store.Model();
    const std::vector<std::string> notAllowed = model.RemoveDisallowed(StartedCommand);
    const uint64_t runStart = clock.NowMs();

    // The run works on the programs as they are now. A refresh while it waits (the user opened
    // the window) reloads the model from the file, which would bring back the paths of
    // disallowed programs and move the others to other places in the list.
    const ProgramGroup* startup = model.StartupGroup();
    const std::vector<GroupProgram> programs =
        startup ? startup->Programs : std::vector<GroupProgram>();
    // The settings as the administrator's policies leave them, the user's own where none is fixed.
    const Policies policies = ReadPolicies(run.Log);
    const SettingsInForce settings = InForce(model, policies);
    const bool waitForIdle = settings.IdleStart;
    Readiness ready(run, clock, window);

    if (!startup) {
        run.Log.WriteLog("Start Delay was called, but there weren't delayed items!", kLogInfo);
    } else if (std::any_of(programs.begin(), programs.end(),
                           [](const GroupProgram& p) { return !p.Path.empty(); })) {
        // The run joins the history: one that quits during its wait, or whose programs were
        // never measured, still shows that it happened.
        if (run.Watcher)
            run.Watcher->BeginRun();
        LogInfo(run.Log, "  Waiting for ", FormatSingle(settings.MainDelay), " seconds.");
        const uint64_t mainDelay = DelayMilliseconds(settings.MainDelay);
        if (waitForIdle || mainDelay > 0)
            ready();
        if (waitForIdle)
            WaitForIdleMachine(run, clock, mainDelay);
        else
            WaitUntil(run.Wait, run.Log, clock, runStart + mainDelay);
        const uint64_t mainWaitOver = clock.NowMs();
        LogInfo(run.Log, "  Wait over.");
        if (run.Watcher && !run.Wait.QuitRequested)
            run.Watcher->MainWaitOver(mainWaitOver - runStart);

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
            LogInfo(run.Log, " Waiting for ", FormatSingle(program.Delay), " seconds.");
            const uint64_t delay = DelayMilliseconds(program.Delay);
            const Turn turn{&id, alike, &ready};
            if (waitForIdle)
                WaitForIdleMachine(run, clock, delay, turn);
            else
                WaitForTurn(run, clock, mainWaitOver, delay, turn);
            if (run.Wait.QuitRequested || run.Starts.Has(id, alike))
                continue;
            // All four commands start: an all-users item is delayed for every user who logs
            // on, which is why the program enters itself in the machine's Run key for them.
            LogInfo(run.Log, "  ", program.Path, " ", program.Parameters);
            if (const std::optional<ImpactKey> item = ImpactKeyOf(program); item && run.Watcher)
                run.Watcher->StartsInRun(*item, Trim(program.Path), clock.NowMs() - runStart);
            StartDelayedProgram(run.Starts, clock, program, *start, launch);
        }
    }
    ready();

    // The program ends after the run: first the measurements of what it started are kept,
    // with the tray still there. Opening the window meanwhile keeps the program.
    auto ends = [&] { return !window.IsVisible() && InForce(model, policies).StartupType == 1; };
    if (!run.Wait.QuitRequested && ends() && run.Watcher)
        WaitUntil(run.Wait, run.Log, clock, clock.NowMs() + kImpactWatchMs + kSliceMs,
                  MeasuredOrKept{run, window, policies});
    if (run.Watcher)
        run.Watcher->EndRun();
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
