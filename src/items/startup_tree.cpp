#include "items/startup_tree.h"

#include "config/run_data.h"
#include "platform/path_rules.h"
#include "text/placeholders.h"
#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// The headings of the containers: entries of the main window's texts (the Toolbar table).
enum : unsigned char {
    kCurrentUser = 8,
    kAllUsers,
    kStartupFolder,
    kRegistryRun,
    kDelayedItems,
    kStoppedItems,
    kRegistry,
};

struct Container {
    const char* key;
    const char* parent; // "" for a root
    unsigned char heading;
    const char* image;
};

// The containers, in the order they are made.
constexpr Container kContainers[] = {
    {"CurrentUserRoot", "", kCurrentUser, "User"},
    {"CurrentUserStartup", "CurrentUserRoot", kStartupFolder, "Startup"},
    {"CurrentUserRegistry", "CurrentUserRoot", kRegistryRun, "Registry"},
    {"AllUsersRoot", "", kAllUsers, "Group"},
    {"AllUsersStartup", "AllUsersRoot", kStartupFolder, "Startup"},
    {"AllUsersRegistry", "AllUsersRoot", kRegistryRun, "Registry"},
    {"DelayedItemsRoot", "", kDelayedItems, "Delay"},
    {"DIR_CurrentUser", "DelayedItemsRoot", kCurrentUser, "User"},
    {"DIR_AllUsers", "DelayedItemsRoot", kAllUsers, "Group"},
    {"DelayedItemsStartupCurrentUser", "DIR_CurrentUser", kStartupFolder, "Startup"},
    {"DelayedItemsRegistryCurrentUser", "DIR_CurrentUser", kRegistryRun, "Registry"},
    {"DelayedItemsStartupAllUsers", "DIR_AllUsers", kStartupFolder, "Startup"},
    {"DelayedItemsRegistryAllUsers", "DIR_AllUsers", kRegistryRun, "Registry"},
    {"StoppedItemsRoot", "", kStoppedItems, "Stopped"},
    {"StoppedItemsCurrent", "StoppedItemsRoot", kCurrentUser, "User"},
    {"StoppedItemsAll", "StoppedItemsRoot", kAllUsers, "Group"},
    {"StoppedItemsCurrentStartup", "StoppedItemsCurrent", kStartupFolder, "Startup"},
    {"StoppedItemsCurrentReg", "StoppedItemsCurrent", kRegistry, "Registry"},
    {"StoppedItemsAllStartup", "StoppedItemsAll", kStartupFolder, "Startup"},
    {"StoppedItemsAllReg", "StoppedItemsAll", kRegistry, "Registry"},
};

// The containers whose open state a refresh keeps, in the order it is put back; the stopped
// root opens when either of its user containers was open.
constexpr const char* kRemembered[] = {
    "CurrentUserRoot",
    "AllUsersRoot",
    "DelayedItemsRoot",
    "CurrentUserStartup",
    "CurrentUserRegistry",
    "AllUsersStartup",
    "AllUsersRegistry",
    "DIR_CurrentUser",
    "DIR_AllUsers",
    "DelayedItemsStartupCurrentUser",
    "DelayedItemsRegistryCurrentUser",
    "DelayedItemsStartupAllUsers",
    "DelayedItemsRegistryAllUsers",
    "StoppedItemsCurrent",
    "StoppedItemsAll",
};

int Count(const std::vector<std::string>& list) {
    return list.empty() || list[0].empty() ? 0 : static_cast<int>(list.size());
}

// The value's name as Windows compares names (the key holds no second one of another case).
bool IsOwn(const ListedValue& value, const ListedValue& own, NameOrder order) {
    return value.Data == own.Data && SameName(value.Name, own.Name, order);
}

// Takes the first value that is the program's own out; true when there was one.
bool RemoveOwnEntry(std::vector<ListedValue>& list, const ListedValue& own, NameOrder order) {
    for (auto v = list.begin(); v != list.end(); ++v) {
        if (IsOwn(*v, own, order)) {
            list.erase(v);
            return true;
        }
    }
    return false;
}

// A delayed value's command as its record holds it, where no saved copy tells it. A program
// that an older version wrote with a blank at its end is read without it.
std::string RecordCommand(const GroupProgram& p) {
    const std::string path = Trim(p.Path);
    return p.Parameters.empty() ? path : path + " " + p.Parameters;
}

