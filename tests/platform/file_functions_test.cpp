#include <gtest/gtest.h>

#include <windows.h>

#include "platform/file_functions.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::PathExists;
using test::ReadFileBytes;
using test::WriteFileBytes;

// The moves of startup items go through the shell: between volumes it copies, and a text-mode
// copy or a truncation would change these bytes.
TEST(FileFunctions, MovesMakeMissingFoldersReplaceWithoutAskingAndKeepEveryByte) {
    const char bytes[] = "shortcut\r\n\0\x01\xff payload";
    const std::string payload(bytes, sizeof bytes - 1);
    test::TempFolder dir;
    CFileFunctions files;
    WriteFileBytes(dir / "Tool.lnk", payload);
    // As the startup-item moves build it: an items folder ending in "\" joined with "\".
    const std::string items = dir / "Tolvane Items\\Current User\\";
    EXPECT_EQ(files.MoveFile(dir / "Tool.lnk", items + "\\Tool.lnk", nullptr, "",
                             kQuietFileOperationMakeFolder),
              0);
    EXPECT_FALSE(PathExists(dir / "Tool.lnk"));
    EXPECT_EQ(ReadFileBytes(items + "Tool.lnk"), payload);
    // Without the folder flag an existing target is replaced, no question asked.
    WriteFileBytes(dir / "Tool.lnk", "newer");
    EXPECT_EQ(
        files.MoveFile(dir / "Tool.lnk", items + "Tool.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_FALSE(PathExists(dir / "Tool.lnk"));
    EXPECT_EQ(ReadFileBytes(items + "Tool.lnk"), "newer");
    // A move of nothing fails and leaves no folder behind; an empty path asks the shell nothing.
    EXPECT_NE(files.MoveFile(dir / "Missing.lnk", dir / "Other\\Missing.lnk", nullptr, "",
                             kQuietFileOperationMakeFolder),
              0);
    EXPECT_FALSE(PathExists(dir / "Other"));
    EXPECT_EQ(files.MoveFile(items + "Tool.lnk", "", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.MoveFile("", items + "Tool.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(ReadFileBytes(items + "Tool.lnk"), "newer");
}

} // namespace
} // namespace tolvane
