#include <gtest/gtest.h>

#include <windows.h>

#include <regex>

#include "records.h"
#include "config/app_state.h"
#include "startup/launcher.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::ReadFileBytes;
using test::WriteFileBytes;

// Programs and shortcuts with their parameters: see the log-on run's test.
TEST(Launcher, AQuotedPathStartsOnTheSecondAttemptAndAFailureIsLoggedOnce) {
    test::TempFolder folder{"program"};
    WriteFileBytes(folder / "log.txt", "");
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    const std::string recorder = test::HelperProgram("start_recorder.exe");
    const std::string record = folder / "record.txt";
    LaunchProgram(app.log, "\"" + recorder + "\"", record + " quoted"); // as a Run value holds it
    EXPECT_EQ(test::Names(test::WaitForStarts(record, 1)), std::vector<std::string>{"quoted"});
    EXPECT_EQ(ReadFileBytes(folder / "log.txt"), ""); // nothing failed

    LaunchProgram(app.log, "C:\\no\\such.exe", "");
    LaunchProgram(app.log, "\"C:\\no\\quoted.exe\"", "-x");
    LaunchProgram(app.log, "", "");
    EXPECT_EQ(ReadFileBytes(folder / "log.txt"),
              "Error: Program: C:\\no\\such.exe failed to start.\r\n"
              "Error: Program: C:\\no\\quoted.exe failed to start.\r\n"
              "Error: Program:  failed to start.\r\n");
}

} // namespace
} // namespace tolvane