class Builder {
public:
    Builder(TreeModel& tree, const StartupTreeHooks& hooks) : tree_(tree), hooks_(hooks) {}

    void Progress(double value) {
        if (hooks_.Progress)
            hooks_.Progress(value);
    }

    // Keys carry the time and the item's index as the tree has always built them; where two
    // items would get the same key (the same name at the same index in both Startup folders,
    // within one second), a counter makes it unique, so that every item shows.
    TreeNode& Leaf(const char* container, size_t index, std::string_view origin,
                   std::string_view text, std::string_view tag) {
        const long long timer = hooks_.Timer ? hooks_.Timer() : 0;
        std::string key = "#" + std::to_string(timer) + std::to_string(index) + std::string(origin);
        if (tree_.Find(key) != TreeModel::kNone) {
            int n = 2;
            while (tree_.Find(key + "#" + std::to_string(n)) != TreeModel::kNone)
                ++n;
            key += "#" + std::to_string(n);
        }
        int node = tree_.Add(container, key, text);
        tree_.Node(node).Tag = std::string(tag);
        return tree_.Node(node);
    }

private:
    TreeModel& tree_;
    const StartupTreeHooks& hooks_;
};

} // namespace

ListedValue OwnRunEntry(const AppFolders& folders) {
    return {"Tolvane", folders.RunCommand};
}

ItemLocation LocationOf(int code, bool wow32) {
    switch (code) {
    case kUserRun:
        return ItemLocation::UserRun;
    case kCommonStartup:
        return ItemLocation::CommonFolder;
    case kMachineRun:
        return wow32 ? ItemLocation::MachineRun32 : ItemLocation::MachineRun;
    default:
        return ItemLocation::UserFolder;
    }
}

int StartupItem::Code() const {
    switch (Location) {
    case ItemLocation::UserFolder:
        return kUserStartup;
    case ItemLocation::UserRun:
        return kUserRun;
    case ItemLocation::CommonFolder:
        return kCommonStartup;
    case ItemLocation::MachineRun:
    case ItemLocation::MachineRun32:
        return kMachineRun;
    }
    return kUserStartup;
}

bool StartupItem::Registry() const {
    return Location != ItemLocation::UserFolder && Location != ItemLocation::CommonFolder;
}

bool StartupItem::ForAllUsers() const {
    return Location != ItemLocation::UserFolder && Location != ItemLocation::UserRun;
}

ItemPlace StartupItem::Place() const {
    return ItemPlace{Code(), State, Wow32()};
}

ItemKey StartupItem::Key() const {
    return {Location, State, Name, Name.empty() ? Command : std::string()};
}

std::string StartupItem::Text() const {
    if (!Registry())
        return Name;
    return Name.empty() ? Command : Name + "=" + Command;
}

const StartupItem* ItemOfNode(const TreeModel& tree, const StartupListing& listing, int node) {
    if (node < 0 || static_cast<size_t>(node) >= tree.Count())
        return nullptr;
    const int item = tree.Node(node).Item;
    if (item < 0 || static_cast<size_t>(item) >= listing.Items.size())
        return nullptr;
    return &listing.Items[static_cast<size_t>(item)];
}

const GroupProgram* DelayedRecord(const ProgramModel& model, const StartupItem& item) {
    const ProgramGroup* startup = model.StartupGroup();
    if (!startup || item.State != ItemState::Delayed || item.Record < 0 ||
        static_cast<size_t>(item.Record) >= startup->Programs.size())
        return nullptr;
    return &startup->Programs[static_cast<size_t>(item.Record)];
}

