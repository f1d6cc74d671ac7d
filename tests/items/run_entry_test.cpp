#include <gtest/gtest.h>

#include "platform/registry.h"
#include "config/app_state.h"
#include "items/run_entry.h"
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
    const std::string& command = app.folders.RunCommand;
};

// The order of the steps is tested natively; here the real Run keys and the model's answers.
TEST_F(RunEntry, TheRunKeysFollowTheModeAndTheDelayedItems) {
    UpdateRunEntry(app, 2);
    EXPECT_EQ(Values(), command + " | -");
    UpdateRunEntry(app, 3); // moves to the machine's key
    EXPECT_EQ(Values(), "- | " + command);
    Delayed({{"Tool.lnk", "", "Execute"}});
    UpdateRunEntry(app, 1);
    EXPECT_EQ(Values(), command + " | -");
    Delayed({{}});
    UpdateRunEntry(app, 1);
    EXPECT_EQ(Values(), "- | -");
}

} // namespace
} // namespace tolvane
