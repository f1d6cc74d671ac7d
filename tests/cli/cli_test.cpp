// tolvanec from end to end, as a script runs it: its own process beside a copy of the program's
// data, against the prefix's real Startup folders and Run keys.
#include <gtest/gtest.h>

#include <windows.h>

#include "cli/logon_plan.h"
#include "config/language_files.h"
#include "config/logon_history.h"
#include "items/run_entry.h"
#include "items/startup_fixture.h"
#include "platform/environment.h"
#include "text/strings.h"

namespace tolvane {
namespace {

constexpr auto user = RegistryRoot::CurrentUser;

class Console : public test::StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        const std::string built = test::BuiltProgramFolder();
        ASSERT_TRUE(CopyFileA((built + "\\tolvanec.exe").c_str(), (folder / "tolvanec.exe").c_str(),
                              FALSE));
        test::CopyTree(built + "\\lang", folder / "lang");
        test::CopyTree(built + "\\data", folder / "data");
        LoadLanguageList(app.folders.ProgramFolder, app.text);
        app.model.StartupType = 1; // Windows starts Tolvane while something is delayed
        app.Store().File().WriteItems();
    }
    // Runs tolvanec with the arguments as a script would: its exit code, and its output and
    // errors, which go into a file.
    std::pair<unsigned long, std::string> Cli(const std::string& arguments) {
        const std::string out = folder / "out.txt";
        test::ChildProcess cli("cmd.exe /c \"\"" + folder / "tolvanec.exe" + "\" " + arguments +
                               " >\"" + out + "\" 2>&1\"");
        unsigned long code = 99;
        EXPECT_TRUE(cli.WaitForExit(60000, &code));
        return {code, test::ReadFileBytes(out)};
    }
    std::string File() { return test::ReadFileBytes(app.Store().File().FilePath()); }
    // The items that are not active, as the program-group file read back lists them.
    std::string Held() {
        std::string all;
        for (const StartupItem& item : ReadBack())
            if (item.State != ItemState::Active)
                all += (all.empty() ? "" : ", ") +
                       std::string(item.State == ItemState::Delayed ? "D " : "S ") + item.Name;
        return all;
    }
};

