#include <gtest/gtest.h>

#include "startup/log_rules.h"
#include "startup/run_entry_steps.h"

namespace tolvane {
namespace {

const std::string kCommand = "\"C:\\T\\Tolvane.exe\" -nogui";

// Both values in memory; a key can refuse writes or deletes, as the machine's key does for a
// user without rights.
class FakeValues : public RunEntryValues {
public:
    std::string Read(RunEntryKey key) override { return Value(key); }
    bool Write(RunEntryKey key, const std::string& command) override {
        done += "write " + Name(key) + ";";
        if (refuseWrite == Name(key))
            return false;
        Value(key) = command;
        return true;
    }
    bool Delete(RunEntryKey key) override {
        done += "delete " + Name(key) + ";";
        if (refuseDelete == Name(key))
            return false;
        Value(key).clear();
        return true;
    }
    // "user | machine", "-" where none.
    std::string Values() const {
        return (user.empty() ? "-" : user) + " | " + (machine.empty() ? "-" : machine);
    }

    std::string user, machine;
    std::string refuseWrite, refuseDelete; // "user" or "machine"
    std::string done;

private:
    static std::string Name(RunEntryKey key) {
        return key == RunEntryKey::Machine ? "machine" : "user";
    }
    std::string& Value(RunEntryKey key) { return key == RunEntryKey::Machine ? machine : user; }
};

TEST(RunEntrySteps, TheNewValueIsWrittenBeforeTheOldOneGoes) {
    FakeValues values;
    values.user = kCommand;
    EXPECT_TRUE(ApplyRunEntryMode(values, 3, kCommand, false, false).empty());
    EXPECT_EQ(values.done, "write machine;delete user;");
    EXPECT_EQ(values.Values(), "- | " + kCommand);

    values.done.clear();
    EXPECT_TRUE(ApplyRunEntryMode(values, 2, kCommand, false, false).empty());
    EXPECT_EQ(values.done, "write user;delete machine;");
    EXPECT_EQ(values.Values(), kCommand + " | -");

    // A value already there, even one from a program folder that has moved since, is kept as
    // it is: only the other one goes.
    values.user = "\"D:\\Old\\Tolvane.exe\" -nogui";
    values.machine = kCommand;
    values.done.clear();
    ApplyRunEntryMode(values, 2, kCommand, false, false);
    EXPECT_EQ(values.done, "delete machine;");
    EXPECT_EQ(values.Values(), "\"D:\\Old\\Tolvane.exe\" -nogui | -");

    values.machine = kCommand;
    values.done.clear();
    ApplyRunEntryMode(values, 0, kCommand, false, false);
    EXPECT_EQ(values.Values(), "- | -");
    values.done.clear();
    ApplyRunEntryMode(values, 0, kCommand, false, false); // nothing there: nothing to do
    ApplyRunEntryMode(values, 7, kCommand, true, true);
    EXPECT_EQ(values.done, "");
}

TEST(RunEntrySteps, ARefusedWriteLeavesTheEntryWhereItWas) {
    FakeValues values;
    values.user = kCommand;
    values.refuseWrite = "machine";
    auto problems = ApplyRunEntryMode(values, 3, kCommand, false, false);
    EXPECT_EQ(values.Values(), kCommand + " | -");
    EXPECT_EQ(values.done, "write machine;");
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].Text,
              "Run entry: \"Tolvane\" could not be written to HKEY_LOCAL_MACHINE\\Software\\"
              "Microsoft\\Windows\\CurrentVersion\\Run; the one in HKEY_CURRENT_USER\\Software\\"
              "Microsoft\\Windows\\CurrentVersion\\Run stays.");
    EXPECT_EQ(problems[0].Level, kLogWarning);

    // With no value anywhere, the refusal means no start at log-on: an error.
    values.user.clear();
    problems = ApplyRunEntryMode(values, 1, kCommand, true, true);
    EXPECT_EQ(values.Values(), "- | -");
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].Level, kLogError);

    // The same the other way round.
    values = FakeValues();
    values.machine = kCommand;
    values.refuseWrite = "user";
    problems = ApplyRunEntryMode(values, 2, kCommand, false, false);
    EXPECT_EQ(values.Values(), "- | " + kCommand);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].Level, kLogWarning);

    // A delete the key refuses: both stay, and the log says so.
    values.refuseWrite.clear();
    values.refuseDelete = "machine";
    problems = ApplyRunEntryMode(values, 2, kCommand, false, false);
    EXPECT_EQ(values.Values(), kCommand + " | " + kCommand);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].Text, "Run entry: \"Tolvane\" could not be removed from "
                                "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                                "CurrentVersion\\Run.");
    EXPECT_EQ(problems[0].Level, kLogWarning);
}

TEST(RunEntrySteps, ModeOneFollowsTheDelayedItems) {
    // All-users items win over the user's own; without delayed items any value goes.
    struct Case {
        bool allUsers, user;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {true, true, "user", "machine"},
        {false, true, "machine", "user"},
        {false, false, "both", "none"},
        {false, false, "none", "none"},
    };
    for (const Case& c : cases) {
        FakeValues values;
        const std::string before = c.before;
        if (before == "user" || before == "both")
            values.user = kCommand;
        if (before == "machine" || before == "both")
            values.machine = kCommand;
        ApplyRunEntryMode(values, 1, kCommand, c.allUsers, c.user);
        const std::string after = c.after;
        EXPECT_EQ(values.Values(), after == "machine" ? "- | " + kCommand
                                   : after == "user"  ? kCommand + " | -"
                                                      : "- | -")
            << c.allUsers << c.user << before;
        if (before == "none") {
            EXPECT_EQ(values.done, "");
        }
    }
}

} // namespace
} // namespace tolvane
