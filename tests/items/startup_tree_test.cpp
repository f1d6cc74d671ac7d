#include <gtest/gtest.h>

#include <cmath>

#include "items/checked_items.h"
#include "items/startup_tree.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

const ListedValue kOwn = {"Tolvane", "\"C:\\T\\Tolvane.exe\" -nogui"};

// A machine without files: each command is read by its quotes and its first word.
struct NoFiles : CommandLineSystem {
    bool FileExists(const std::string&) const override { return false; }
    std::string Expand(const std::string& text) const override { return text; }
};

// Items of every location, delayed and stopped, as a refresh at 12:34 builds them.
class StartupTree : public ::testing::Test {
protected:
    void SetUp() override {
        Fill();
        Build();
    }
    void Fill() {
        listing.UserStartupFiles = {"Tool.lnk", "Notes.lnk"};
        // The program's own value twice, its name in any letter case: the first copy is hidden,
        // the second is an item.
        listing.UserRunValues = {{"TOLVANE", kOwn.Data}, {"A", "C:\\a.exe /x"}, kOwn};
        listing.CommonStartupFiles = {"Word.lnk"};
        // Under the machine's key every copy is hidden, though only one is counted out.
        listing.MachineRunValues = {kOwn, {"M", "C:\\m.exe"}, kOwn};
        model.ProgramGroups = {{"Startup",
                                {{"", "", "Execute"}, // a free slot: counted, not shown
                                 {"Delayed.lnk", "", "Execute"},
                                 {"C:\\T\\tool.exe", "", "ExecuteReg", 0, "Tool"},
                                 {"All.lnk", "", "ExecuteAU"},
                                 {"C:\\x.exe ", "-m", "ExecuteRegAU", 0, "X"},
                                 {"C:\\other.exe", "", "Close"}}}}; // no container of its own
        model.StartupGroupIndex = 0;
        model.StoppedPrograms = {"_STPCU_Old.lnk",    "_REGCU_C:\\s.exe", "",
                                 "_STPAU_Common.lnk", "_REGAU_C:\\h.exe", "_REGAU_C:\\i.exe"};
    }
    void Build(long long timer = 1234) {
        BuildStartupTree(tree, listing, model, OwnRunEntry(folders),
                         {[=] { return timer; },
                          [this](double v) { progress.push_back(v); },
                          {},
                          &folders,
                          &noFiles,
                          test::AsciiNameOrder});
    }
    TreeNode& N(const std::string& key) { return tree.Node(tree.Find(key)); }

    StartupListing listing;
    ProgramModel model;
    std::vector<double> progress;
    TreeModel tree;
    const AppFolders folders{"C:\\T",      kOwn.Data,        "C:\\Start",
                             "C:\\Common", "C:\\T\\Items\\", "C:\\T\\All\\"};
    const NoFiles noFiles;
};

