#include <gtest/gtest.h>

#include "startup/data_lists.h"
#include "platform/log_rules.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

// The cut that ends a line, and the marker, are checked on a real log by the event log's test.
TEST(LogRules, ThePruneCutTakesTheRestOfItsLineAlong) {
    EXPECT_EQ(LogLevelPrefix(0), "");
    // The cut falls inside a line: the rest of it goes too.
    const std::string log = std::string(kLogPruneCut + 5, 'x') + "\r\nkept\r\n";
    EXPECT_EQ(PrunedLog(log, "marker"), "kept\r\n\r\nmarker\r\n");
    // No line feed after the cut: nothing is kept but the marker.
    EXPECT_EQ(PrunedLog(std::string(kLogPruneSize, 'x'), "marker"), "\r\nmarker\r\n");
}

TEST(DataLists, SafeListLinesGiveNamesAndDescriptions) {
    // The blank before "//" stays; of "a//b//c" the one character after the last "//" is
    // dropped.
    std::string entries;
    for (const SafeEntry& e : ParseSafeList("// comment\r\n"
                                            "notepad.exe // Text editor\r\n"
                                            "a//b//c\r\n"
                                            "\t  \t\r\n"
                                            "\tbare.exe  \r\n"
                                            "tight.exe// Known\r\n"
                                            "ends//\r\n"))
        entries += e.Name + "|" + e.Description + "; ";
    EXPECT_EQ(entries, "notepad.exe |Text editor; a|; bare.exe|; tight.exe|Known; ends|; ");
    EXPECT_EQ(ParseSafeList("// only comments\r\n").size(), 1u);
    EXPECT_EQ(ParseSafeList("").front().Name, "");
    EXPECT_EQ(ParseOnlineTemplate("  https://a/?q={SEARCHTERMS}  \r\nsecond line\r\n"),
              "https://a/?q={SEARCHTERMS}");
    EXPECT_EQ(ParseOnlineTemplate(""), "");
}

TEST(DataLists, ShippedListsAreUsable) {
    auto list = ParseSafeList(test::ReadFileBytes(test::TestDataPath("../data/safelist.dat")));
    EXPECT_GE(list.size(), 150u);
    for (const SafeEntry& e : list) {
        EXPECT_FALSE(e.Name.empty());
        EXPECT_NE(e.Name.back(), ' ') << e.Name; // a trailing blank would match almost nothing
        EXPECT_FALSE(e.Description.empty()) << e.Name;
    }
    const std::string search =
        ParseOnlineTemplate(test::ReadFileBytes(test::TestDataPath("../data/online.txt")));
    EXPECT_NE(search.find("{SEARCHTERMS}"), std::string::npos);
    EXPECT_EQ(search.rfind("https://", 0), 0u);
}

} // namespace
} // namespace tolvane
