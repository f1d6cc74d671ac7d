// Random moves, as a user would make them from the tree's popup and the toolbar, over items of
// all five locations (the machine's 32-bit Run key too) with awkward names and commands; the all
// users' active items are moved too, which the popup does not offer but the moves take. After every
// step each item is in exactly one place: active, or held by the program and recorded once; the
// items the step moved are where it asked, every other is where it was. Items share names across
// locations (and across the machine's two registry views) and commands across names, so a move that
// finds an item by anything but its location and its own name shows. After everything is put back,
// the Startup folders and the Run keys hold exactly what they held at the start.
//
// TOLVANE_RANDOM_STEPS sets the number of steps (the benchmark runs 10,000); the figures are
// printed at the end.
#include "startup_fixture.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <tuple>

#include "config/app_state.h"
#include "config/run_data.h"
#include "text/strings.h"

namespace tolvane {
namespace {

struct ShortcutItem {
    bool user;
    std::string name;
    std::string bytes;
};
constexpr RegistryRoot kRoots[] = {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine,
                                   RegistryRoot::LocalMachine32};

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
             {"Alpha.lnk", "Beta Tool.lnk", "Gamma (x86).LNK", "Delta {1}.lnk", "Same.lnk"})
            Shortcut(places.UserFolder, name);
        test::WriteFileBytes(UserStartup("Go.bat"), "@echo off\r\n");
        test::WriteFileBytes(UserStartup("Site.url"), "[InternetShortcut]\r\nURL=about:blank\r\n");
        for (const char* name : {"Common One.lnk", "Same.lnk"})
            Shortcut(places.CommonFolder, name);
        test::WriteFileBytes(places.CommonFolder + "\\Common.url", "[InternetShortcut]\r\n");
        const RegistryRoot user = RegistryRoot::CurrentUser, machine = RegistryRoot::LocalMachine;
        RunValue(user, "Quoted", "\"C:\\Program Files\\Q\\q.exe\"   /min");
        RunValue(user, "Eq", "C:\\eq=1\\eq.exe /opt=1 -x=2");
        RunValue(user, "Long", "C:\\" + test::LongText(400) + ".exe --arg");
        RunValue(user, "Spaces In Name", "C:\\s.exe  -a   -b");
        // Values that start the same program, once with the same command.
        RunValue(user, "A", "C:\\x.exe /a");
        RunValue(user, "B", "C:\\x.exe /b");
        RunValue(user, "Plain", "C:\\x.exe");
        RunValue(user, "R1", "rundll32 shell32.dll,Control_RunDLL");
        RunValue(user, "R2", "rundll32 shell32.dll,Control_RunDLL");
        ASSERT_TRUE(reg.SetValue(user, kRunKey, "Expand",
                                 WideValue(REG_EXPAND_SZ, "%SystemRoot%\\e.exe -e")));
        RunValue(machine, "MQuoted", "\"C:\\Program Files\\M\\m.exe\"");
        RunValue(machine, "MParam", "C:\\mp.exe -p");
        RunValue(machine, "MSame", "C:\\mp.exe -q");
        RunValue(machine, "A", "C:\\x.exe /a");
        // The 32-bit view: names of the other view, with commands of their own. (Twins of the
        // same name and command are told apart by nothing the file holds: see ReadSavedCopies.)
        const RegistryRoot machine32 = RegistryRoot::LocalMachine32;
        RunValue(machine32, "A", "C:\\x.exe /a /32");
        RunValue(machine32, "MSame", "C:\\mp.exe -q32");
        ASSERT_TRUE(reg.SetValue(machine32, kRunKey, "W32",
                                 WideValue(REG_EXPAND_SZ, "%ProgramFiles%\\w.exe")));
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
        for (RegistryRoot root : kRoots) {
            std::vector<std::string> values;
            (void)reg.EnumKey(root, kRunKey, values);
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

    // Every item of the start is in its place, or held by the program and recorded exactly
    // once in the model as its file has it; an active item is recorded nowhere. Each is in the
    // state wanted of it, in the order of the start's shortcuts, then its values (when a state
    // is wanted of each).
    void ExpectEachItemInOnePlace(const std::string& step, const std::vector<ItemState>& want) {
        test::CapturedMessages quiet;
        AppState reader(folder.Path(), quiet);
        reader.text.Languages = app.text.Languages;
        reader.Store().File().LoadItems();
        const ProgramModel& model = reader.model;
        const ProgramGroup* startup = model.StartupGroup();
        auto delayed = [&](std::string_view command, auto matches) {
            int n = 0;
            if (startup)
                for (const GroupProgram& p : startup->Programs)
                    n += !p.Path.empty() && p.Command == command && matches(p);
            return n;
        };
        auto stopped = [&](int code, auto matches) {
            int n = 0;
            for (size_t i = 0; i < model.StoppedPrograms.size(); ++i)
                n += StartsWith(model.StoppedPrograms[i], LocationPrefix(code)) &&
                     matches(static_cast<int>(i));
            return n;
        };
        auto expectState = [&](size_t i, bool active, int delayedRecords, const std::string& name) {
            if (want.empty())
                return;
            const char* names[] = {"active", "delayed", "stopped"};
            const std::string now = active ? "active" : delayedRecords ? "delayed" : "stopped";
            EXPECT_EQ(now, names[static_cast<int>(want[i])]) << step << ": " << name;
        };
        size_t i = 0;
        for (const ShortcutItem& item : start.shortcuts) {
            const std::string place =
                (item.user ? places.UserFolder : places.CommonFolder) + "\\" + item.name;
            const std::string held =
                (item.user ? app.folders.UserItemsFolder : app.folders.AllUsersItemsFolder) +
                item.name;
            const int code = item.user ? kUserStartup : kCommonStartup;
            const int delays = delayed(item.user ? kExecute : kExecuteAU,
                                       [&](const GroupProgram& p) { return p.Path == item.name; });
            const int records = delays + stopped(code, [&](int s) {
                                    return model.StoppedPrograms[static_cast<size_t>(s)].substr(
                                               kPrefixLength) == item.name;
                                });
            const bool active = test::PathExists(place);
            ASSERT_NE(active, test::PathExists(held)) << step << ": " << item.name;
            EXPECT_EQ(test::ReadFileBytes(active ? place : held), item.bytes) << step << item.name;
            EXPECT_EQ(records, active ? 0 : 1) << step << ": " << item.name << " recorded so often";
            expectState(i++, active, delays, item.name);
        }
        for (const ValueItem& item : start.values) {
            const bool machine = item.root != RegistryRoot::CurrentUser;
            const int location = machine ? kMachineRun : kUserRun;
            const std::string savedKey = SavedKeyOf(location);
            // A delayed or stopped value is the one whose saved copy has its name, in its view.
            const SavedCopies copies = ReadSavedCopies(location);
            const SavedCopyMatch match = MatchSavedCopies(model, location, copies.Copies);
            auto ours = [&](int copy) {
                return copy >= 0 && copies.Roots[static_cast<size_t>(copy)] == item.root &&
                       copies.Copies[static_cast<size_t>(copy)].Name == item.name;
            };
            int delays = 0;
            if (startup)
                for (size_t p = 0; p < startup->Programs.size(); ++p)
                    delays +=
                        startup->Programs[p].Command == (machine ? kExecuteRegAU : kExecuteReg) &&
                        ours(match.Delayed[p]);
            const int records = delays + stopped(location, [&](int s) {
                                    return ours(match.Stopped[static_cast<size_t>(s)]);
                                });
            auto active = reg.GetValue(item.root, kRunKey, item.name);
            auto saved = reg.GetValue(item.root, savedKey, item.name);
            ASSERT_NE(bool(active), bool(saved)) << step << ": the Run value " << item.name;
            EXPECT_TRUE(SameValue(active ? *active : *saved, item.value)) << step << item.name;
            EXPECT_EQ(records, active ? 0 : 1)
                << step << ": the Run value " << item.name << " recorded so often";
            expectState(i++, bool(active), delays, "the Run value " + item.name);
        }
    }

    // The item of the start that a leaf of the tree shows: a shortcut by its location and file
    // name, a value by its key (and view) and its name.
    size_t ItemOf(int leaf) {
        const StartupItem item = *ItemOfNode(tree, listing, leaf);
        const RegistryRoot root = RunRoot(item.Code(), item.Wow32());
        for (size_t i = 0; i < start.shortcuts.size(); ++i)
            if (!item.Registry() && start.shortcuts[i].name == item.Name &&
                start.shortcuts[i].user == (item.Location == ItemLocation::UserFolder))
                return i;
        for (size_t i = 0; i < start.values.size(); ++i)
            if (item.Registry() && start.values[i].name == item.Name &&
                start.values[i].root == root)
                return start.shortcuts.size() + i;
        ADD_FAILURE() << item.Text() << " is no item of the start";
        return 0;
    }

    // One move of a random item, or a pass over random checks; what it should leave where goes
    // into want. Alone, every move must be done; beside other processes a move may be refused
    // (another moved the item first).
    void RandomStep(std::mt19937& rng, int& passes, int& singles, std::vector<ItemState>& want,
                    bool alone = true) {
        auto pick = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng); };
        auto coin = [&] { return pick(2) == 1; };
        ItemMoves moves = Moves();
        if (pick(4) == 0) {
            ++passes;
            const size_t button = pick(4); // Save, Delay, Stop, Run
            // Every container whose items the toolbar moves: all users' delayed and stopped
            // ones too.
            for (const char* c :
                 {"CurrentUserStartup", "CurrentUserRegistry", "DelayedItemsStartupCurrentUser",
                  "DelayedItemsRegistryCurrentUser", "DelayedItemsStartupAllUsers",
                  "DelayedItemsRegistryAllUsers", "StoppedItemsCurrentStartup",
                  "StoppedItemsCurrentReg", "StoppedItemsAllStartup", "StoppedItemsAllReg"})
                for (int leaf : Leaves(c))
                    if ((tree.Node(leaf).Checked = coin())) {
                        // Save delays the active items and puts the others back; Delay, Stop
                        // and Run take every checked item where they say (Run an active one
                        // nowhere).
                        const bool active = PlaceOf(tree, leaf)->State == ItemState::Active;
                        want[ItemOf(leaf)] = std::array{
                            active ? ItemState::Delayed : ItemState::Active, ItemState::Delayed,
                            ItemState::Stopped, ItemState::Active}[button];
                    }
            const CheckedMove move = std::array{CheckedMove::Save, CheckedMove::Delay,
                                                CheckedMove::Stop, CheckedMove::Run}[button];
            EXPECT_TRUE(Pass(move, std::move(moves)) || !alone);
            return;
        }
        std::vector<int> items;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (PlaceOf(tree, static_cast<int>(i)))
                items.push_back(static_cast<int>(i));
        if (items.empty())
            return;
        ++singles;
        const int leaf = items[pick(items.size())];
        const StartupItem item = *ItemOfNode(tree, listing, leaf);
        ItemState& wanted = want[ItemOf(leaf)];
        // Also asked to go where it is: it stays, once.
        const ItemState to = item.State != ItemState::Active && coin() ? ItemState::Active
                             : coin()                                  ? ItemState::Stopped
                                                                       : ItemState::Delayed;
        EXPECT_TRUE(moves.Move(item, to) || !alone) << item.Text();
        wanted = to;
    }

    // Everything back in one round, as a user would do it from the popup; then the Startup
    // folders and the Run keys hold byte for byte what they held at the start.
    void PutEverythingBack() {
        Refresh();
        for (const StartupItem& item : listing.Items) {
            if (item.State != ItemState::Active) {
                EXPECT_TRUE(Moves().Move(item, ItemState::Active)) << item.Text();
            }
        }
        const size_t items = start.shortcuts.size() + start.values.size();
        ExpectEachItemInOnePlace("putting back", std::vector(items, ItemState::Active));
        Refresh();
        EXPECT_EQ(Caption("DelayedItemsRoot"), "Delayed Items (0)");
        EXPECT_EQ(Caption("StoppedItemsRoot"), "Stopped Items (0)");

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
        for (RegistryRoot root : kRoots) {
            std::vector<std::string> saved;
            (void)reg.EnumKey(
                root, root == RegistryRoot::CurrentUser ? kSavedUserRunKey : kSavedMachineRunKey,
                saved);
            EXPECT_EQ(saved, std::vector<std::string>{""});
        }
    }

    State start;
};

