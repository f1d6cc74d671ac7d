#include "startup/tray_commands.h"

#include "config/app_state.h"
#include "config/delay_load.h"
#include "startup/launcher.h"
#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// The Menus entries of the tray menu's own texts.
constexpr size_t kRunAllText = 22, kStoppedText = 23, kOpenText = 24, kQuitText = 25;

// A disallowed word keeps a program from starting, from the tray as in the log-on run.
bool Refused(AppState& app, std::string_view program, std::string_view arguments) {
    const std::string word = app.model.BlockingWord(program, arguments);
    if (word.empty())
        return false;
    app.log.WriteLog("Startup Item Not Allowed: " + Trim(program) + " (\"" + word + "\")",
                     kLogWarning);
    return true;
}

// One delayed program, from where it is kept and with its variables filled in, noted in the
// start log. One that is not there is said so in the log.
void Start(AppState& app, RunClock& clock, const GroupProgram& program,
           const ProgramLauncher& launch) {
    if (program.Path.empty() || Refused(app, program.Path, program.Parameters))
        return;
    if (const std::optional<ProgramStart> start = ResolveDelayedProgram(app.folders, program))
        StartDelayedProgram(app, clock, program, *start, launch);
    else
        app.log.WriteLog("Startup Item Not Found: " + Trim(program.Path), kLogWarning);
}

void StartStopped(AppState& app, int index, const ProgramLauncher& launch) {
    const auto& stopped = app.model.StoppedPrograms;
    if (index < 0 || static_cast<size_t>(index) >= stopped.size() || stopped[index].empty())
        return;
    StoppedCommand command;
    (void)app.Store().File().GetStoppedInfo(index, command);
    // Nothing found to start it from: the launcher names the item in the log.
    if (command.Program.empty())
        command.Program = stopped[index].substr(std::min(kPrefixLength, stopped[index].size()));
    if (Refused(app, command.Program, command.Arguments))
        return;
    const std::optional<ImpactKey> item = ImpactKeyOfStopped(stopped[index]);
    const StoppedCommand::Start start = command.ToStart();
    launch(start.Path, start.Parameters, item ? &*item : nullptr);
}

} // namespace

TrayMenu BuildTrayMenuModel(const ProgramModel& model, const TextTables& text) {
    TrayMenuSource source;
    source.RunAll = TextTables::Entry(text.Menus, kRunAllText);
    source.Stopped = TextTables::Entry(text.Menus, kStoppedText);
    source.Open = TextTables::Entry(text.Menus, kOpenText);
    source.Quit = TextTables::Entry(text.Menus, kQuitText);
    if (const ProgramGroup* group = model.StartupGroup()) {
        source.StartupGroupIndex = model.StartupGroupIndex;
        source.GroupName = group->Name;
        for (const GroupProgram& p : group->Programs)
            source.ProgramPaths.push_back(p.Path);
    }
    for (const std::string& entry : model.StoppedPrograms)
        source.StoppedNames.push_back(entry.size() > kPrefixLength ? entry.substr(kPrefixLength)
                                                                   : std::string());
    return TrayMenu::Build(source);
}

void RunGroupNow(AppState& app, int groupIndex, RunClock& clock, const ProgramLauncher& launch) {
    if (groupIndex < 0 || static_cast<size_t>(groupIndex) >= app.model.ProgramGroups.size())
        return;
    // The programs as they are now: a refresh during a wait reloads the model. During the
    // log-on run a program that was started already (by the run, by hand) is not started twice.
    const std::vector<GroupProgram> programs = app.model.ProgramGroups[groupIndex].Programs;
    for (const GroupProgram& program : programs) {
        if (program.Path.empty() || (!app.ShowGui && app.starts.Has(DelayedProgramId(program))))
            continue;
        if (app.wait.QuitRequested)
            return;
        WaitMilliseconds(app.wait, app.log, clock,
                         static_cast<long long>(DelayMilliseconds(program.Delay)));
        if (app.wait.QuitRequested)
            return;
        Start(app, clock, program, launch);
    }
}

void TrayMenuCommand(AppState& app, MainWindowControl& window, const TrayMenu& menu, int number,
                     RunClock& clock, const ProgramLauncher& launch) {
    using Action = TrayChoice::Action;
    const TrayChoice choice = menu.Choice(number);
    switch (choice.What) {
    case Action::None:
        return;
    case Action::RunGroup:
        RunGroupNow(app, choice.Index, clock, launch);
        return;
    case Action::RunProgram: {
        const ProgramGroup* group = app.model.StartupGroup();
        if (!group || static_cast<size_t>(choice.Index) >= group->Programs.size())
            return;
        const GroupProgram program = group->Programs[static_cast<size_t>(choice.Index)];
        if (program.Path.empty())
            return;
        WaitMilliseconds(app.wait, app.log, clock,
                         static_cast<long long>(DelayMilliseconds(program.Delay)));
        if (!app.wait.QuitRequested)
            Start(app, clock, program, launch);
        return;
    }
    case Action::RunAllStopped:
        for (size_t i = 0; i < app.model.StoppedPrograms.size(); ++i)
            StartStopped(app, static_cast<int>(i), launch);
        return;
    case Action::RunStopped:
        StartStopped(app, choice.Index, launch);
        return;
    case Action::Open:
        window.Open();
        return;
    case Action::Quit:
        window.Unload();
        return;
    }
}

void TrayMenuCommand(AppState& app, MainWindowControl& window, const TrayMenu& menu, int number) {
    TrayMenuCommand(
        app, window, menu, number, MessageLoopClock(),
        [&](const std::string& path, const std::string& parameters, const ImpactKey* item) {
            LaunchMeasured(app.log, app.watcher, path, parameters, item);
        });
}

} // namespace tolvane
