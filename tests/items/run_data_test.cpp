#include <gtest/gtest.h>

#include "items/run_data.h"

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
    NameData nd = SplitNameData("Tool=C:\\x.exe /opt=1");
    EXPECT_EQ(nd.Name, "Tool");
    EXPECT_EQ(nd.Data, "C:\\x.exe /opt=1");
    EXPECT_EQ(SplitNameData("=C:\\d.exe").Name, "");
    EXPECT_EQ(SplitNameData("NoEquals").Name, "NoEquals");
    EXPECT_EQ(SplitNameData("NoEquals").Data, "");
}

TEST(RunData, SavedCopyOfAStoppedPathPrefersTheExactCommand) {
    // Listed first but only containing the path: the exact one wins.
    std::vector<std::string> saved = {"A=C:\\a.exe -x", "B=C:\\a.exe"};
    EXPECT_EQ(FindSavedRunValue(saved, "C:\\a.exe"), 1);
    EXPECT_EQ(FindSavedRunValue(saved, "C:\\a.exe "), 0); // the -x command's path, blank and all
    EXPECT_EQ(FindSavedRunValue({"A=C:\\a.exe -x"}, "C:\\a.exe"), 0); // as the file stores it
    // No exact command: the first that contains the path.
    EXPECT_EQ(FindSavedRunValue({"", "Q=\"C:\\q.exe\" -m", "R=C:\\q.exe"}, "\"C:\\q"), 1);
    EXPECT_EQ(FindSavedRunValue({"A=C:\\a.exe"}, "C:\\b.exe"), -1);
    EXPECT_EQ(FindSavedRunValue({"A=C:\\a.exe"}, "  "), -1);
    EXPECT_EQ(FindSavedRunValue({""}, "C:\\a.exe"), -1);
}

} // namespace
} // namespace tolvane
