// Tolvane.exe -nogui from end to end, in a program folder of its own: the log, the order and
// the times of the starts, what is reported last, and whether the process ends or stays.
#include <gtest/gtest.h>

#include <windows.h>

#include <regex>

#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "platform/registry.h"
#include "records.h"
#include "startup/run_entry.h"
#include "support/win_test_support.h"
#include "text/language.h"

namespace tolvane {
namespace {

class LogOnRun : public ::testing::Test {
protected:
    void SetUp() override {
        ClearRunValues();
        test::CopyTree(test::BuiltProgramFolder(), folder.Path());
        test::WriteFileBytes(folder / "log.txt", "");
        for (const std::string& f : {userItems, allItems, folder / WindowsUserName()})
            test::MakeFolder(f);
    }
    void TearDown() override { ClearRunValues(); }
    void ClearRunValues() {
        reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue);
        reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue);
    }
    void WriteProgramGroups(int startupType, float mainDelay, std::vector<GroupProgram> programs) {
        ProgramModel m;
        SetDefaultModel(m);
        m.StartupType = startupType;
        m.MainStartupDelay = mainDelay;
        m.ProgramGroups[0].Programs = std::move(programs);
        auto languages = ParseLanguageList(test::ReadFileBytes(folder / "lang\\languagefile.dat"));
        test::WriteFileBytes(folder / (WindowsUserName() + "\\proggroup.c"),
                             FormatProgramGroupFile(m, languages));
    }
    std::string Exe() const { return "\"" + folder / "Tolvane.exe" + "\""; }
    // The log without its level prefix and time of day, which differ from run to run.
    std::vector<std::string> LogWithoutTimes() {
        std::vector<std::string> lines;
        const std::regex timed("^Info: ([0-9]{1,2}:[0-9]{2}:[0-9]{2}( ?[AP]M)?)( .*)$");
        for (const std::string& line : test::ReadLines(folder / "log.txt")) {
            std::smatch m;
            lines.push_back(std::regex_match(line, m, timed) ? "Info: <time>" + m[3].str() : line);
        }
        return lines;
    }

    CRegistry reg;
    test::TempFolder folder{"Tolvane"};
    const std::string userItems = folder / "Tolvane Items\\Current User";
    const std::string allItems = folder / "Tolvane Items\\All Users";
    const std::string recorder = test::HelperProgram("start_recorder.exe");
    const std::string record = folder / "record.txt";
};

TEST_F(LogOnRun, StartsTheStartupGroupInTurnLogsItAndEnds) {
    ASSERT_TRUE(test::CreateShortcut(userItems + "\\Tool.lnk", recorder, record + " B"));
    ASSERT_TRUE(test::CreateShortcut(allItems + "\\Word.lnk", recorder, record + " W"));
    const std::string model = folder / "Model\\tool.exe"; // holds the disallowed word "del"
    WriteProgramGroups(
        1, 1,
        {
            {recorder, record + " A", "Execute", 0.5f, ""},
            {"Tool.lnk", "", "Execute", 0, ""},
            {"Gone.lnk", "", "Execute", 0, ""}, // in no items folder: skipped without a word
            {model, "", "ExecuteReg", 0, "Model"},
            {recorder, record + " C", "ExecuteReg", 0.5f, "Recorder"},
            {"Word.lnk", "", "ExecuteAU", 1, ""},
        });

    const uint64_t started = GetTickCount64();
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.Started());
    unsigned long code = 99;
    ASSERT_TRUE(tolvane.WaitForExit(30000, &code))
        << "StartupType 1: the process ends after the run";
    EXPECT_EQ(code, 0u);

    EXPECT_EQ(LogWithoutTimes(), (std::vector<std::string>{
                                     "Info: <time>  Waiting for 1 seconds.",
                                     "Info: <time>  Wait over.",
                                     "Info: <time> Waiting for 0 seconds.",
                                     "Info: <time>  Tool.lnk ",
                                     "Info: <time> Waiting for 0.5 seconds.",
                                     "Info: <time>  " + recorder + " " + record + " A",
                                     "Info: <time> Waiting for 0.5 seconds.",
                                     "Info: <time>  " + recorder + " " + record + " C",
                                     "Info: <time> Waiting for 1 seconds.",
                                     "Info: <time>  Word.lnk ",
                                     "Warning: Startup Item Not Allowed: " + model,
                                 }));

    auto starts = test::WaitForStarts(record, 4);
    ASSERT_EQ(test::Names(starts), (std::vector<std::string>{"B", "A", "C", "W"}));
    // Main delay 1 s, then 0, 0.5, 0.5 and 1 s, each counted from the previous start.
    const int64_t first = static_cast<int64_t>(starts[0].Ms - started);
    EXPECT_GE(first, 1000);
    EXPECT_LE(first, 2500); // the program's own start and the helper's under Wine
    // A loose tolerance: a loaded machine delays the helper's own start; the accuracy itself
    // is the benchmark's to measure.
    EXPECT_NEAR(static_cast<double>(starts[1].Ms - starts[0].Ms), 500, 300);
    EXPECT_NEAR(static_cast<double>(starts[2].Ms - starts[1].Ms), 500, 300);
    EXPECT_NEAR(static_cast<double>(starts[3].Ms - starts[2].Ms), 1000, 300);

    // Closing for good with StartupType 1 brought the program's own Run entry up to date: an
    // all-users item is delayed, so the machine's key starts it for every user.
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue),
              Exe() + " -nogui");
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue), "");
}

// The message box of another process, once it shows: its text, after which it is closed.
std::string CloseMessageBoxOf(DWORD process, unsigned long timeoutMs) {
    for (unsigned long waited = 0; waited < timeoutMs; waited += 50, Sleep(50))
        for (HWND box = nullptr; (box = FindWindowExA(nullptr, box, "#32770", nullptr));) {
            DWORD owner = 0;
            GetWindowThreadProcessId(box, &owner);
            if (owner != process || !IsWindowVisible(box))
                continue;
            char text[1024] = {};
            GetDlgItemTextA(box, 0xFFFF, text, sizeof text);
            PostMessageA(box, WM_COMMAND, IDOK, 0);
            return text;
        }
    return "(no message box)";
}

TEST_F(LogOnRun, StaysWithStartupTypeTwoAndASecondStartOnlyReportsTheFirst) {
    WriteProgramGroups(2, 0, {{recorder, record + " Only", "Execute", 0, ""}});
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_EQ(test::Names(test::WaitForStarts(record, 1)), std::vector<std::string>{"Only"});
    EXPECT_FALSE(tolvane.WaitForExit(1500)) << "StartupType 2: the program stays in the tray";

    // A second start of the same exe, here without -nogui: it says that one runs and ends.
    test::ChildProcess second(Exe());
    const std::string text = CloseMessageBoxOf(second.Id(), 10000);
    EXPECT_EQ(text.rfind("Tolvane is already running", 0), 0u) << text;
    unsigned long code = 99;
    EXPECT_TRUE(second.WaitForExit(10000, &code));
    EXPECT_EQ(code, 0u);
    EXPECT_TRUE(tolvane.Running());
}

TEST_F(LogOnRun, StartupTypeZeroEndsAtOnceAndTouchesNothing) {
    WriteProgramGroups(0, 0, {{recorder, record + " Never", "Execute", 0, ""}});
    test::ChildProcess tolvane(Exe() + " /x-NOGUIy"); // the switch inside other text counts
    ASSERT_TRUE(tolvane.WaitForExit(15000));
    Sleep(300);
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"), "");
    EXPECT_FALSE(test::PathExists(record));
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue), "");
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue), "");
}

} // namespace
} // namespace tolvane
