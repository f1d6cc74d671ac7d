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

// A Run value's command listed cut short would be moved and written back cut short.
TEST_F(Registry, ListsEveryValueWhole) {
    EXPECT_TRUE(reg.EnumValues(root, path + "\\Missing").empty());
    const std::string longName = LongText(300, 'A');
    const std::string longData = "C:\\" + LongText(5000) + ".exe /x";
    ASSERT_TRUE(reg.SetValue(root, path, longName, test::WideValue(REG_SZ, "C:\\n.exe")));
    ASSERT_TRUE(reg.SetValue(root, path, "E", test::WideValue(REG_EXPAND_SZ, longData)));
    Lines listed;
    for (const auto& [name, value] : reg.EnumValues(root, path))
        listed.push_back(name + "=" + ValueText(value));
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (Lines{longName + "=C:\\n.exe", "E=" + longData}));
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
