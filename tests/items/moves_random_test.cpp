// Random moves, as a user makes them from the popup and the toolbar, over items of all five
// locations with awkward names and commands, checked against a model of where each should be.
// Items share names across locations (and across the machine's two registry views) and commands
// across names, so a move that finds an item by anything but its location and its own name
// shows. After everything is put back, the Startup folders and the Run keys hold exactly what
// they held at the start.
//
// TOLVANE_RANDOM_STEPS sets the number of steps (the benchmark runs 10,000).
#include "startup_fixture.h"

#include <array>
#include <cstdlib>
#include <random>

namespace tolvane {
namespace {

class RandomMoves : public test::StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        for (const char* name : {"Alpha.lnk", "Gamma (x86).LNK", "Delta {1}.lnk", "Same.lnk"})
            Shortcut(places.UserFolder, name);
        test::WriteFileBytes(UserStartup("Go.bat"), "@echo off\r\n");
        Shortcut(places.CommonFolder, "Same.lnk");
        const RegistryRoot user = RegistryRoot::CurrentUser, machine = RegistryRoot::LocalMachine,
                           machine32 = RegistryRoot::LocalMachine32;
        RunValue(user, "Long", "C:\\" + test::LongText(400) + ".exe --arg");
        // Values that start the same program, twice with the same command.
        RunValue(user, "A", "C:\\x.exe /a");
        RunValue(user, "R1", "rundll32 shell32.dll,Control_RunDLL");
        RunValue(user, "R2", "rundll32 shell32.dll,Control_RunDLL");
        ASSERT_TRUE(reg.SetValue(user, kRunKey, "Expand",
                                 test::WideValue(REG_EXPAND_SZ, "%SystemRoot%\\e.exe -e")));
        RunValue(machine, "MSame", "C:\\mp.exe -q");
        RunValue(machine, "A", "C:\\x.exe /a");
        // The 32-bit view: names of the other view, with commands of their own.
        RunValue(machine32, "A", "C:\\x.exe /a /32");
        RunValue(machine32, "MSame", "C:\\mp.exe -q32");
        start = Inventory(false);
    }

    // The item of the start that a listed item is: by its location and its own name.
    size_t ItemOf(const StartupItem& listed) {
        for (size_t i = 0; i < start.size(); ++i)
            if (start[i].location == listed.Location && start[i].name == listed.Name)
                return i;
        ADD_FAILURE() << listed.Text() << " is no item of the start";
        return 0;
    }

    // Each item of the start is, with its bytes, where Windows starts it when it is wanted
    // active and in the program's keeping otherwise, and nothing else is; the program-group
    // file, read back as the next start reads it, lists it exactly once, in the state wanted.
    void ExpectEachItemInOnePlace(const std::string& step, const std::vector<ItemState>& want) {
        SCOPED_TRACE(step);
        std::vector<Item> live, held;
        std::vector<std::string> listed(start.size()), wanted;
        for (size_t i = 0; i < start.size(); ++i) {
            (want[i] == ItemState::Active ? live : held).push_back(start[i]);
            wanted.push_back(std::string(1, "ADS"[static_cast<int>(want[i])]));
        }
        EXPECT_EQ(Inventory(false), live);
        EXPECT_EQ(Inventory(true), held);
        for (const StartupItem& item : ReadBack())
            listed[ItemOf(item)] += "ADS"[static_cast<int>(item.State)];
        EXPECT_EQ(listed, wanted);
    }

    // One move of a random item, or a toolbar pass over random ticks, each of which must be done;
    // what it should leave where goes into want.
    void RandomStep(std::mt19937& rng, std::vector<ItemState>& want) {
        auto pick = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng); };
        auto coin = [&] { return pick(2) == 1; };
        std::vector<int> leaves;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (PlaceOf(tree, static_cast<int>(i)))
                leaves.push_back(static_cast<int>(i));
        if (pick(4) == 0) {
            const size_t button = pick(4); // Save, Delay, Stop, Run
            for (int leaf : leaves) {
                const ItemPlace at = *PlaceOf(tree, leaf);
                // The toolbar takes no all users' active item.
                const bool common = at.Location == kCommonStartup || at.Location == kMachineRun;
                const bool active = at.State == ItemState::Active;
                if ((tree.Node(leaf).Checked = !(common && active) && coin()))
                    // Save delays the active items and puts the others back.
                    want[ItemOf(*ItemOfNode(tree, listing, leaf))] = std::array{
                        active ? ItemState::Delayed : ItemState::Active, ItemState::Delayed,
                        ItemState::Stopped, ItemState::Active}[button];
            }
            EXPECT_TRUE(Pass(std::array{CheckedMove::Save, CheckedMove::Delay, CheckedMove::Stop,
                                        CheckedMove::Run}[button]));
            return;
        }
        // The popup moves any item, also where it is: it stays, once.
        const StartupItem item = *ItemOfNode(tree, listing, leaves[pick(leaves.size())]);
        const ItemState to = static_cast<ItemState>(pick(3));
        EXPECT_TRUE(Moves().Move(item, to)) << item.Text();
        want[ItemOf(item)] = to;
    }

    std::vector<Item> start;
};

TEST_F(RandomMoves, EachItemStaysInOnePlaceAndEverythingComesBackExactly) {
    const char* wanted = std::getenv("TOLVANE_RANDOM_STEPS");
    const int steps = wanted && std::atoi(wanted) > 0 ? std::atoi(wanted) : 600;
    std::mt19937 rng(4242);
    std::vector<ItemState> want(start.size(), ItemState::Active);
    for (int step = 0; step < steps && !HasFailure(); ++step) {
        Refresh();
        RandomStep(rng, want);
        ExpectEachItemInOnePlace("step " + std::to_string(step), want);
    }
    // Every refusal here would be a fault: no move of this test runs into a conflict.
    EXPECT_TRUE(messages.shown.empty()) << messages.shown.front().Text;

    // Everything back from the popup; then the Startup folders and the Run keys hold, byte for
    // byte, what they held at the start, and the program keeps nothing.
    Refresh();
    for (const StartupItem& item : listing.Items)
        EXPECT_TRUE(item.State == ItemState::Active || Moves().Move(item, ItemState::Active))
            << item.Text();
    ExpectEachItemInOnePlace("putting back", std::vector(start.size(), ItemState::Active));
    EXPECT_EQ(Inventory(false), start);
    EXPECT_EQ(Inventory(true), std::vector<Item>{});
}

} // namespace
} // namespace tolvane
