#include <gtest/gtest.h>

#include "config/delay_load.h"
#include "platform/registry.h"
#include "support/test_support.h"
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
    CDelayLoad dl(app);
    const std::string user = WindowsUserName();
    ASSERT_FALSE(user.empty());
    EXPECT_TRUE(test::PathExists(folder / user));
    EXPECT_EQ(dl.FilePath(), folder.Path() + "\\" + user + "\\proggroup.c");
    EXPECT_EQ(&dl.Model(), &app.model); // one model for every object
}

TEST_F(DelayLoadTest, StoppedItemsAreFoundInTheItemsFoldersAndSavedCopies) {
    CRegistry reg;
    reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "A", "C:\\a.exe -min");
    reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "B", "C:\\a.exe");
    reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "C", "\"C:\\c d.exe\" /x");
    reg.SaveSettingString(RegistryRoot::LocalMachine, kSavedMachineRunKey, "M", "C:\\m.exe");
    app.model.StoppedPrograms = {
        "_STPCU_Tool.lnk",         "_STPAU_Word.lnk",  "_REGCU_C:\\a.exe ",   "_REGCU_C:\\a.exe",
        "_REGCU_\"C:\\c d.exe\" ", "_REGAU_C:\\m.exe", "_REGCU_C:\\gone.exe", "plain"};
    CDelayLoad dl(app);
    std::string path = "unchanged", params = "kept";

    ASSERT_TRUE(dl.GetStoppedInfo("_STPCU_Tool.lnk", path, params));
    EXPECT_EQ(path, app.folders.UserItemsFolder + "Tool.lnk");
    EXPECT_EQ(params, "kept");
    ASSERT_TRUE(dl.GetStoppedInfo(1, path, params));
    EXPECT_EQ(path, app.folders.AllUsersItemsFolder + "Word.lnk");

    ASSERT_TRUE(dl.GetStoppedInfo(2, path, params)); // "C:\a.exe " is the -min value's path
    EXPECT_EQ(path, "C:\\a.exe ");
    EXPECT_EQ(params, "-min");
    ASSERT_TRUE(dl.GetStoppedInfo("_REGCU_C:\\a.exe", path, params));
    EXPECT_EQ(path, "C:\\a.exe");
    EXPECT_EQ(params, "");
    ASSERT_TRUE(dl.GetStoppedInfo(4, path, params));
    EXPECT_EQ(path, "\"C:\\c d.exe\" ");
    EXPECT_EQ(params, "/x");
    ASSERT_TRUE(dl.GetStoppedInfo(5, path, params));
    EXPECT_EQ(path, "C:\\m.exe");

    path = "unchanged";
    params = "kept";
    ASSERT_TRUE(dl.GetStoppedInfo(6, path, params)); // no saved copy: nothing changes
    ASSERT_TRUE(dl.GetStoppedInfo("plain", path, params));
    EXPECT_EQ(path, "unchanged");
    EXPECT_EQ(params, "kept");
    EXPECT_FALSE(dl.GetStoppedInfo("_STPCU_unknown.lnk", path, params));
    EXPECT_FALSE(dl.GetStoppedInfo(8, path, params));
    EXPECT_FALSE(dl.GetStoppedInfo(-1, path, params));
}

} // namespace
} // namespace tolvane
