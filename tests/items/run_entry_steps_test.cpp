#include <gtest/gtest.h>

#include "platform/log_rules.h"
#include "items/run_entry_steps.h"

namespace tolvane {
namespace {

// Both values in memory; one step can fail, as writes to the machine's key do for a user
// without rights.
class FakeValues : public RunEntryValues {
public:
    FakeValues(std::string user, std::string machine, std::string refused = "")
        : user(std::move(user)), machine(std::move(machine)), refused(std::move(refused)) {}
    std::string Read(RunEntryKey key) override { return Value(key); }
    bool Write(RunEntryKey key, const std::string& command) override {
        return Step("write", key) && (Value(key) = command, true);
    }
    bool Delete(RunEntryKey key) override {
        return Step("delete", key) && (Value(key).clear(), true);
    }
    // The copies of the program that are there; the rest were moved or deleted.
    bool FileExists(const std::string& path) override {
        return path == "C:\\T\\Tolvane.exe" || path == "D:\\Portable\\Tolvane.exe" ||
               path == "D:\\Portable Apps\\Tolvane.exe";
    }
    std::string& Value(RunEntryKey key) { return key == RunEntryKey::Machine ? machine : user; }

    std::string user, machine;
    std::string refused; // the step that fails, as the steps name it: "write machine"
    std::string steps;   // every step asked for, in order

private:
    bool Step(const char* what, RunEntryKey key) {
        const std::string step =
            std::string(what) + (key == RunEntryKey::Machine ? " machine" : " user");
        steps += step + ";";
        return step != refused;
    }
};

TEST(RunEntrySteps, TheNewValueIsWrittenBeforeTheOldOneGoes) {
    const std::string c = "\"C:\\T\\Tolvane.exe\" -nogui";
    const std::string old = "\"D:\\Old\\Tolvane.exe\" -nogui"; // from a folder moved since
    const std::string live = "\"D:\\Portable\\Tolvane.exe\" -nogui";
    const std::string other = "C:\\Tools\\tolvane-agent.exe /sync";
    // Unquoted paths with blanks, read as Windows reads them: a copy that is gone, one that is
    // there.
    const std::string oldUnquoted = "C:\\Program Files\\Old Tolvane\\Tolvane.exe -nogui";
    const std::string liveUnquoted = "D:\\Portable Apps\\Tolvane.exe -nogui";
    const std::string user = "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string machine =
        "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string cannotWrite = "warning: Run entry: \"Tolvane\" could not be written to ";
    const std::string keptForOneUser =
        "warning: Run entry: \"Tolvane\" stays the current user's, not all users': the program "
        "folder C:\\Users\\Ann\\Tolvane is inside a user profile, which other users cannot read.";
    struct Case {
        std::string user, machine, refused;
        int mode;
        bool allUsersDelays, userDelays;
        std::string steps, after; // after: "user | machine"
        std::string problems;     // "error: <text>" or "warning: <text>" each
        std::string oneUser = {}; // the program folder, when only one user can read it
    };
    const Case cases[] = {
        {c, "", "", 3, false, false, "write machine;delete user;", " | " + c, ""},
        {"", c, "", 2, false, false, "write user;delete machine;", c + " | ", ""},
        {"", "", "", 2, false, false, "write user;", c + " | ", ""}, // nothing to remove
        // A copy of Tolvane that is gone (the portable folder moved) gives way to this one.
        {old, c, "", 2, false, false, "write user;delete machine;", c + " | ", ""},
        {"", old, "", 2, false, false, "write user;delete machine;", c + " | ", ""},
        {old, "", "", 0, false, false, "delete user;", " | ", ""},
        {"", oldUnquoted, "", 2, false, false, "write user;delete machine;", c + " | ", ""},
        {oldUnquoted, "", "", 0, false, false, "delete user;", " | ", ""},
        // Another copy that is there, or another program of that name, is never touched.
        {live, "", "", 2, false, false, "", live + " | ",
         "error: Run entry: the value \"Tolvane\" in " + user + " starts another program (" + live +
             "); it is left as it is, and Windows will not start this copy of Tolvane "
             "from there."},
        {other, c, "", 0, false, false, "delete machine;", other + " | ", ""},
        {liveUnquoted, "", "", 0, false, false, "", liveUnquoted + " | ", ""},
        {other, c, "", 3, false, false, "", other + " | " + c, ""},
        {c, c, "", 0, false, false, "delete user;delete machine;", " | ", ""},
        {"", "", "", 0, true, true, "", " | ", ""},
        {"", "", "", 7, true, true, "", " | ", ""},
        // Mode 1: all-users items win over the user's own; without delayed items none stays.
        {c, "", "", 1, true, true, "write machine;delete user;", " | " + c, ""},
        {"", c, "", 1, false, true, "write user;delete machine;", c + " | ", ""},
        {c, c, "", 1, false, false, "delete user;delete machine;", " | ", ""},
        {"", "", "", 1, false, false, "", " | ", ""},
        // A refused write leaves the entry where it was; with none anywhere there is no start
        // at log-on, an error.
        {c, "", "write machine", 3, false, false, "write machine;", c + " | ",
         cannotWrite + machine + "; the one in " + user + " stays."},
        {"", c, "write user", 2, false, false, "write user;", " | " + c,
         cannotWrite + user + "; the one in " + machine + " stays."},
        {"", "", "write machine", 1, true, true, "write machine;", " | ",
         "error: Run entry: \"Tolvane\" could not be written to " + machine +
             "; Windows will not start Tolvane at log-on."},
        // All users from a folder that only this user reads: the user's own value, and why.
        {c, "", "", 3, false, false, "", c + " | ", keptForOneUser, "C:\\Users\\Ann\\Tolvane"},
        {"", c, "", 3, false, false, "write user;delete machine;", c + " | ", keptForOneUser,
         "C:\\Users\\Ann\\Tolvane"},
        // A refused delete: both stay.
        {"", c, "delete machine", 2, false, false, "write user;delete machine;", c + " | " + c,
         "warning: Run entry: \"Tolvane\" could not be removed from " + machine + "."},
    };
    for (const Case& t : cases) {
        FakeValues values(t.user, t.machine, t.refused);
        std::string problems;
        for (const RunEntryProblem& p :
             ApplyRunEntryMode(values, t.mode, c, t.allUsersDelays, t.userDelays, t.oneUser))
            problems += (p.Level == kLogError     ? "error: "
                         : p.Level == kLogWarning ? "warning: "
                                                  : "?: ") +
                        p.Text;
        const std::string what = "mode " + std::to_string(t.mode) + " from " + t.user + " | " +
                                 t.machine + ", refused: " + t.refused;
        EXPECT_EQ(values.steps, t.steps) << what;
        EXPECT_EQ(values.user + " | " + values.machine, t.after) << what;
        EXPECT_EQ(problems, t.problems) << what;
    }
}

TEST(RunEntrySteps, UninstallRemovesOnlyTheValuesThatStartThisCopy) {
    const std::string c =
        "\"C:\\Users\\Ann\\AppData\\Local\\Programs\\Tolvane\\Tolvane.exe\" -nogui";
    const std::string other = "\"D:\\Portable\\Tolvane.exe\" -nogui";
    // The same path in other letters is this copy.
    FakeValues values("\"C:\\USERS\\ANN\\APPDATA\\LOCAL\\PROGRAMS\\TOLVANE\\TOLVANE.EXE\" -NOGUI",
                      other);
    EXPECT_TRUE(RemoveRunEntriesOf(values, c).empty());
    EXPECT_EQ(values.user + " | " + values.machine, " | " + other);

    values.user = c;
    values.refused = "delete user";
    const auto problems = RemoveRunEntriesOf(values, c);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].Level, kLogWarning);
    EXPECT_EQ(values.user, c);
}

} // namespace
} // namespace tolvane