int StepsWanted() {
    const char* steps = std::getenv("TOLVANE_RANDOM_STEPS");
    return steps && std::atoi(steps) > 0 ? std::atoi(steps) : 600;
}

TEST_F(RandomMoves, EachItemStaysInOnePlaceAndEverythingComesBackExactly) {
    using Clock = std::chrono::steady_clock;
    const int steps = StepsWanted();
    const int window = std::min(1000, std::max(1, steps / 4));
    std::mt19937 rng(4242);
    int passes = 0, singles = 0;
    std::vector<ItemState> want(start.shortcuts.size() + start.values.size(), ItemState::Active);
    const auto begun = Clock::now();
    Clock::time_point firstEnd{}, lastStart{};
    for (int step = 0; step < steps; ++step) {
        if (step == window)
            firstEnd = Clock::now();
        if (step == steps - window)
            lastStart = Clock::now();
        Refresh();
        RandomStep(rng, passes, singles, want);
        ExpectEachItemInOnePlace("step " + std::to_string(step), want);
        if (HasFailure())
            return;
    }
    const auto ended = Clock::now();
    EXPECT_GT(passes, steps / 6);
    EXPECT_GT(singles, steps / 2);
    // Every refusal here would be a fault: no move of this test runs into a conflict.
    EXPECT_TRUE(messages.shown.empty()) << messages.shown.front().Text;

    PutEverythingBack();

    auto ms = [](auto d) { return std::chrono::duration<double, std::milli>(d).count(); };
    const double first = ms(firstEnd - begun) / window, last = ms(ended - lastStart) / window;
    std::printf("random moves: %d steps (%d passes, %d single moves) in %.1f s, each checked\n"
                "  per step: first %d steps %.1f ms (baseline), last %d steps %.1f ms, "
                "ratio %.2f\n",
                steps, passes, singles, ms(ended - begun) / 1000, window, first, window, last,
                last / first);
}

