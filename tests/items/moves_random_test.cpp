// Thousands of random moves, as a user would make them from the tree's popup and the toolbar,
// over items of all four locations with awkward names and commands. After every step no item
// may be lost; after everything is put back, the Startup folders and the Run keys hold exactly
// what they held at the start.
#include "startup_fixture.h"

#include <random>
#include <tuple>

#include "items/move_steps.h"
#include "items/run_data.h"
#include "text/strings.h"

namespace tolvane {
namespace {

struct ShortcutItem {
    bool user;
    std::string name;
    std::string bytes;
};
struct ValueItem {
    RegistryRoot root;
    std::string name;
    RegistryValue value;
};

class RandomMoves : public test::StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        test::WriteFileBytes(folder / "log.txt", ""); // failures are logged, for the report
        for (const char* name :
             {"Alpha.lnk", "Beta Tool.lnk", "Gamma (x86).lnk", "Delta {1}.lnk", "Same.lnk"})
            Shortcut(places.UserFolder, name);
        for (const char* name : {"Common One.lnk", "Same.lnk"})
            Shortcut(places.CommonFolder, name);
        const RegistryRoot user = RegistryRoot::CurrentUser, machine = RegistryRoot::LocalMachine;
        RunValue(user, "Quoted", "\"C:\\Program Files\\Q\\q.exe\" /min");
        RunValue(user, "Eq", "C:\\eq.exe /opt=1 -x=2");
        RunValue(user, "Plain", "C:\\plain.exe");
        RunValue(user, "Long", "C:\\" + test::LongText(400) + ".exe --arg");
        RunValue(user, "Spaces In Name", "C:\\s.exe  -a   -b");
        RunValue(user, "NoExe", "rundll32 shell32.dll,Control_RunDLL");
        RunValue(user, "Dup", "C:\\dup.exe");
        ASSERT_TRUE(reg.SetValue(user, kRunKey, "Expand",
                                 WideValue(REG_EXPAND_SZ, "%SystemRoot%\\e.exe -e")));
        RunValue(machine, "MQuoted", "\"C:\\Program Files\\M\\m.exe\"");
        RunValue(machine, "MParam", "C:\\mp.exe -p");
        RunValue(machine, "Dup", "C:\\dup.exe");
        start = Snapshot();
    }

    struct State {
        std::vector<ShortcutItem> shortcuts;
        std::vector<ValueItem> values;
    };
    State Snapshot() {
        State s;
        for (bool user : {true, false}) {
            const std::string& dir = user ? places.UserFolder : places.CommonFolder;
            for (const std::string& path : test::FilesBelow(dir))
                s.shortcuts.push_back(
                    {user, path.substr(dir.size() + 1), test::ReadFileBytes(path)});
        }
        for (RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
            std::vector<std::string> values;
            reg.EnumKey(root, kRunKey, values);
            for (const std::string& v : values)
                if (!v.empty()) {
                    const std::string name = SplitNameData(v).Name;
                    s.values.push_back({root, name, *reg.GetValue(root, kRunKey, name)});
                }
        }
        std::sort(s.values.begin(), s.values.end(), [](auto& a, auto& b) {
            return std::tie(a.root, a.name) < std::tie(b.root, b.name);
        });
        return s;
    }

