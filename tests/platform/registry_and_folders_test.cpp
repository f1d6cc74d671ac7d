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
    key.SetRaw("NoNul", REG_SZ, "C:\\x.exe -a"); // stored without a NUL, it reads whole
    EXPECT_EQ(reg.GetSettingString(root, path, "NoNul"), "C:\\x.exe -a");

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

// The listings of the Startup folders are the refresh's test; here, how a delayed shortcut's file
// is found.
TEST(DirStruct, EntriesMatchTheirOwnNameOnly) {
    test::TempFolder dir;
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
    EXPECT_FALSE(CDirStruct::NamedFileExists(alias));
    EXPECT_TRUE(CDirStruct::OrdinaryFileExists(dir / "tool.lnk"));
    EXPECT_FALSE(CDirStruct::OrdinaryFileExists(dir.Path()));
}

} // namespace
} // namespace tolvane
