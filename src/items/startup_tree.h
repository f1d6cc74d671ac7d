// The tree of every startup item: the current user's and all users' active items, the delayed
// and the stopped ones, each container captioned with its number of items. Built from the four
// listings and the program-group model, without the platform.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/app_state.h"
#include "config/impact_file.h"
#include "config/program_model.h"
#include "items/startup_approved.h"
#include "models/tree_model.h"

namespace tolvane {

// What the startup locations held at the last refresh. Each list has at least one element; an
// empty first element means the location has nothing.
struct StartupListing {
    std::vector<std::string> UserStartupFiles{1};
    std::vector<std::string> CommonStartupFiles{1};
    std::vector<std::string> UserRunValues{1}; // "name=data"
    std::vector<std::string> MachineRunValues{1};
    // The machine's Run values for 32-bit programs (WOW6432Node), shown with the machine's.
    std::vector<std::string> MachineRun32Values{1};

    // The items Task Manager switched off, by their names, in each location.
    SwitchedOffNames OffUserFolder, OffUserRun, OffCommonFolder, OffMachineRun, OffMachineRun32;

    // The saved copies of the machine's values, both views, as ReadSavedCopies lists them, and
    // which are the 32-bit view's: a delayed or stopped value belongs to its copy's view.
    std::vector<std::string> SavedMachineCopies;
    std::vector<bool> SavedMachineCopyIs32;

    // The last measurement of every item the program started.
    std::vector<ImpactRecord> Impacts;

    // Why each program of the Startup group will not start at log-on, in its order; "" for one
    // that will. Shown in the item's tip.
    std::vector<std::string> DelayedNotices;
};

// The mark (TreeNode::Data) of an item of the machine's 32-bit Run key, whatever its state.
inline constexpr int kWow32Item = 32;

// The tag of the items that offer the popup's moves.
inline constexpr std::string_view kPopupTag = "#POP#";

// The program's own Run value as a listing shows it: "Tolvane=" and the command.
std::string OwnRunEntry(const AppFolders& folders);

// The tree text of a delayed Run value: value name, "=", path, " ", parameters.
std::string DelayedRunItemText(const GroupProgram& program);
// The program of the "Startup" group that a delayed item of that location and tree text stands
// for: its command word the location's, and its Run value's text or its shortcut's name the
// item's. nullptr when the group holds none.
const GroupProgram* DelayedProgramOf(const ProgramModel& model, int location,
                                     std::string_view itemText);

struct StartupTreeHooks {
    // Seconds since midnight, rounded: part of every item's key.
    std::function<long long()> Timer;
    // The refresh's progress, 0 to 100.
    std::function<void(double)> Progress;
};

// Rebuilds the tree. The program's own Run value (the first copy in each listing) is taken out
// of the listings and shown nowhere. Containers keep the expanded state they had before; the
// four stopped registry and folder containers start closed.
void BuildStartupTree(TreeModel& tree, StartupListing& listing, const ProgramModel& model,
                      std::string_view ownRunEntry, const StartupTreeHooks& hooks);

// Items whose text holds a name of the safe list (exact letters) are known: bold.
void MarkKnown(TreeModel& tree, const std::vector<SafeEntry>& safeList);

// The safe list's description of the first name found in the text; "" when none.
std::string SafeListDescription(std::string_view text, const std::vector<SafeEntry>& safeList);

// The tip of an item: the safe list's description, why it will not start, then a line for each
// thing Task Manager or the registry view says of it. `lines` holds the texts of a switched-off
// item and of one of the 32-bit Run key.
struct ItemTipLines {
    std::string SwitchedOff;
    std::string Wow32;
};
// `impact`, the line of the item's last measurement, comes last.
std::string ItemToolTip(const TreeNode& node, const std::vector<SafeEntry>& safeList,
                        const ItemTipLines& lines, std::string_view impact = {});

// The item of a delayed leaf, by which its measurement is found; nothing for any other node:
// an active item's measurement would be of a start that Windows did not make.
std::optional<ImpactKey> DelayedItemKey(const TreeModel& tree, int node);

// A measurement as the tip shows it: "High: 2.3 s CPU, 45 MB read, ready after 4.1 s". The
// texts come from the language files: the three ratings, then the figures with "%1" for the
// rating, "%2" the CPU seconds, "%3" the megabytes read and "%4" the seconds until ready, once
// with the ready time and once for a program never ready for input.
struct ImpactTexts {
    std::string Ratings[3];
    std::string FiguresReady;
    std::string Figures;
    std::string Decimal = ".";
};
std::string ImpactTipLine(const ImpactRecord& record, const ImpactTexts& texts);

// Where an item of the tree is: its location code and its state, read from its container's key,
// and for a machine value its registry view.
struct ItemPlace {
    int Location = kUserStartup;
    ItemState State = ItemState::Active;
    bool Wow32 = false;
    bool Registry() const { return Location == kUserRun || Location == kMachineRun; }
};
// Nothing for a container or a node outside the item containers.
std::optional<ItemPlace> PlaceOf(const TreeModel& tree, int node);

// Checks or clears a container and its items, down to three levels below it.
void CheckWithItems(TreeModel& tree, int node, bool checked);

} // namespace tolvane
