#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::PathExists;
using test::ReadFileBytes;
using test::TempFolder;
using test::WriteFileBytes;

// Bytes that a text-mode copy or a truncation would change.
const char kPayloadBytes[] = "shortcut\r\n\0\x01\xff payload";
const std::string kPayload(kPayloadBytes, sizeof kPayloadBytes - 1);

TEST(FileFunctions, MovesMakeMissingFoldersAndReplaceWithoutAsking) {
    TempFolder dir;
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
}

TEST(FileFunctions, EmptyPathsAskNothing) {
    TempFolder dir;
    CFileFunctions files;
    WriteFileBytes(dir / "a.lnk", kPayload);
    EXPECT_EQ(files.MoveFile(dir / "a.lnk", "", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.CopyFile(dir / "a.lnk", "", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.RenameFile(dir / "a.lnk", "", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.MoveFile("", dir / "b.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(files.DeleteFile("", nullptr, "Deleting", kQuietFileOperation), 0);
    EXPECT_EQ(ReadFileBytes(dir / "a.lnk"), kPayload);
    EXPECT_FALSE(PathExists(dir / "b.lnk"));
}

TEST(FileFunctions, CopyKeepsTheSourceAndRenameChangesTheName) {
    TempFolder dir;
    CFileFunctions files;
    WriteFileBytes(dir / "a.lnk", kPayload);
    EXPECT_EQ(files.CopyFile(dir / "a.lnk", dir / "b.lnk", nullptr, "", kQuietFileOperation), 0);
    EXPECT_EQ(ReadFileBytes(dir / "a.lnk"), kPayload);
    EXPECT_EQ(ReadFileBytes(dir / "b.lnk"), kPayload);

    EXPECT_EQ(
        files.RenameFile(dir / "b.lnk", dir / "c.lnk", nullptr, "Renaming", kQuietFileOperation),
        0);
    EXPECT_FALSE(PathExists(dir / "b.lnk"));
    EXPECT_EQ(ReadFileBytes(dir / "c.lnk"), kPayload);
}

// The recycle bin under Wine is the XDG trash below XDG_DATA_HOME, which the test run points
// into the build folder: made here, since Wine would otherwise silently delete for good. A
// Windows path through drive Z:, or "" when the variable is not set.
std::string TrashFilesFolder() {
    char unixPath[MAX_PATH] = {};
    DWORD n = GetEnvironmentVariableA("XDG_DATA_HOME", unixPath, MAX_PATH);
    if (n == 0 || n >= MAX_PATH || unixPath[0] != '/')
        return std::string();
    const std::string path = test::WinePathOfUnixPath(unixPath);
    test::MakeFolder(path);
    return path + "\\Trash\\files";
}

TEST(FileFunctions, DeletesAreForGood) {
    TempFolder dir;
    CFileFunctions files;
    // The test folder's unique name keeps these files apart from earlier runs' in the trash.
    const std::string unique = dir.Path().substr(dir.Path().find_last_of('\\') + 1);
    const std::string gone = unique + "-gone.lnk";
    WriteFileBytes(dir / gone, kPayload);
    EXPECT_EQ(files.DeleteFile(dir / gone, nullptr, "Deleting", kQuietFileOperation), 0);
    EXPECT_FALSE(PathExists(dir / gone));
    // A missing file fails at once: no dialog holds the test up.
    EXPECT_NE(files.DeleteFile(dir / gone, nullptr, "", kQuietFileOperation), 0);

    const std::string trash = TrashFilesFolder();
    if (trash.empty())
        GTEST_SKIP() << "XDG_DATA_HOME names no private trash; the recycle bin is not looked at";
    EXPECT_FALSE(PathExists(trash + "\\" + gone));
    // The undo flag, which no caller passes, would have put the file there.
    const std::string binned = unique + "-binned.lnk";
    WriteFileBytes(dir / binned, kPayload);
    EXPECT_EQ(files.DeleteFile(dir / binned, nullptr, "", kQuietFileOperation | FOF_ALLOWUNDO), 0);
    EXPECT_FALSE(PathExists(dir / binned));
    EXPECT_EQ(ReadFileBytes(trash + "\\" + binned), kPayload);
    DeleteFileA((trash + "\\" + binned).c_str());
    DeleteFileA((trash + "\\..\\info\\" + binned + ".trashinfo").c_str());
}

TEST(FileFunctions, OnlyOrdinaryFilesBecomeRecentDocuments) {
    TempFolder dir;
    CFileFunctions files;
    const std::string recent = test::ShellFolder(CSIDL_RECENT);
    ASSERT_FALSE(recent.empty());
    const std::string unique = dir.Path().substr(dir.Path().find_last_of('\\') + 1);
    const std::string plain = unique + "-plain.txt", hidden = unique + "-hidden.txt";
    WriteFileBytes(dir / plain, "text");
    WriteFileBytes(dir / hidden, "text");
    SetFileAttributesA((dir / hidden).c_str(), FILE_ATTRIBUTE_HIDDEN);
    test::MakeFolder(dir / (unique + "-folder"));

    files.AddFileToRecentDocs(dir / hidden);
    files.AddFileToRecentDocs(dir / (unique + "-folder"));
    files.AddFileToRecentDocs(dir / (unique + "-missing.txt"));
    files.AddFileToRecentDocs("");
    files.AddFileToRecentDocs(dir / plain);

    std::vector<std::string> entries;
    CDirStruct().ReturnFiles(recent, entries);
    std::vector<std::string> ours;
    for (const std::string& entry : entries)
        if (entry.rfind(unique, 0) == 0)
            ours.push_back(entry);
    EXPECT_EQ(ours, std::vector<std::string>{plain + ".lnk"});
    for (const std::string& entry : ours)
        DeleteFileA((recent + "\\" + entry).c_str());
}

} // namespace
} // namespace tolvane