void BuildStartupTree(TreeModel& tree, StartupListing& listing, const ProgramModel& model,
                      const ListedValue& ownRunEntry, const StartupTreeHooks& hooks) {
    // What the user had opened.
    std::vector<bool> expanded;
    for (const char* key : kRemembered) {
        int node = tree.Find(key);
        expanded.push_back(node != TreeModel::kNone && tree.Node(node).Expanded);
    }

    int userFolder = Count(listing.UserStartupFiles);
    int commonFolder = Count(listing.CommonStartupFiles);
    int userRun = static_cast<int>(listing.UserRunValues.size());
    int machineRun =
        static_cast<int>(listing.MachineRunValues.size() + listing.MachineRun32Values.size());
    if (RemoveOwnEntry(listing.UserRunValues, ownRunEntry, hooks.Order))
        --userRun;
    // Under the machine's key every copy is hidden, though only the first is counted out.
    if (RemoveOwnEntry(listing.MachineRunValues, ownRunEntry, hooks.Order)) {
        --machineRun;
        while (RemoveOwnEntry(listing.MachineRunValues, ownRunEntry, hooks.Order)) {
        }
    }

    const ProgramGroup* startup = model.StartupGroup();
    int delayedUserFolder = 0, delayedCommonFolder = 0, delayedUserRun = 0, delayedMachineRun = 0;
    if (startup) {
        for (const GroupProgram& p : startup->Programs) {
            delayedUserFolder += p.Command == kExecute;
            delayedCommonFolder += p.Command == kExecuteAU;
            delayedUserRun += p.Command == kExecuteReg;
            delayedMachineRun += p.Command == kExecuteRegAU;
        }
    }
    int stoppedMachineRun = 0, stoppedCommonFolder = 0, stoppedUserRun = 0, stoppedUserFolder = 0;
    for (const std::string& entry : model.StoppedPrograms) {
        std::string_view prefix = std::string_view(entry).substr(0, kPrefixLength);
        stoppedMachineRun += prefix == LocationPrefix(kMachineRun);
        stoppedCommonFolder += prefix == LocationPrefix(kCommonStartup);
        stoppedUserRun += prefix == LocationPrefix(kUserRun);
        stoppedUserFolder += prefix == LocationPrefix(kUserStartup);
    }
    const int counts[] = {
        userFolder + userRun,
        userFolder,
        userRun,
        machineRun + commonFolder,
        commonFolder,
        machineRun,
        delayedUserFolder + delayedCommonFolder + delayedUserRun + delayedMachineRun,
        delayedUserFolder + delayedUserRun,
        delayedCommonFolder + delayedMachineRun,
        delayedUserFolder,
        delayedUserRun,
        delayedCommonFolder,
        delayedMachineRun,
        stoppedMachineRun + stoppedCommonFolder + stoppedUserRun + stoppedUserFolder,
        stoppedUserRun + stoppedUserFolder,
        stoppedMachineRun + stoppedCommonFolder,
        stoppedUserFolder,
        stoppedUserRun,
        stoppedCommonFolder,
        stoppedMachineRun,
    };

    Builder build(tree, hooks);
    build.Progress(0);
    tree.Clear();
    const std::vector<std::string>& headings =
        hooks.Headings ? *hooks.Headings : TextTables().Toolbar;
    for (size_t i = 0; i < std::size(kContainers); ++i) {
        const Container& c = kContainers[i];
        tree.Add(c.parent, c.key,
                 TextTables::Entry(headings, c.heading) + " (" + std::to_string(counts[i]) + ")",
                 c.image);
    }
    build.Progress(100.0 / 3);

    listing.Items.clear();
    // Where an item's file is, as the moves leave it: a shortcut in its Startup folder or the
    // items folder; a value's program as its command, or a delayed value's record, reads.
    auto locate = [&](StartupItem& item) {
        if (!item.Registry()) {
            if (!hooks.Folders || item.Name.empty())
                return;
            const AppFolders& f = *hooks.Folders;
            const bool user = item.Location == ItemLocation::UserFolder;
            item.File =
                item.State == ItemState::Active
                    ? (user ? f.UserStartupFolder : f.CommonStartupFolder) + "\\" + item.Name
                    : (user ? f.UserItemsFolder : f.AllUsersItemsFolder) + item.Name;
            return;
        }
        if (!hooks.System)
            return;
        const GroupProgram* record =
            item.State == ItemState::Delayed ? DelayedRecord(model, item) : nullptr;
        const RunCommandParts parts =
            record ? DelayedCommand(*record, item.Expandable, *hooks.System)
                   : SplitRunData(item.Command, item.Expandable, *hooks.System);
        item.File = parts.Path;
        item.Arguments = parts.Parameters;
    };
    auto leaf = [&](const char* container, size_t index, std::string_view origin, StartupItem item,
                    std::string_view tag, int data = 0) -> TreeNode& {
        locate(item);
        TreeNode& node = build.Leaf(container, index, origin, item.Text(), tag);
        node.Cut = item.SwitchedOff;
        node.Name = item.Name;
        node.File = item.File;
        // All users' active items cannot be moved from here: a box would promise what no
        // button does.
        node.Tickable = !(item.State == ItemState::Active && item.ForAllUsers());
        node.Data = data;
        node.Item = static_cast<int>(listing.Items.size());
        listing.Items.push_back(std::move(item));
        return node;
    };

    // Active items; Task Manager's flag is named like the shortcut's file or the Run value.
    auto files = [&](const std::vector<std::string>& list, const char* container,
                     ItemLocation location, std::string_view tag, const SwitchedOffNames& off) {
        for (size_t i = 0; i < list.size(); ++i) {
            if (list[i].empty())
                continue;
            StartupItem item{location, ItemState::Active, list[i]};
            item.SwitchedOff = off.Contains(list[i]);
            leaf(container, i, "#" + list[i], std::move(item), tag);
        }
    };
    auto values = [&](const std::vector<ListedValue>& list, const char* container,
                      ItemLocation location, std::string_view tag, const SwitchedOffNames& off,
                      int data = 0) {
        for (size_t i = 0; i < list.size(); ++i) {
            StartupItem item{location, ItemState::Active, list[i].Name, list[i].Data,
                             list[i].Expandable};
            item.SwitchedOff = off.Contains(list[i].Name);
            const std::string text = item.Text();
            leaf(container, i, "#" + text, std::move(item), tag, data);
        }
    };
    files(listing.UserStartupFiles, "CurrentUserStartup", ItemLocation::UserFolder, kPopupTag,
          listing.OffUserFolder);
    values(listing.UserRunValues, "CurrentUserRegistry", ItemLocation::UserRun, kPopupTag,
           listing.OffUserRun);
    build.Progress(200.0 / 3);
    files(listing.CommonStartupFiles, "AllUsersStartup", ItemLocation::CommonFolder, "",
          listing.OffCommonFolder);
    values(listing.MachineRunValues, "AllUsersRegistry", ItemLocation::MachineRun, "",
           listing.OffMachineRun);
    values(listing.MachineRun32Values, "AllUsersRegistry", ItemLocation::MachineRun32, "",
           listing.OffMachineRun32, kWow32Item);
    build.Progress(75);

    // A delayed or stopped value shows the command its saved copy holds; a machine value
    // belongs to the view its copy is in.
    const SavedCopyMatch userCopies = MatchSavedCopies(model, kUserRun, listing.SavedUserCopies);
    const SavedCopyMatch machineCopies =
        MatchSavedCopies(model, kMachineRun, listing.SavedMachineCopies);
    auto is32 = [&](int copy) {
        return copy >= 0 && static_cast<size_t>(copy) < listing.SavedMachineCopyIs32.size() &&
               listing.SavedMachineCopyIs32[static_cast<size_t>(copy)];
    };
    // The value a delayed or stopped record stands for, from its copy where there is one.
    auto heldValue = [&](StartupItem& item, bool machine, int copy) {
        const auto& copies = machine ? listing.SavedMachineCopies : listing.SavedUserCopies;
        const auto& expandable =
            machine ? listing.SavedMachineCopyExpandable : listing.SavedUserCopyExpandable;
        if (copy < 0 || static_cast<size_t>(copy) >= copies.size())
            return false;
        item.Name = copies[static_cast<size_t>(copy)].Name;
        item.Command = copies[static_cast<size_t>(copy)].Data;
        item.Expandable =
            static_cast<size_t>(copy) < expandable.size() && expandable[static_cast<size_t>(copy)];
        if (machine && is32(copy))
            item.Location = ItemLocation::MachineRun32;
        return true;
    };

    if (startup) {
        for (size_t i = 0; i < startup->Programs.size(); ++i) {
            const GroupProgram& p = startup->Programs[i];
            if (IsFreeSlot(p))
                continue;
            const std::string origin = "#DELAYED" + p.Path;
            StartupItem item{LocationOf(kUserStartup), ItemState::Delayed};
            item.Record = static_cast<int>(i);
            const char* container = nullptr;
            if (p.Command == kExecute || p.Command == kExecuteAU) {
                const bool user = p.Command == kExecute;
                item.Location = user ? ItemLocation::UserFolder : ItemLocation::CommonFolder;
                item.Name = std::string(PathLastPart(p.Path));
                container = user ? "DelayedItemsStartupCurrentUser" : "DelayedItemsStartupAllUsers";
            } else if (p.Command == kExecuteReg || p.Command == kExecuteRegAU) {
                const bool machine = p.Command == kExecuteRegAU;
                item.Location = machine ? ItemLocation::MachineRun : ItemLocation::UserRun;
                if (!heldValue(item, machine, (machine ? machineCopies : userCopies).Delayed[i])) {
                    item.Name = p.RegistryKeyName;
                    item.Command = RecordCommand(p);
                }
                container =
                    machine ? "DelayedItemsRegistryAllUsers" : "DelayedItemsRegistryCurrentUser";
            }
            if (!container)
                continue; // a command of no location of its own
            TreeNode& node =
                leaf(container, i, origin, item, kPopupTag, item.Wow32() ? kWow32Item : 0);
            if (hooks.Notice)
                node.Notice = hooks.Notice(p, item.Expandable);
        }
    }
    build.Progress(95);

    for (size_t i = 0; i < model.StoppedPrograms.size(); ++i) {
        const std::string& entry = model.StoppedPrograms[i];
        std::string_view prefix = std::string_view(entry).substr(0, kPrefixLength);
        const std::string name = entry.size() > kPrefixLength ? entry.substr(kPrefixLength) : "";
        // All users' stopped items are shown and offer the popup too: an item that can be
        // stopped must be seen, or it could never be put back.
        const char* container =
            prefix == LocationPrefix(kUserRun)         ? "StoppedItemsCurrentReg"
            : prefix == LocationPrefix(kUserStartup)   ? "StoppedItemsCurrentStartup"
            : prefix == LocationPrefix(kMachineRun)    ? "StoppedItemsAllReg"
            : prefix == LocationPrefix(kCommonStartup) ? "StoppedItemsAllStartup"
                                                       : nullptr;
        if (!container)
            continue;
        const bool user =
            prefix == LocationPrefix(kUserRun) || prefix == LocationPrefix(kUserStartup);
        const bool registry =
            prefix == LocationPrefix(kUserRun) || prefix == LocationPrefix(kMachineRun);
        StartupItem item{LocationOf(registry ? (user ? kUserRun : kMachineRun)
                                             : (user ? kUserStartup : kCommonStartup)),
                         ItemState::Stopped, name};
        item.Record = static_cast<int>(i);
        if (registry && !heldValue(item, !user, (user ? userCopies : machineCopies).Stopped[i])) {
            // No copy left: the entry names its value and command, or (an older entry) holds
            // the command alone.
            if (const auto named = NamedStoppedValue(name)) {
                item.Name = named->Name;
                item.Command = named->Data;
            } else {
                item.Name.clear();
                item.Command = Trim(name);
            }
        }
        leaf(container, i, "#STOPPED" + entry, item, kPopupTag, item.Wow32() ? kWow32Item : 0);
    }

    for (size_t i = 0; i < std::size(kRemembered); ++i) {
        if (std::string_view(kRemembered[i]) == "StoppedItemsCurrent")
            tree.Node(tree.Find("StoppedItemsRoot")).Expanded = expanded[13] || expanded[14];
        tree.Node(tree.Find(kRemembered[i])).Expanded = expanded[i];
    }
    build.Progress(100);
    build.Progress(0);
}

