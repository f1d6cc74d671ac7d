#include <gtest/gtest.h>

#include <regex>

#include "platform/event_log.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

using test::ReadFileBytes;
using test::WriteFileBytes;

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
