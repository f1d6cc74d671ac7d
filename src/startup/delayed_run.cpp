#include "startup/delayed_run.h"

#include <windows.h>

#include <exception>

#include "platform/dir_struct.h"
#include "platform/message_pump.h"
#include "startup/app_state.h"
#include "startup/launcher.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr uint64_t kSliceMs = 2000;

// Waits until the deadline in slices, serving the message loop throughout.
void WaitUntil(AppState& app, uint64_t deadline) {
    app.wait.WaitActive = true;
    try {
        while (!app.wait.QuitRequested) {
            const uint64_t now = NowMs();
            if (now >= deadline)
                break;
            const uint64_t sliceEnd = std::min(deadline, now + kSliceMs);
            WaitServingMessages(sliceEnd, [&] { return app.wait.QuitRequested; });
        }
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("Error in wait: ") + e.what(), kLogWarning);
    }
    app.wait.WaitActive = false;
}

uint64_t Milliseconds(float seconds) {
    const long long ms = RoundHalfEven(static_cast<double>(seconds) * 1000.0);
    return ms > 0 ? static_cast<uint64_t>(ms) : 0;
}

void LogInfo(AppState& app, const std::string& text) {
    app.log.WriteLog(text, kLogInfo);
}

} // namespace

void WaitMilliseconds(AppState& app, long long milliseconds) {
    if (milliseconds <= 0)
        return;
    WaitUntil(app, NowMs() + static_cast<uint64_t>(milliseconds));
}

std::string ItemsFolderLookup(const AppState& app, const std::string& path) {
    if (Contains(path, "\"") || !EndsWith(path, ".lnk") || CDirStruct::ExactFileExists(path))
        return path;
    for (const std::string* folder :
         {&app.folders.UserItemsFolder, &app.folders.AllUsersItemsFolder}) {
        std::string joined = *folder + path;
        if (CDirStruct::ExactFileExists(joined))
            return joined;
    }
    return std::string();
}

void DelayedRun(AppState& app, MainWindowControl& window) {
    ProgramModel& model = app.model;
    const std::vector<std::string> notAllowed = model.RemoveDisallowed();
    const uint64_t runStart = NowMs();

    // The run works on the programs as they are now. A refresh while it waits (the user opened
    // the window) reloads the model from the file, which would bring back the paths of
    // disallowed programs and move the others to other places in the list.
    const ProgramGroup* startup = model.StartupGroup();
    const std::vector<GroupProgram> programs =
        startup ? startup->Programs : std::vector<GroupProgram>();

    if (!startup) {
        LogInfo(app, "Start Delay was called, but there weren't delayed items!");
    } else if (std::any_of(programs.begin(), programs.end(),
                           [](const GroupProgram& p) { return !p.Path.empty(); })) {
        LogInfo(app, TimeOfDayText() + "  Waiting for " + FormatSingle(model.MainStartupDelay) +
                         " seconds.");
        // Each program's delay counts from the planned start of the one before: the time a
        // launch itself takes does not push the later programs back.
        uint64_t planned = runStart + Milliseconds(model.MainStartupDelay);
        WaitUntil(app, planned);
        LogInfo(app, TimeOfDayText() + "  Wait over.");

        for (const GroupProgram& program : programs) {
            if (program.Path.empty())
                continue;
            const std::string path = ItemsFolderLookup(app, program.Path);
            if (path.empty() || app.wait.QuitRequested)
                continue;
            LogInfo(app,
                    TimeOfDayText() + " Waiting for " + FormatSingle(program.Delay) + " seconds.");
            planned += Milliseconds(program.Delay);
            WaitUntil(app, planned);
            if (app.wait.QuitRequested)
                continue;
            // All four commands start: an all-users item is delayed for every user who logs
            // on, which is why the program enters itself in the machine's Run key for them.
            LogInfo(app, TimeOfDayText() + "  " + program.Path + " " + program.Parameters);
            LaunchProgram(app, path, program.Parameters);
        }
    }

    if (!app.wait.QuitRequested) {
        if (!window.IsVisible() && model.StartupType == 1)
            window.Unload();
        else
            app.ShowGui = true; // stays in the tray, as if started by the user
    }
    for (const std::string& path : notAllowed)
        if (!path.empty())
            app.log.WriteLog("Startup Item Not Allowed: " + path, kLogWarning);
}

} // namespace tolvane
