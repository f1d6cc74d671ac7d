// tolvanec from end to end, as a script runs it: its own process beside a copy of the program's
// data, against the prefix's real Startup folders and Run keys.
#include <gtest/gtest.h>

#include <windows.h>

#include "cli/cli_args.h"
#include "config/language_files.h"
#include "items/run_entry.h"
#include "items/startup_fixture.h"
#include "text/strings.h"

namespace tolvane {
namespace {

class Console : public test::StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        const std::string built = test::BuiltProgramFolder();
        ASSERT_TRUE(CopyFileA((built + "\\tolvanec.exe").c_str(), (folder / "tolvanec.exe").c_str(),
                              FALSE));
        test::CopyTree(built + "\\lang", folder / "lang");
        test::CopyTree(built + "\\data", folder / "data");
        // The file as the console program writes it, with the language the list names.
        LoadLanguageList(app.folders.ProgramFolder, app.text);
        app.Store().File().WriteItems();
    }
    void TearDown() override {
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, "Dup"));
        StartupFixture::TearDown();
    }
    struct Ran {
        unsigned long code = 99;
        std::string out, err;
    };
    // Runs tolvanec with the arguments; its standard output and error go through files.
    Ran Cli(const std::string& arguments) {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        // Files of their own for each run: the handles of a process that has just ended may
        // still be open for a moment.
        const std::string run = std::to_string(++runs_);
        const std::string outPath = folder / ("out" + run + ".txt"),
                          errPath = folder / ("err" + run + ".txt");
        HANDLE out = CreateFileA(outPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                 CREATE_ALWAYS, 0, nullptr);
        HANDLE err = CreateFileA(errPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                 CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOA si{sizeof si};
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdOutput = out;
        si.hStdError = err;
        PROCESS_INFORMATION pi{};
        std::string line = "\"" + folder / "tolvanec.exe" + "\" " + arguments;
        Ran ran;
        const bool started = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE,
                                            CREATE_NO_WINDOW, nullptr, nullptr, &si, &pi);
        const DWORD notStarted = started ? 0 : GetLastError();
        if (started) {
            WaitForSingleObject(pi.hProcess, 60000);
            GetExitCodeProcess(pi.hProcess, &ran.code);
            CloseHandle(pi.hProcess);
            CloseHandle(pi.hThread);
        }
        CloseHandle(out);
        CloseHandle(err);
        ran.out = test::ReadFileBytes(outPath);
        ran.err = started ? test::ReadFileBytes(errPath)
                          : "tolvanec did not start: error " + std::to_string(notStarted);
        return ran;
    }
    // Everything a move may touch.
    std::string State() {
        std::string state = File() + "|" + Run(RegistryRoot::CurrentUser, "Clock") + "|" +
                            Saved(RegistryRoot::CurrentUser, "Clock") + "|" +
                            Run(RegistryRoot::CurrentUser, "Dup") + "|" +
                            Run(RegistryRoot::LocalMachine, "Dup");
        for (const std::string& f : test::FilesBelow(places.UserFolder))
            state += "|" + f;
        for (const std::string& f : test::FilesBelow(folder / "Tolvane Items"))
            state += "|" + f;
        return state;
    }
    std::string File() { return test::ReadFileBytes(app.Store().File().FilePath()); }

private:
    int runs_ = 0;
};

