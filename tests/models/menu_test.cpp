// The menus as plain data (the tray's, the main window's, the toolbar's) and the tree model the
// windows show.
#include <gtest/gtest.h>

#include "models/command_ids.h"
#include "models/command_table.h"
#include "models/menu_model.h"
#include "models/tray_menu.h"
#include "models/tree_model.h"

namespace tolvane {
namespace {

// The menu as "number caption" lines, a submenu's entries indented; "-" for a separator's
// caption, "v" for a check mark, "(off)" for a grayed entry.
std::string Outline(const std::vector<MenuItem>& entries, const std::string& indent = "") {
    std::string out;
    for (const MenuItem& e : entries) {
        out += indent + std::to_string(e.Number) + " " +
               (e.Type == MenuItem::Kind::Separator ? "-" : e.Caption) + (e.Checked ? " v" : "") +
               (e.Enabled ? "" : " (off)") + "\n";
        out += Outline(e.Entries, indent + "  ");
    }
    return out;
}

TrayMenu Tray(int groupIndex, std::vector<std::string> paths, std::vector<std::string> stopped) {
    return TrayMenu::Build({groupIndex, "Startup", std::move(paths), std::move(stopped), "Run All",
                            "Stopped", "&Open", "&Quit Program"});
}

std::string Choice(const TrayMenu& menu, int number) {
    const TrayChoice c = menu.Choice(number);
    return std::to_string(static_cast<int>(c.What)) + "/" + std::to_string(c.Index);
}

TEST(TrayMenu, NumbersCaptionsAndSubmenusFollowTheStartupGroupsIndexAndLists) {
    const TrayMenu menu = Tray(0, {"C:\\Apps\\Tool.exe", "Word.lnk ", "C:\\A & B\\", ""},
                               {"Old.lnk", "", "Tom & Jerry=C:\\tj.exe"});
    // A path that ends in "\" shows whole; "&" shows as itself; a free slot gets no entry.
    EXPECT_EQ(Outline(menu.Entries()), "1000 Startup\n"
                                       "  1000 Run All\n"
                                       "  0 -\n"
                                       "  1002 Tool.exe\n"
                                       "  1003 Word.lnk\n"
                                       "  1004 C:\\A && B\\\n"
                                       "2001 -\n"
                                       "3001 Stopped\n"
                                       "  3001 Run All\n"
                                       "  0 -\n"
                                       "  3003 Old.lnk\n"
                                       "  3005 Tom && Jerry=C:\\tj.exe\n"
                                       "4000 -\n"
                                       "5000 &Open\n"
                                       "6000 &Quit Program\n");
    EXPECT_EQ(menu.ProgramNumber(1), 1003);
    for (size_t freeOrPast : {3, 4})
        EXPECT_EQ(menu.ProgramNumber(freeOrPast), 0) << freeOrPast;
    // Action (RunGroup 1, RunProgram 2, RunAllStopped 3, RunStopped 4, Open 5, Quit 6) / index.
    const std::pair<int, const char*> choices[] = {
        {1000, "1/0"}, {1002, "2/0"},  {1004, "2/2"}, {1005, "0/-1"}, {3001, "3/-1"},
        {3003, "4/0"}, {3004, "0/-1"}, {3005, "4/2"}, {5000, "5/-1"}, {6000, "6/-1"},
        {0, "0/-1"},   {2001, "0/-1"}, {-5, "0/-1"}};
    for (auto [number, choice] : choices)
        EXPECT_EQ(Choice(menu, number), choice) << number;

    // Empty lists have no submenu, and another index shifts every number.
    const TrayMenu empty = Tray(2, {""}, {""});
    EXPECT_EQ(Outline(empty.Entries()),
              "3000 Startup\n4001 -\n5001 Stopped\n6000 -\n7000 &Open\n8000 &Quit Program\n");
    EXPECT_EQ(Choice(empty, 3000), "0/-1"); // nothing to run
    EXPECT_EQ(Choice(empty, 5001), "0/-1");
    EXPECT_EQ(Choice(empty, 7000), "5/-1");
    // No "Startup" group at all: no group entry, and no number 0 that a dismissal gives.
    EXPECT_EQ(Outline(Tray(-1, {}, {"_x"}).Entries()),
              "1001 -\n2001 Stopped\n  2001 Run All\n  0 -\n  2003 _x\n3000 -\n"
              "4000 &Open\n5000 &Quit Program\n");
}

// The whole menu bar as rendered is the main window's test; here, what the model decides.
TEST(MainMenu, LanguagesCheckedWhatTheCommandTableDoesNotRunGrayedAndToolbarCaptions) {
    std::vector<std::string> menus = TextTables().Menus;
    menus[14] = "&Forum";
    std::vector<MenuItem> bar = BuildMainMenu(menus, {{"English", "en"}, {"Deutsch", "de"}}, "de");
    int runs = 0;
    CommandTable commands;
    commands.Add(ID_CMD_FORUMS, [&] { ++runs; });
    commands.Add(
        ID_CMD_MAIN_PAGE, [&] { runs += 10; }, [] { return false; });
    ApplyEnabled(bar, commands);
    // Every language shows the keys of the one accelerator table.
    menus[1] = "&Speichern";
    menus[26] = "&Aktualisieren";
    EXPECT_EQ(Outline(BuildMainMenu(menus, {}, "")[0].Entries),
              "40004 &Speichern\tCtrl+S\n40003 &Aktualisieren\tF5\n0 -\n40005 &Minimize to Tray\n"
              "40002 E&xit\n");
    EXPECT_EQ(Outline({bar[2], bar[3], bar[4], bar[5].Entries[6]}),
              "0 &View\n  40015 &Last Log-on (off)\n0 &Tools\n  40007 &Options (off)\n"
              "0 &Language\n"
              "  41000 English\n"
              "  41001 Deutsch v\n"
              "0 &Online\n"
              "  40031 &Forum\n"
              "  40032 &Support E-Mail (off)\n"
              "  40033 &Main Page (off)\n");
    // A grayed or unknown command does not run.
    EXPECT_TRUE(commands.Execute(ID_CMD_FORUMS));
    EXPECT_FALSE(commands.Execute(ID_CMD_MAIN_PAGE));
    EXPECT_FALSE(commands.Execute(ID_CMD_SUPPORT_MAIL));
    EXPECT_EQ(runs, 1);
    // Without a language list the menu has no language to choose.
    EXPECT_TRUE(BuildMainMenu(menus, {{}}, "en")[4].Entries.empty());

    EXPECT_EQ(Outline(BuildItemPopup(menus)), "40010 Delay\n0 -\n40011 Stop\n0 -\n40012 Run\n0 -\n"
                                              "40013 Properties\n0 -\n40014 &Search Online\n");

    // The toolbar's buttons take the moves' captions without their access keys, and the
    // toolbar table's tips.
    menus[1] = "&&Save &me";
    std::string out;
    for (const ToolbarButton& b : BuildMainToolbar(menus, TextTables().Toolbar))
        out += std::to_string(b.Command) + " " + b.Caption + " / " + b.ToolTip + "\n";
    EXPECT_EQ(out, "40004 &Save me / Save Changes\n"
                   "0  / \n"
                   "40003  / Refresh the list\n"
                   "0  / \n"
                   "40021 Stop / Don't run at all\n"
                   "40020 Delay / Delay the startup\n"
                   "40022 Run / Run at startup\n"
                   "40006 Properties / Properties\n"
                   "0  / \n"
                   "40015  / How the last log-on went\n");
}

// A parent the tree does not hold, or a key it holds already, is refused and adds nothing.
TEST(TreeModel, RefusesAParentItDoesNotHoldAndAKeyItHolds) {
    TreeModel tree;
    const int root = tree.Add("", "root", "Root");
    tree.Add("root", "a", "A");
    for (int parent : {-2, 2, 3})
        EXPECT_THROW(tree.AddChild(parent, "b", "B"), TreeKeyError) << parent;
    EXPECT_THROW(tree.AddChild(root, "a", "A again"), TreeKeyError);
    EXPECT_THROW(tree.Add("none", "b", "B"), TreeKeyError);
    EXPECT_EQ(tree.Count(), 2u);
    EXPECT_EQ(tree.Node(root).Children, std::vector<int>{1});
}

} // namespace
} // namespace tolvane
