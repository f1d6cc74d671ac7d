#include <gtest/gtest.h>

#include "items/reg_backup_format.h"
#include "text/code_page.h"

namespace tolvane {
namespace {

TEST(RegBackupFormat, LinesReadBackAsTheValuesTheyCameFrom) {
    EXPECT_EQ(
        RegKeyLine(RegistryRoot::CurrentUser) + RegKeyLine(RegistryRoot::LocalMachine) +
            RegKeyLine(RegistryRoot::LocalMachine32),
        "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]"
        "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Run]");
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
    // A line of exactly 80 characters with its "\\" is still one line.
    std::string bytes(30, '\xab'), row;
    for (int i = 0; i < 23; ++i)
        row += "ab,";
    EXPECT_EQ(RegValueLine({"Abc", 3, {bytes.begin(), bytes.end()}, ""}),
              "\"Abc\"=hex:" + row + "\\\r\n  ab,ab,ab,ab,ab,ab,ab");
}

} // namespace
} // namespace tolvane
