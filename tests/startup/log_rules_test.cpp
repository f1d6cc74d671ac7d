#include <gtest/gtest.h>

#include "startup/data_lists.h"
#include "startup/log_rules.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

TEST(LogRules, PrefixesAndThePruneCut) {
    EXPECT_EQ(LogLevelPrefix(1), "Error: ");
    EXPECT_EQ(LogLevelPrefix(2), "Warning: ");
    EXPECT_EQ(LogLevelPrefix(4), "Info: ");
    EXPECT_EQ(LogLevelPrefix(3), "");
    EXPECT_EQ(LogLevelPrefix(0), "");

    const std::string marker = PruneMarker("1/2/2026 10:00:00");
    EXPECT_EQ(marker, "<---- Old Events removed on: 1/2/2026 10:00:00 ---->");

    // Byte 2,560,000 is the line feed of a line: the next line survives whole.
    std::string log(kLogPruneCut - 2, 'x');
    log += "\r\nnext line\r\n";
    EXPECT_EQ(PrunedLog(log, marker), "next line\r\n\r\n" + marker + "\r\n");

    // The cut falls inside a line: the rest of it goes too.
    log = std::string(kLogPruneCut + 5, 'x') + "\r\nkept\r\n";
    EXPECT_EQ(PrunedLog(log, marker), "kept\r\n\r\n" + marker + "\r\n");

    // No line feed after the cut: nothing is kept but the marker.
    log = std::string(kLogPruneSize, 'x');
    EXPECT_EQ(PrunedLog(log, marker), "\r\n" + marker + "\r\n");
}

TEST(DataLists, SafeListLinesGiveNamesAndDescriptions) {
    auto list = ParseSafeList("// comment\r\n"
                              "notepad.exe // Text editor\r\n"
                              "a//b//c\r\n"
                              "\t  \t\r\n"
                              "\tbare.exe  \r\n"
                              "tight.exe// Known\r\n"
                              "ends//\r\n");
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list[0].Name, "notepad.exe "); // the blank before "//" stays
    EXPECT_EQ(list[0].Description, "Text editor");
    EXPECT_EQ(list[1].Name, "a");
    EXPECT_EQ(list[1].Description, ""); // the one character after the last "//" is dropped
    EXPECT_EQ(list[2].Name, "bare.exe");
    EXPECT_EQ(list[2].Description, "");
    EXPECT_EQ(list[3].Name, "tight.exe");
    EXPECT_EQ(list[3].Description, "Known");
    EXPECT_EQ(list[4].Name, "ends");

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
