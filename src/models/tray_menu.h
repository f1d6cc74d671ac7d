// The tray icon's menu as plain data: its entries, their numbers and captions, and what the
// number of a chosen entry stands for. Built from the "Startup" group's programs and the stopped
// entries; a thin layer of the user interface shows it.
#pragma once

#include <string>
#include <vector>

#include "models/menu_model.h"

namespace tolvane {

using TrayMenuEntry = MenuItem;

// What the menu is made of.
struct TrayMenuSource {
    int StartupGroupIndex = -1;              // -1: there is no "Startup" group
    std::string GroupName;                   // its name as the user sees it
    std::vector<std::string> ProgramPaths;   // the group's programs, in stored order
    std::vector<std::string> StoppedNames;   // the stopped entries' names; "" for a free slot
    std::string RunAll, Stopped, Open, Quit; // captions from the language files
};

// What a chosen number stands for; Index is the program's or the stopped entry's.
struct TrayChoice {
    enum class Action { None, RunGroup, RunProgram, RunAllStopped, RunStopped, Open, Quit };
    Action What = Action::None;
    int Index = -1;
};

class TrayMenu {
public:
    // The numbers follow k = "Startup" group index + 1: the group and its "Run All" k * 1000,
    // program i k * 1000 + 2 + i, "Stopped" and its "Run All" (k + 2) * 1000 + 1, stopped entry
    // i (k + 2) * 1000 + 3 + i, "&Open" (k + 4) * 1000, "&Quit Program" (k + 5) * 1000. A group
    // without programs, or a stopped list without entries, has no submenu; a free slot has no
    // entry.
    static TrayMenu Build(const TrayMenuSource& source);

    const std::vector<TrayMenuEntry>& Entries() const { return entries_; }
    // The number of program i, as the menu was built; 0 when it has none.
    int ProgramNumber(size_t i) const;
    TrayChoice Choice(int number) const;

private:
    std::vector<TrayMenuEntry> entries_;
    int k_ = 0;
    std::vector<int> programNumbers_;
    std::vector<int> stoppedNumbers_;
};

// The caption of a program: its file name, the part after the last "\", trimmed; the whole path
// when that is empty. An "&" is doubled, so that it shows as itself.
std::string ProgramCaption(const std::string& path);

} // namespace tolvane
