// The log-on plan: the state an administrator wants a user's startup items in, and the settings
// of the log-on run, as one JSON file. `tolvanec export` writes it from what is there now;
// `tolvanec apply` brings a user to it with the list's own moves, and `--check` lists what
// differs. Free of the platform: the caller reads the items and names the platform's rules.
//
// The file, plan version 1, in UTF-8 (a byte-order mark in front is allowed):
//   {
//     "tolvanePlan": 1,
//     "settings": { "mainDelay": 30, "idleStart": false, "startupType": 1 },
//     "items": [
//       { "location": "user-run", "name": "OneDrive",
//         "command": "\"%LOCALAPPDATA%\\Microsoft\\OneDrive\\OneDrive.exe\" /background",
//         "state": "delayed", "delay": 5 },
//       { "location": "user-folder", "name": "Tool.lnk", "command": "C:\\Tools\\tool.exe",
//         "state": "stopped" } ] }
// - "tolvanePlan": the version of the plan's form, 1. A plan of a higher version is refused.
// - "settings" (optional), each field optional; one that is left out is left as it is:
//   "mainDelay": the seconds after log-on before the first delayed program starts, 0 or more;
//   "idleStart": true: each delayed program waits until the machine is idle;
//   "startupType": when Windows starts Tolvane at log-on: 0 never, 1 while items are delayed,
//   2 from the user's Run key, 3 from the machine's.
// - "items" (optional): each item at most once, named by its place and own name:
//   "location": "user-folder", "user-run", "common-folder", "machine-run" or "machine-run-32"
//   (the machine's Run key as 32-bit programs see it);
//   "name": the Run value's name, or the file name of the shortcut in the Startup folder;
//   "command" (optional): what the item starts, %VARIABLES% allowed. Left out or "", any
//   command matches. An item here that starts another program is not the same program: it is
//   reported and left alone. Of a shortcut only the program is compared;
//   "state": "active" (Windows starts it), "delayed" (Tolvane starts it after the main delay
//   and its own) or "stopped" (nobody starts it; it can be put back);
//   "delay" (only with "delayed"): the item's own seconds after the main delay, 0 or more;
//   left out, 0.
//   Items the plan does not name stay as they are.
// Any other key, a wrong type, or an unknown location or state is a fault in the plan, so that
// a misspelt key is never silently ignored.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/cli_args.h"
#include "cli/item_records.h"
#include "config/program_model.h"
#include "config/run_data.h"
#include "text/strings.h"

namespace tolvane {

inline constexpr int kPlanVersion = 1;

struct PlanItem {
    CliLocation Location;
    std::string Name;    // the Run value's name or the shortcut's file name
    std::string Command; // "": any
    ItemState State = ItemState::Active;
    std::optional<float> Delay;  // set exactly when the state is delayed
    size_t Line = 0, Column = 0; // where the plan holds the item, for messages; 0 when made here
};

struct LogonPlan {
    std::optional<float> MainDelay;
    std::optional<bool> IdleStart;
    std::optional<int> StartupType;
    std::vector<PlanItem> Items;
};

// The plan as its file holds it: two blanks of indent a level, keys in the order above, LF line
// ends. A delayed item always gets its "delay".
std::string FormatPlanJson(const LogonPlan& plan);

struct PlanParse {
    std::optional<LogonPlan> Plan;
    std::string Error;           // a sentence; the caller puts the line and column in front
    size_t Line = 0, Column = 0; // from 1, the column in characters; 0 with no fault
};
// The plan of the file's bytes, or the first fault with its place. Two items of one location
// whose names `order` takes for one (exactly equal without an order) are a fault.
PlanParse ParsePlanJson(std::string_view bytes, NameOrder order);

// A command as a Run value writes it: the path, in quotes when it holds a blank, then a blank
// and the parameters when there are any.
std::string CommandText(const std::string& path, const std::string& parameters);

// The text with each folder of the user's profile written as its variable: `variables` are
// pairs like {"LOCALAPPDATA", "C:\\Users\\ann\\AppData\\Local"}. The longest value wins, its
// letters compared without regard to case, and only where the value ends at a path's boundary
// ("\", a quote, a blank or the end): C:\Users\annabel is not %USERPROFILE%bel.
std::string WithProfileVariables(std::string_view text,
                                 const std::vector<std::pair<std::string, std::string>>& variables);

// The plan that keeps this user's log-on as it is: the model's settings and every delayed or
// stopped item the list can move (an item not named stays active), its command with the
// profile's folders as variables. Nothing of this machine's own: an item whose program is
// unknown (a shortcut whose target cannot be read, any other file of a Startup folder) gets the
// command "". Of two items of one location and name (compared by `order`) the first is kept, so
// that the plan always reads back.
LogonPlan PlanFromRecords(const std::vector<ItemRecord>& records, const ProgramModel& model,
                          const std::vector<std::pair<std::string, std::string>>& profileVariables,
                          NameOrder order);

struct PlanDifference {
    enum class Kind {
        Setting,        // a setting differs
        State,          // the item is in another state
        Delay,          // a delayed item waits another delay of its own
        NotHere,        // no item of that location and name
        CommandDiffers, // the item here starts another program
        NotMovable,     // the item would have to move, but the list offers no move for it
    };
    Kind What = Kind::Setting;
    // apply makes this change (a setting, a move, a delay); otherwise it is only reported and
    // nothing is done about it.
    bool Change = false;
    std::string Setting; // "mainDelay", "idleStart" or "startupType"
    int Item = -1;       // the plan's item; -1 for a setting
    int Record = -1;     // the record it is about; -1 where none
    ItemState From = ItemState::Active, To = ItemState::Active;
    std::optional<float> Delay; // the plan's delay when To is delayed
    std::string Text;           // one line for the console, without its line end
};

// What differs between the plan and this user's log-on: the settings first, then the plan's
// items in its order. An item matches the record of its location and own name (compared by
// `order`) whose command is the plan's once variables are filled in through `machine`: the
// program compared without regard to case, the arguments after trimming exactly; a shortcut's
// program alone. Of several such records, one already in the plan's state. Items the plan does
// not name never differ.
std::vector<PlanDifference> ComparePlan(const LogonPlan& plan,
                                        const std::vector<ItemRecord>& records,
                                        const ProgramModel& current,
                                        const CommandLineSystem& machine, NameOrder order);

} // namespace tolvane
