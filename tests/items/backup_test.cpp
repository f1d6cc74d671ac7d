#include "startup_fixture.h"

#include "items/move_steps.h"
#include "platform/dir_struct.h"

namespace tolvane {
namespace {

class BackupTest : public test::StartupFixture {
protected:
    std::vector<std::string> Backups() { return test::FilesBelow(folder / "Delayed Registry"); }
};

TEST_F(BackupTest, APassLeavesABackupThatImportsBackWhatItTookOut) {
    // Nothing ticked: the file is written as it is, and no backup made.
    Refresh();
    DeleteFileA(app.Store().File().FilePath().c_str());
    EXPECT_TRUE(Pass(CheckedMove::Delay));
    EXPECT_TRUE(test::PathExists(app.Store().File().FilePath()));
    EXPECT_TRUE(Backups().empty());

    // Plain, quoted with escapes, expandable, and names and texts of scripts no single legacy
    // code page holds: each must come back with its type and bytes.
    const std::vector<std::pair<std::string, RegistryValue>> values = {
        {"Plain", WideValue(REG_SZ, "C:\\p.exe -a")},
        {"Quoted \"Name\"",
         WideValue(REG_SZ, "\"C:\\Program Files\\Vendor \\\"Q\\\"\\app.exe\" /x=\"1\"")},
        {"Expand", WideValue(REG_EXPAND_SZ, "%ProgramFiles%\\Café\\e.exe /a")},
        {"微信", WideValue(REG_SZ, "\"C:\\Program Files\\微信\\WeChat.exe\" -autorun")},
        {"Café ☕ Яндекс", WideValue(REG_SZ, "C:\\Яндекс\\y.exe")},
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

    test::ChildProcess import("reg.exe import \"" + Backups()[0] + "\"");
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