TEST_F(StartupTree, ContainersCountAndShowEveryItemOfEachLocation) {
    // The program's own value shows once, as the second item of the user's Run key.
    EXPECT_EQ(test::Outline(tree),
              "Current User (4)[Startup Folder (2)[Tool.lnk, Notes.lnk], Registry Run (2)["
              "A=C:\\a.exe /x, Tolvane=\"C:\\T\\Tolvane.exe\" -nogui]], "
              "All Users (3)[Startup Folder (1)[Word.lnk], Registry Run (2)[M=C:\\m.exe]], "
              "Delayed Items (5)[Current User (3)[Startup Folder (2)[Delayed.lnk], "
              "Registry Run (1)[Tool=C:\\T\\tool.exe]], "
              "All Users (2)[Startup Folder (1)[All.lnk], Registry Run (1)[X=C:\\x.exe -m]]], "
              "Stopped Items (5)[Current User (2)[Startup Folder (1)[Old.lnk], "
              "Registry (1)[C:\\s.exe]], All Users (3)[Startup Folder (1)[Common.lnk], "
              "Registry (2)[C:\\h.exe, C:\\i.exe]]]");
    // The listing no longer holds the first copy of the program's own value (the machine's
    // none at all).
    ASSERT_EQ(listing.UserRunValues.size(), 2u);
    EXPECT_EQ(listing.UserRunValues[0].Name, "A");
    ASSERT_EQ(listing.MachineRunValues.size(), 1u);
    // Each leaf shows an item of the listing: what it starts, where it is now (a shortcut's
    // file in its Startup folder or the items folder, a value's program and arguments as its
    // command, a delayed one's record, reads), its state, the location code that its
    // container's key (never a caption) gives, and whether it offers moves (all but the active
    // all-users items do). A container shows none.
    auto leaf = [&](const char* key) -> std::string {
        const StartupItem* item = ItemOfNode(tree, listing, tree.Find(key));
        const std::optional<ItemPlace> place = PlaceOf(tree, tree.Find(key));
        if (!item || !place)
            return item || place ? "half an item" : "none";
        return item->File + "|" + item->Arguments + " " + "ADS"[int(item->State)] +
               "ADS"[int(place->State)] + std::to_string(place->Location) +
               (item->ForAllUsers() ? " all" : "") + (N(key).Tag == kPopupTag ? " moves" : "");
    };
    const std::pair<const char*, const char*> leaves[] = {
        {"#12340#Tool.lnk", "C:\\Start\\Tool.lnk| AA3 moves"},
        {"#12340#Word.lnk", "C:\\Common\\Word.lnk| AA2 all"},
        {"#12341#DELAYEDDelayed.lnk", "C:\\T\\Items\\Delayed.lnk| DD3 moves"},
        {"#12343#DELAYEDAll.lnk", "C:\\T\\All\\All.lnk| DD2 all moves"},
        {"#12340#STOPPED_STPCU_Old.lnk", "C:\\T\\Items\\Old.lnk| SS3 moves"},
        {"#12343#STOPPED_STPAU_Common.lnk", "C:\\T\\All\\Common.lnk| SS2 all moves"},
        {"#12340#A=C:\\a.exe /x", "C:\\a.exe|/x AA1 moves"},
        {"#12340#M=C:\\m.exe", "C:\\m.exe| AA0 all"},
        {"#12344#DELAYEDC:\\x.exe ", "C:\\x.exe|-m DD0 all moves"},
        {"#12345#STOPPED_REGAU_C:\\i.exe", "C:\\i.exe| SS0 all moves"},
        {"DelayedItemsRoot", "none"},
        {"StoppedItemsAllReg", "none"},
        {"CurrentUserRoot", "none"},
    };
    for (auto [key, shows] : leaves)
        EXPECT_EQ(leaf(key), shows) << key;
    const StartupItem* x = ItemOfNode(tree, listing, tree.Find("#12344#DELAYEDC:\\x.exe "));
    ASSERT_TRUE(x);
    EXPECT_EQ(x->Name + "|" + x->Command + "|" + std::to_string(x->Record), "X|C:\\x.exe -m|4");
    EXPECT_EQ(x->Location, ItemLocation::MachineRun);
    EXPECT_EQ(N("#12340#Tool.lnk").Image, "");
    EXPECT_EQ(N("StoppedItemsRoot").Image, "Stopped");
    EXPECT_EQ(N("DIR_AllUsers").Image, "Group");

    for (double& v : progress)
        v = std::round(v * 100) / 100;
    EXPECT_EQ(progress, (std::vector<double>{0, 33.33, 66.67, 75, 95, 100, 0}));
}

TEST_F(StartupTree, EmptyLocationsAndTheSameItemInTwoPlaces) {
    // Only the program's own value, hidden.
    listing = {.UserStartupFiles = {"Same.lnk"},
               .CommonStartupFiles = {"Same.lnk"},
               .UserRunValues = {kOwn}};
    model = {}; // no group: nothing delayed
    Build();
    // One name at one index in both folders within one second: both are shown.
    EXPECT_EQ(test::Outline(tree),
              "Current User (1)[Startup Folder (1)[Same.lnk], Registry Run (0)], "
              "All Users (1)[Startup Folder (1)[Same.lnk], Registry Run (0)], "
              "Delayed Items (0)[Current User (0)[Startup Folder (0), Registry Run (0)], "
              "All Users (0)[Startup Folder (0), Registry Run (0)]], "
              "Stopped Items (0)[Current User (0)[Startup Folder (0), Registry (0)], "
              "All Users (0)[Startup Folder (0), Registry (0)]]");
}

