// The tray menu of the log-on run and of the interactive mode: what it holds, and what its
// entries do. Start the delayed programs at once, one of them after its own delay, the stopped
// programs, open the window or quit, also while the log-on run waits.
#pragma once

#include "models/tray_menu.h"
#include "startup/delayed_run.h"

namespace tolvane {

class AppState;
class ProgramModel;
struct TextTables;

// The menu of the "Startup" group and the stopped items as they are now; the menu itself knows
// which number stands for which program.
TrayMenu BuildTrayMenuModel(const ProgramModel& model, const TextTables& text);

// Carries out the entry of that number; 0 or an unknown number does nothing. Its waits serve
// the message loop and end when the program quits.
void TrayMenuCommand(AppState& app, MainWindowControl& window, const TrayMenu& menu, int number,
                     RunClock& clock, const ProgramLauncher& launch);
void TrayMenuCommand(AppState& app, MainWindowControl& window, const TrayMenu& menu, int number);

// Starts every program of the group, one after another, each after its own delay. A program
// that holds a disallowed word is never started, here as in the log-on run.
void RunGroupNow(AppState& app, int groupIndex, RunClock& clock, const ProgramLauncher& launch);

} // namespace tolvane
