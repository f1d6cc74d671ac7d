#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "platform/dir_struct.h"
#include "platform/registry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;
using test::LongText;
using test::WriteFileBytes;

class Registry : public ::testing::Test {
protected:
    Lines Listed(const std::string& keyPath) {
        Lines list{"stale"};
        EXPECT_TRUE(reg.EnumKey(root, keyPath, list));
        std::sort(list.begin(), list.end());
        return list;
    }

    test::ScratchKey key;
    CRegistry reg;
    const RegistryRoot root = RegistryRoot::CurrentUser;
    const std::string path = key.Path();
};

TEST_F(Registry, StringsReadOnlyAsTextValuesAndCutAtTheirFirstNul) {
    EXPECT_TRUE(reg.SaveSettingString(root, path, "Empty", ""));
    EXPECT_EQ(reg.GetSettingString(root, path, "Empty", "default"), ""); // not the default
    key.SetRaw("Nul", REG_SZ, std::string_view("ab\0cd\0", 6));
    EXPECT_EQ(reg.GetSettingString(root, path, "Nul"), "ab");
    key.SetRaw("Dword", REG_DWORD, std::string_view("\x01\x00\x00\x00", 4));
    key.SetRaw("Expand", REG_EXPAND_SZ, std::string_view("%TEMP%\0", 7));
    for (const char* other : {"Dword", "Expand", "Missing"})
        EXPECT_EQ(reg.GetSettingString(root, path, other, "dflt"), "dflt") << other;
    EXPECT_EQ(reg.GetSettingString(root, path + "\\NoSuchKey", "Nul", "dflt"), "dflt");

    // Stored without a NUL, a value reads whole, and its typed bytes come back untouched.
    key.SetRaw("NoNul", REG_SZ, "C:\\x.exe -a");
    EXPECT_EQ(reg.GetSettingString(root, path, "NoNul"), "C:\\x.exe -a");
    auto raw = reg.GetValue(root, path, "NoNul");
    ASSERT_TRUE(raw);
    EXPECT_EQ(raw->Type, static_cast<uint32_t>(REG_SZ));
    EXPECT_EQ(
        std::u16string(reinterpret_cast<const char16_t*>(raw->Data.data()), raw->Data.size() / 2),
        u"C:\\x.exe -a");

    // Deleting what is not there succeeds: the value is gone either way.
    EXPECT_TRUE(reg.DeleteValue(root, path, "Missing"));
    EXPECT_TRUE(reg.DeleteValue(root, path + "\\No", "V"));
}

TEST_F(Registry, ListsEveryValueWholeAsNameEqualsData) {
    EXPECT_EQ(Listed(path + "\\Missing"), Lines{""});
    EXPECT_EQ(Listed(path), Lines{""});

    const std::string longName = LongText(300, 'A');
    const std::string longData = "C:\\" + LongText(5000) + ".exe /x";
    key.SetRaw("A", REG_SZ, std::string_view("\0", 1)); // only the NUL
    key.SetRaw("B", REG_SZ, std::string_view("", 0));   // no data: left out
    key.SetRaw("D", REG_SZ, "ends in z");               // no NUL: z survives
    ASSERT_TRUE(reg.SaveSettingString(root, path, longName, "C:\\long-name.exe"));
    ASSERT_TRUE(reg.SaveSettingString(root, path, "E", longData));
    ASSERT_TRUE(reg.SaveSettingString(root, path, "F", LongText(255))); // the classic buffer
    ASSERT_TRUE(reg.SaveSettingString(root, path, "G", LongText(256)));
    Lines expected = {"A=",
                      "D=ends in z",
                      longName + "=C:\\long-name.exe",
                      "E=" + longData,
                      "F=" + LongText(255),
                      "G=" + LongText(256)};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Listed(path), expected);
}

class DirStruct : public ::testing::Test {
protected:
    Lines Listed(const std::string& folder) {
        Lines list{"stale"};
        EXPECT_TRUE(ds.ReturnFiles(folder, list));
        std::sort(list.begin(), list.end());
        return list;
    }

    test::TempFolder dir;
    CDirStruct ds;
};

TEST_F(DirStruct, ListingsSkipOnlyDotsAndTheLowerCaseDesktopIni) {
    EXPECT_EQ(Listed(dir / "missing"), Lines{""});
    WriteFileBytes(dir / "desktop.ini", "[.ShellClassInfo]");
    EXPECT_EQ(Listed(dir.Path() + "\\"), Lines{""});

    // Only the lower-case name is skipped.
    test::TempFolder capital;
    WriteFileBytes(capital / "Desktop.ini", "");
    EXPECT_EQ(Listed(capital.Path()), Lines{"Desktop.ini"});

    WriteFileBytes(dir / "Tool.lnk", "");
    test::MakeFolder(dir / "Sub");
    WriteFileBytes(dir / "hidden.lnk", "");
    SetFileAttributesA((dir / "hidden.lnk").c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(Listed(dir.Path()), (Lines{"Sub", "Tool.lnk", "hidden.lnk"}));
}

TEST_F(DirStruct, EntriesMatchTheirOwnNameAndFoldersAreMadeOneLevelDeep) {
    WriteFileBytes(dir / "tool.lnk", "");
    EXPECT_TRUE(CDirStruct::NamedFileExists(dir / "tool.lnk"));
    EXPECT_TRUE(CDirStruct::NamedFileExists(dir / "TOOL.LNK")); // as Windows compares names
    EXPECT_FALSE(CDirStruct::NamedFileExists(dir / "*.lnk"));   // no pattern matches
    EXPECT_FALSE(CDirStruct::NamedFileExists(dir / "tool.lnk.txt"));
    // Never by the short alias that the platform's own lookup would take.
    WriteFileBytes(dir / "A long shortcut name.lnk", "");
    char alias[MAX_PATH] = {};
    ASSERT_GT(GetShortPathNameA((dir / "A long shortcut name.lnk").c_str(), alias, MAX_PATH), 0u);
    EXPECT_NE(std::string(alias), dir / "A long shortcut name.lnk");
    EXPECT_TRUE(test::PathExists(alias));
    EXPECT_FALSE(CDirStruct::NamedFileExists(alias));
    EXPECT_TRUE(CDirStruct::OrdinaryFileExists(dir / "tool.lnk"));
    EXPECT_FALSE(CDirStruct::OrdinaryFileExists(dir.Path()));
    SetFileAttributesA((dir / "tool.lnk").c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(CDirStruct::OrdinaryFileExists(dir / "tool.lnk"));

    EXPECT_FALSE(ds.DirectoryExists("New", dir.Path(), false));
    EXPECT_FALSE(test::PathExists(dir / "New"));
    EXPECT_TRUE(ds.DirectoryExists("New", dir.Path(), true));
    EXPECT_TRUE(test::PathExists(dir / "New"));
    EXPECT_TRUE(ds.DirectoryExists("New", dir.Path() + "\\", false));
    EXPECT_FALSE(ds.DirectoryExists("NEW", dir.Path(), false));     // exact name only
    EXPECT_FALSE(ds.DirectoryExists("tool.lnk", dir.Path(), true)); // a file stands there
    EXPECT_FALSE(ds.DirectoryExists("leaf", dir / "no\\parent", true));
    EXPECT_FALSE(test::PathExists(dir / "no"));
}

} // namespace
} // namespace tolvane