TEST(TaskManagerFlag, TheFirstBytesLowestBitSwitchesAnItemOff) {
    auto flag = [](uint8_t first) {
        return std::vector<uint8_t>{first, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    };
    // Short values still carry the switch in their first byte; nothing, or another type, is
    // no switch at all.
    const std::tuple<unsigned, std::vector<uint8_t>, bool> cases[] = {
        {kBinaryType, flag(0x02), false}, {kBinaryType, flag(0x03), true},
        {kBinaryType, flag(0x06), false}, {kBinaryType, flag(0x07), true},
        {kBinaryType, {0x03}, true},      {kBinaryType, {0x02, 0x00}, false},
        {kBinaryType, {}, false},         {4, flag(0x03), false}};
    for (const auto& [type, bytes, off] : cases)
        EXPECT_EQ(SwitchedOff(type, bytes), off)
            << type << " " << int(bytes.empty() ? 0 : bytes[0]);
    // Switched on: 02 and the new time; what else the value holds stays.
    EXPECT_EQ(
        SwitchedOnFlag({0x07, 0x11, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0xAA}, 0x0102030405060708ull),
        (std::vector<uint8_t>{0x02, 0x11, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 0xAA}));
    EXPECT_EQ(SwitchedOnFlag({0x03}, 0x10),
              (std::vector<uint8_t>{2, 0, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0}));
    // A key's switched-off names, found whatever their letter case; a missing name is on.
    const SwitchedOffNames names({{"Tool", {kBinaryType, flag(0x03)}},
                                  {"Notes.lnk", {kBinaryType, flag(0x06)}},
                                  {"Short", {kBinaryType, {0x07}}}},
                                 test::AsciiNameOrder);
    EXPECT_TRUE(names.Contains("TOOL"));
    EXPECT_TRUE(names.Contains("short"));
    EXPECT_FALSE(names.Contains("Notes.lnk"));
    EXPECT_FALSE(names.Contains("Missing"));
}

TEST_F(StartupTree, ThirtyTwoBitValuesJoinTheMachinesAndSwitchedOffItemsAreGhosted) {
    Fill();
    listing.MachineRun32Values = {{"M", "C:\\m32.exe"}, {"W", "C:\\w.exe"}};
    // Task Manager's switches, each of its own key: the 64-bit key's "W" is not the 32-bit
    // value's.
    const RegistryValue off{kBinaryType, {0x03}};
    listing.OffUserFolder = SwitchedOffNames({{"NOTES.LNK", off}}, test::AsciiNameOrder);
    listing.OffMachineRun32 = SwitchedOffNames({{"m", off}}, test::AsciiNameOrder);
    listing.OffMachineRun = SwitchedOffNames({{"W", off}}, test::AsciiNameOrder);
    // Copies of the machine's own view, then of the 32-bit one.
    listing.SavedMachineCopies = {
        {"Y", "C:\\y.exe"}, {"X", "\"C:\\x.exe\" -m"}, {"I", "C:\\i.exe"}};
    listing.SavedMachineCopyIs32 = {false, true, true};
    Build();
    // Counted and shown with the machine's values, 64-bit first, each marked with its view;
    // ghosted by the switch of the item's own key, and only there.
    EXPECT_EQ(N("AllUsersRoot").Text + ", " + N("AllUsersRegistry").Text,
              "All Users (5), Registry Run (4)");
    const std::pair<const char*, const char*> marked[] = {
        {"AllUsersRegistry", "M=C:\\m.exe, M=C:\\m32.exe #32 32-bit off, W=C:\\w.exe #32 32-bit"},
        {"DelayedItemsRegistryAllUsers", "X=\"C:\\x.exe\" -m #32 32-bit"},
        {"StoppedItemsAllReg", "C:\\h.exe, I=C:\\i.exe #32 32-bit"}, // no copy: the own view
        {"CurrentUserStartup", "Tool.lnk, Notes.lnk off"},
    };
    for (auto [container, leaves] : marked) {
        std::string shown;
        for (int child : N(container).Children) {
            const TreeNode& n = tree.Node(child);
            shown += (shown.empty() ? "" : ", ") + n.Text +
                     (n.Data ? " #" + std::to_string(n.Data) : "") +
                     (PlaceOf(tree, child)->Wow32 ? " 32-bit" : "") + (n.Cut ? " off" : "");
        }
        EXPECT_EQ(shown, leaves) << container;
    }

    const std::vector<SafeEntry> safe = {{"Notes", "Note taker"}};
    const ItemTipLines lines{"Switched off", "32-bit"};
    EXPECT_EQ(ItemToolTip(N("#12341#Notes.lnk"), safe, lines), "Note taker\r\nSwitched off");
    EXPECT_EQ(ItemToolTip(N("#12340#M=C:\\m32.exe"), safe, lines), "Switched off\r\n32-bit");
    EXPECT_EQ(ItemToolTip(N("#12340#Tool.lnk"), safe, lines, "", "C:\\t.exe"),
              "C:\\t.exe"); // nothing else to say: what it starts

    // A delayed item's last measurement is found by its location and its own name, and shown
    // last in the user's decimal separator; an active item's start was Windows' own.
    const std::optional<ImpactKey> delayed =
        DelayedItemKey(tree, listing, tree.Find("#12344#DELAYEDC:\\x.exe "));
    ASSERT_TRUE(delayed);
    EXPECT_TRUE(SameItem(*delayed, {kMachineRun, "X"}, nullptr));
    EXPECT_FALSE(DelayedItemKey(tree, listing, tree.Find("#12340#M=C:\\m.exe")));
    EXPECT_FALSE(DelayedItemKey(tree, listing, tree.Find("DelayedItemsRegistryAllUsers")));
    const ImpactTexts texts{{"Low", "Medium", "High"},
                            "%1: %2 s CPU, %3 MB read, ready after %4 s",
                            "%1: %2 s CPU, %3 MB read",
                            ","};
    ImpactRecord x{*delayed, "", 4140, 2260, 45 << 20, 1 << 20, 30000};
    const std::string line = ImpactTipLine(x, texts);
    EXPECT_EQ(line, "High: 2,3 s CPU, 45 MB read, ready after 4,1 s");
    EXPECT_EQ(ItemToolTip(N("#12344#DELAYEDC:\\x.exe "), safe, lines, line, "C:\\x.exe"),
              "32-bit\r\n" + line + "\r\nC:\\x.exe");
    x = {*delayed, "", std::nullopt, 250, 200 * 1024, 0, 30000};
    EXPECT_EQ(ImpactTipLine(x, texts), "Low: 0,3 s CPU, 0,2 MB read");
}

TEST_F(StartupTree, ARefreshKeepsWhatTheUserOpened) {
    auto opened = [&] {
        std::string keys;
        for (size_t i = 0; i < tree.Count(); ++i)
            keys += tree.Node(static_cast<int>(i)).Expanded ? tree.Node(int(i)).Key + " " : "";
        return keys;
    };
    EXPECT_EQ(opened(), ""); // a first refresh: all closed
    for (const char* key : {"CurrentUserRoot", "DelayedItemsRegistryAllUsers", "StoppedItemsAll",
                            "StoppedItemsAllReg"})
        N(key).Expanded = true;
    Fill(); // a later refresh: new keys, same containers
    Build(9);
    // The stopped items open with one of their users' containers; the innermost containers of
    // the stopped items always start closed.
    EXPECT_EQ(opened(),
              "CurrentUserRoot DelayedItemsRegistryAllUsers StoppedItemsRoot StoppedItemsAll ");
    EXPECT_NE(tree.Find("#90#Tool.lnk"), TreeModel::kNone);
}

TEST_F(StartupTree, KnownItemsAreBoldByTheirProgramInEveryState) {
    const std::vector<SafeEntry> safe = {
        {"", "matches nothing"}, {"tool.exe", "Tool helper"},    {"Word", "Word processor"},
        {"a.exe", "A tool"},     {"Startup", "container words"}, {"Tool", "Tool's shortcut"}};
    auto marked = [&] {
        MarkKnown(tree, safe);
        std::string bold;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (tree.Node(static_cast<int>(i)).Bold)
                bold += tree.Node(static_cast<int>(i)).Text + "|";
        return bold;
    };
    // By the program's file or the item's own name, in exact letters: "Tool" is not
    // "tool.exe", and a container is never known, whatever its caption says.
    EXPECT_EQ(marked(), "Tool.lnk|A=C:\\a.exe /x|Word.lnk|Tool=C:\\T\\tool.exe|");
    EXPECT_EQ(ItemToolTip(N("#12342#DELAYEDC:\\T\\tool.exe"), safe, {}), "Tool helper");
    EXPECT_EQ(ItemToolTip(N("#12340#Word.lnk"), safe, {}), "Word processor");
    EXPECT_EQ(ItemToolTip(N("CurrentUserStartup"), safe, {}, "", "C:\\t.exe"), ""); // a container

    // Moved to the delayed items, with its command now in quotes, then to the stopped ones:
    // the same program stays known; an item whose program is no longer named is not, nor one
    // that only names a known program's document.
    listing.UserRunValues = {{"A", "\"C:\\a.exe\" /x"}, {"B", "C:\\b.exe C:\\Docs\\Word.doc"}};
    listing.CommonStartupFiles = {"Letter.lnk"};
    Build();
    EXPECT_EQ(marked(), "Tool.lnk|A=\"C:\\a.exe\" /x|Tool=C:\\T\\tool.exe|");
    model.ProgramGroups[0].Programs[1] = {"\"C:\\a.exe\"", "/x", "ExecuteReg", 0, "A"};
    listing.UserRunValues.clear();
    Build();
    EXPECT_EQ(marked(), "Tool.lnk|A=\"C:\\a.exe\" /x|Tool=C:\\T\\tool.exe|");
    model.ProgramGroups[0].Programs[1] = {"", "", "Execute"};
    model.StoppedPrograms = {"_REGCU_A=C:\\a.exe"};
    Build();
    EXPECT_EQ(marked(), "Tool.lnk|Tool=C:\\T\\tool.exe|A=C:\\a.exe|");
}

TEST_F(StartupTree, AContainerPassesItsCheckDownThreeLevels) {
    CheckWithItems(tree, tree.Find("DelayedItemsRoot"), true);
    EXPECT_TRUE(N("DIR_CurrentUser").Checked);
    EXPECT_TRUE(N("#12341#DELAYEDDelayed.lnk").Checked);
    EXPECT_FALSE(N("CurrentUserRoot").Checked);
    CheckWithItems(tree, tree.Find("DIR_CurrentUser"), false);
    EXPECT_FALSE(N("#12341#DELAYEDDelayed.lnk").Checked);
    EXPECT_TRUE(N("#12343#DELAYEDAll.lnk").Checked);
}

// Active all-users items lose their ticks; the others decide the moves that the toolbar offers,
// and where each move takes them.
TEST_F(StartupTree, TickedItemsDecideTheToolbarsMovesAndWhereEachTakesThem) {
    auto moves = [&](std::vector<std::string> keys) {
        for (size_t i = 0; i < tree.Count(); ++i)
            tree.Node(int(i)).Checked = false;
        for (const std::string& key : keys)
            N(key).Checked = true;
        const ToolbarMoves m = CheckForOptions(tree);
        return std::string(m.Stop ? "S" : "-") + (m.Delay ? "D" : "-") + (m.Run ? "R" : "-");
    };
    EXPECT_EQ(moves({}), "---");
    EXPECT_EQ(moves({"#12340#Tool.lnk"}), "SD-");
    EXPECT_EQ(moves({"#12341#DELAYEDDelayed.lnk"}), "S-R");
    EXPECT_EQ(moves({"#12340#STOPPED_STPCU_Old.lnk"}), "-DR");
    EXPECT_EQ(moves({"DIR_AllUsers"}), "S-R"); // a delayed container counts as delayed
    // A stopped all-users item can be put back, so it keeps its tick.
    EXPECT_EQ(moves({"#12343#STOPPED_STPAU_Common.lnk"}), "-DR");
    // Active all-users items never move: ticked, even after every move is already allowed,
    // they lose the tick and allow nothing.
    EXPECT_EQ(moves({"#12341#DELAYEDDelayed.lnk", "#12340#STOPPED_STPCU_Old.lnk", "AllUsersRoot",
                     "#12340#Word.lnk"}),
              "SDR");
    EXPECT_FALSE(N("AllUsersRoot").Checked);
    EXPECT_FALSE(N("#12340#Word.lnk").Checked);
    EXPECT_EQ(moves({"#12340#Word.lnk"}), "---");
    EXPECT_FALSE(AnyChecked(tree));

    // Where each move takes the ticked items.
    auto targets = [&](CheckedMove move) {
        std::string out;
        for (const CheckedTarget& t : CheckedTargets(move, tree))
            out += tree.Node(t.Node).Text + ">" + "ADS"[static_cast<int>(t.To)] + " ";
        return out;
    };
    // An active, a delayed and a stopped item of the user, a delayed and a stopped one of all
    // users: every state and location moves; what is where the move goes stays out, and so does
    // an active item of all users, which offers no moves.
    for (const char* key :
         {"#12340#Tool.lnk", "#12342#DELAYEDC:\\T\\tool.exe", "#12341#STOPPED_REGCU_C:\\s.exe",
          "#12344#DELAYEDC:\\x.exe ", "#12343#STOPPED_STPAU_Common.lnk", "#12340#Word.lnk"})
        N(key).Checked = true;
    EXPECT_EQ(targets(CheckedMove::Save),
              "Tool.lnk>D Tool=C:\\T\\tool.exe>A X=C:\\x.exe -m>A C:\\s.exe>A Common.lnk>A ");
    EXPECT_EQ(targets(CheckedMove::Delay), "Tool.lnk>D C:\\s.exe>D Common.lnk>D ");
    EXPECT_EQ(targets(CheckedMove::Stop), "Tool.lnk>S Tool=C:\\T\\tool.exe>S X=C:\\x.exe -m>S ");
    EXPECT_EQ(targets(CheckedMove::Run),
              "Tool=C:\\T\\tool.exe>A X=C:\\x.exe -m>A C:\\s.exe>A Common.lnk>A ");
}

} // namespace
} // namespace tolvane
