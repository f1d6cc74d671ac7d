#include <gtest/gtest.h>

#include "items/reg_backup_format.h"

namespace tolvane {
namespace {

TEST(RegBackupFormat, LinesReadBackAsTheValuesTheyCameFrom) {
    EXPECT_EQ(RegKeyLine(false),
              "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]");
    EXPECT_EQ(RegKeyLine(true),
              "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]");

    BackupValue tool{"Tool", 1, {}, "\"C:\\T\\tool.exe\" /min"};
    EXPECT_EQ(RegValueLine(tool), "\"Tool\"=\"\\\"C:\\\\T\\\\tool.exe\\\" /min\"");
    BackupValue nameWithQuote{"A \"B\"", 1, {}, "C:\\x.exe /opt=1"};
    EXPECT_EQ(RegValueLine(nameWithQuote), "\"A \\\"B\\\"\"=\"C:\\\\x.exe /opt=1\"");
    BackupValue unnamed{"", 1, {}, "x"};
    EXPECT_EQ(RegValueLine(unnamed), "@=\"x\"");

    BackupValue dword{"N", 4, {0x78, 0x56, 0x34, 0x12}, ""};
    EXPECT_EQ(RegValueLine(dword), "\"N\"=dword:12345678");
    // Expandable text keeps its type: its code-page bytes and the end NUL, as an ANSI file holds
    // them.
    BackupValue expand{"E", 2, {}, "%A%"};
    EXPECT_EQ(RegValueLine(expand), "\"E\"=hex(2):25,41,25,00");
    BackupValue binary{"B", 3, {0xde, 0xad}, ""};
    EXPECT_EQ(RegValueLine(binary), "\"B\"=hex:de,ad");

    // Long data goes on continuation lines the editor reads back.
    BackupValue big{"Big", 3, std::vector<uint8_t>(100, 0xab), ""};
    const std::string line = RegValueLine(big);
    size_t bytes = 0, at = 0;
    while ((at = line.find("ab", at)) != std::string::npos) {
        ++bytes;
        at += 2;
    }
    EXPECT_EQ(bytes, 100u);
    EXPECT_NE(line.find(",\\\r\n  ab"), std::string::npos);
    for (size_t start = 0, end; (end = line.find("\r\n", start)) != std::string::npos;
         start = end + 2)
        EXPECT_LE(end - start, 80u);
}

} // namespace
} // namespace tolvane
