// The tray menu of the log-on run and of the interactive mode: what it holds, and what its
// entries do. Start the delayed programs at once, one of them after its own delay, the stopped
// programs, open the window or quit, also while the log-on run waits.
#pragma once

#include <string>
#include <vector>

#include "models/tray_menu.h"
#include "startup/delayed_run.h"

namespace tolvane {

class ProgramModel;
struct TextTables;

// The tray menu as it was shown, with a copy of what its entries stand for: a refresh or a
// reload of the model while the menu is open may move the programs in their lists, and an entry
// still starts exactly the program its caption showed.
struct ShownTrayMenu : TrayMenu {
    std::vector<GroupProgram> Programs; // the "Startup" group's, by the entries' indexes
    std::vector<std::string> Stopped;   // the stopped entries, by the entries' indexes
};

// The menu of the "Startup" group and the stopped items as they are now; the menu itself knows
// which number stands for which program.
ShownTrayMenu BuildTrayMenuModel(const ProgramModel& model, const TextTables& text);

// Carries out the entry of that number; 0 or an unknown number does nothing. Its waits serve
// the message loop and end when the program quits. In the log-on mode a delayed program that
// was started already (by the run, by hand) is not started again, also when it was started
// during the entry's own wait.
void TrayMenuCommand(const RunNeeds& run, MainWindowControl& window, const ShownTrayMenu& menu,
                     int number, RunClock& clock, const ProgramLauncher& launch);
void TrayMenuCommand(const RunNeeds& run, MainWindowControl& window, const ShownTrayMenu& menu,
                     int number);

// Starts every program of the group, one after another, each after its own delay. A program
// that holds a disallowed word is never started, here as in the log-on run.
void RunGroupNow(const RunNeeds& run, int groupIndex, RunClock& clock,
                 const ProgramLauncher& launch);

} // namespace tolvane
