// The program's own Run value in the real Run keys (which value goes where, and in which order,
// is tested natively).
#include <gtest/gtest.h>

#include "config/app_state.h"
#include "items/run_entry.h"
#include "platform/registry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class RunEntry : public ::testing::Test {
protected:
    void SetUp() override { TearDown(); }
    void TearDown() override {
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue));
    }
    // The value in the user's key and in the machine's, "-" where none.
    std::string Values() {
        return reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue, "-") + " | " +
               reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue, "-");
    }

    CRegistry reg;
    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
};

// For every user: the machine's key, unless the program folder lies in a user's profile, as
// this test's does; then the user's key, and the log says why. (Mode 1 and the user's key are
// tested with tolvanec.)
TEST_F(RunEntry, ForEveryUserTheMachinesKeyUnlessOnlyThisUserCanReadTheProgram) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    const std::string shared = "\"C:\\users\\Public\\Tolvane\\Tolvane.exe\" -nogui";
    EXPECT_TRUE(UpdateRunEntry(3, shared, app.model, app.log));
    EXPECT_EQ(Values(), "- | " + shared);
    EXPECT_TRUE(UpdateRunEntry(3, app.folders.RunCommand, app.model, app.log));
    EXPECT_EQ(Values(), app.folders.RunCommand + " | -");
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt").find("is inside a user profile"),
              std::string::npos);
}

} // namespace
} // namespace tolvane