    // Every item of the start is still in its place, or held by the program and recorded in
    // the model as its file has it.
    void ExpectNothingLost(const std::string& step) {
        test::CapturedMessages quiet;
        AppState reader(folder.Path(), quiet);
        reader.text.Languages = app.text.Languages;
        CDelayLoad(reader).LoadItems();
        const ProgramModel& fromFile = reader.model;
        const ProgramGroup* startup = fromFile.StartupGroup();
        auto delayed = [&](std::string_view command, auto matches) {
            if (startup)
                for (const GroupProgram& p : startup->Programs)
                    if (!p.Path.empty() && p.Command == command && matches(p))
                        return true;
            return false;
        };
        auto stopped = [&](int code, std::string_view name) {
            return fromFile.FindStoppedProgram(name, code) >= 0;
        };
        for (const ShortcutItem& item : start.shortcuts) {
            const std::string folderPath = item.user ? places.UserFolder : places.CommonFolder;
            const std::string held =
                (item.user ? app.folders.UserItemsFolder : app.folders.AllUsersItemsFolder) +
                item.name;
            if (test::PathExists(folderPath + "\\" + item.name)) {
                EXPECT_EQ(test::ReadFileBytes(folderPath + "\\" + item.name), item.bytes)
                    << step << item.name;
                continue;
            }
            ASSERT_TRUE(test::PathExists(held)) << step << ": " << item.name << " is gone";
            EXPECT_EQ(test::ReadFileBytes(held), item.bytes) << step << item.name;
            const bool recorded =
                delayed(item.user ? kExecute : kExecuteAU,
                        [&](const GroupProgram& p) { return p.Path == item.name; }) ||
                stopped(item.user ? kUserStartup : kCommonStartup, item.name);
            EXPECT_TRUE(recorded) << step << ": " << item.name << " is held but recorded nowhere";
        }
        for (const ValueItem& item : start.values) {
            const bool machine = item.root == RegistryRoot::LocalMachine;
            if (auto active = reg.GetValue(item.root, kRunKey, item.name)) {
                EXPECT_TRUE(SameValue(*active, item.value)) << step << item.name;
                continue;
            }
            auto saved = reg.GetValue(item.root, machine ? kSavedMachineRunKey : kSavedUserRunKey,
                                      item.name);
            ASSERT_TRUE(saved) << step << ": the Run value " << item.name << " is gone";
            EXPECT_TRUE(SameValue(*saved, item.value)) << step << item.name;
            bool recorded =
                delayed(machine ? kExecuteRegAU : kExecuteReg,
                        [&](const GroupProgram& p) { return p.RegistryKeyName == item.name; });
            if (!recorded) {
                std::vector<std::string> copies;
                reg.EnumKey(item.root, machine ? kSavedMachineRunKey : kSavedUserRunKey, copies);
                for (const std::string& entry : fromFile.StoppedPrograms)
                    if (std::string_view(entry).substr(0, kPrefixLength) ==
                        LocationPrefix(machine ? kMachineRun : kUserRun)) {
                        const int i = FindSavedRunValue(copies, entry.substr(kPrefixLength));
                        recorded |= i >= 0 &&
                                    SplitNameData(copies[static_cast<size_t>(i)]).Name == item.name;
                    }
            }
            EXPECT_TRUE(recorded) << step << ": the Run value " << item.name
                                  << " is saved but recorded nowhere";
        }
    }

    State start;
};

