#include <gtest/gtest.h>

#include "config/app_state.h"
#include "config/delay_load.h"
#include "platform/registry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class DelayLoadTest : public ::testing::Test {
protected:
    void TearDown() override {
        test::DeleteRegistryTree(RegistryRoot::CurrentUser, kSavedUserRunKey);
        test::DeleteRegistryTree(RegistryRoot::LocalMachine, kSavedMachineRunKey);
    }
    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
};

TEST_F(DelayLoadTest, TheFileIsPerWindowsUser) {
    const std::string user = WindowsUserName();
    ASSERT_FALSE(user.empty());
    EXPECT_EQ(app.Store().File().FilePath(), folder / (user + "\\proggroup.c"));
    EXPECT_TRUE(test::PathExists(folder / user));
}

TEST_F(DelayLoadTest, StoppedItemsAreFoundInTheItemsFoldersAndSavedCopies) {
    CRegistry reg;
    ASSERT_TRUE(
        reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "A", "C:\\a.exe -min"));
    ASSERT_TRUE(
        reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "B", "C:\\a.exe"));
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "C",
                                      "\"C:\\c d.exe\" /x"));
    ASSERT_TRUE(
        reg.SaveSettingString(RegistryRoot::LocalMachine, kSavedMachineRunKey, "M", "C:\\m.exe"));
    // An expandable copy: its variables are kept, and filled in when it starts.
    const std::string data = "%SystemRoot%\\notepad.exe %OS%";
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "E",
                             test::WideValue(REG_EXPAND_SZ, data)));
    app.model.StoppedPrograms = {
        "_STPCU_Tool.lnk",           "_STPAU_Word.lnk",  "_REGCU_C:\\a.exe ",   "_REGCU_C:\\a.exe",
        "_REGCU_\"C:\\c d.exe\" ",   "_REGAU_C:\\m.exe", "_REGCU_C:\\gone.exe", "plain",
        "_REGCU_Named=C:\\n.exe -n", "_REGCU_E=" + data};
    CDelayLoad dl = app.Store().File();
    // Program, arguments and whether it expands, or "(none)"; what is not found is left empty.
    auto info = [&](auto entry) {
        StoppedCommand c;
        if (!dl.GetStoppedInfo(entry, c))
            return std::string("(none)");
        return c.Program + " | " + c.Arguments + (c.Expandable ? " | expands" : "");
    };
    EXPECT_EQ(info("_STPCU_Tool.lnk"), app.folders.UserItemsFolder + "Tool.lnk | ");
    EXPECT_EQ(info(1), app.folders.AllUsersItemsFolder + "Word.lnk | ");
    EXPECT_EQ(info(2), "C:\\a.exe | -min"); // "C:\a.exe " is the -min value's path
    EXPECT_EQ(info("_REGCU_C:\\a.exe"), "C:\\a.exe | ");
    EXPECT_EQ(info(4), "C:\\c d.exe | /x");
    EXPECT_EQ(info(5), "C:\\m.exe | ");
    EXPECT_EQ(info(6), " | "); // no saved copy
    EXPECT_EQ(info("plain"), " | ");
    EXPECT_EQ(info("_STPCU_unknown.lnk"), "(none)");
    // An entry that names its value starts its own command when the copy is gone.
    EXPECT_EQ(info(8), "C:\\n.exe | -n");
    EXPECT_EQ(info(9), data.substr(0, 24) + " | %OS% | expands");
    char windows[MAX_PATH] = {}, os[64] = {};
    GetEnvironmentVariableA("SystemRoot", windows, sizeof windows);
    GetEnvironmentVariableA("OS", os, sizeof os);
    StoppedCommand e;
    ASSERT_TRUE(dl.GetStoppedInfo(9, e));
    EXPECT_EQ(e.ToStart().Path + " " + e.ToStart().Parameters,
              std::string(windows) + "\\notepad.exe " + os);
    EXPECT_EQ(info(10), "(none)");
    EXPECT_EQ(info(-1), "(none)");
}

} // namespace
} // namespace tolvane
