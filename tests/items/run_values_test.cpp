#include <gtest/gtest.h>

#include "items/reg_backup_format.h"
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
    const NameData nd = SplitNameData("Tool=C:\\x.exe /opt=1");
    EXPECT_EQ(nd.Name + "|" + nd.Data, "Tool|C:\\x.exe /opt=1");
    EXPECT_EQ(SplitNameData("=C:\\d.exe").Name, "");
    EXPECT_EQ(SplitNameData("NoEquals").Name + "|" + SplitNameData("NoEquals").Data, "NoEquals|");
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

TEST(RegBackupFormat, LinesReadBackAsTheValuesTheyCameFrom) {
    EXPECT_EQ(RegKeyLine(false),
              "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]");
    EXPECT_EQ(RegKeyLine(true),
              "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]");
    EXPECT_EQ(RegValueLine({"Tool", 1, {}, "\"C:\\T\\tool.exe\" /min"}),
              "\"Tool\"=\"\\\"C:\\\\T\\\\tool.exe\\\" /min\"");
    EXPECT_EQ(RegValueLine({"A \"B\"", 1, {}, "C:\\x.exe /opt=1"}),
              "\"A \\\"B\\\"\"=\"C:\\\\x.exe /opt=1\"");
    EXPECT_EQ(RegValueLine({"", 1, {}, "x"}), "@=\"x\"");
    EXPECT_EQ(RegValueLine({"N", 4, {0x78, 0x56, 0x34, 0x12}, ""}), "\"N\"=dword:12345678");
    // Expandable text keeps its type: its code-page bytes and the end NUL, as an ANSI file
    // holds them.
    EXPECT_EQ(RegValueLine({"E", 2, {}, "%A%"}), "\"E\"=hex(2):25,41,25,00");
    EXPECT_EQ(RegValueLine({"B", 3, {0xde, 0xad}, ""}), "\"B\"=hex:de,ad");

    // Long data goes on continuation lines of at most 80 characters the editor reads back.
    const std::string line = RegValueLine({"Big", 3, std::vector<uint8_t>(100, 0xab), ""});
    size_t bytes = 0;
    for (size_t at = 0; (at = line.find("ab", at)) != std::string::npos; at += 2)
        ++bytes;
    EXPECT_EQ(bytes, 100u);
    EXPECT_NE(line.find(",\\\r\n  ab"), std::string::npos);
    for (size_t start = 0, end; (end = line.find("\r\n", start)) != std::string::npos;
         start = end + 2)
        EXPECT_LE(end - start, 80u);
}

} // namespace
} // namespace tolvane
