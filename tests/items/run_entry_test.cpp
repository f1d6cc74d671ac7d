// The program's own Run value in the real Run keys, as its log-on mode and the delayed items
// want it (the order of the steps is tested natively).
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

TEST_F(RunEntry, TheRunKeysFollowTheModeAndTheDelayedItems) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    // A program folder that every user reads, and this test's, in the user's profile.
    const std::string shared = "\"C:\\users\\Public\\Tolvane\\Tolvane.exe\" -nogui";
    const std::string& own = app.folders.RunCommand;
    const struct {
        int type; // 1 while something is delayed, 2 always for this user, 3 for every user
        std::string command;
        bool delayed;
        std::string values;
    } cases[] = {
        {2, shared, false, shared + " | -"}, {3, shared, false, "- | " + shared},
        {3, own, false, own + " | -"},       {1, own, false, "- | -"},
        {1, own, true, own + " | -"},        {-1, own, false, own + " | -"}, // none chosen
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        app.model.ProgramGroups = {
            {"Startup", {c.delayed ? GroupProgram{"T.lnk", "", "Execute"} : GroupProgram{}}}};
        app.model.StartupGroupIndex = 0;
        EXPECT_TRUE(UpdateRunEntry(c.type, c.command, app.model, app.log));
        EXPECT_EQ(Values(), c.values);
    }
    // For every user from a user's profile: the user's key, and the log says why.
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt").find("is inside a user profile"),
              std::string::npos);
    // Another program's value of that name stays, and Windows will not start this copy: said.
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue, "x.exe"));
    EXPECT_FALSE(UpdateRunEntry(2, own, app.model, app.log));
    EXPECT_EQ(Values(), "x.exe | -");
}

} // namespace
} // namespace tolvane
