#include <gtest/gtest.h>

#include <windows.h>

#include "startup/app_state.h"
#include "startup/launcher.h"
#include "support/test_support.h"
#include "records.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class Launcher : public ::testing::Test {
protected:
    void SetUp() override { test::WriteFileBytes(folder / "log.txt", ""); }
    std::vector<std::string> Recorded(size_t expected) {
        return test::Names(test::WaitForStarts(record, expected));
    }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    const std::string recorder = test::HelperProgram("start_recorder.exe");
    const std::string record = folder / "record.txt";
};

TEST_F(Launcher, StartsProgramsAndShortcutsWithTheirParameters) {
    LaunchProgram(app, recorder, record + " plain one two");
    EXPECT_EQ(Recorded(1), std::vector<std::string>{"plain one two"});
    // A path copied from a Run value, in quotes: started on the second attempt.
    LaunchProgram(app, "\"" + recorder + "\"", record + " quoted");
    EXPECT_EQ(Recorded(2), (std::vector<std::string>{"plain one two", "quoted"}));
    ASSERT_TRUE(test::CreateShortcut(folder / "Tool.lnk", recorder, record + " shortcut arg"));
    LaunchProgram(app, folder / "Tool.lnk", "");
    EXPECT_EQ(Recorded(3), (std::vector<std::string>{"plain one two", "quoted", "shortcut arg"}));
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"), ""); // nothing failed
}

TEST_F(Launcher, AProgramThatCannotStartIsLoggedOnce) {
    LaunchProgram(app, "C:\\no\\such.exe", "");
    LaunchProgram(app, "\"C:\\no\\quoted.exe\"", "-x");
    LaunchProgram(app, "", "");
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"),
              "Error: Program: C:\\no\\such.exe failed to start.\r\n"
              "Error: Program: C:\\no\\quoted.exe failed to start.\r\n"
              "Error: Program:  failed to start.\r\n");
}

} // namespace
} // namespace tolvane
