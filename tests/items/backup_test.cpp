#include "startup_fixture.h"

#include "items/move_steps.h"
#include "platform/dir_struct.h"

namespace tolvane {
namespace {

class BackupTest : public test::StartupFixture {
protected:
    std::vector<std::string> Backups() { return test::FilesBelow(folder / "Delayed Registry"); }

    // The ANSI backup as the registry editor saves it: the same text in UTF-16LE with its
    // byte-order mark. Windows reads hex(2) and hex(7) as UTF-16 in any file, Wine only in
    // this form; so both read it alike.
    std::string Utf16Copy(const std::string& ansiFile) {
        const std::string text = test::ReadFileBytes(ansiFile);
        const int n =
            MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
        std::wstring wide(static_cast<size_t>(n), L'\0');
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), n);
        std::string bytes = "\xff\xfe";
        for (wchar_t c : wide)
            bytes += {static_cast<char>(c & 0xff), static_cast<char>(c >> 8)};
        const std::string copy = folder / "utf16.reg";
        test::WriteFileBytes(copy, bytes);
        return copy;
    }
};

TEST_F(BackupTest, APassLeavesABackupThatImportsBackWhatItTookOut) {
    // Nothing ticked: the file is written as it is, and no backup made.
    Refresh();
    DeleteFileA(app.Store().File().FilePath().c_str());
    EXPECT_TRUE(Pass(CheckedMove::Delay));
    EXPECT_TRUE(test::PathExists(app.Store().File().FilePath()));
    EXPECT_TRUE(Backups().empty());

    // Plain, quoted with escapes, and expandable with a letter outside ASCII: each must come
    // back with its type and bytes.
    const std::vector<std::pair<std::string, RegistryValue>> values = {
        {"Plain", WideValue(REG_SZ, "C:\\p.exe -a")},
        {"Quoted \"Name\"",
         WideValue(REG_SZ, "\"C:\\Program Files\\Vendor \\\"Q\\\"\\app.exe\" /x=\"1\"")},
        {"Expand", WideValue(REG_EXPAND_SZ, "%ProgramFiles%\\Caf\xe9\\e.exe /a")},
    };
    for (const auto& [name, value] : values)
        ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kRunKey, name, value));
    Refresh();
    ASSERT_EQ(Leaves("CurrentUserRegistry").size(), values.size());
    for (int node : Leaves("CurrentUserRegistry"))
        tree.Node(node).Checked = true;
    ASSERT_TRUE(Pass(CheckedMove::Delay));
    for (const auto& [name, value] : values)
        ASSERT_FALSE(reg.GetValue(RegistryRoot::CurrentUser, kRunKey, name)) << name;
    ASSERT_EQ(Backups().size(), 1u);

    test::ChildProcess import("reg.exe import \"" + Utf16Copy(Backups()[0]) + "\"");
    unsigned long code = 1;
    ASSERT_TRUE(import.WaitForExit(30000, &code));
    EXPECT_EQ(code, 0u);
    for (const auto& [name, value] : values) {
        auto back = reg.GetValue(RegistryRoot::CurrentUser, kRunKey, name);
        ASSERT_TRUE(back) << name;
        EXPECT_EQ(back->Type, value.Type) << name;
        EXPECT_EQ(back->Data, value.Data) << name;
    }
}

} // namespace
} // namespace tolvane