TEST_F(Console, ListsEveryItemInUtf8ForScripts) {
    Shortcut(places.UserFolder, "Tool.lnk");
    Shortcut(places.UserFolder, "Gone.lnk");
    Shortcut(places.CommonFolder, "Word.lnk");
    RunValue(RegistryRoot::CurrentUser, "Clock", "C:\\clock.exe -min");
    RunValue(RegistryRoot::CurrentUser, "Café \"q\"", "\"C:\\Program Files\\c.exe\" /a,b");
    RunValue(RegistryRoot::CurrentUser, "Later", "C:\\later.exe");
    Refresh();
    ASSERT_TRUE(Move("CurrentUserRegistry", "Later=C:\\later.exe", ItemState::Delayed));
    ASSERT_TRUE(Move("CurrentUserStartup", "Gone.lnk", ItemState::Stopped));

    const Ran json = Cli("list --json");
    EXPECT_EQ(json.code, 0u) << json.err;
    const std::string notepad = "C:\\\\windows\\\\notepad.exe";
    for (const std::string& record : std::vector<std::string>{
             "{\"state\": \"active\", \"location\": \"user-folder\", \"name\": \"Tool.lnk\", "
             "\"path\": \"" +
                 notepad +
                 "\", \"parameters\": \"\", \"delay\": null, \"known\": "
                 "false, \"description\": \"\", \"switchedOff\": false, \"missing\": false}",
             "{\"state\": \"active\", \"location\": \"user-run\", \"name\": \"Caf\xc3\xa9 "
             "\\\"q\\\"=\\\"C:\\\\Program Files\\\\c.exe\\\" /a,b\", \"path\": \"C:\\\\Program "
             "Files\\\\c.exe\", \"parameters\": \"/a,b\", \"delay\": null",
             "{\"state\": \"active\", \"location\": \"common-folder\", \"name\": \"Word.lnk\"",
             "{\"state\": \"delayed\", \"location\": \"user-run\", \"name\": "
             "\"Later=C:\\\\later.exe\", \"path\": \"C:\\\\later.exe\", \"parameters\": \"\", "
             "\"delay\": 0, \"known\": false, \"description\": \"\", \"switchedOff\": false, "
             "\"missing\": true}",
             "{\"state\": \"stopped\", \"location\": \"user-folder\", \"name\": \"Gone.lnk\", "
             "\"path\": \"" +
                 notepad + "\", \"parameters\": \"\", \"delay\": null",
         })
        EXPECT_NE(json.out.find(record), std::string::npos) << record << "\n" << json.out;
    EXPECT_EQ(json.out.front(), '[');
    EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '{'), 6) << json.out;

    const Ran csv = Cli("list --csv");
    EXPECT_EQ(csv.code, 0u);
    EXPECT_EQ(csv.out.rfind("state,location,name,path,parameters,delay,known,description,"
                            "switchedOff,missing\r\n",
                            0),
              0u);
    EXPECT_NE(csv.out.find("active,user-run,\"Caf\xc3\xa9 \"\"q\"\"=\"\"C:\\Program "
                           "Files\\c.exe\"\" /a,b\",C:\\Program Files\\c.exe,\"/a,b\","
                           ",false,,false,true\r\n"),
              std::string::npos)
        << csv.out;
    // A look changes nothing.
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Later"), "(none)");
}

// An expandable value with blanks in its path lists the same program and arguments, variables
// kept, whether it is active, delayed or stopped.
TEST_F(Console, ListsTheSameCommandInEveryState) {
    SetEnvironmentVariableA("TOLVANE_CLI_TEST", folder.Path().c_str());
    test::MakeFolder(folder / "Some App");
    test::WriteFileBytes(folder / "Some App\\e.exe", "x");
    const RegistryValue value =
        WideValue(REG_EXPAND_SZ, "%TOLVANE_CLI_TEST%\\Some App\\e.exe --flag \"a b\"");
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kRunKey, "Exp", value));
    const std::string command = "\"path\": \"%TOLVANE_CLI_TEST%\\\\Some App\\\\e.exe\", "
                                "\"parameters\": \"--flag \\\"a b\\\"\"";
    for (const char* move : {"", "delay Exp", "stop Exp"}) {
        if (*move) {
            EXPECT_EQ(Cli(move).code, 0u) << move;
        }
        const Ran json = Cli("list --json");
        EXPECT_NE(json.out.find(command), std::string::npos) << move << "\n" << json.out;
        EXPECT_EQ(json.out.find("\"missing\": true"), std::string::npos) << json.out;
    }
    EXPECT_EQ(Cli("restore Exp").code, 0u);
    EXPECT_EQ(reg.GetValue(RegistryRoot::CurrentUser, kRunKey, "Exp"), value);
    EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, "Exp"));
}

