// The start-up impact rating, the file that keeps each item's last measurement, and the history
// of the last log-on runs.
#include <gtest/gtest.h>

#include "config/impact_file.h"
#include "config/logon_history.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

TEST(ImpactRating, TaskManagersThresholdsWithEitherFigureDeciding) {
    constexpr uint64_t KB = 1024, MB = 1024 * KB;
    struct Case {
        uint64_t cpuMs, ioBytes;
        ImpactRating rating;
    } const cases[] = {
        {0, 0, ImpactRating::Low},
        {300, 300 * KB, ImpactRating::Low},
        {301, 0, ImpactRating::Medium},
        {0, 300 * KB + 1, ImpactRating::Medium},
        {1000, 3 * MB, ImpactRating::Medium},
        {1001, 0, ImpactRating::High},
        {0, 3 * MB + 1, ImpactRating::High},
        {10, 45 * MB, ImpactRating::High},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RateImpact(c.cpuMs, c.ioBytes), c.rating) << c.cpuMs << " ms " << c.ioBytes;
    ImpactRecord split; // read and written count together
    split.ReadBytes = 2 * MB;
    split.WriteBytes = 2 * MB;
    EXPECT_EQ(split.Rating(), ImpactRating::High);
}

TEST(ImpactKeys, AnItemIsItsLocationAndItsOwnNameWhateverItsState) {
    auto key = [](std::optional<ImpactKey> k) {
        return k ? std::to_string(k->Location) + "|" + k->Name : std::string("none");
    };
    EXPECT_EQ(key(ImpactKeyOf({"C:\\a\\tool.exe", "-x", "ExecuteReg", 1, "Tool"})), "1|Tool");
    EXPECT_EQ(key(ImpactKeyOf({"C:\\a\\tool.exe", "", "ExecuteRegAU", 1, ""})), "0|tool.exe");
    EXPECT_EQ(key(ImpactKeyOf({"Word.lnk", "", "Execute", 0, ""})), "3|Word.lnk");
    EXPECT_EQ(key(ImpactKeyOf({"C:\\Items\\Word.lnk", "", "ExecuteAU", 0, ""})), "2|Word.lnk");
    EXPECT_EQ(key(ImpactKeyOf({"", "", "Execute", 0, ""})), "none");
    EXPECT_EQ(key(ImpactKeyOf({"x.exe", "", "Close", 0, ""})), "none");
    // Stopped, the same items keep their keys. A value's saved copy tells where a name that
    // holds "=" ends; without it the name is the one the list shows, before the first "=". An
    // older entry of a path alone is never cut at an "=" of the path.
    EXPECT_EQ(key(ImpactKeyOfStopped("_REGCU_Tool=\"C:\\a\\tool.exe\" -x")), "1|Tool");
    EXPECT_EQ(key(ImpactKeyOfStopped("_REGAU_a=b=C:\\x.exe", "a=b")), "0|a=b");
    EXPECT_EQ(key(ImpactKeyOfStopped("_REGAU_a=b=C:\\x.exe")), "0|a");
    EXPECT_EQ(key(ImpactKeyOfStopped("_REGCU_C:\\a=b\\x.exe")), "1|C:\\a=b\\x.exe");
    EXPECT_EQ(key(ImpactKeyOfStopped("_STPAU_Word.lnk")), "2|Word.lnk");
    EXPECT_EQ(key(ImpactKeyOfStopped("_XXXXX_Word.lnk")), "none");
    EXPECT_EQ(key(ImpactKeyOfStopped("_REGCU_")), "none");
    // Names compare in the platform's order; without one, exactly as written.
    EXPECT_TRUE(SameItem({kUserRun, "TOOL"}, {kUserRun, "tool"}, test::AsciiNameOrder));
    EXPECT_FALSE(SameItem({kUserRun, "TOOL"}, {kUserRun, "tool"}, nullptr));
    EXPECT_FALSE(SameItem({kUserRun, "Tool"}, {kMachineRun, "Tool"}, test::AsciiNameOrder));
}

