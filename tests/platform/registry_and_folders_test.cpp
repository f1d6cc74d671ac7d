#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "platform/dir_struct.h"
#include "platform/registry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::LongText;
using test::WriteFileBytes;

class Registry : public ::testing::Test {
protected:
    std::vector<std::string> Listed(const std::string& keyPath) {
        std::vector<std::string> list{"stale"};
        EXPECT_TRUE(reg.EnumKey(root, keyPath, list));
        std::sort(list.begin(), list.end());
        return list;
    }

    test::ScratchKey key;
    CRegistry reg;
    const RegistryRoot root = key.Root();
    const std::string path = key.Path();
};

TEST_F(Registry, StringsReadOnlyAsTextValuesAndCutAtTheirFirstNul) {
    EXPECT_TRUE(reg.SaveSettingString(root, path, "Empty", ""));
    EXPECT_EQ(reg.GetSettingString(root, path, "Empty", "default"), ""); // not the default
    EXPECT_TRUE(reg.SaveSettingString(root, path, "Text", "C:\\x.exe -a"));
    EXPECT_EQ(reg.GetSettingString(root, path, "Text"), "C:\\x.exe -a");

    key.SetRaw("Nul", REG_SZ, std::string_view("ab\0cd\0", 6));
    EXPECT_EQ(reg.GetSettingString(root, path, "Nul"), "ab");
    key.SetRaw("Dword", REG_DWORD, std::string_view("\x01\x00\x00\x00", 4));
    key.SetRaw("Expand", REG_EXPAND_SZ, std::string_view("%TEMP%\0", 7));
    for (const char* other : {"Dword", "Expand", "Missing"})
        EXPECT_EQ(reg.GetSettingString(root, path, other, "dflt"), "dflt") << other;
    EXPECT_EQ(reg.GetSettingString(root, path + "\\NoSuchKey", "Text", "dflt"), "dflt");

    // Stored without a NUL, a value reads whole, and its typed bytes come back untouched.
    key.SetRaw("NoNul", REG_SZ, "C:\\x.exe -a");
    EXPECT_EQ(reg.GetSettingString(root, path, "NoNul"), "C:\\x.exe -a");
    auto raw = reg.GetValue(root, path, "NoNul");
    ASSERT_TRUE(raw);
    EXPECT_EQ(raw->Type, static_cast<uint32_t>(REG_SZ));
    EXPECT_EQ(
        std::u16string(reinterpret_cast<const char16_t*>(raw->Data.data()), raw->Data.size() / 2),
        u"C:\\x.exe -a");
}

TEST_F(Registry, ListsEveryValueWholeAsNameEqualsData) {
    EXPECT_EQ(Listed(path + "\\Missing"), std::vector<std::string>{""});
    EXPECT_EQ(Listed(path), std::vector<std::string>{""});

    const std::string longName = LongText(300, 'A');
    const std::string longData = "C:\\" + LongText(5000) + ".exe /x";
    key.SetRaw("A", REG_SZ, std::string_view("\0", 1));              // only the NUL
    key.SetRaw("B", REG_SZ, std::string_view("", 0));                // no data: left out
    key.SetRaw("C", REG_SZ, std::string_view("x.exe /opt=1\0", 13)); // "=" in the data
    key.SetRaw("D", REG_SZ, "ends in z");                            // no NUL: z survives
    reg.SaveSettingString(root, path, longName, "C:\\long-name.exe");
    reg.SaveSettingString(root, path, "E", longData);
    reg.SaveSettingString(root, path, "F", LongText(255)); // exactly the classic buffer
    reg.SaveSettingString(root, path, "G", LongText(256));
    std::vector<std::string> expected = {"A=",
                                         "C=x.exe /opt=1",
                                         "D=ends in z",
                                         longName + "=C:\\long-name.exe",
                                         "E=" + longData,
                                         "F=" + LongText(255),
                                         "G=" + LongText(256)};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Listed(path), expected);
}

TEST_F(Registry, NumbersBytesAndTypedValuesKeepWhatWasStored) {
    EXPECT_TRUE(reg.SaveSettingLong(root, path, "N", -7));
    EXPECT_EQ(reg.GetSettingLong(root, path, "N", 3), -7);
    reg.SaveSettingString(root, path, "S", "12");
    EXPECT_EQ(reg.GetSettingLong(root, path, "S", 3), 3);
    EXPECT_EQ(reg.GetSettingLong(root, path, "Missing"), 0);

    const ByteArray bytes = {0, 1, 2, 255};
    EXPECT_TRUE(reg.SaveSettingByte(root, path, "Bin", bytes));
    EXPECT_EQ(reg.GetSettingByte(root, path, "Bin"), bytes);
    EXPECT_EQ(reg.GetSettingByte(root, path, "S"), std::nullopt);
    EXPECT_EQ(reg.GetSettingByte(root, path, "Missing", ByteArray{9}), ByteArray{9});
    EXPECT_TRUE(reg.SaveSettingByte(root, path, "EmptyBin", {}));
    EXPECT_EQ(reg.GetSettingByte(root, path, "EmptyBin"), ByteArray{});

    const RegistryValue expand{REG_EXPAND_SZ, {'%', 0, 'A', 0, '%', 0, 0, 0}};
    EXPECT_TRUE(reg.SetValue(root, path, "X", expand));
    auto back = reg.GetValue(root, path, "X");
    ASSERT_TRUE(back);
    EXPECT_EQ(back->Type, expand.Type);
    EXPECT_EQ(back->Data, expand.Data);
}

TEST_F(Registry, KeysNameTheSameWithOrWithoutTrailingBackslash) {
    const std::string sub = path + "\\Saved\\";
    EXPECT_TRUE(reg.CreateKey(root, sub));
    EXPECT_TRUE(reg.SaveSettingString(root, sub, "V", "1"));
    EXPECT_EQ(reg.GetSettingString(root, path + "\\Saved", "V"), "1");
    EXPECT_EQ(Listed(sub), std::vector<std::string>{"V=1"});

    EXPECT_TRUE(reg.DeleteValue(root, path + "\\Saved", "V"));
    EXPECT_EQ(reg.GetSettingString(root, sub, "V", "gone"), "gone");
    EXPECT_TRUE(reg.DeleteValue(root, sub, "V"));           // already gone
    EXPECT_TRUE(reg.DeleteValue(root, path + "\\No", "V")); // no key: nothing to do
    EXPECT_TRUE(reg.DeleteKey(root, sub));
    EXPECT_EQ(Listed(sub), std::vector<std::string>{""});
}

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
