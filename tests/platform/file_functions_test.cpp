#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "platform/file_functions.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::PathExists;
using test::ReadFileBytes;
using test::WriteFileBytes;

// Bytes that a text-mode copy or a truncation would change.
const char kPayloadBytes[] = "shortcut\r\n\0\x01\xff payload";
const std::string kPayload(kPayloadBytes, sizeof kPayloadBytes - 1);

// A name of its own in a folder of its own, so that the shared trash and recent documents
// hold nothing of earlier runs under it.
std::string Unique(const test::TempFolder& dir, const char* name) {
    return dir.Path().substr(dir.Path().find_last_of('\\') + 1) + name;
}

TEST(FileFunctions, MovesMakeMissingFoldersReplaceWithoutAskingAndKeepEveryByte) {
    test::TempFolder dir;
    CFileFunctions files;
    WriteFileBytes(dir / "Tool.lnk", kPayload);
    // As the startup-item moves build it: an items folder ending in "\" joined with "\".
    const std::string items = dir / "Tolvane Items\\Current User\\";
    EXPECT_EQ(files.MoveFile(dir / "Tool.lnk", items + "\\Tool.lnk", nullptr, "",
                             kQuietFileOperationMakeFolder),
              0);
    EXPECT_FALSE(PathExists(dir / "Tool.lnk"));
    EXPECT_EQ(ReadFileBytes(items + "Tool.lnk"), kPayload);
    // Without the folder flag an existing target is replaced, no question asked.
    WriteFileBytes(dir / "Tool.lnk", "newer");
    EXPECT_EQ(
        files.MoveFile(dir / "Tool.lnk", items + "Tool.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_FALSE(PathExists(dir / "Tool.lnk"));
    EXPECT_EQ(ReadFileBytes(items + "Tool.lnk"), "newer");
    // A move of nothing fails and leaves no folder behind.
    EXPECT_NE(files.MoveFile(dir / "Missing.lnk", dir / "Other\\Missing.lnk", nullptr, "",
                             kQuietFileOperationMakeFolder),
              0);
    EXPECT_FALSE(PathExists(dir / "Other"));

    // A copy keeps the source, a rename does not; an empty path asks the shell nothing.
    WriteFileBytes(dir / "a.lnk", kPayload);
    EXPECT_EQ(files.CopyFile(dir / "a.lnk", dir / "b.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.RenameFile(dir / "b.lnk", dir / "c.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.MoveFile(dir / "a.lnk", "", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.MoveFile("", dir / "b.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(ReadFileBytes(dir / "a.lnk"), kPayload);
    EXPECT_FALSE(PathExists(dir / "b.lnk"));
    EXPECT_EQ(ReadFileBytes(dir / "c.lnk"), kPayload);
}

TEST(FileFunctions, DeletesBypassTheRecycleBin) {
    // Wine's recycle bin is the XDG trash, which the test run points into the build folder.
    char xdg[MAX_PATH] = {};
    ASSERT_GT(GetEnvironmentVariableA("XDG_DATA_HOME", xdg, MAX_PATH), 0u) << "run via ctest";
    test::MakeFolder(test::WinePathOfUnixPath(xdg)); // else Wine quietly deletes for good
    const std::string trash = test::WinePathOfUnixPath(xdg) + "\\Trash\\files\\";
    test::TempFolder dir;
    CFileFunctions files;
    const std::string gone = Unique(dir, "-gone.lnk"), binned = Unique(dir, "-binned.lnk");
    WriteFileBytes(dir / gone, kPayload);
    WriteFileBytes(dir / binned, kPayload);
    EXPECT_EQ(files.DeleteFile("", nullptr, "Deleting", kQuietFileOperation), 0);
    EXPECT_EQ(files.DeleteFile(dir / gone, nullptr, "Deleting", kQuietFileOperation), 0);
    EXPECT_FALSE(PathExists(dir / gone));
    EXPECT_FALSE(PathExists(trash + gone));
    // The undo flag, which no caller passes, is what would have put it there.
    EXPECT_EQ(files.DeleteFile(dir / binned, nullptr, "", kQuietFileOperation | FOF_ALLOWUNDO), 0);
    EXPECT_EQ(ReadFileBytes(trash + binned), kPayload);
    // A missing file fails at once: no dialog holds the test up.
    EXPECT_NE(files.DeleteFile(dir / gone, nullptr, "", kQuietFileOperation), 0);
}

TEST(FileFunctions, OnlyOrdinaryFilesBecomeRecentDocuments) {
    test::TempFolder dir;
    const std::string recent = test::ShellFolder(CSIDL_RECENT) + "\\";
    const std::string plain = Unique(dir, "-plain.txt"), hidden = Unique(dir, "-hidden.txt");
    WriteFileBytes(dir / plain, "text");
    WriteFileBytes(dir / hidden, "text");
    SetFileAttributesA((dir / hidden).c_str(), FILE_ATTRIBUTE_HIDDEN);
    CFileFunctions().AddFileToRecentDocs(dir / hidden);
    CFileFunctions().AddFileToRecentDocs(dir / plain);
    EXPECT_FALSE(PathExists(recent + hidden + ".lnk"));
    EXPECT_TRUE(PathExists(recent + plain + ".lnk"));
    DeleteFileA((recent + plain + ".lnk").c_str());
}

} // namespace
} // namespace tolvane
