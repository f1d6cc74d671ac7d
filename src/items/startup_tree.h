// The tree of every startup item: the current user's and all users' active items, the delayed
// and the stopped ones, each container captioned with its number of items. Built from the four
// listings and the program-group model, without the platform.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/app_folders.h"
#include "config/impact_file.h"
#include "config/program_model.h"
#include "config/safe_list.h"
#include "config/run_data.h"
#include "items/startup_approved.h"
#include "models/tree_model.h"
#include "text/strings.h"

namespace tolvane {

// Where an item of the tree is: its location code and its state, read from its container's key,
// and for a machine value its registry view.
struct ItemPlace {
    int Location = kUserStartup;
    ItemState State = ItemState::Active;
    bool Wow32 = false;
    bool Registry() const { return Location == kUserRun || Location == kMachineRun; }
};
// A Run value as a listing found it: its name (which may hold "=") and its data as written.
struct ListedValue {
    std::string Name;
    std::string Data;
    bool Expandable = false; // REG_EXPAND_SZ
};

// Where a startup item is: the Startup folder or Run key that Windows starts it from, the
// machine's Run key in each of its two registry views.
enum class ItemLocation { UserFolder, UserRun, CommonFolder, MachineRun, MachineRun32 };

// An item as every refresh knows it again: its location (the registry view included), its state
// and its own name; a record without a name by its command.
struct ItemKey {
    ItemLocation Location = ItemLocation::UserFolder;
    ItemState State = ItemState::Active;
    std::string Name;
    std::string Command; // only for a record without a name
    bool operator==(const ItemKey&) const = default;
};

// One startup item as a refresh found it. An item is its location and its own name (the
// shortcut's file name, the Run value's name, exactly as Windows holds them); the rest says in
// which state it is and what it starts. Moves find it again by that key, in the file and the
// registry as they are then.
struct StartupItem {
    ItemLocation Location = ItemLocation::UserFolder;
    ItemState State = ItemState::Active;
    std::string Name;
    // A Run value's command as written: the value's own data, or its saved copy's; for a value
    // whose copy is gone, the command its record holds.
    std::string Command;
    bool Expandable = false;
    // What it starts, where it is now: a shortcut's full path (in its Startup folder while
    // active, in the items folder while delayed or stopped); for a Run value the program its
    // command names and the arguments it gives it, read as Windows reads the command (a delayed
    // value's as the log-on run reads its record), variables kept as written.
    std::string File;
    std::string Arguments;
    // Its record in the program-group model: the program of the Startup group (delayed) or the
    // entry of StoppedPrograms (stopped) at the refresh; -1 for an active item.
    int Record = -1;
    bool SwitchedOff = false; // Task Manager keeps it from starting

    bool Registry() const;
    bool ForAllUsers() const;
    // The location's code in the program-group model, and whether it is the 32-bit view.
    int Code() const;
    bool Wow32() const { return Location == ItemLocation::MachineRun32; }
    ItemPlace Place() const;
    ItemKey Key() const;
    // The text the list shows, the same in every state: the file name, or the value as
    // name=data. A record without a value name shows its command alone.
    std::string Text() const;
};

ItemLocation LocationOf(int code, bool wow32 = false);

// What the startup locations held at the last refresh. Each list of files has at least one
// element; an empty first element means the location has nothing.
struct StartupListing {
    std::vector<std::string> UserStartupFiles{1};
    std::vector<std::string> CommonStartupFiles{1};
    std::vector<ListedValue> UserRunValues;
    std::vector<ListedValue> MachineRunValues;
    // The machine's Run values for 32-bit programs (WOW6432Node), shown with the machine's.
    std::vector<ListedValue> MachineRun32Values;

    // The items Task Manager switched off, by their names, in each location.
    SwitchedOffNames OffUserFolder, OffUserRun, OffCommonFolder, OffMachineRun, OffMachineRun32;
    // When each of Task Manager's five keys was last written as the names above were read: a
    // refresh reads a key again only once it has been written since. Switches change seldom,
    // and each one is a value beside an item: read every time, they would cost as much again
    // as the items themselves.
    struct SwitchKeyRead {
        bool Read = false;
        std::optional<uint64_t> Written;
    };
    SwitchKeyRead SwitchKeysRead[5];

