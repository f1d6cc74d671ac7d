#include <gtest/gtest.h>

#include <windows.h>

#include <regex>

#include "records.h"
#include "startup/app_state.h"
#include "startup/event_log.h"
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
    LaunchProgram(app, "\"" + recorder + "\"", record + " quoted"); // as a Run value holds it
    EXPECT_EQ(test::Names(test::WaitForStarts(record, 1)), std::vector<std::string>{"quoted"});
    EXPECT_EQ(ReadFileBytes(folder / "log.txt"), ""); // nothing failed

    LaunchProgram(app, "C:\\no\\such.exe", "");
    LaunchProgram(app, "\"C:\\no\\quoted.exe\"", "-x");
    LaunchProgram(app, "", "");
    EXPECT_EQ(ReadFileBytes(folder / "log.txt"),
              "Error: Program: C:\\no\\such.exe failed to start.\r\n"
              "Error: Program: C:\\no\\quoted.exe failed to start.\r\n"
              "Error: Program:  failed to start.\r\n");
}

// The prefixes of the levels show in the logs of the launcher's and the log-on run's tests.
TEST(EventLog, WritesOnlyIntoAnExistingFileAndLosesTheOlderHalfAtFiveMegabytes) {
    test::TempFolder folder;
    EventLog log(folder / "log.txt");
    log.WriteLog("nobody reads this", kLogInfo);
    EXPECT_FALSE(test::PathExists(folder / "log.txt")); // logging is off: no file is made

    std::string content;
    for (int i = 0; i < 51200; ++i)
        content += std::string(98, 'o') + "\r\n"; // 100 bytes a line
    ASSERT_EQ(content.size(), kLogPruneSize);
    WriteFileBytes(folder / "log.txt", content.substr(1)); // one byte short: no prune
    log.WriteLog("x", kLogInfo);
    EXPECT_EQ(ReadFileBytes(folder / "log.txt").size(), content.size() - 1 + 9);

    content.replace(kLogPruneCut, 5, "KEPT!");
    WriteFileBytes(folder / "log.txt", content);
    log.WriteLog("after the prune", kLogWarning);
    const std::string pruned = ReadFileBytes(folder / "log.txt");
    // Byte 2,560,000 ends a line, so the kept part starts with the next one whole.
    ASSERT_EQ(pruned.substr(0, 5), "KEPT!");
    const std::string tail = pruned.substr(content.size() - kLogPruneCut);
    EXPECT_TRUE(std::regex_match(tail, std::regex("\r\n<---- Old Events removed on: [^\r\n]+ "
                                                  "---->\r\nWarning: after the prune\r\n")))
        << tail;
}

} // namespace
} // namespace tolvane
