#include <gtest/gtest.h>

#include "platform/registry.h"
#include "startup/app_state.h"
#include "startup/run_entry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class RunEntry : public ::testing::Test {
protected:
    void SetUp() override { Clear(); }
    void TearDown() override { Clear(); }
    void Clear() {
        reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue);
        reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue);
    }
    // The program's own Run value in the user's key and in the machine's, "-" where none.
    std::string Values() {
        return reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue, "-") + " | " +
               reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue, "-");
    }
    void Delayed(std::vector<GroupProgram> programs) {
        app.model.ProgramGroups = {{"Startup", std::move(programs)}};
        app.model.StartupGroupIndex = 0;
    }

    CRegistry reg;
    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    const std::string command = "\"" + folder.Path() + "\\Tolvane.exe\" -nogui";
};

TEST_F(RunEntry, ModesWriteOneValueAndNeverRewriteAnExistingOne) {
    ASSERT_EQ(app.folders.RunCommand, command);
    EXPECT_FALSE(UpdateRunEntry(app, 2));
    EXPECT_EQ(Values(), command + " | -");
    EXPECT_FALSE(UpdateRunEntry(app, 3)); // moves to the machine's key
    EXPECT_EQ(Values(), "- | " + command);

    // Both present, one of them from a program folder that has moved since: mode 2 removes
    // the machine's value and leaves the user's as it is.
    reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue,
                          "\"D:\\Old\\Tolvane.exe\" -nogui");
    UpdateRunEntry(app, 2);
    EXPECT_EQ(Values(), "\"D:\\Old\\Tolvane.exe\" -nogui | -");

    UpdateRunEntry(app, 0);
    EXPECT_EQ(Values(), "- | -");
    EXPECT_FALSE(UpdateRunEntry(app, 7)); // any other mode changes nothing
    EXPECT_EQ(Values(), "- | -");
}

TEST_F(RunEntry, ModeOneFollowsTheDelayedItems) {
    Delayed({{}});
    app.model.StartupType = 1;
    UpdateRunEntry(app, 1); // nothing delayed, nothing there: nothing happens
    EXPECT_EQ(Values(), "- | -");
    EXPECT_FALSE(UpdateRunEntry(app, -1));

    Delayed({{"Tool.lnk", "", "Execute"}});
    UpdateRunEntry(app, 1);
    EXPECT_EQ(Values(), command + " | -");
    EXPECT_TRUE(UpdateRunEntry(app, -1));

    // An all-users item among them: the machine's key, for every user who logs on.
    Delayed({{"Tool.lnk", "", "Execute"}, {"C:\\m.exe", "", "ExecuteRegAU"}});
    UpdateRunEntry(app, 1);
    EXPECT_EQ(Values(), "- | " + command);
    Delayed({{}});
    UpdateRunEntry(app, 1);
    EXPECT_EQ(Values(), "- | -");

    app.model.StartupType = 2;
    EXPECT_TRUE(UpdateRunEntry(app, -1));
    app.model.StartupType = 0;
    EXPECT_FALSE(UpdateRunEntry(app, -1));
}

} // namespace
} // namespace tolvane