TEST_F(Console, MovesAnItemByNameAsTheListDoes) {
    Shortcut(places.UserFolder, "Tool.lnk");
    Shortcut(places.CommonFolder, "Word.lnk");
    RunValue(RegistryRoot::CurrentUser, "Clock", "C:\\clock.exe -min");
    RunValue(RegistryRoot::CurrentUser, "Dup", "C:\\dup.exe");
    RunValue(RegistryRoot::LocalMachine, "Dup", "C:\\dup64.exe");
    app.model.StartupType = 1; // Windows starts Tolvane while something is delayed
    app.Store().File().WriteItems();
    const std::string start = State();

    // By its value name, in another letter case: the same outcome as the popup's Delay.
    Ran ran = Cli("delay clock");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    const std::string delayedByConsole = State();
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Clock"), "(none)");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Clock"), "C:\\clock.exe -min");
    // While something is delayed, the program's own Run value stays, also through a command
    // that finds nothing, one that fails (another file in the way in the items folder) and one
    // that is refused (a command that deletes is never delayed).
    const std::string own = "\"" + folder / "Tolvane.exe" + "\" -nogui";
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tolvane"), own);
    test::MakeFolder(app.folders.UserItemsFolder);
    test::WriteFileBytes(UserItems("Tool.lnk"), "another file");
    RunValue(RegistryRoot::CurrentUser, "Wipe", "cmd.exe /c del C:\\x.tmp");
    const struct {
        const char* command;
        unsigned long code;
    } kept[] = {{"stop NoSuchItem", 1}, {"delay Tool.lnk", 2}, {"delay Wipe", 2}};
    for (const auto& k : kept) {
        ran = Cli(k.command);
        EXPECT_EQ(ran.code, k.code) << k.command << ": " << ran.err;
        EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tolvane"), own) << k.command;
    }
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Wipe"), "cmd.exe /c del C:\\x.tmp");
    DeleteFileA(UserItems("Tool.lnk").c_str());
    ASSERT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, "Wipe"));
    ran = Cli("restore Clock");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_EQ(State(), start);
    Refresh();
    ASSERT_TRUE(Move("CurrentUserRegistry", "Clock=C:\\clock.exe -min", ItemState::Delayed));
    EXPECT_EQ(State(), delayedByConsole);

    // Stopped from delayed, by the list's text; again is no change; then back.
    ran = Cli("stop \"Clock=C:\\clock.exe -min\"");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_NE(File().find("\"_REGCU_Clock=C:\\clock.exe -min\""), std::string::npos);
    const std::string stopped = State();
    EXPECT_EQ(Cli("stop Clock").code, 0u);
    EXPECT_EQ(State(), stopped);
    EXPECT_EQ(Cli("restore Clock").code, 0u);
    EXPECT_EQ(State(), start);

    // A shortcut with its own delay.
    ran = Cli("delay Tool.lnk --delay 7.5");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_TRUE(test::PathExists(UserItems("Tool.lnk")));
    EXPECT_NE(File().find("Execute (\"Tool.lnk\", \"\", 7.5, \"\");"), std::string::npos);
    ran = Cli("restore tool.lnk");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_EQ(State(), start);
    // A value whose command is empty has its delay set too.
    RunValue(RegistryRoot::CurrentUser, "Empty", "");
    ran = Cli("delay Empty --delay 4");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_NE(File().find("ExecuteReg (\"\", \"\", 4, \"Empty\");"), std::string::npos) << File();
    EXPECT_EQ(Cli("restore Empty").code, 0u);

    // Another program's value of the program's own name: Windows will not start Tolvane as
    // set. The move is made, and the script is told so, with exit code 2.
    RunValue(RegistryRoot::CurrentUser, kOwnRunValue, "C:\\Windows\\notepad.exe");
    ran = Cli("delay Clock");
    EXPECT_EQ(ran.code, 2u);
    EXPECT_NE(ran.err.find(app.text.Message(37)), std::string::npos) << ran.err;
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Clock"), "C:\\clock.exe -min");
    ASSERT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
    EXPECT_EQ(Cli("restore Clock").code, 0u);
    EXPECT_EQ(State(), start);

    // Two items of one name, none of another, an item without moves, bad usage: each its own
    // exit code, and nothing changed.
    ran = Cli("stop Dup");
    EXPECT_EQ(ran.code, 1u);
    EXPECT_NE(ran.err.find("user-run (active) machine-run (active)"), std::string::npos) << ran.err;
    EXPECT_EQ(Cli("delay Nowhere").code, 1u);
    ran = Cli("delay Word.lnk");
    EXPECT_EQ(ran.code, 2u);
    EXPECT_NE(ran.err.find("Word.lnk"), std::string::npos) << ran.err;
    EXPECT_EQ(Cli("delay").code, 3u);
    EXPECT_EQ(Cli("stop Dup --location nowhere").code, 3u);
    EXPECT_EQ(Cli("frobnicate").code, 3u);
    EXPECT_EQ(State(), start);
    EXPECT_EQ(Cli("stop Dup --location user-run").code, 0u);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Dup"), "(none)");
    EXPECT_EQ(Run(RegistryRoot::LocalMachine, "Dup"), "C:\\dup64.exe");
    EXPECT_EQ(Cli("--help").code, 0u);

    // One name in both of the machine's views, both delayed: a delay goes on the line of the
    // view asked for, never on the other's.
    RunValue(RegistryRoot::LocalMachine32, "Dup", "C:\\dup32.exe");
    Refresh();
    for (int leaf : Leaves("AllUsersRegistry"))
        ASSERT_TRUE(Moves().Move(*ItemOfNode(tree, listing, leaf), ItemState::Delayed));
    ran = Cli("delay Dup --location machine-run-32 --delay 5");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    for (const char* line : {"ExecuteRegAU (\"C:\\dup32.exe\", \"\", 5, \"Dup\");",
                             "ExecuteRegAU (\"C:\\dup64.exe\", \"\", 0, \"Dup\");"})
        EXPECT_NE(File().find(line), std::string::npos) << line << "\n" << File();
}

