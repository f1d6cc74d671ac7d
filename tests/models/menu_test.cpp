#include <gtest/gtest.h>

#include "models/command_ids.h"
#include "models/command_table.h"
#include "models/menu_model.h"
#include "models/tray_menu.h"

namespace tolvane {
namespace {

// The menu as "number caption" lines, a submenu's entries indented; "-" for a separator; "v"
// for a check mark, "(off)" for a grayed entry.
std::string Outline(const std::vector<MenuItem>& entries, const std::string& indent = "") {
    std::string out;
    for (const MenuItem& e : entries) {
        out += indent +
               (e.Type == MenuItem::Kind::Separator ? "-"
                                                    : std::to_string(e.Number) + " " + e.Caption) +
               (e.Checked ? " v" : "") + (e.Enabled ? "" : " (off)") + "\n";
        out += Outline(e.Entries, indent + "  ");
    }
    return out;
}

TrayMenuSource Source(int groupIndex, std::vector<std::string> paths,
                      std::vector<std::string> stopped) {
    return {groupIndex, "Startup", std::move(paths), std::move(stopped),
            "Run All",  "Stopped", "&Open",          "&Quit Program"};
}

std::string Choice(const TrayMenu& menu, int number) {
    const TrayChoice c = menu.Choice(number);
    return std::to_string(static_cast<int>(c.What)) + "/" + std::to_string(c.Index);
}

TEST(TrayMenu, NumbersAndCaptionsFollowTheStartupGroupsIndex) {
    const TrayMenu menu =
        TrayMenu::Build(Source(0, {"C:\\Apps\\Tool.exe", "Word.lnk ", "C:\\A & B\\", ""},
                               {"Old.lnk", "", "Tom & Jerry=C:\\tj.exe"}));
    // A path that ends in "\" shows whole; "&" shows as itself; a free slot gets no entry.
    EXPECT_EQ(Outline(menu.Entries()), "1000 Startup\n"
                                       "  1000 Run All\n"
                                       "  -\n"
                                       "  1002 Tool.exe\n"
                                       "  1003 Word.lnk\n"
                                       "  1004 C:\\A && B\\\n"
                                       "-\n"
                                       "3001 Stopped\n"
                                       "  3001 Run All\n"
                                       "  -\n"
                                       "  3003 Old.lnk\n"
                                       "  3005 Tom && Jerry=C:\\tj.exe\n"
                                       "-\n"
                                       "5000 &Open\n"
                                       "6000 &Quit Program\n");
    EXPECT_EQ(menu.ProgramNumber(1), 1003);
    EXPECT_EQ(menu.ProgramNumber(3), 0);
    // Action (RunGroup 1, RunProgram 2, RunAllStopped 3, RunStopped 4, Open 5, Quit 6) / index.
    const std::pair<int, const char*> choices[] = {
        {1000, "1/0"}, {1002, "2/0"},  {1004, "2/2"}, {1005, "0/-1"}, {3001, "3/-1"},
        {3003, "4/0"}, {3004, "0/-1"}, {3005, "4/2"}, {5000, "5/-1"}, {6000, "6/-1"},
        {0, "0/-1"},   {2001, "0/-1"}, {-5, "0/-1"}};
    for (auto [number, choice] : choices)
        EXPECT_EQ(Choice(menu, number), choice) << number;
}

TEST(TrayMenu, EmptyListsHaveNoSubmenuAndAnotherIndexShiftsEveryNumber) {
    const TrayMenu empty = TrayMenu::Build(Source(2, {""}, {""}));
    EXPECT_EQ(Outline(empty.Entries()),
              "3000 Startup\n-\n5001 Stopped\n-\n7000 &Open\n8000 &Quit Program\n");
    EXPECT_EQ(Choice(empty, 3000), "0/-1"); // nothing to run
    EXPECT_EQ(Choice(empty, 5001), "0/-1");
    EXPECT_EQ(Choice(empty, 7000), "5/-1");
    // No "Startup" group at all: no group entry, and no number 0 that a dismissal gives.
    const TrayMenu none = TrayMenu::Build(Source(-1, {}, {"_x"}));
    EXPECT_EQ(Outline(none.Entries()), "-\n2001 Stopped\n  2001 Run All\n  -\n  2003 _x\n-\n"
                                       "4000 &Open\n5000 &Quit Program\n");
}

TEST(CommandTable, RunsACommandOnlyWhenItCanBeUsed) {
    CommandTable table;
    int runs = 0;
    bool allowed = false;
    table.Add(
        1, [&] { ++runs; }, [&] { return allowed; });
    table.Add(2, [&] { runs += 10; });
    EXPECT_FALSE(table.Execute(1));
    allowed = true;
    EXPECT_TRUE(table.Execute(1));
    EXPECT_TRUE(table.Execute(2));
    EXPECT_FALSE(table.Execute(3));
    EXPECT_FALSE(table.Enabled(3));
    EXPECT_EQ(runs, 11);
}

// The whole menu bar as rendered is the main window's test; here, what the model decides.
TEST(MainMenu, LanguagesCheckedAndWhatTheCommandTableDoesNotKnowGrayed) {
    std::vector<std::string> menus = TextTables().Menus;
    menus[14] = "&Forum";
    std::vector<MenuItem> bar = BuildMainMenu(menus, {{"English", "en"}, {"Deutsch", "de"}}, "de");
    CommandTable commands;
    commands.Add(ID_CMD_FORUMS, [] {});
    commands.Add(
        ID_CMD_MAIN_PAGE, [] {}, [] { return false; });
    ApplyEnabled(bar, commands);
    // Every language shows the keys of the one accelerator table.
    menus[1] = "&Speichern";
    menus[26] = "&Aktualisieren";
    EXPECT_EQ(Outline(BuildMainMenu(menus, {}, "")[0].Entries),
              "40004 &Speichern\tCtrl+S\n40003 &Aktualisieren\tF5\n-\n40005 &Minimize to Tray\n"
              "40002 E&xit\n");
    EXPECT_EQ(Outline({bar[3], bar[4].Entries[6]}), "0 &Language\n"
                                                    "  41000 English\n"
                                                    "  41001 Deutsch v\n"
                                                    "0 &Online\n"
                                                    "  40031 &Forum\n"
                                                    "  40032 &Support E-Mail (off)\n"
                                                    "  40033 &Main Page (off)\n");
    EXPECT_EQ(LanguageOfCommand(41001), 1u);
    EXPECT_EQ(LanguageOfCommand(ID_CMD_SAVE), std::nullopt);
    // Without a language list the menu has no language to choose.
    EXPECT_TRUE(BuildMainMenu(menus, {{}}, "en")[3].Entries.empty());

    EXPECT_EQ(Outline(BuildItemPopup(menus)), "40010 Delay\n-\n40011 Stop\n-\n40012 Run\n-\n"
                                              "40013 Properties\n-\n40014 &Search Online\n");
}

TEST(MainMenu, ToolbarButtonsTakeTheMovesCaptionsAndTheToolbarTablesTips) {
    std::vector<std::string> menus = TextTables().Menus;
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
                   "40006 Properties / Properties\n");
}

} // namespace
} // namespace tolvane