const SafeEntry* KnownEntry(const TreeNode& node, const std::vector<SafeEntry>& safeList) {
    const std::string_view program = node.File.empty() ? "" : PathLastPart(node.File);
    const bool named = !node.Name.empty() || !program.empty();
    for (const SafeEntry& entry : safeList) {
        if (entry.Name.empty())
            continue;
        if (named ? Contains(node.Name, entry.Name) || Contains(program, entry.Name)
                  : Contains(node.Text, entry.Name))
            return &entry;
    }
    return nullptr;
}

void MarkKnown(TreeModel& tree, const std::vector<SafeEntry>& safeList) {
    for (size_t i = 0; i < tree.Count(); ++i) {
        TreeNode& node = tree.Node(static_cast<int>(i));
        node.Bold = node.Item >= 0 && KnownEntry(node, safeList);
    }
}

std::string ItemToolTip(const TreeNode& node, const std::vector<SafeEntry>& safeList,
                        const ItemTipLines& lines, std::string_view impact,
                        std::string_view program, std::string_view facts) {
    const SafeEntry* known = node.Item >= 0 ? KnownEntry(node, safeList) : nullptr;
    std::string tip = known ? known->Description : std::string();
    auto line = [&](const std::string& text) {
        if (!text.empty())
            tip += (tip.empty() ? "" : "\r\n") + text;
    };
    line(node.Notice);
    if (node.Item >= 0 && node.Tag != kPopupTag)
        line(lines.AllUsers);
    if (node.Cut)
        line(lines.SwitchedOff);
    if (node.Data == kWow32Item)
        line(lines.Wow32);
    line(std::string(impact));
    if (node.Item >= 0) {
        line(std::string(facts));
        line(std::string(program));
    }
    return tip;
}

