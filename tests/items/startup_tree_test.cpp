#include <gtest/gtest.h>

#include "items/startup_tree.h"

namespace tolvane {
namespace {

const std::string kOwn = "Tolvane=\"C:\\T\\Tolvane.exe\" -nogui";

struct Fixture {
    StartupListing listing;
    ProgramModel model;
    std::vector<double> progress;
    long long timer = 1234;
    StartupTreeHooks Hooks() {
        return {[this] { return timer; }, [this](double v) { progress.push_back(v); }};
    }
};

// Every text below a node, depth first, with two blanks per level.
std::vector<std::string> Outline(const TreeModel& tree) {
    std::vector<std::string> lines;
    std::function<void(int, int)> walk = [&](int node, int depth) {
        lines.push_back(std::string(2 * depth, ' ') + tree.Node(node).Text);
        for (int child : tree.Node(node).Children)
            walk(child, depth + 1);
    };
    for (int root : tree.Roots())
        walk(root, 0);
    return lines;
}

Fixture Everything() {
    Fixture f;
    f.listing.UserStartupFiles = {"Tool.lnk", "Notes.lnk"};
    // The program's own value twice: the first copy is hidden, the second is an item.
    f.listing.UserRunValues = {kOwn, "A=C:\\a.exe /x", kOwn};
    f.listing.CommonStartupFiles = {"Word.lnk"};
    // Under the machine's key every copy is hidden, though only one is counted out.
    f.listing.MachineRunValues = {kOwn, "M=C:\\m.exe", kOwn};
    f.model.ProgramGroups = {{"Startup",
                              {{"", "", "Execute"}, // a free slot: counted, not shown
                               {"Delayed.lnk", "", "Execute"},
                               {"C:\\T\\tool.exe", "", "ExecuteReg", 0, "Tool"},
                               {"All.lnk", "", "ExecuteAU"},
                               {"C:\\x.exe ", "-m", "ExecuteRegAU", 0, "X"},
                               {"C:\\other.exe", "", "Close"}}}}; // no container of its own
    f.model.StartupGroupIndex = 0;
    f.model.StoppedPrograms = {"_STPCU_Old.lnk",    "_REGCU_C:\\s.exe", "",
                               "_STPAU_Common.lnk", "_REGAU_C:\\h.exe", "_REGAU_C:\\i.exe"};
    return f;
}

TEST(StartupTree, ContainersCountAndShowEveryItemOfEachLocation) {
    Fixture f = Everything();
    TreeModel tree;
    BuildStartupTree(tree, f.listing, f.model, kOwn, f.Hooks());
    EXPECT_EQ(Outline(tree), (std::vector<std::string>{
                                 "Current User (4)",
                                 "  Startup Folder (2)",
                                 "    Tool.lnk",
                                 "    Notes.lnk",
                                 "  Registry Run (2)",
                                 "    A=C:\\a.exe /x",
                                 "    " + kOwn,
                                 "All Users (3)",
                                 "  Startup Folder (1)",
                                 "    Word.lnk",
                                 "  Registry Run (2)",
                                 "    M=C:\\m.exe",
                                 "Delayed Items (5)",
                                 "  Current User (3)",
                                 "    Startup Folder (2)",
                                 "      Delayed.lnk",
                                 "    Registry Run (1)",
                                 "      Tool=C:\\T\\tool.exe ",
                                 "  All Users (2)",
                                 "    Startup Folder (1)",
                                 "      All.lnk",
                                 "    Registry Run (1)",
                                 "      X=C:\\x.exe  -m",
                                 "Stopped Items (5)",
                                 "  Current User (2)",
                                 "    Startup Folder (1)",
                                 "      Old.lnk",
                                 "    Registry (1)",
                                 "      C:\\s.exe",
                                 "  All Users (3)",
                                 "    Startup Folder (1)",
                                 "    Registry (2)",
                             }));
    // The listing no longer holds the first copy of the program's own value.
    EXPECT_EQ(f.listing.UserRunValues[0], "");
    EXPECT_EQ(f.listing.MachineRunValues[0], "");

    // Keys carry time, index and origin; only the items of the current user offer moves.
    auto leaf = [&](const std::string& key) { return tree.Node(tree.Find(key)); };
    EXPECT_EQ(leaf("#12340#Tool.lnk").Tag, "#POP#");
    EXPECT_EQ(leaf("#12341#A=C:\\a.exe /x").Tag, "#POP#");
    EXPECT_EQ(leaf("#12340#Word.lnk").Tag, "");
    EXPECT_EQ(leaf("#12341#M=C:\\m.exe").Tag, "");
    EXPECT_EQ(leaf("#12341#DELAYEDDelayed.lnk").Tag, "#POP#");
    EXPECT_EQ(leaf("#12344#DELAYEDC:\\x.exe ").Tag, "#POP#");
    EXPECT_EQ(leaf("#12340#STOPPED_STPCU_Old.lnk").Tag, "#POP#");
    EXPECT_EQ(leaf("#12340#Tool.lnk").Image, "");
    const TreeNode& root = tree.Node(tree.Find("StoppedItemsRoot"));
    EXPECT_EQ(root.Image, "Stopped");
    EXPECT_EQ(tree.Node(tree.Find("DIR_AllUsers")).Image, "Group");
    EXPECT_EQ(tree.FullPath(tree.Find("#12341#DELAYEDDelayed.lnk")),
              "Delayed Items (5)\\Current User (3)\\Startup Folder (2)\\Delayed.lnk");

    EXPECT_EQ(f.progress.size(), 7u);
    EXPECT_EQ(f.progress.front(), 0);
    EXPECT_NEAR(f.progress[1], 33.33, 0.01);
    EXPECT_NEAR(f.progress[2], 66.67, 0.01);
    EXPECT_EQ(f.progress[3], 75);
    EXPECT_EQ(f.progress[4], 95);
    EXPECT_EQ(f.progress[5], 100);
    EXPECT_EQ(f.progress[6], 0);
}

TEST(StartupTree, EmptyLocationsAndTheSameItemInTwoPlaces) {
    Fixture f;
    f.listing.UserRunValues = {kOwn}; // only the program's own value
    f.listing.UserStartupFiles = {"Same.lnk"};
    f.listing.CommonStartupFiles = {"Same.lnk"};
    TreeModel tree;
    BuildStartupTree(tree, f.listing, f.model, kOwn, f.Hooks());
    EXPECT_EQ(tree.Node(tree.Find("CurrentUserRegistry")).Text, "Registry Run (0)");
    EXPECT_TRUE(tree.Node(tree.Find("CurrentUserRegistry")).Children.empty());
    EXPECT_EQ(tree.Node(tree.Find("CurrentUserRoot")).Text, "Current User (1)");
    EXPECT_EQ(tree.Node(tree.Find("DelayedItemsRoot")).Text, "Delayed Items (0)"); // no group
    // One name at one index in both folders within one second: both are shown.
    EXPECT_EQ(tree.Node(tree.Find("CurrentUserStartup")).Children.size(), 1u);
    EXPECT_EQ(tree.Node(tree.Find("AllUsersStartup")).Children.size(), 1u);
    EXPECT_EQ(tree.Count(), 22u);
}

TEST(StartupTree, ARefreshKeepsWhatTheUserOpened) {
    Fixture f = Everything();
    TreeModel tree;
    BuildStartupTree(tree, f.listing, f.model, kOwn, f.Hooks());
    for (size_t i = 0; i < tree.Count(); ++i)
        EXPECT_FALSE(tree.Node(static_cast<int>(i)).Expanded); // a first refresh: all closed
    for (const char* key : {"CurrentUserRoot", "DelayedItemsRegistryAllUsers", "StoppedItemsAll",
                            "StoppedItemsAllReg"})
        tree.Node(tree.Find(key)).Expanded = true;
    Fixture again = Everything();
    again.timer = 9; // a later refresh: new keys, same containers
    BuildStartupTree(tree, again.listing, again.model, kOwn, again.Hooks());
    auto open = [&](const char* key) { return tree.Node(tree.Find(key)).Expanded; };
    EXPECT_TRUE(open("CurrentUserRoot"));
    EXPECT_TRUE(open("DelayedItemsRegistryAllUsers"));
    EXPECT_TRUE(open("StoppedItemsAll"));
    EXPECT_TRUE(open("StoppedItemsRoot"));    // opens with one of its user containers
    EXPECT_FALSE(open("StoppedItemsAllReg")); // these four always start closed
    EXPECT_FALSE(open("AllUsersRoot"));
    EXPECT_NE(tree.Find("#90#Tool.lnk"), TreeModel::kNone);
}

TEST(StartupTree, KnownItemsAreBoldAndDescribed) {
    Fixture f = Everything();
    TreeModel tree;
    BuildStartupTree(tree, f.listing, f.model, kOwn, f.Hooks());
    const std::vector<SafeEntry> safe = {{"", "matches nothing"},
                                         {"tool.exe", "Tool helper"},
                                         {"Word", "Word processor"},
                                         {"Startup", "container words"}};
    MarkKnown(tree, safe);
    auto bold = [&](const std::string& key) { return tree.Node(tree.Find(key)).Bold; };
    EXPECT_TRUE(bold("#12342#DELAYEDC:\\T\\tool.exe")); // "tool.exe" inside, exact letters
    EXPECT_FALSE(bold("#12340#Tool.lnk"));              // "Tool" is not "tool.exe"
    EXPECT_TRUE(bold("#12340#Word.lnk"));
    EXPECT_FALSE(bold("CurrentUserStartup")); // a container with items is not looked at
    // An empty container is looked at like an item.
    EXPECT_TRUE(bold("StoppedItemsAllStartup"));

    EXPECT_EQ(SafeListDescription("Tool=C:\\T\\tool.exe", safe), "Tool helper");
    EXPECT_EQ(SafeListDescription("WORD.LNK", safe), "");
    EXPECT_EQ(SafeListDescription("", safe), "");
}

TEST(StartupTree, AContainerPassesItsCheckDownThreeLevels) {
    Fixture f = Everything();
    TreeModel tree;
    BuildStartupTree(tree, f.listing, f.model, kOwn, f.Hooks());
    CheckWithItems(tree, tree.Find("DelayedItemsRoot"), true);
    EXPECT_TRUE(tree.Node(tree.Find("DIR_CurrentUser")).Checked);
    EXPECT_TRUE(tree.Node(tree.Find("#12341#DELAYEDDelayed.lnk")).Checked);
    EXPECT_FALSE(tree.Node(tree.Find("CurrentUserRoot")).Checked);
    CheckWithItems(tree, tree.Find("DIR_CurrentUser"), false);
    EXPECT_FALSE(tree.Node(tree.Find("#12341#DELAYEDDelayed.lnk")).Checked);
    EXPECT_TRUE(tree.Node(tree.Find("#12343#DELAYEDAll.lnk")).Checked);
}

} // namespace
} // namespace tolvane
