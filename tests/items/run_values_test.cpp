#include <gtest/gtest.h>

#include "config/program_model.h"
#include "items/reg_backup_format.h"
#include "items/run_data.h"
#include "text/code_page.h"

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

TEST(RunData, EachStoppedValueFindsItsOwnSavedCopy) {
    // The entry names its value, without the quotes the file cannot keep.
    EXPECT_EQ(StoppedRunEntry("Q \"1\"", " \"C:\\q q\\q.exe\" -m "), "Q 1=C:\\q q\\q.exe -m");
    EXPECT_EQ(NamedStoppedValue("Q 1=C:\\q.exe /x=1")->Data, "C:\\q.exe /x=1");
    EXPECT_FALSE(NamedStoppedValue("C:\\a=b\\x.exe")); // an older entry: a path alone
    const std::vector<std::string> saved = {
        "A=C:\\x.exe /a", "B=C:\\x.exe /b", "",
        "C=C:\\x.exe",    "D=C:\\x.exe",    "R=\"C:\\q\\r.exe\" -m"};
    // By name first, whatever the commands; then older entries that hold a path alone, each
    // taking a copy no other entry has: exact path, then trimmed, then contained. The copy of a
    // delayed value (C) is never taken.
    EXPECT_EQ(MatchStoppedRunValues(saved,
                                    {"C:\\x.exe ", "B=C:\\x.exe /b", "C:\\x.exe", "C:\\x.exe",
                                     "C:\\q\\r", "C:\\none.exe", "Gone=C:\\x.exe /a", ""},
                                    {"C"}),
              (std::vector<int>{0, 1, 4, -1, 5, -1, -1, -1}));
    // Through the model: the stopped entries of one key, the delayed values of that key.
    ProgramModel model;
    model.ProgramGroups = {
        {"Startup",
         {{"C:\\x.exe", "", "ExecuteReg", 0, "A"}, {"C:\\x.exe", "", "ExecuteRegAU", 0, "C"}}}};
    model.StartupGroupIndex = 0;
    model.StoppedPrograms = {"_REGAU_C:\\x.exe", "_STPCU_C:\\x.exe", "_REGCU_C:\\x.exe"};
    EXPECT_EQ(SavedCopyOfStopped(model, 2, saved), 3);
    EXPECT_EQ(SavedCopyOfStopped(model, 0, saved), 4); // C is delayed from this key
    EXPECT_EQ(SavedCopyOfStopped(model, 1, saved), -1);
    EXPECT_EQ(SavedCopyOfStopped(model, 3, saved), -1);
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
    EXPECT_EQ(RegValueLine({"B", 3, {0xde, 0xad}, ""}), "\"B\"=hex:de,ad");
    // In a double-byte code page a "\" that ends a character (Shift-JIS "so", 83 5C) stays one.
    SetActiveCodePage(932);
    EXPECT_EQ(RegValueLine({"J", 1, {}, "C:\\\x83\\\\x.exe"}), "\"J\"=\"C:\\\\\x83\\\\\\x.exe\"");
    SetActiveCodePage(kDefaultCodePage);

    // Expandable and multi-string text as the registry editor writes them: UTF-16LE with the
    // ending NUL, and for a list the empty string after its last one.
    EXPECT_EQ(RegValueLine({"E", 2, {}, "", u"%A%\u00e9"}),
              "\"E\"=hex(2):25,00,41,00,25,00,e9,00,00,00");
    EXPECT_EQ(RegValueLine({"M", 7, {}, "", std::u16string(u"a\0\u00e9", 3)}),
              "\"M\"=hex(7):61,00,00,00,e9,00,00,00,00,00");
    // Long data wraps where the editor wraps it: no line longer than 80 characters.
    EXPECT_EQ(
        RegValueLine({"Path", 2, {}, "", u"%SystemRoot%\\system32\\caf\u00e9.exe"}),
        "\"Path\"=hex(2):25,00,53,00,79,00,73,00,74,00,65,00,6d,00,52,00,6f,00,6f,00,74,\\\r\n"
        "  00,25,00,5c,00,73,00,79,00,73,00,74,00,65,00,6d,00,33,00,32,00,5c,00,63,00,\\\r\n"
        "  61,00,66,00,e9,00,2e,00,65,00,78,00,65,00,00,00");
}

} // namespace
} // namespace tolvane