std::optional<ImpactKey> DelayedItemKey(const TreeModel& tree, const StartupListing& listing,
                                        int node) {
    const StartupItem* item = ItemOfNode(tree, listing, node);
    if (!item || item->State != ItemState::Delayed)
        return std::nullopt;
    return ImpactKey{item->Code(), item->Name};
}

std::string ImpactTipLine(const ImpactRecord& record, const ImpactTexts& texts) {
    // Tenths, in the user's own decimal separator; whole megabytes once there are ten.
    auto seconds = [&](uint64_t ms) { return Tenths(ms, 1000, texts.Decimal); };
    const uint64_t mbTenths = (record.ReadBytes * 10 + (1 << 19)) >> 20;
    const std::string megabytes = mbTenths >= 100
                                      ? std::to_string((mbTenths + 5) / 10)
                                      : Tenths(record.ReadBytes, 1 << 20, texts.Decimal);
    const std::string& rating = texts.Ratings[static_cast<int>(record.Rating())];
    if (record.ReadyMs)
        return FillIn(texts.FiguresReady,
                      {rating, seconds(record.CpuMs), megabytes, seconds(*record.ReadyMs)});
    return FillIn(texts.Figures, {rating, seconds(record.CpuMs), megabytes});
}

std::optional<ItemPlace> PlaceOf(const TreeModel& tree, int node) {
    struct Place {
        const char* container;
        ItemPlace place;
    };
    static constexpr Place kPlaces[] = {
        {"CurrentUserStartup", {kUserStartup, ItemState::Active}},
        {"CurrentUserRegistry", {kUserRun, ItemState::Active}},
        {"AllUsersStartup", {kCommonStartup, ItemState::Active}},
        {"AllUsersRegistry", {kMachineRun, ItemState::Active}},
        {"DelayedItemsStartupCurrentUser", {kUserStartup, ItemState::Delayed}},
        {"DelayedItemsRegistryCurrentUser", {kUserRun, ItemState::Delayed}},
        {"DelayedItemsStartupAllUsers", {kCommonStartup, ItemState::Delayed}},
        {"DelayedItemsRegistryAllUsers", {kMachineRun, ItemState::Delayed}},
        {"StoppedItemsCurrentStartup", {kUserStartup, ItemState::Stopped}},
        {"StoppedItemsCurrentReg", {kUserRun, ItemState::Stopped}},
        {"StoppedItemsAllStartup", {kCommonStartup, ItemState::Stopped}},
        {"StoppedItemsAllReg", {kMachineRun, ItemState::Stopped}},
    };
    if (node < 0 || static_cast<size_t>(node) >= tree.Count() || tree.Node(node).Parent < 0)
        return std::nullopt;
    const std::string& container = tree.Node(tree.Node(node).Parent).Key;
    for (const Place& p : kPlaces) {
        if (container == p.container) {
            ItemPlace place = p.place;
            place.Wow32 = place.Location == kMachineRun && tree.Node(node).Data == kWow32Item;
            return place;
        }
    }
    return std::nullopt;
}

void CheckWithItems(TreeModel& tree, int node, bool checked) {
    std::function<void(int, int)> set = [&](int n, int depth) {
        tree.Node(n).Checked = checked && tree.Node(n).Tickable;
        if (depth < 3)
            for (int child : tree.Node(n).Children)
                set(child, depth + 1);
    };
    set(node, 0);
}

} // namespace tolvane