TEST_F(RandomMoves, NoItemIsEverLostAndEverythingComesBackExactly) {
    std::mt19937 rng(4242);
    auto pick = [&](size_t n) {
        return static_cast<size_t>(std::uniform_int_distribution<size_t>(0, n - 1)(rng));
    };
    auto coin = [&] { return pick(2) == 1; };
    // The containers with items; the user can check those of the current user.
    std::vector<std::string> containers, checkable;
    for (bool delayed : {false, true})
        for (std::string who : {"CurrentUser", "AllUsers"})
            for (std::string kind : {"Startup", "Registry"})
                containers.push_back(delayed ? "DelayedItems" + kind + who : who + kind);
    containers.insert(containers.end(), {"StoppedItemsCurrentStartup", "StoppedItemsCurrentReg"});
    std::copy_if(containers.begin(), containers.end(), std::back_inserter(checkable),
                 [](const std::string& c) { return !Contains(c, "AllUsers"); });
    int passes = 0, singles = 0;
    for (int step = 0; step < 3000; ++step) {
        Refresh();
        ItemMoves moves = Moves();
        if (pick(4) == 0) {
            ++passes;
            for (const std::string& c : checkable)
                for (int leaf : Leaves(c))
                    tree.Node(leaf).Checked = coin();
            const size_t button = pick(4); // Save, Delay, Stop, Run
            if (button < 3) {
                moves.DelayCheckedRegistryItems(button == 2, button != 0);
                moves.DelayCheckedStartupItems(button == 2, button == 1);
            }
            if (button == 0 || button == 3) {
                moves.RestoreCheckedRegistryItems();
                moves.RestoreCheckedStartupItems();
            }
        } else {
            std::vector<std::string> filled;
            for (const std::string& c : containers)
                if (!Leaves(c).empty())
                    filled.push_back(c);
            if (filled.empty())
                continue;
            const std::string container = filled[pick(filled.size())];
            const auto leaves = Leaves(container);
            ++singles;
            const int leaf = leaves[pick(leaves.size())];
            tree.Select(leaf);
            const std::string text = tree.Node(leaf).Text;
            const bool all = Contains(tree.FullPath(leaf), "All Users");
            const bool registry = Contains(container, "Reg");
            const bool isDelayed = StartsWith(container, "Delayed");
            const bool isStopped = StartsWith(container, "Stopped");
            const int code =
                registry ? (all ? kMachineRun : kUserRun) : (all ? kCommonStartup : kUserStartup);
            auto restore = [&](bool fromStopped) {
                if (registry)
                    moves.RestoreRegistryItem(text, code, fromStopped);
                else
                    moves.RestoreStartupItem(text, code, fromStopped);
            };
            if (isDelayed && coin())
                restore(false);
            else if (isStopped && coin())
                restore(true);
            else if (registry)
                moves.DelayRegistryItem(text, code, isDelayed || coin());
            else
                moves.DelayStartupItem(text, code, isDelayed || coin());
        }
        ExpectNothingLost("step " + std::to_string(step));
        if (HasFatalFailure() || HasFailure())
            return;
    }
    EXPECT_GT(passes, 500);
    EXPECT_GT(singles, 2000);

    // Everything back, as a user would do it, until nothing is left delayed or stopped.
    for (int round = 0; round < 20; ++round) {
        Refresh();
        ItemMoves moves = Moves();
        for (const char* c : {"DelayedItemsStartupCurrentUser", "DelayedItemsStartupAllUsers"})
            for (int leaf : Leaves(c))
                moves.RestoreStartupItem(tree.Node(leaf).Text,
                                         Contains(c, "AllUsers") ? kCommonStartup : kUserStartup,
                                         false);
        for (const char* c : {"DelayedItemsRegistryCurrentUser", "DelayedItemsRegistryAllUsers"})
            for (int leaf : Leaves(c))
                moves.RestoreRegistryItem(tree.Node(leaf).Text,
                                          Contains(c, "AllUsers") ? kMachineRun : kUserRun, false);
        for (int leaf : Leaves("StoppedItemsCurrentStartup"))
            moves.RestoreStartupItem(tree.Node(leaf).Text, kUserStartup, true);
        for (int leaf : Leaves("StoppedItemsCurrentReg")) {
            tree.Select(leaf);
            moves.RestoreRegistryItem(tree.Node(leaf).Text, kUserRun, true);
        }
        // The all-users stopped items have no leaves: their entries are all there is.
        tree.Select(tree.Find("StoppedItemsAllReg"));
        for (const std::string& entry : std::vector<std::string>(app.model.StoppedPrograms)) {
            const std::string name =
                entry.size() > kPrefixLength ? entry.substr(kPrefixLength) : "";
            if (StartsWith(entry, LocationPrefix(kCommonStartup)))
                moves.RestoreStartupItem(name, kCommonStartup, true);
            else if (StartsWith(entry, LocationPrefix(kMachineRun)))
                moves.RestoreRegistryItem(name, kMachineRun, true);
        }
        ExpectNothingLost("putting back, round " + std::to_string(round));
    }
    Refresh();
    EXPECT_EQ(Caption("DelayedItemsRoot"), "Delayed Items (0)");
    EXPECT_EQ(Caption("StoppedItemsRoot"), "Stopped Items (0)");

    // Byte for byte what the Startup folders and the Run keys held at the start.
    const State end = Snapshot();
    ASSERT_EQ(end.shortcuts.size(), start.shortcuts.size());
    for (size_t i = 0; i < end.shortcuts.size(); ++i) {
        const ShortcutItem &a = start.shortcuts[i], &b = end.shortcuts[i];
        EXPECT_EQ(std::tie(b.user, b.name, b.bytes), std::tie(a.user, a.name, a.bytes));
    }
    ASSERT_EQ(end.values.size(), start.values.size());
    for (size_t i = 0; i < end.values.size(); ++i) {
        const ValueItem &a = start.values[i], &b = end.values[i];
        EXPECT_EQ(std::tie(b.root, b.name, b.value.Type, b.value.Data),
                  std::tie(a.root, a.name, a.value.Type, a.value.Data));
    }
    std::vector<std::string> saved;
    reg.EnumKey(RegistryRoot::CurrentUser, kSavedUserRunKey, saved);
    EXPECT_EQ(saved, std::vector<std::string>{""});
}

} // namespace
} // namespace tolvane
