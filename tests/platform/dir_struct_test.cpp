#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "platform/dir_struct.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::WriteFileBytes;

class DirStruct : public ::testing::Test {
protected:
    std::vector<std::string> Listed(const std::string& folder) {
        std::vector<std::string> list{"stale"};
        EXPECT_TRUE(ds.ReturnFiles(folder, list));
        std::sort(list.begin(), list.end());
        return list;
    }

    test::TempFolder dir;
    CDirStruct ds;
};

TEST_F(DirStruct, ListingsSkipOnlyDotsAndTheLowerCaseDesktopIni) {
    EXPECT_EQ(Listed(dir.Path()), std::vector<std::string>{""});
    EXPECT_EQ(Listed(dir / "missing"), std::vector<std::string>{""});
    WriteFileBytes(dir / "desktop.ini", "[.ShellClassInfo]");
    EXPECT_EQ(Listed(dir.Path() + "\\"), std::vector<std::string>{""});

    // Only the lower-case name is skipped.
    test::TempFolder capital;
    WriteFileBytes(capital / "Desktop.ini", "");
    EXPECT_EQ(Listed(capital.Path()), std::vector<std::string>{"Desktop.ini"});

    WriteFileBytes(dir / "Tool.lnk", "");
    WriteFileBytes(dir / "with blank.lnk", "");
    test::MakeFolder(dir / "Sub");
    WriteFileBytes(dir / "hidden.lnk", "");
    SetFileAttributesA((dir / "hidden.lnk").c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(Listed(dir.Path()),
              (std::vector<std::string>{"Sub", "Tool.lnk", "hidden.lnk", "with blank.lnk"}));
}

TEST_F(DirStruct, EntriesMatchTheirExactName) {
    WriteFileBytes(dir / "tool.lnk", "");
    test::MakeFolder(dir / "Folder");
    EXPECT_TRUE(ds.FileExists("tool.lnk", dir.Path()));
    EXPECT_TRUE(ds.FileExists("tool.lnk", dir.Path() + "\\"));
    EXPECT_TRUE(ds.FileExists("tool.lnk", dir.Path() + "\\\\")); // searched with one
    EXPECT_FALSE(ds.FileExists("TOOL.LNK", dir.Path()));         // the platform would say yes
    EXPECT_TRUE(ds.FileExists("Folder", dir.Path()));            // folders count as entries
    EXPECT_FALSE(ds.FileExists("*.lnk", dir.Path()));            // no pattern matches
    EXPECT_FALSE(ds.FileExists("", dir.Path()));
    EXPECT_FALSE(ds.FileExists("tool.lnk", dir / "missing"));

    EXPECT_TRUE(CDirStruct::OrdinaryFileExists(dir / "tool.lnk"));
    EXPECT_FALSE(CDirStruct::OrdinaryFileExists(dir / "Folder"));
    SetFileAttributesA((dir / "tool.lnk").c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(CDirStruct::OrdinaryFileExists(dir / "tool.lnk"));
}

TEST_F(DirStruct, FoldersAreMadeOneLevelDeepOnRequest) {
    EXPECT_FALSE(ds.DirectoryExists("New", dir.Path(), false));
    EXPECT_FALSE(test::PathExists(dir / "New"));
    EXPECT_TRUE(ds.DirectoryExists("New", dir.Path(), true));
    EXPECT_TRUE(test::PathExists(dir / "New"));
    EXPECT_TRUE(ds.DirectoryExists("New", dir.Path() + "\\", false));
    EXPECT_FALSE(ds.DirectoryExists("NEW", dir.Path(), false)); // exact name only

    WriteFileBytes(dir / "plain", "");
    EXPECT_FALSE(ds.DirectoryExists("plain", dir.Path(), true)); // a file stands there
    EXPECT_FALSE(ds.DirectoryExists("leaf", dir / "no\\parent", true));
    EXPECT_FALSE(test::PathExists(dir / "no"));

    EXPECT_FALSE(ds.RemoveEmptyDirectory(""));
    WriteFileBytes(dir / "New\\f", "");
    EXPECT_FALSE(ds.RemoveEmptyDirectory(dir / "New"));
    DeleteFileA((dir / "New\\f").c_str());
    EXPECT_TRUE(ds.RemoveEmptyDirectory(dir / "New"));
    EXPECT_FALSE(test::PathExists(dir / "New"));
}

} // namespace
} // namespace tolvane
