// tolvanec from end to end, as a script runs it: its own process beside a copy of the program's
// data, against the prefix's real Startup folders and Run keys.
#include <gtest/gtest.h>

#include <windows.h>

#include <set>

#include "config/language_files.h"
#include "items/run_entry.h"
#include "items/startup_fixture.h"
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
    struct Ran {
        unsigned long code = 99;
        std::string out; // standard output, then standard error
    };
    // Runs tolvanec with the arguments, its output and errors into a file.
    Ran Cli(const std::string& arguments) {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        const std::string path = folder / "out.txt";
        HANDLE out = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                 CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOA si{sizeof si};
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdOutput = si.hStdError = out;
        PROCESS_INFORMATION pi{};
        std::string line = "\"" + folder / "tolvanec.exe" + "\" " + arguments;
        Ran ran;
        if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                           nullptr, &si, &pi)) {
            WaitForSingleObject(pi.hProcess, 60000);
            GetExitCodeProcess(pi.hProcess, &ran.code);
            CloseHandle(pi.hProcess);
            CloseHandle(pi.hThread);
        }
        CloseHandle(out);
        ran.out = test::ReadFileBytes(path);
        return ran;
    }
    // The items that are not active, as the program-group file read back lists them, sorted.
    std::string Held() {
        std::set<std::string> held;
        for (const StartupItem& item : ReadBack())
            if (item.State != ItemState::Active)
                held.insert((item.State == ItemState::Delayed ? "D " : "S ") + item.Name);
        std::string all;
        for (const std::string& h : held)
            all += (all.empty() ? "" : ", ") + h;
        return all;
    }
    std::string File() { return test::ReadFileBytes(app.Store().File().FilePath()); }
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
         "false, \"description\": \"\", \"switchedOff\": false, \"missing\": false}"},
        {"delay clock", 0, "", "D Clock"},
        {"delay Exp", 0, "", "D Clock, D Exp"},
        {"list --json", 0, exp, "D Clock, D Exp"},
        {"delay Wipe", 2, "del", "D Clock, D Exp"}, // a command that deletes is never delayed
        {"stop Exp", 0, "", "D Clock, S Exp"},
        {"list --json", 0, exp, "D Clock, S Exp"},
        {"stop \"Clock=C:\\clock.exe -min\"", 0, "", "S Clock, S Exp",
         "\"_REGCU_Clock=C:\\clock.exe -min\""},
        {"restore Clock", 0, "", "S Exp"},
        {"restore Exp", 0, ""},
        {"delay Tool.lnk --delay 7.5", 0, "", "D Tool.lnk",
         "Execute (\"Tool.lnk\", \"\", 7.5, \"\");"},
        {"stop \"tOOL.LNK\"", 0, "", "S Tool.lnk"},
        {"list", 0, "stopped  user-folder            Tool.lnk", "S Tool.lnk"},
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
        const Ran ran = Cli(step.command);
        EXPECT_EQ(ran.code, step.code) << ran.out;
        EXPECT_NE(ran.out.find(step.says), std::string::npos) << ran.out;
        const std::string held = Held();
        EXPECT_EQ(held, step.held);
        EXPECT_NE(File().find(step.fileLine), std::string::npos) << File();
        // The program's own Run value is there exactly while something is delayed.
        EXPECT_EQ(Run(user, kOwnRunValue), held.find("D ") == 0 ? own : "(none)");
    }
    EXPECT_EQ(reg.EnumValues(user, kRunKey), runValues);
}

} // namespace
} // namespace tolvane
