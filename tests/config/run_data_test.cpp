#include <gtest/gtest.h>

#include "config/program_model.h"
#include "config/run_data.h"

namespace tolvane {
namespace {

TEST(RunData, SplitsCommandsIntoPathAndParameters) {
    struct Case {
        const char* data;
        const char* path;
        const char* parameters;
    };
    const Case cases[] = {
        {"C:\\A\\x.exe", "C:\\A\\x.exe", ""},
        {"C:\\A\\x.EXE", "C:\\A\\x.EXE", ""},
        {"C:\\A\\x.exe /min", "C:\\A\\x.exe ", "/min"},
        {"\"C:\\A\\x.exe\" /min", "\"C:\\A\\x.exe\" ", "/min"},
        {"\"C:\\A\\x.exe\"", "\"C:\\A\\x.exe\"", ""}, // the quote after ".exe" is dropped
        {"C:\\x.exe /opt=1 -a", "C:\\x.exe ", "/opt=1 -a"},
        // The same letters in path and parameters: only the tail is taken out.
        {"C:\\x\\x.exe x", "C:\\x\\x.exe ", "x"},
        {"\"C:\\Program Files\\T\\t.exe\"   -a  ", "\"C:\\Program Files\\T\\t.exe\"     ", "-a"},
        // Without ".exe": after the quoted path, or at the first blank.
        {"rundll32 shell32.dll,Control", "rundll32 ", "shell32.dll,Control"},
        {"\"C:\\My Tools\\go.bat\" now", "\"C:\\My Tools\\go.bat\" ", "now"},
        {"C:\\go.bat", "C:\\go.bat", ""},
        {"ab", "ab", ""},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        RunCommandParts parts = SplitRunData(c.data);
        EXPECT_EQ(parts.Path, c.path) << c.data;
        EXPECT_EQ(parts.Parameters, c.parameters) << c.data;
    }
}

TEST(RunData, NameAndDataSplitAtTheFirstEquals) {
    const NameData nd = SplitNameData("Tool=C:\\x.exe /opt=1");
    EXPECT_EQ(nd.Name + "|" + nd.Data, "Tool|C:\\x.exe /opt=1");
    EXPECT_EQ(SplitNameData("=C:\\d.exe").Name, "");
    EXPECT_EQ(SplitNameData("NoEquals").Name + "|" + SplitNameData("NoEquals").Data, "NoEquals|");
}

TEST(RunData, EachDelayedAndStoppedValueFindsItsOwnSavedCopy) {
    // The entry names its value, without the quotes the file cannot keep.
    EXPECT_EQ(StoppedRunEntry("Q \"1\"", " \"C:\\q q\\q.exe\" -m "), "Q 1=C:\\q q\\q.exe -m");
    EXPECT_EQ(NamedStoppedValue("Q 1=C:\\q.exe /x=1")->Data, "C:\\q.exe /x=1");
    EXPECT_FALSE(NamedStoppedValue("C:\\a=b\\x.exe")); // an older entry: a path alone
    const std::vector<std::string> saved = {
        "A=C:\\x.exe /a", "B=C:\\x.exe /b", "",
        "C=C:\\x.exe",    "D=C:\\x.exe",    "R=\"C:\\q\\r.exe\" -m"};
    ProgramModel model;
    model.ProgramGroups = {{"Startup",
                            {{"C:\\x.exe", "", "ExecuteRegAU", 0, "C"},
                             {"C:\\x.exe", "", "ExecuteReg", 0, "A"},
                             {"", "", "ExecuteRegAU", 0, "D"}}}};
    model.StartupGroupIndex = 0;
    // By name first, whatever the commands; then older entries that hold a path alone, each
    // taking a copy no other entry has: exact path, then trimmed, then contained. The copy of a
    // delayed value (C) is never taken; a program without a path claims nothing (D).
    model.StoppedPrograms = {"_REGAU_C:\\x.exe ",        "_REGAU_B=C:\\x.exe /b",
                             "_REGAU_C:\\x.exe",         "_REGAU_C:\\x.exe",
                             "_REGAU_C:\\q\\r",          "_REGAU_C:\\none.exe",
                             "_REGAU_Gone=C:\\x.exe /a", "",
                             "_STPCU_C:\\x.exe"};
    SavedCopyMatch m = MatchSavedCopies(model, kMachineRun, saved);
    EXPECT_EQ(m.Stopped, (std::vector<int>{0, 1, 4, -1, 5, -1, -1, -1, -1}));
    EXPECT_EQ(m.Delayed, (std::vector<int>{3, -1, -1}));
    EXPECT_EQ(SavedCopyOfStopped(model, 2, saved), 4);
    EXPECT_EQ(SavedCopyOfStopped(model, 8, saved), -1); // a shortcut has no copy

    // The machine's two views listed one after the other: the same name in both is two
    // values, and the command tells whose copy is whose, whatever the order of the model.
    const std::vector<std::string> views = {"T=C:\\64.exe", "U=C:\\u.exe", "T=C:\\32.exe",
                                            "U=C:\\u.exe"};
    model.ProgramGroups[0].Programs = {{"C:\\32.exe", "", "ExecuteRegAU", 0, "T"},
                                       {"C:\\64.exe", "", "ExecuteRegAU", 0, "T"}};
    model.StoppedPrograms = {"_REGAU_U=C:\\u.exe", "_REGAU_U=C:\\u.exe", "_REGAU_U=C:\\u.exe"};
    m = MatchSavedCopies(model, kMachineRun, views);
    EXPECT_EQ(m.Delayed, (std::vector<int>{2, 0}));
    EXPECT_EQ(m.Stopped, (std::vector<int>{1, 3, -1}));
    EXPECT_EQ(MatchSavedCopies(model, kUserRun, views).Delayed, (std::vector<int>{-1, -1}));
}

} // namespace
} // namespace tolvane
