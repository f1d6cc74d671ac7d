#include <gtest/gtest.h>

#include "models/command_table.h"
#include "models/tray_menu.h"

namespace tolvane {
namespace {

// The menu as "number caption" lines, a submenu's entries indented; "-" for a separator.
std::string Outline(const std::vector<TrayMenuEntry>& entries, const std::string& indent = "") {
    std::string out;
    for (const TrayMenuEntry& e : entries) {
        out += indent + (e.Type == TrayMenuEntry::Kind::Separator
                             ? "-"
                             : std::to_string(e.Number) + " " + e.Caption) +
               "\n";
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
        {1000, "1/0"}, {1002, "2/0"}, {1004, "2/2"}, {1005, "0/-1"}, {3001, "3/-1"},
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
    table.Add(1, [&] { ++runs; }, [&] { return allowed; });
    table.Add(2, [&] { runs += 10; });
    EXPECT_FALSE(table.Execute(1));
    allowed = true;
    EXPECT_TRUE(table.Execute(1));
    EXPECT_TRUE(table.Execute(2));
    EXPECT_FALSE(table.Execute(3));
    EXPECT_FALSE(table.Enabled(3));
    EXPECT_EQ(runs, 11);
}

} // namespace
} // namespace tolvane