// Each command in turn, as a script would give it: its exit code, what it says (a line of the
// list, in UTF-8 for scripts, or why it did nothing), the items it leaves delayed or stopped,
// and a line of the program-group file. Items are named as Windows compares names, in any
// letter case and script, or by the very text the list shows.
TEST_F(Console, CommandsMoveAndListItemsByNameAndSayWhatTheyDid) {
    SetEnvironmentVariableA("TOLVANE_CLI_TEST", folder.Path().c_str());
    test::MakeFolder(folder / "Some App");
    test::WriteFileBytes(folder / "Some App\\e.exe", "x");
    Shortcut(places.UserFolder, "Tool.lnk");
    Shortcut(places.CommonFolder, "Word.lnk");
    RunValue(user, "Clock", "C:\\clock.exe -min");
    ASSERT_TRUE(reg.SetValue(user, kRunKey, "Exp",
                             test::WideValue(REG_EXPAND_SZ, "%TOLVANE_CLI_TEST%\\Some App\\e.exe "
                                                            "--flag \"a b\"")));
    RunValue(user, "Über Яндекс ☕", "\"C:\\Я S\\u.exe\" -q ☕");
    RunValue(user, "Wipe", "cmd.exe /c del C:\\x.tmp");
    RunValue(user, "Dup", "C:\\dup.exe");
    RunValue(RegistryRoot::LocalMachine, "Dup", "C:\\dup64.exe");
    ASSERT_TRUE(test::TrustTestRoot());
    RunValue(user, "Signed", test::SignedCopy("trusted.exe"));
    const auto runValues = reg.EnumValues(user, kRunKey);
    // An expandable command with blanks lists the same program and arguments in every state.
    const std::string exp = "\"path\": \"%TOLVANE_CLI_TEST%\\\\Some App\\\\e.exe\", "
                            "\"parameters\": \"--flag \\\"a b\\\"\"";
    const struct {
        std::string command;
        unsigned long code;
        std::string says, held, fileLine;
    } steps[] = {
        {"list --json", 0,
         "{\"state\": \"active\", \"location\": \"user-folder\", \"name\": \"Tool.lnk\", \"path\": "
         "\"C:\\\\windows\\\\notepad.exe\", \"parameters\": \"\", \"delay\": null, \"known\": "
         "false, \"description\": \"\", \"switchedOff\": false, \"missing\": false, "
         "\"publisher\": \""},
        // Who made each program, and whether its signature holds.
        {"list --json", 0,
         "trusted.exe\", \"parameters\": \"\", \"delay\": null, \"known\": false, "
         "\"description\": \"\", \"switchedOff\": false, \"missing\": false, \"publisher\": "
         "\"Hexmoor Ltd\", \"signature\": \"trusted\"}"},
        {"delay clock", 0, "", "D Clock"},
        {"delay Exp", 0, "", "D Clock, D Exp"},
        {"list --json", 0, exp, "D Clock, D Exp"},
        {"delay Wipe", 2, "del", "D Clock, D Exp"}, // a command that deletes is never delayed
        {"stop Exp", 0, "", "D Clock, S Exp"},
        {"list --json", 0, exp, "D Clock, S Exp"},
        {"stop \"Clock=C:\\clock.exe -min\"", 0, "", "S Exp, S Clock",
         "\"_REGCU_Clock=C:\\clock.exe -min\""},
        {"restore Clock", 0, "", "S Exp"},
        {"restore Exp", 0, ""},
        {"delay Tool.lnk --delay 7.5", 0, "", "D Tool.lnk",
         "Execute (\"Tool.lnk\", \"\", 7.5, \"\");"},
        {"list", 0, "delayed  user-folder     7.5    unsigned  Tool.lnk", "D Tool.lnk"},
        {"restore tool.lnk", 0, ""},
        {"delay \"über яндекс ☕\"", 0, "", "D Über Яндекс ☕"},
        {"restore \"Über Яндекс ☕=\\\"C:\\Я S\\u.exe\\\" -q ☕\"", 0, ""},
        {"stop Dup", 1, "user-run (active) machine-run (active)"},
        {"delay \"Нет ☕\"", 1, "Нет ☕"},
        {"delay Word.lnk", 2, "Word.lnk"}, // all users' active items are not the console's
        {"frobnicate", 3, "usage: tolvanec"},
        {"stop Dup --location user-run", 0, "", "S Dup"},
        {"restore Dup --location user-run", 0, ""},
    };
    const std::string own = "\"" + folder / "Tolvane.exe" + "\" -nogui";
    for (const auto& step : steps) {
        SCOPED_TRACE(step.command);
        const auto [code, out] = Cli(step.command);
        EXPECT_EQ(code, step.code) << out;
        EXPECT_NE(out.find(step.says), std::string::npos) << out;
        const std::string held = Held(), file = File();
        EXPECT_EQ(held, step.held);
        EXPECT_NE(file.find(step.fileLine), std::string::npos) << file;
        // The program's own Run value is there exactly while something is delayed.
        EXPECT_EQ(Run(user, kOwnRunValue), held.find("D ") == 0 ? own : "(none)");
    }
    EXPECT_EQ(reg.EnumValues(user, kRunKey), runValues);
}

