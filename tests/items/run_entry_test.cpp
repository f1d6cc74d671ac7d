#include <gtest/gtest.h>

#include "platform/registry.h"
#include "config/app_state.h"
#include "items/run_entry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class RunEntry : public ::testing::Test {
protected:
    void SetUp() override {
        Clear();
        test::WriteFileBytes(folder / "log.txt", ""); // logging on
    }
    void TearDown() override { Clear(); }
    void Clear() {
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue));
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
    const std::string& command = app.folders.RunCommand;
};

// The order of the steps is tested natively; here the real Run keys and the model's answers.
TEST_F(RunEntry, TheRunKeysFollowTheModeAndTheDelayedItems) {
    // A program folder that every user reads: the public profile.
    const std::string shared = "\"C:\\users\\Public\\Tolvane\\Tolvane.exe\" -nogui";
    EXPECT_TRUE(UpdateRunEntry(2, shared, app.model, app.log));
    EXPECT_EQ(Values(), shared + " | -");
    EXPECT_TRUE(UpdateRunEntry(3, shared, app.model, app.log)); // moves to the machine's key
    EXPECT_EQ(Values(), "- | " + shared);
    // This test's program folder lies in the user's profile: for all users, the value moves
    // back to the user's key, and the log says why.
    EXPECT_TRUE(UpdateRunEntry(3, app.folders.RunCommand, app.model, app.log));
    EXPECT_EQ(Values(), command + " | -");
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt").find("is inside a user profile"),
              std::string::npos);
    Delayed({{"Tool.lnk", "", "Execute"}});
    EXPECT_TRUE(UpdateRunEntry(1, app.folders.RunCommand, app.model, app.log));
    EXPECT_EQ(Values(), command + " | -");
    Delayed({{}});
    EXPECT_TRUE(UpdateRunEntry(1, app.folders.RunCommand, app.model, app.log));
    EXPECT_EQ(Values(), "- | -");
    EXPECT_TRUE(UpdateRunEntry(-1, app.folders.RunCommand, app.model,
                               app.log)); // no type chosen: nothing to do
    // Another program's value of that name stays, and Windows will not start this copy: said.
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue,
                                      "\"C:\\Windows\\notepad.exe\""));
    EXPECT_FALSE(UpdateRunEntry(2, app.folders.RunCommand, app.model, app.log));
    EXPECT_EQ(Values(), "\"C:\\Windows\\notepad.exe\" | -");
    EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
}

} // namespace
} // namespace tolvane