TEST(ImpactFile, WritesCsvLinesThatReadBackAndPassesOverBrokenOnes) {
    std::vector<ImpactRecord> records;
    PutImpact(records, {{kUserRun, "Tool"}, "2026-11-23 08:15:02", 4100, 2300, 45 << 20, 0, 30000});
    PutImpact(records, {{kCommonStartup, " Odd, \"quoted\".lnk"},
                        "2026-11-23 08:15:40",
                        std::nullopt,
                        12,
                        0,
                        4096,
                        850});
    const std::string bytes = FormatImpactFile(records);
    EXPECT_EQ(bytes,
              "Location,Name,Measured,Rating,ReadyMs,CpuMs,ReadBytes,WriteBytes,WatchedMs\r\n"
              "HKCU Run,Tool,2026-11-23 08:15:02,High,4100,2300,47185920,0,30000\r\n"
              "All Users Startup,\" Odd, \"\"quoted\"\".lnk\",2026-11-23 08:15:40,Low,,12,0,4096,"
              "850\r\n");
    // A blank at either end alone is kept by the quotes, which the reader does not trim.
    EXPECT_EQ(Quoted("Tool "), "\"Tool \"");
    EXPECT_EQ(Quoted(" Tool"), "\" Tool\"");

    // An edited file: LF line ends, a cut-off last line, a word and a number that are not.
    const std::string edited = bytes + "HKCU Run,Cut,2026,Low,1,2\n" +
                               "Nowhere,X,t,Low,,1,1,1,1\n" +
                               "User Startup,Y,t,Low,soon,1,1,1,1\n" + "HKLM Run,\"Open,1\n" +
                               "HKLM Run,Later,t,High,,5,0,0,900";
    const ImpactFileContent read = ParseImpactFile(edited);
    EXPECT_EQ(read.SkippedLines, 4u);
    ASSERT_EQ(read.Records.size(), 3u);
    EXPECT_EQ(FormatImpactFile({read.Records[0], read.Records[1]}), bytes);
    EXPECT_EQ(read.Records[2].Key.Name, "Later");
    EXPECT_EQ(read.Records[2].Rating(), ImpactRating::Low); // the figures decide, not the word

    // A new measurement of an item replaces its last one, by name in any letter case as the
    // platform's order has it; read back, a later line of the item replaces an earlier one.
    records = read.Records;
    PutImpact(records, {{kUserRun, "TOOL"}, "2026-11-24 08:00:00", 900, 200, 0, 0, 30000},
              test::AsciiNameOrder);
    ASSERT_EQ(records.size(), 3u);
    const ImpactRecord* tool = FindImpact(records, {kUserRun, "tool"}, test::AsciiNameOrder);
    ASSERT_TRUE(tool);
    EXPECT_EQ(tool->CpuMs, 200u);
    EXPECT_FALSE(FindImpact(records, {kMachineRun, "Tool"}, test::AsciiNameOrder));
    const std::vector<ImpactRecord> twice =
        ParseImpactFile(bytes + "HKCU Run,TOOL,t,Low,,7,0,0,900\r\n", test::AsciiNameOrder).Records;
    ASSERT_EQ(twice.size(), 2u);
    EXPECT_EQ(twice[0].CpuMs, 7u);
}

// Runs written and read back, a run without measurements or main wait kept as such; an edited
// file loses its broken lines, and the program lines of a broken run line, never another run.
TEST(LogonHistory, RunsReadBackABrokenLineCostsOnlyItselfAndTheLastTwentyStay) {
    const std::vector<LogonRun> runs = {
        {"7-100", "2026-11-23 08:15:02", std::nullopt, {}},
        {"7-900",
         "2026-11-24 08:01:10",
         41000,
         {{{kUserRun, "Tool"}, "C:\\a\\tool.exe", 41000, 2100, 400, 1 << 20, 0, 30000},
          {{kCommonStartup, "Odd, \"x\".lnk"}, "Odd, \"x\".lnk", 43500, {}, 12, 0, 0, 30000}}},
    };
    const std::string bytes = FormatHistoryFile(runs);
    EXPECT_EQ(bytes.substr(bytes.find("\r\n") + 2),
              "Run,7-100,2026-11-23 08:15:02,\r\n"
              "Run,7-900,2026-11-24 08:01:10,41000\r\n"
              "Program,HKCU Run,Tool,C:\\a\\tool.exe,41000,2100,400,1048576,0,30000\r\n"
              "Program,All Users Startup,\"Odd, \"\"x\"\".lnk\",\"Odd, \"\"x\"\".lnk\",43500,,12,0,"
              "0,30000\r\n");
    const std::string edited = "Program,HKCU Run,Orphan,x,1,,1,1,1,1\n" + bytes +
                               "Run,cut\r\n"
                               "Program,User Startup,Lost,x,1,,1,1,1,1\r\n"
                               "Run,9-1,2026-11-26 08:00:00,5000\r\n"
                               "Program,Nowhere,X,x,1,,1,1,1,1\r\n"
                               "Program,User Startup,Kept.lnk,x,6000,,1,1,1,900";
    const HistoryFileContent read = ParseHistoryFile(edited);
    EXPECT_EQ(read.SkippedLines, 4u);
    ASSERT_EQ(read.Runs.size(), 3u);
    EXPECT_EQ(FormatHistoryFile({read.Runs[0], read.Runs[1]}), bytes);
    ASSERT_EQ(read.Runs[2].Programs.size(), 1u);
    EXPECT_EQ(read.Runs[2].Programs[0].EndMs(), 6900u);

    // A run replaces its earlier self by its id; a new one is the newest; the last 20 stay.
    std::vector<LogonRun> kept;
    for (int i = 0; i < 25; ++i)
        PutRun(kept, {std::to_string(i), "t"});
    PutRun(kept, {"10", "t", 5000});
    ASSERT_EQ(kept.size(), kKeptRuns);
    EXPECT_EQ(kept.front().Id, "5");
    EXPECT_EQ(kept[5].MainDelayMs, 5000u);
    EXPECT_EQ(kept.back().Id, "24");
}

} // namespace
} // namespace tolvane
