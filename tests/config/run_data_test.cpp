#include <gtest/gtest.h>

#include "config/program_model.h"
#include "config/run_data.h"
#include "text/strings.h"

#include <algorithm>

namespace tolvane {
namespace {

// A machine as the command line's reading sees it: its files (letter case ignored, as
// Windows' file names are), the system folders that bare names are found in, and its variables.
class FakeMachine : public CommandLineSystem {
public:
    std::vector<std::string> Files;
    bool FileExists(const std::string& path) const override {
        auto there = [&](const std::string& p) {
            return std::any_of(Files.begin(), Files.end(),
                               [&](const std::string& f) { return ToLower(f) == ToLower(p); });
        };
        if (path.find('\\') != std::string::npos)
            return there(path);
        return there("C:\\Windows\\System32\\" + path) || there("C:\\Windows\\" + path);
    }
    std::string Expand(const std::string& text) const override {
        std::string out = text;
        for (const auto& [name, value] :
             {std::pair<const char*, const char*>{"%ProgramFiles%", "C:\\Program Files"},
              {"%ProgramFiles(x86)%", "C:\\Program Files (x86)"},
              {"%LOCALAPPDATA%", "C:\\Users\\Ann\\AppData\\Local"},
              {"%windir%", "C:\\Windows"},
              {"%SystemRoot%", "C:\\Windows"}})
            out = ReplaceAll(out, name, value);
        return out;
    }
};

// Run values as the programs' installers write them, and what Windows starts of each.
TEST(RunData, RunValuesReadAsWindowsReadsThem) {
    FakeMachine machine;
    machine.Files = {
        "C:\\Users\\Ann\\AppData\\Local\\Microsoft\\OneDrive\\OneDrive.exe",
        "C:\\Users\\Ann\\AppData\\Local\\Discord\\Update.exe",
        "C:\\Users\\Ann\\AppData\\Local\\Microsoft\\Teams\\Update.exe",
        "C:\\Program Files\\Google\\Chrome\\Application\\chrome.exe",
        "C:\\Program Files\\Google\\Drive File Stream\\launch.bat",
        "C:\\Program Files\\Dell\\SupportAssistAgent\\bin\\SupportAssistAgent.exe",
        "C:\\Program Files\\Docker\\Docker\\Docker Desktop.exe",
        "C:\\Program Files\\Windows Defender\\MSASCui.exe",
        "C:\\Program Files\\Windows Defender\\MSASCuiL.exe",
        "C:\\Users\\Ann\\AppData\\Local\\Programs\\Tool\\tool.exe",
        "C:\\Tools\\agent.exe",
        "C:\\Tools\\sync.exe",
        "D:\\Apps.exe",
        "D:\\Apps Store\\store.exe",
        "C:\\Windows\\System32\\cmd.exe",
        "C:\\Windows\\System32\\rundll32.exe",
        "C:\\Windows\\System32\\ctfmon.exe",
        "C:\\Windows\\System32\\SecurityHealthSystray.exe",
        "C:\\Windows\\System32\\LogiLDA.dll",
    };
    struct Case {
        const char* data;
        bool expandable;
        const char* program;
        const char* arguments;
    };
    const Case cases[] = {
        // Quoted programs, with and without arguments.
        {"\"C:\\Users\\Ann\\AppData\\Local\\Microsoft\\OneDrive\\OneDrive.exe\" /background", false,
         "C:\\Users\\Ann\\AppData\\Local\\Microsoft\\OneDrive\\OneDrive.exe", "/background"},
        // A browser: arguments that start with "--" and one that holds a ":".
        {"\"C:\\Program Files\\Google\\Chrome\\Application\\chrome.exe\" --no-startup-window "
         "/prefetch:5",
         false, "C:\\Program Files\\Google\\Chrome\\Application\\chrome.exe",
         "--no-startup-window /prefetch:5"},
        // Squirrel's Update.exe: the arguments end in ".exe" and hold quotes.
        {"C:\\Users\\Ann\\AppData\\Local\\Microsoft\\Teams\\Update.exe --processStart "
         "\"Teams.exe\" --process-start-args \"--system-initiated\"",
         false, "C:\\Users\\Ann\\AppData\\Local\\Microsoft\\Teams\\Update.exe",
         "--processStart \"Teams.exe\" --process-start-args \"--system-initiated\""},
        // Unquoted with blanks: the shortest run of words that names a file, in any case.
        {"C:\\Program Files\\Dell\\SupportAssistAgent\\bin\\SupportAssistAgent.exe /startup", false,
         "C:\\Program Files\\Dell\\SupportAssistAgent\\bin\\SupportAssistAgent.exe", "/startup"},
        {"C:\\Program Files\\Docker\\Docker\\Docker Desktop.EXE", false,
         "C:\\Program Files\\Docker\\Docker\\Docker Desktop.EXE", ""},
        // Windows stops at the first file: D:\Apps.exe wins over the folder "Apps Store".
        {"D:\\Apps Store\\store.exe /tray", false, "D:\\Apps.exe", "Store\\store.exe /tray"},
        // ".exe" added to a word without an extension, as Windows adds it.
        {"C:\\Tools\\agent --daemon", false, "C:\\Tools\\agent.exe", "--daemon"},
        // Programs of the system folders, found there or by their bare names; a DLL's entry.
        {"ctfmon.exe", false, "ctfmon.exe", ""},
        {"C:\\Windows\\system32\\rundll32.exe C:\\Windows\\System32\\LogiLDA.dll,LogiFetch", false,
         "C:\\Windows\\system32\\rundll32.exe", "C:\\Windows\\System32\\LogiLDA.dll,LogiFetch"},
        // Commands through cmd and a batch file.
        {"cmd.exe /c start \"\" \"C:\\Tools\\sync.exe\" --tray", false, "cmd.exe",
         "/c start \"\" \"C:\\Tools\\sync.exe\" --tray"},
        {"cmd /c del C:\\x.tmp", false, "cmd.exe", "/c del C:\\x.tmp"},
        {"\"C:\\Program Files\\Google\\Drive File Stream\\launch.bat\"", false,
         "C:\\Program Files\\Google\\Drive File Stream\\launch.bat", ""},
        // Expandable strings: read with the variables filled in, given back as written.
        {"%windir%\\system32\\SecurityHealthSystray.exe", true,
         "%windir%\\system32\\SecurityHealthSystray.exe", ""},
        {"%ProgramFiles%\\Windows Defender\\MSASCui.exe -hide", true,
         "%ProgramFiles%\\Windows Defender\\MSASCui.exe", "-hide"},
        {"%LOCALAPPDATA%\\Programs\\Tool\\tool --hidden %TEMP%", true,
         "%LOCALAPPDATA%\\Programs\\Tool\\tool.exe", "--hidden %TEMP%"},
        // The same text in a plain string is no variable: nothing there, so the first word.
        {"%ProgramFiles%\\Windows Defender\\MSASCuiL.exe", false, "%ProgramFiles%\\Windows",
         "Defender\\MSASCuiL.exe"},
        // Nothing there at all: the first word, as Windows would try it.
        {"C:\\Program Files\\Gone App\\gone.exe /min", false, "C:\\Program",
         "Files\\Gone App\\gone.exe /min"},
        // Blanks around the parts; a quoted program that the arguments follow at once; a quote
        // that is never closed.
        {"  \"C:\\Tools\\sync.exe\"   --tray  ", false, "C:\\Tools\\sync.exe", "--tray"},
        {"\"C:\\Tools\\sync.exe\"/min", false, "C:\\Tools\\sync.exe", "/min"},
        {"\"C:\\Program Files\\x\\y.exe /a", false, "C:\\Program Files\\x\\y.exe /a", ""},
        {"", false, "", ""},
    };
    for (const Case& c : cases) {
        const RunCommandParts parts = SplitRunData(c.data, c.expandable, machine);
        EXPECT_EQ(parts.Path + "|" + parts.Parameters, std::string(c.program) + "|" + c.arguments)
            << c.data;
    }

    // A delayed program as an older version stored it: quoted, or the whole command kept as
    // its program; read again as Windows reads it where the stored program is not there.
    auto delayed = [&](const char* path, const char* parameters) {
        const RunCommandParts parts =
            DelayedCommand({path, parameters, "ExecuteReg", 0, "X"}, false, machine);
        return parts.Path + "|" + parts.Parameters;
    };
    EXPECT_EQ(delayed("\"C:\\Tools\\sync.exe\" ", "--tray"), "C:\\Tools\\sync.exe|--tray");
    EXPECT_EQ(delayed("C:\\Users\\Ann\\AppData\\Local\\Discord\\Update.exe --processStart "
                      "Discord.exe",
                      ""),
              "C:\\Users\\Ann\\AppData\\Local\\Discord\\Update.exe|--processStart Discord.exe");
    EXPECT_EQ(delayed("\"C:\\Tools\\sync.exe\" --tray \"a b\"", ""),
              "C:\\Tools\\sync.exe|--tray \"a b\"");
    EXPECT_EQ(delayed("C:\\Gone\\x.exe", "-a"), "C:\\Gone\\x.exe|-a");

    // The disallowed words are looked for in what starts, never in the record as stored: such a
    // whole command starts cmd.exe with "/c del C:\x.exe"; a folder's name is no command.
    ProgramModel words;
    words.DisallowedPrograms = {"del"};
    auto blocked = [&](const char* path, const char* parameters) {
        return StartBlockingWord(words, {path, parameters, "ExecuteReg", 0, "X"}, false, machine);
    };
    EXPECT_EQ(blocked("cmd.exe /c del C:\\x.exe", ""), "del");
    EXPECT_EQ(blocked("cmd /c DEL C:\\x.exe", ""), "del");
    EXPECT_EQ(blocked("C:\\Program Files\\Dell\\SupportAssistAgent\\bin\\SupportAssistAgent.exe "
                      "/startup",
                      ""),
              "");
    EXPECT_TRUE(ProgramFound("%windir%\\system32\\SecurityHealthSystray.exe", true, machine));
    EXPECT_FALSE(ProgramFound("%windir%\\system32\\SecurityHealthSystray.exe", false, machine));
    EXPECT_TRUE(ProgramFound("C:\\Tools\\agent", false, machine));
    EXPECT_FALSE(ProgramFound("", true, machine)); // an empty command names no program
}

TEST(RunData, NameAndDataSplitAtTheFirstEquals) {
    const NameData nd = SplitNameData("Tool=C:\\x.exe /opt=1");
    EXPECT_EQ(nd.Name + "|" + nd.Data, "Tool|C:\\x.exe /opt=1");
    EXPECT_EQ(SplitNameData("=C:\\d.exe").Name, "");
    EXPECT_EQ(SplitNameData("NoEquals").Name + "|" + SplitNameData("NoEquals").Data, "NoEquals|");
}

// Saved copies as a listing reads them: name and data apart.
std::vector<NameData> Copies(std::initializer_list<std::string> copies) {
    std::vector<NameData> out;
    for (const std::string& copy : copies)
        out.push_back(SplitNameData(copy));
    return out;
}

TEST(RunData, EachDelayedAndStoppedValueFindsItsOwnSavedCopy) {
    // The entry names its value, without the quotes the file cannot keep.
    EXPECT_EQ(StoppedRunEntry("Q \"1\"", " \"C:\\q q\\q.exe\" -m "), "Q 1=C:\\q q\\q.exe -m");
    EXPECT_EQ(NamedStoppedValue("Q 1=C:\\q.exe /x=1")->Data, "C:\\q.exe /x=1");
    EXPECT_FALSE(NamedStoppedValue("C:\\a=b\\x.exe")); // an older entry: a path alone
    const std::vector<NameData> saved =
        Copies({"A=C:\\x.exe /a", "B=C:\\x.exe /b", "", "C=C:\\x.exe", "D=C:\\x.exe",
                "R=\"C:\\q\\r.exe\" -m", "E=", "F=C:\\f.exe"});
    ProgramModel model;
    model.ProgramGroups = {{"Startup",
                            {{"C:\\moved\\f.exe", "", "ExecuteRegAU", 0, "F"},
                             {"C:\\x.exe", "", "ExecuteRegAU", 0, "C"},
                             {"C:\\x.exe", "", "ExecuteReg", 0, "A"},
                             {"", "", "ExecuteRegAU", 0, ""},
                             {"", "", "ExecuteRegAU", 0, "E"}}}};
    model.StartupGroupIndex = 0;
    // By name first, whatever the commands; then older entries that hold a path alone, each
    // taking a copy no other entry has: exact path, then trimmed, then contained. The copy of a
    // delayed value (C) is never taken; a free slot claims nothing; a value whose command is
    // empty (E) is a record all the same; a delayed value whose program has moved since (F)
    // still owns its copy by its name.
    model.StoppedPrograms = {"_REGAU_C:\\x.exe ",        "_REGAU_B=C:\\x.exe /b",
                             "_REGAU_C:\\x.exe",         "_REGAU_C:\\x.exe",
                             "_REGAU_C:\\q\\r",          "_REGAU_C:\\none.exe",
                             "_REGAU_Gone=C:\\x.exe /a", "",
                             "_STPCU_C:\\x.exe"};
    SavedCopyMatch m = MatchSavedCopies(model, kMachineRun, saved);
    EXPECT_EQ(m.Stopped, (std::vector<int>{0, 1, 4, -1, 5, -1, -1, -1, -1}));
    EXPECT_EQ(m.Delayed, (std::vector<int>{7, 3, -1, -1, 6}));
    EXPECT_EQ(SavedCopyOfStopped(model, 2, saved), 4);
    EXPECT_EQ(SavedCopyOfStopped(model, 8, saved), -1); // a shortcut has no copy

    // The machine's two views listed one after the other: the same name in both is two
    // values, and the command tells whose copy is whose, whatever the order of the model.
    const std::vector<NameData> views =
        Copies({"T=C:\\64.exe", "U=C:\\u.exe", "T=C:\\32.exe", "U=C:\\u.exe"});
    model.ProgramGroups[0].Programs = {{"C:\\32.exe", "", "ExecuteRegAU", 0, "T"},
                                       {"C:\\64.exe", "", "ExecuteRegAU", 0, "T"}};
    model.StoppedPrograms = {"_REGAU_U=C:\\u.exe", "_REGAU_U=C:\\u.exe", "_REGAU_U=C:\\u.exe"};
    m = MatchSavedCopies(model, kMachineRun, views);
    EXPECT_EQ(m.Delayed, (std::vector<int>{2, 0}));
    EXPECT_EQ(m.Stopped, (std::vector<int>{1, 3, -1}));
    EXPECT_EQ(MatchSavedCopies(model, kUserRun, views).Delayed, (std::vector<int>{-1, -1}));
}

} // namespace
} // namespace tolvane