// The window and two copies of tolvanec run from scripts move the same items at once, 200 moves
// in all: each change is made on the file as it is then, so nothing is lost. Every item stays
// in exactly one place, recorded once, its saved copy the value's own bytes in its own view; a
// move that comes too late for its item is refused, never half made.
TEST_F(RandomMoves, MovesFromTheWindowAndTwoConsolesAtOnceLoseNothing) {
    const std::string built = test::BuiltProgramFolder();
    ASSERT_TRUE(
        CopyFileA((built + "\\tolvanec.exe").c_str(), (folder / "tolvanec.exe").c_str(), FALSE));
    test::CopyTree(built + "\\lang", folder / "lang");
    // What a console may name: each item by its own name and location.
    std::vector<std::string> targets;
    for (const ShortcutItem& item : start.shortcuts)
        targets.push_back("\"" + item.name + "\" --location " +
                          (item.user ? "user-folder" : "common-folder"));
    for (const ValueItem& item : start.values)
        targets.push_back("\"" + item.name + "\" --location " +
                          (item.root == RegistryRoot::CurrentUser    ? "user-run"
                           : item.root == RegistryRoot::LocalMachine ? "machine-run"
                                                                     : "machine-run-32"));
    constexpr int kConsoleMoves = 60, kWindowMoves = 80;
    auto console = [&](unsigned seed, int& done) {
        std::mt19937 rng(seed);
        const char* verbs[] = {"delay", "stop", "restore"};
        for (int i = 0; i < kConsoleMoves; ++i) {
            const std::string line = "\"" + folder / "tolvanec.exe" + "\" " + verbs[rng() % 3] +
                                     " " + targets[rng() % targets.size()];
            test::ChildProcess move(line);
            unsigned long code = 99;
            if (move.WaitForExit(60000, &code) && code <= 2)
                ++done;
        }
    };
    int doneA = 0, doneB = 0;
    std::thread a(console, 7u, std::ref(doneA)), b(console, 8u, std::ref(doneB));
    std::mt19937 rng(99);
    int passes = 0, singles = 0;
    std::vector<ItemState> ignored(start.shortcuts.size() + start.values.size());
    for (int step = 0; step < kWindowMoves; ++step) {
        Refresh();
        RandomStep(rng, passes, singles, ignored, false);
    }
    a.join();
    b.join();
    // Each console move ended with an answer: done, no such item, or refused.
    EXPECT_EQ(doneA + doneB, 2 * kConsoleMoves);
    ExpectEachItemInOnePlace("after the moves at once", {});
    if (HasFailure())
        std::printf("log.txt:\n%s\n", test::ReadFileBytes(folder / "log.txt").c_str());
    PutEverythingBack();
}

} // namespace
} // namespace tolvane
