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

// One delayed program: from where it is kept, and with its variables filled in. A shortcut
// that is nowhere goes to the launcher by its name, which fails there and is logged so.
void Start(AppState& app, const GroupProgram& program, const ProgramLauncher& launch) {
    const std::optional<ProgramStart> start = ResolveDelayedProgram(app, program);
    const std::optional<ImpactKey> item = ImpactKeyOf(program);
    if (start)
        launch(start->Path, start->Parameters, item ? &*item : nullptr);
    else
        launch(program.Path, program.Parameters, nullptr);
}

void StartStopped(AppState& app, int index, const ProgramLauncher& launch) {
    const auto& stopped = app.model.StoppedPrograms;
    if (index < 0 || static_cast<size_t>(index) >= stopped.size() || stopped[index].empty())
        return;
    std::string path, parameters;
    (void)CDelayLoad(app).GetStoppedInfo(index, path, parameters);
    // Nothing found to start it from: the launcher names the item in the log.
    if (path.empty())
        path = stopped[index].substr(std::min(kPrefixLength, stopped[index].size()));
    const std::optional<ImpactKey> item = ImpactKeyOfStopped(stopped[index]);
    launch(path, parameters, item ? &*item : nullptr);
}

} // namespace

TrayMenu BuildTrayMenuModel(AppState& app) {
    ProgramModel& model = app.model;
    TrayMenuSource source;
    const TextTables& text = app.text;
    source.RunAll = TextTables::Entry(text.Menus, kRunAllText);
    source.Stopped = TextTables::Entry(text.Menus, kStoppedText);
    source.Open = TextTables::Entry(text.Menus, kOpenText);
    source.Quit = TextTables::Entry(text.Menus, kQuitText);
    ProgramGroup* group = model.StartupGroup();
    if (group) {
        source.StartupGroupIndex = model.StartupGroupIndex;
        source.GroupName = group->Name;
        for (const GroupProgram& p : group->Programs)
            source.ProgramPaths.push_back(p.Path);
    }
    for (const std::string& entry : model.StoppedPrograms)
        source.StoppedNames.push_back(entry.size() > kPrefixLength ? entry.substr(kPrefixLength)
                                                                   : std::string());
    TrayMenu menu = TrayMenu::Build(source);
    if (group)
        for (size_t i = 0; i < group->Programs.size(); ++i)
            group->Programs[i].MenuCommandId = menu.ProgramNumber(i);
    return menu;
}

void RunGroupNow(AppState& app, int groupIndex, RunClock& clock, const ProgramLauncher& launch) {
    if (groupIndex < 0 || static_cast<size_t>(groupIndex) >= app.model.ProgramGroups.size())
        return;
    // The programs as they are now: a refresh during a wait reloads the model.
    const std::vector<GroupProgram> programs = app.model.ProgramGroups[groupIndex].Programs;
    for (const GroupProgram& program : programs) {
        if (program.Path.empty() || app.model.IsDisallowed(program.Path))
            continue;
        if (app.wait.QuitRequested)
            return;
        WaitMilliseconds(app, clock, static_cast<long long>(DelayMilliseconds(program.Delay)));
        if (app.wait.QuitRequested)
            return;
        Start(app, program, launch);
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
        if (program.Path.empty() || app.model.IsDisallowed(program.Path))
            return;
        WaitMilliseconds(app, clock, static_cast<long long>(DelayMilliseconds(program.Delay)));
        if (!app.wait.QuitRequested)
            Start(app, program, launch);
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
    TrayMenuCommand(app, window, menu, number, MessageLoopClock(),
                    [&](const std::string& path, const std::string& parameters,
                        const ImpactKey* item) { LaunchMeasured(app, path, parameters, item); });
}

} // namespace tolvane
