#include "startup/tray_commands.h"

#include <algorithm>

#include "config/delay_load.h"
#include "config/system_command_line.h"
#include "platform/event_log.h"
#include "startup/launcher.h"
#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// The Menus entries of the tray menu's own texts.
constexpr size_t kRunAllText = 22, kStoppedText = 23, kOpenText = 24, kQuitText = 25;

// A disallowed word keeps a program from starting, from the tray as in the log-on run.
bool Refused(EventLog& log, std::string_view program, const std::string& word) {
    if (word.empty())
        return false;
    std::string line = "Startup Item Not Allowed: ";
    line.append(Trim(program)).append(" (\"").append(word).append("\")");
    log.WriteLog(line, kLogWarning);
    return true;
}

// The program of the list at the index was started already during this log-on, by the run or
// by hand; after the log-on run, whatever the user starts from the tray starts.
bool StartedAtLogOn(const RunNeeds& run, const std::vector<GroupProgram>& programs, size_t i) {
    return !run.ShowGui && run.Starts.Has(DelayedProgramId(programs[i]), AlikeBefore(programs, i));
}

// The delayed program of the list at the index, after its own delay: from where it is kept
// and with its variables filled in, noted in the start log. One that is not there is said so
// in the log.
void Start(const RunNeeds& run, RunClock& clock, const std::vector<GroupProgram>& programs,
           size_t i, const ProgramLauncher& launch) {
    const GroupProgram& program = programs[i];
    if (program.Path.empty() || StartedAtLogOn(run, programs, i))
        return;
    WaitMilliseconds(run.Wait, run.Log, clock,
                     static_cast<long long>(DelayMilliseconds(program.Delay)));
    // The run may have started it meanwhile.
    if (run.Wait.QuitRequested || StartedAtLogOn(run, programs, i) ||
        Refused(run.Log, program.Path, StartBlockingWord(run.Store.Model(), program)))
        return;
    if (const std::optional<ProgramStart> start =
            ResolveDelayedProgram(run.Store.Folders(), program))
        StartDelayedProgram(run.Starts, clock, program, *start, launch);
    else
        run.Log.WriteLog("Startup Item Not Found: " + Trim(program.Path), kLogWarning);
}

void RunAll(const RunNeeds& run, RunClock& clock, const std::vector<GroupProgram>& programs,
            const ProgramLauncher& launch) {
    for (size_t i = 0; i < programs.size() && !run.Wait.QuitRequested; ++i)
        Start(run, clock, programs, i, launch);
}

// A stopped entry as the menu showed it, where the model holds it now (a refresh may have moved
// it); one that is no longer there is found nowhere.
void StartStopped(const RunNeeds& run, const std::string& entry, const ProgramLauncher& launch) {
    if (entry.empty())
        return;
    const std::vector<std::string>& now = run.Store.Model().StoppedPrograms;
    StoppedCommand command;
    (void)run.Store.File().GetStoppedInfo(
        static_cast<int>(std::find(now.begin(), now.end(), entry) - now.begin()), command);
    // Nothing found to start it from: the launcher names the item in the log.
    if (command.Program.empty())
        command.Program = entry.substr(std::min(kPrefixLength, entry.size()));
    const StoppedCommand::Start start = command.ToStart();
    if (Refused(run.Log, command.Program,
                run.Store.Model().BlockingWord(start.Path, start.Parameters)))
        return;
    const std::optional<ImpactKey> item = ImpactKeyOfStopped(entry);
    launch(start.Path, start.Parameters, item ? &*item : nullptr);
}

} // namespace

ShownTrayMenu BuildTrayMenuModel(const ProgramModel& model, const TextTables& text) {
    TrayMenuSource source;
    source.RunAll = TextTables::Entry(text.Menus, kRunAllText);
    source.Stopped = TextTables::Entry(text.Menus, kStoppedText);
    source.Open = TextTables::Entry(text.Menus, kOpenText);
    source.Quit = TextTables::Entry(text.Menus, kQuitText);
    const ProgramGroup* group = model.StartupGroup();
    if (group) {
        source.StartupGroupIndex = model.StartupGroupIndex;
        source.GroupName = group->Name;
        // Each program as it starts, read as Windows reads a command line: the caption of
        // "C:\...\OneDrive.exe" /background is OneDrive.exe.
        for (const GroupProgram& p : group->Programs)
            source.ProgramPaths.push_back(
                p.Path.empty() ? p.Path : StartedCommand(p, false, SystemCommandLine()).Path);
    }
    for (const std::string& entry : model.StoppedPrograms)
        source.StoppedNames.push_back(entry.size() > kPrefixLength ? entry.substr(kPrefixLength)
                                                                   : std::string());
    return {TrayMenu::Build(source), group ? group->Programs : std::vector<GroupProgram>(),
            model.StoppedPrograms};
}

void RunGroupNow(const RunNeeds& run, int groupIndex, RunClock& clock,
                 const ProgramLauncher& launch) {
    const ProgramModel& model = run.Store.Model();
    if (groupIndex < 0 || static_cast<size_t>(groupIndex) >= model.ProgramGroups.size())
        return;
    // The programs as they are now: a refresh during a wait reloads the model.
    RunAll(run, clock, model.ProgramGroups[static_cast<size_t>(groupIndex)].Programs, launch);
}

void TrayMenuCommand(const RunNeeds& run, MainWindowControl& window, const ShownTrayMenu& menu,
                     int number, RunClock& clock, const ProgramLauncher& launch) {
    using Action = TrayChoice::Action;
    const TrayChoice choice = menu.Choice(number);
    const size_t index = static_cast<size_t>(std::max(choice.Index, 0));
    switch (choice.What) {
    case Action::None:
        return;
    case Action::RunGroup:
        RunAll(run, clock, menu.Programs, launch);
        return;
    case Action::RunProgram:
        if (index < menu.Programs.size())
            Start(run, clock, menu.Programs, index, launch);
        return;
    case Action::RunAllStopped:
        for (const std::string& entry : menu.Stopped)
            StartStopped(run, entry, launch);
        return;
    case Action::RunStopped:
        if (index < menu.Stopped.size())
            StartStopped(run, menu.Stopped[index], launch);
        return;
    case Action::Open:
        window.Open();
        return;
    case Action::Quit:
        window.Unload();
        return;
    }
}

void TrayMenuCommand(const RunNeeds& run, MainWindowControl& window, const ShownTrayMenu& menu,
                     int number) {
    TrayMenuCommand(run, window, menu, number, MessageLoopClock(), MeasuredLauncher(run));
}

} // namespace tolvane
