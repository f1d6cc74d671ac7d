#include "startup/delayed_run.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>

#include "config/delay_load.h"
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
void WaitUntil(AppState& app, RunClock& clock, uint64_t deadline,
               const std::function<bool()>& done = nullptr) {
    const bool outer = app.wait.WaitActive;
    app.wait.WaitActive = true;
    try {
        clock.WaitUntil(deadline, [&] { return app.wait.QuitRequested || (done && done()); });
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("Error in wait: ") + e.what(), kLogWarning);
    }
    app.wait.WaitActive = outer;
}

// Waits, from now, until the machine has been idle long enough or the delay and the longest
// extra time have passed. Where the load cannot be read, the delay alone is waited.
void WaitForIdleMachine(AppState& app, RunClock& clock, uint64_t delayMs) {
    const uint64_t begun = clock.NowMs();
    const uint64_t latest = begun + delayMs + kIdleLongestExtraMs;
    if (!clock.CanSampleLoad()) {
        WaitUntil(app, clock, begun + delayMs);
        return;
    }
    IdleDetector detector;
    (void)clock.SampleLoad(); // starts the count: what came before this wait is not asked
    while (!app.wait.QuitRequested) {
        const uint64_t now = clock.NowMs();
        if (now >= latest)
            return;
        WaitUntil(app, clock, std::min(latest, now + kIdleWindowMs));
        if (app.wait.QuitRequested)
            return;
        const std::optional<LoadSample> load = clock.SampleLoad();
        if (!load) {
            WaitUntil(app, clock, begun + delayMs);
            return;
        }
        if (detector.Add(*load))
            return;
    }
}

void LogInfo(AppState& app, const std::string& text) {
    app.log.WriteLog(text, kLogInfo);
}

bool IsBareName(std::string_view path) {
    return !path.empty() && path.find_first_of("\\/:\"") == std::string_view::npos;
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

void WaitMilliseconds(AppState& app, long long milliseconds) {
    WaitMilliseconds(app, MessageLoopClock(), milliseconds);
}

void WaitMilliseconds(AppState& app, RunClock& clock, long long milliseconds) {
    if (milliseconds <= 0)
        return;
    WaitUntil(app, clock, clock.NowMs() + static_cast<uint64_t>(milliseconds));
}

std::string ItemsFolderLookup(const AppState& app, const std::string& path,
                              std::string_view command) {
    // A file taken out of a Startup folder is kept by its bare name: whatever its kind, it
    // must be found again, or a delayed item would never start and nobody would be told.
    if (!IsBareName(path))
        return path;
    const std::string* own = &app.folders.UserItemsFolder;
    const std::string* other = &app.folders.AllUsersItemsFolder;
    if (command == kExecuteAU || command == kExecuteRegAU)
        std::swap(own, other);
    for (const std::string* folder : {own, other}) {
        const std::string joined = *folder + path;
        if (CDirStruct::ExactFileExists(joined))
            return joined;
    }
    if (CDirStruct::ExactFileExists(path))
        return path;
    return EndsWith(ToLower(path), ".lnk") ? std::string() : path;
}

std::optional<ProgramStart> ResolveDelayedProgram(const AppState& app,
                                                  const GroupProgram& program) {
    ProgramStart start{ItemsFolderLookup(app, program.Path, program.Command), program.Parameters};
    if (start.Path.empty())
        return std::nullopt;
    if (SavedCopyIsExpandable(program)) {
        start.Path = ExpandEnvironment(start.Path);
        start.Parameters = ExpandEnvironment(start.Parameters);
    }
    return start;
}

void DelayedRun(AppState& app, MainWindowControl& window) {
    DelayedRun(app, window, MessageLoopClock(),
               [&](const std::string& path, const std::string& parameters, const ImpactKey* item) {
                   LaunchMeasured(app, path, parameters, item);
               });
}

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

    if (!startup) {
        LogInfo(app, "Start Delay was called, but there weren't delayed items!");
    } else if (std::any_of(programs.begin(), programs.end(),
                           [](const GroupProgram& p) { return !p.Path.empty(); })) {
        LogInfo(app, TimeOfDayText() + "  Waiting for " + FormatSingle(model.MainStartupDelay) +
                         " seconds.");
        // Each program's delay counts from the planned start of the one before: the time a
        // launch itself takes does not push the later programs back.
        uint64_t planned = runStart + DelayMilliseconds(model.MainStartupDelay);
        if (waitForIdle)
            WaitForIdleMachine(app, clock, DelayMilliseconds(model.MainStartupDelay));
        else
            WaitUntil(app, clock, planned);
        LogInfo(app, TimeOfDayText() + "  Wait over.");

        for (const GroupProgram& program : programs) {
            if (program.Path.empty())
                continue;
            const std::optional<ProgramStart> start = ResolveDelayedProgram(app, program);
            if (!start || app.wait.QuitRequested)
                continue;
            LogInfo(app,
                    TimeOfDayText() + " Waiting for " + FormatSingle(program.Delay) + " seconds.");
            planned += DelayMilliseconds(program.Delay);
            if (waitForIdle)
                WaitForIdleMachine(app, clock, DelayMilliseconds(program.Delay));
            else
                WaitUntil(app, clock, planned);
            if (app.wait.QuitRequested)
                continue;
            // All four commands start: an all-users item is delayed for every user who logs
            // on, which is why the program enters itself in the machine's Run key for them.
            LogInfo(app, TimeOfDayText() + "  " + program.Path + " " + program.Parameters);
            const std::optional<ImpactKey> item = ImpactKeyOf(program);
            launch(start->Path, start->Parameters, item ? &*item : nullptr);
        }
    }

    // The program ends after the run: first the measurements of what it started are kept,
    // with the tray still there. Opening the window meanwhile keeps the program.
    auto ends = [&] { return !window.IsVisible() && model.StartupType == 1; };
    if (!app.wait.QuitRequested && ends() && app.watcher)
        WaitUntil(app, clock, clock.NowMs() + kImpactWatchMs + kSliceMs,
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