    // The saved copies of the user's values, and of the machine's from both views as
    // ReadSavedCopies lists them, with which are the 32-bit view's: a delayed or stopped value
    // belongs to its copy's view, and shows the command its copy holds.
    std::vector<NameData> SavedUserCopies;
    std::vector<bool> SavedUserCopyExpandable;
    std::vector<NameData> SavedMachineCopies;
    std::vector<bool> SavedMachineCopyIs32;
    std::vector<bool> SavedMachineCopyExpandable;

    // The last measurement of every item the program started.
    std::vector<ImpactRecord> Impacts;

    // Every item the tree shows, in its order; each leaf's TreeNode::Item is its index here.
    std::vector<StartupItem> Items;
};

// The mark (TreeNode::Data) of an item of the machine's 32-bit Run key, whatever its state.
inline constexpr int kWow32Item = 32;

// The tag of the items that offer the popup's moves.
inline constexpr std::string_view kPopupTag = "#POP#";

// The program's own Run value as a listing shows it: "Tolvane" and the command.
ListedValue OwnRunEntry(const AppFolders& folders);

struct StartupTreeHooks {
    // Seconds since midnight, rounded: part of every item's key.
    std::function<long long()> Timer;
    // The refresh's progress, 0 to 100.
    std::function<void(double)> Progress;
    // Why the log-on run will not start a delayed program, "" when it will; expandable: its
    // value's saved copy is an expandable string. Shown in the item's tip.
    std::function<std::string(const GroupProgram& program, bool expandable)> Notice;
    // Where the shortcuts lie; none: a shortcut's File stays empty.
    const AppFolders* Folders = nullptr;
    // How a Run value's command reads on this machine; none: a value's File stays empty.
    const CommandLineSystem* System = nullptr;
    // How Windows compares value names (CDirStruct::CompareNames), by which the program's own
    // value is known; none: exactly as written.
    NameOrder Order = nullptr;
    // The main window's texts (the Toolbar table), which name the containers; none: the
    // built-in English ones.
    const std::vector<std::string>* Headings = nullptr;
};

// Rebuilds the tree and the listing's items. The program's own Run value (the first copy in
// each listing) is taken out of the listings and shown nowhere. Containers keep the expanded
// state they had before; the four stopped registry and folder containers start closed.
void BuildStartupTree(TreeModel& tree, StartupListing& listing, const ProgramModel& model,
                      const ListedValue& ownRunEntry, const StartupTreeHooks& hooks);

// The item a leaf of the tree shows; nothing for a container.
const StartupItem* ItemOfNode(const TreeModel& tree, const StartupListing& listing, int node);

// The program of the "Startup" group that a delayed item stands for, as the refresh that listed
// the item read the model; nullptr for an item of another state.
const GroupProgram* DelayedRecord(const ProgramModel& model, const StartupItem& item);

// Items whose own name or program file name holds a name of the safe list (exact letters) are
// known: bold, in every state; every other node is not.
void MarkKnown(TreeModel& tree, const std::vector<SafeEntry>& safeList);

// The first entry of the safe list that names an item: by the item's own name or its program's
// file name, which stay the same in every state; by its text where neither is known. An entry
// without a name names nothing. nullptr when none does.
const SafeEntry* KnownEntry(const TreeNode& node, const std::vector<SafeEntry>& safeList);

// The tip of an item: the safe list's description, why it will not start, then a line for each
// thing Task Manager or the registry view says of it. `lines` holds the texts of a switched-off
// item and of one of the 32-bit Run key.
struct ItemTipLines {
    std::string SwitchedOff;
    std::string Wow32;
    std::string AllUsers; // an active item of all users: why it cannot be ticked or moved
};
// `impact` is the line of the item's last measurement; `program`, what the item starts (a
// shortcut's target, a Run value's program), comes last, so that every item says what it is,
// after `facts`, the line of who made it and whether its signature holds.
std::string ItemToolTip(const TreeNode& node, const std::vector<SafeEntry>& safeList,
                        const ItemTipLines& lines, std::string_view impact = {},
                        std::string_view program = {}, std::string_view facts = {});

// The item of a delayed leaf, by which its measurement is found; nothing for any other node:
// an active item's measurement would be of a start that Windows did not make.
std::optional<ImpactKey> DelayedItemKey(const TreeModel& tree, const StartupListing& listing,
                                        int node);

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

// Nothing for a container or a node outside the item containers.
std::optional<ItemPlace> PlaceOf(const TreeModel& tree, int node);

// Checks or clears a container and its items, down to three levels below it.
void CheckWithItems(TreeModel& tree, int node, bool checked);

} // namespace tolvane