// A plan that names the profile's folder by its variable moves the real items and settings to
// it, after --check listed the moves and changed nothing, not even the program's own Run value;
// a second apply finds nothing to do, and the plan exported over it then is the same bytes. A plan
// at fault changes nothing at all.
TEST_F(Console, PlansAreExportedAndAppliedByTheListsMoves) {
    RunValue(user, "Clock", "\"" + ExpandEnvironment("%LOCALAPPDATA%") + "\\My Clock\\c.exe\" -m");
    Shortcut(places.UserFolder, "Tool.lnk");
    const std::string plan = folder / "plan.json", bad = folder / "bad.json";
    // The file's layout is the one the plan's own test reads back.
    const std::string json = FormatPlanJson(
        {12,
         true,
         1,
         {{{kUserRun, false},
           "Clock",
           "\"%LOCALAPPDATA%\\My Clock\\c.exe\" -m",
           ItemState::Delayed,
           4},
          {{kUserStartup, false}, "Tool.lnk", "C:\\windows\\notepad.exe", ItemState::Stopped}}});
    test::WriteFileBytes(plan, json);
    test::WriteFileBytes(bad, "{\"tolvanePlan\": 1,\n \"items\": [{\"location\": \"user-run\", "
                              "\"name\": \"Clock\", \"state\": \"paused\"}]}");
    const std::string moves = "settings: mainDelay 30 -> 12\nsettings: idleStart false -> true\n"
                              "user-run \"Clock\": active -> delayed (4 s)\n"
                              "user-folder \"Tool.lnk\": active -> stopped\n";
    const std::string matches = "Nothing to change: this user's log-on already matches the plan.";
    const struct {
        std::string command;
        unsigned long code;
        std::string says, held;
    } steps[] = {
        {"apply \"" + bad + "\"", 3, "bad.json:2:63: unknown state \"paused\""},
        {"apply \"" + plan + "\" --check", 4, moves},
        {"apply \"" + plan + "\"", 0, moves, "D Clock, S Tool.lnk"},
        {"apply \"" + plan + "\"", 0, matches, "D Clock, S Tool.lnk"},
        {"apply \"" + plan + "\" --check", 0, matches, "D Clock, S Tool.lnk"},
        {"export \"" + plan + "\"", 0, "", "D Clock, S Tool.lnk"},
        {"list", 0, "delayed  user-run        4      missing   Clock=", "D Clock, S Tool.lnk"},
    };
    std::string held;
    for (const auto& step : steps) {
        SCOPED_TRACE(step.command);
        const auto before = std::tuple(Inventory(false), Inventory(true), File());
        const auto [code, out] = Cli(step.command);
        EXPECT_EQ(code, step.code) << out;
        EXPECT_NE(out.find(step.says), std::string::npos) << out;
        EXPECT_EQ(Held(), step.held);
        // The program's own Run value is there exactly while something is delayed; a step that
        // moves nothing leaves the items and the file as they were.
        EXPECT_EQ(Run(user, kOwnRunValue) != "(none)", step.held.starts_with("D "));
        if (std::exchange(held, step.held) == step.held) {
            EXPECT_EQ(std::tuple(Inventory(false), Inventory(true), File()), before);
        }
    }
    EXPECT_EQ(test::ReadFileBytes(plan), json);
    // A check reads as a list does: the program's own Run value stays missing.
    ASSERT_TRUE(reg.DeleteValue(user, kRunKey, kOwnRunValue));
    EXPECT_EQ(Cli("apply \"" + plan + "\" --check").first, 0u);
    EXPECT_EQ(Run(user, kOwnRunValue), "(none)");
}

// history lists this user's kept runs in UTF-8: none without a file, and of a file with a broken
// line what could be read, saying what could not.
TEST_F(Console, HistoryListsTheKeptRunsAndSaysWhatCouldNotBeRead) {
    EXPECT_EQ(Cli("history --json"), std::pair(0ul, std::string("[]\n")));
    EXPECT_EQ(Cli("history"), std::pair(0ul, std::string()));
    const std::string file = HistoryFileBeside(app.Store().File().ImpactFilePath());
    const RunProgram clock{{kUserRun, "Clock ☕"}, "C:\\c.exe", 31000, {}, 10, 0, 0, 30000};
    test::WriteFileBytes(file, FormatHistoryFile({{"1", "t", 30000, {clock}}}) + "Run,cut\r\n");
    const auto [code, out] = Cli("history --json");
    EXPECT_EQ(code, 2u);
    EXPECT_NE(out.find("\"name\": \"Clock ☕\", \"path\": \"C:\\\\c.exe\", \"startMs\": 31000"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find(file + ": 1 lines could not be read"), std::string::npos) << out;
}

} // namespace
} // namespace tolvane