// A script names an item in any letter case, as Windows compares names, letters of every script
// too; the list carries the names exactly; and the very text the list showed while the item was
// active restores it.
TEST_F(Console, NamesMatchInAnyLetterCaseAndTheListedTextRestores) {
    const std::string name = "Über Яндекс ☕", command = "\"C:\\Я S\\u.exe\" -q ☕";
    RunValue(RegistryRoot::CurrentUser, name, command);
    Shortcut(places.UserFolder, "Résumé 📅.lnk");
    const std::string start = State();
    const std::string listed = name + "=" + command;
    EXPECT_NE(
        Cli("list --json").out.find("\"name\": \"Über Яндекс ☕=\\\"C:\\\\Я S\\\\u.exe\\\" -q ☕\""),
        std::string::npos);
    EXPECT_NE(Cli("delay \"Нет ☕\"").err.find("Нет ☕"), std::string::npos); // named as typed
    EXPECT_EQ(Cli("delay \"über яндекс ☕\"").code, 0u);
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, name), command);
    Ran ran = Cli("stop \"rÉSUMÉ 📅.LNK\"");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_TRUE(test::PathExists(UserItems("Résumé 📅.lnk")));
    EXPECT_NE(Cli("list").out.find("stopped  user-folder            Résumé 📅.lnk"),
              std::string::npos);
    ran = Cli("restore \"" + ReplaceAll(listed, "\"", "\\\"") + "\"");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_EQ(Cli("restore \"Résumé 📅.lnk\"").code, 0u);
    EXPECT_EQ(State(), start);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, name), command);
    EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, name));
}

} // namespace
} // namespace tolvane
