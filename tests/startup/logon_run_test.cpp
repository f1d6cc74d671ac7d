// The log-on run: Tolvane.exe -nogui from end to end in a program folder of its own (what it
// starts, with which command line, what it logs and measures), and the run in this process on a
// clock the test moves (when each program starts, and whether the process ends or stays).
#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include "config/delay_load.h"
#include "config/impact_file.h"
#include "config/program_group_file.h"
#include "platform/registry.h"
#include "config/app_state.h"
#include "startup/delayed_run.h"
#include "startup/tray_commands.h"
#include "items/run_entry.h"
#include "support/win_test_support.h"
#include "text/language.h"

namespace tolvane {
namespace {

// The lines of a record once there are at least this many, or after ten seconds.
std::vector<std::string> WaitForLines(const std::string& record, size_t count) {
    std::vector<std::string> lines;
    test::PumpUntil([&] { return (lines = test::ReadLines(record)).size() >= count; }, 10000);
    return lines;
}

const std::string kHelper = test::WinePathOfUnixPath(TOLVANE_HELPER_PROGRAM);

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
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue));
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
    CRegistry reg;
    test::TempFolder folder{"Tolvane"};
    const std::string userItems = folder / "Tolvane Items\\Current User";
    const std::string allItems = folder / "Tolvane Items\\All Users";
    const std::string record = folder / "record.txt";
    // The helper program's parameters that record its start under the name.
    std::string Record(const std::string& name) const { return "record " + record + " " + name; }
};

// Run values as installers write them and shortcuts in the Startup folder, names and folders
// of every script included, each delayed with tolvanec as a script would, then started by a
// log-on in a real process: each program, at its own path, gets exactly the arguments that
// Windows would have given it, byte for byte, and each start is measured under its item, a
// shortcut's as the program it points to, before the process ends.
TEST_F(LogOnRun, DelayedItemsGetTheArgumentsWindowsWouldGiveAndAreMeasured) {
    SetEnvironmentVariableA("TOLVANE_ARGS_RECORD", record.c_str());
    SetEnvironmentVariableA("TOLVANE_ARGS_DIR", folder.Path().c_str());
    auto at = [&](const std::string& relative) {
        const std::string path = folder / relative;
        test::MakeFolder(path.substr(0, path.rfind('\\')));
        EXPECT_TRUE(CopyFileA(kHelper.c_str(), path.c_str(), FALSE)) << path;
        return path;
    };
    const std::string spotify = at("Spotify\\Spotify.exe"),
                      dell = at("Dell\\Support Assist\\agent.exe"), tool = at("Exp App\\tool.exe"),
                      mounter = at("Scripts\\mounter.exe"), sync = at("Tools\\sync.exe"),
                      yandex = at("Яндекс\\browser.exe"), calendar = at("📅 Calendar\\cal.exe");
    test::WriteFileBytes(folder / "Scripts\\mount drives.bat", "@\"" + mounter + "\" %*\r\n");
    const test::StartupLocations places;
    ASSERT_TRUE(
        test::CreateShortcut(places.UserFolder + "\\📅 Calendar.lnk", calendar, "--today ☕"));
    struct Value {
        std::string name, data; // no data: the shortcut of that name
        bool expandable;
        std::string started; // the program at its path, "|", the arguments it gets
    };
    const std::vector<Value> values = {
        {"📅 Calendar.lnk", "", false, calendar + "|--today ☕"},
        {"Spotify", "\"" + spotify + "\" --autostart --minimized", false,
         spotify + "|--autostart --minimized"},
        {"SupportAssist", dell + " /startup", false, dell + "|/startup"},
        {"Tool", "%TOLVANE_ARGS_DIR%\\Exp App\\tool.exe --dir \"%TOLVANE_ARGS_DIR%\"", true,
         tool + "|--dir \"" + folder.Path() + "\""},
        {"Mount", "\"" + folder / "Scripts\\mount drives.bat" + "\" one \"two three\"", false,
         mounter + "|one \"two three\""},
        {"Sync", "cmd.exe /c start \"\" \"" + sync + "\" --tray", false, sync + "|--tray"},
        {"Café ☕", yandex + " --silent \"Яндекс\"", false, yandex + "|--silent \"Яндекс\""},
    };
    // Delayed already: a program that waits for input once, so that it counts as ready, and a
    // shortcut to it, which lives long enough to be found as the program it points to.
    const std::string loads = folder / "loads.txt";
    ASSERT_TRUE(
        test::CreateShortcut(userItems + "\\Heavy.lnk", kHelper, "load " + loads + " B 200"));
    WriteProgramGroups(1, 0,
                       {{kHelper, "load " + loads + " R 300", "ExecuteReg", 0.5f, "Loader"},
                        {"Heavy.lnk", "", "Execute", 1, ""}});
    std::vector<std::string> expected;
    for (const Value& v : values) {
        if (!v.data.empty()) {
            const auto type = v.expandable ? REG_EXPAND_SZ : REG_SZ;
            ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kRunKey, v.name,
                                     test::WideValue(type, v.data)));
        }
        test::ChildProcess delay("\"" + folder / "tolvanec.exe" + "\" delay \"" + v.name + "\"");
        unsigned long code = 99;
        ASSERT_TRUE(delay.WaitForExit(30000, &code));
        EXPECT_EQ(code, 0u) << v.name;
        expected.push_back(v.started);
    }
    const std::string user = folder / WindowsUserName();
    const std::string groups = test::ReadFileBytes(user + "\\proggroup.c");
    test::ChildProcess tolvane(Exe() + " -nogui");
    unsigned long code = 99;
    ASSERT_TRUE(tolvane.WaitForExit(60000, &code))
        << "StartupType 1: the process ends after the run";
    EXPECT_EQ(code, 0u);
    std::vector<std::string> started = WaitForLines(record, expected.size());
    std::sort(started.begin(), started.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(started, expected);
    EXPECT_EQ(test::ReadFileBytes(user + "\\proggroup.c"), groups);

    const ImpactFileContent impact = ParseImpactFile(test::ReadFileBytes(user + "\\impact.csv"));
    EXPECT_EQ(impact.SkippedLines, 0u);
    const ImpactRecord* loaded = FindImpact(impact.Records, {kUserRun, "Loader"}, nullptr);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->ReadyMs.has_value());
    EXPECT_TRUE(FindImpact(impact.Records, {kUserStartup, "Heavy.lnk"}, nullptr));
    places.Clear();
}

// A run that waits its main delay in the tray, used as a user would: a second start opens the
// whole window, and "&Quit Program" in the icon's menu (a right click, then the keyboard) ends
// the wait and the process. (What the menu's starts do: HandStartsFromTheTray... below.)
TEST_F(LogOnRun, ASecondStartAndTheTrayMenuWorkWhileTheRunWaits) {
    WriteProgramGroups(1, 60,
                       {{kHelper, Record("B"), "Execute", 0.3f, ""},
                        {kHelper, Record("C"), "ExecuteReg", 0.3f, "Rec"}});
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.Started());
    HWND tray = test::WindowOf(tolvane.Id(), "TolvaneTrayIcon", false, 10000, HWND_MESSAGE);
    ASSERT_TRUE(tray);
    EXPECT_FALSE(test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 0));

    // A second start, here without -nogui: it says that one runs, and the first opens.
    test::ChildProcess second(Exe());
    HWND box = test::WindowOf(second.Id(), "#32770", true, 10000);
    ASSERT_TRUE(box) << "no message box";
    char text[1024] = {};
    GetDlgItemTextA(box, 0xFFFF, text, sizeof text);
    EXPECT_EQ(std::string(text).rfind("Tolvane is already running", 0), 0u) << text;
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    unsigned long code = 99;
    EXPECT_TRUE(second.WaitForExit(10000, &code));
    EXPECT_EQ(code, 0u);
    HWND window = test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 10000);
    ASSERT_TRUE(window) << "the first copy's window did not open";
    HWND treeView = FindWindowExA(window, nullptr, "SysTreeView32", nullptr);
    ASSERT_TRUE(treeView);
    EXPECT_EQ(SendMessageA(treeView, TVM_GETCOUNT, 0, 0), 22); // containers, 2 delayed
    // Brought to the front: a menu opened before that would close again as the window comes up.
    test::PumpUntil([&] { return GetForegroundWindow() == window; });

    // Explorer started again (its icons gone): the run's icon comes back, or the user could
    // no longer reach the waiting run.
    NOTIFYICONDATAA icon{};
    icon.cbSize = sizeof icon;
    icon.hWnd = tray;
    icon.uID = 1;
    ASSERT_TRUE(Shell_NotifyIconA(NIM_DELETE, &icon));
    icon.uFlags = NIF_TIP;
    PostMessageA(HWND_BROADCAST, RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    EXPECT_TRUE(test::PumpUntil([&] { return Shell_NotifyIconA(NIM_MODIFY, &icon) != FALSE; }))
        << "the tray icon did not come back";

    PostMessageA(tray, WM_APP + 1, 1, WM_RBUTTONUP);
    ASSERT_TRUE(test::WindowOf(tolvane.Id(), "#32768", true, 5000)) << "no menu";
    // The menu window is made before its loop runs and takes the keyboard: keys typed in
    // between would go to the window behind it.
    const DWORD thread = GetWindowThreadProcessId(tray, nullptr);
    GUITHREADINFO gui{sizeof gui};
    test::PumpUntil([&] {
        return GetGUIThreadInfo(thread, &gui) && (gui.flags & GUI_POPUPMENUMODE) &&
               GetWindowThreadProcessId(GetForegroundWindow(), nullptr) == thread;
    });
    // Quit during the main wait: the process ends, and the log holds the main wait and its end,
    // and no wait for a program's turn: the run started nothing.
    test::Type({'Q'});
    EXPECT_TRUE(tolvane.WaitForExit(10000));
    EXPECT_EQ(test::ReadLines(folder / "log.txt").size(), 2u);
}

// StartupType 0: the log-on run ends at once. The run logs each start before it makes it, so an
// empty log once the process is gone means nothing was started.
TEST_F(LogOnRun, StartupTypeZeroEndsAtOnceAndTouchesNothing) {
    WriteProgramGroups(0, 0, {{kHelper, Record("Never"), "Execute", 0, ""}});
    test::ChildProcess tolvane(Exe() + " /x-NOGUIy"); // the switch inside other text counts
    ASSERT_TRUE(tolvane.WaitForExit(15000));
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"), "");
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue), "");
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue), "");
}

// The run in this process, on a clock the test moves: when each program starts, from where,
// and what the run leaves behind.
class DelayedRunTest : public ::testing::Test, public MainWindowControl, public RunClock {
protected:
    void SetUp() override {
        test::WriteFileBytes(folder / "log.txt", "");
        test::MakeFolder(app.folders.UserItemsFolder);
        test::MakeFolder(app.folders.AllUsersItemsFolder);
        SetDefaultModel(app.model);
        app.model.StartupType = 1;
        app.model.StartupGroupIndex = 0;
    }
    void TearDown() override {
        test::DeleteRegistryTree(RegistryRoot::CurrentUser, kSavedUserRunKey);
    }
    bool IsVisible() const override { return visible; }
    void Unload() override { ++unloads; }
    void Open() override {}
    void Ready() override { readyAfter.push_back(starts.size()); }
    uint64_t NowMs() override { return now; }
    void WaitUntil(uint64_t deadline, const std::function<bool()>& stop) override {
        if (whileWaiting)
            whileWaiting();
        while (!stop() && now < deadline)
            now = std::min(deadline, now + 100);
    }
    bool CanSampleLoad() override { return load != nullptr; }
    std::optional<LoadSample> SampleLoad() override { return load ? load(now) : std::nullopt; }
    ProgramLauncher Launcher() {
        return [&](const std::string& path, const std::string& params, const ImpactKey* item) {
            starts.push_back(std::to_string(now) + " " + path + "|" + params);
            items.push_back(item ? std::to_string(item->Location) + " " + item->Name : "-");
            now += launchMs; // a start takes its time
        };
    }
    void Run() { DelayedRun(RunNeedsOf(app), *this, *this, Launcher()); }
    // The times of the starts.
    std::vector<uint64_t> Times() const {
        std::vector<uint64_t> times;
        for (const std::string& s : starts)
            times.push_back(std::stoull(s.substr(0, s.find(' '))));
        return times;
    }
    // A program file in the test's folder: the run starts only what is there.
    std::string Program(const std::string& name) {
        test::WriteFileBytes(folder / name, "x");
        return folder / name;
    }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    uint64_t now = 1000, launchMs = 0;
    std::function<void()> whileWaiting;
    std::function<std::optional<LoadSample>(uint64_t)> load;
    bool visible = false;
    int unloads = 0;
    std::vector<size_t> readyAfter; // the starts made when the window was made, each run
    std::vector<std::string> starts, items;
};

TEST_F(DelayedRunTest, EachProgramStartsItsDelayAfterTheOneBeforeFromWhereItIsKept) {
    for (const std::string& file :
         {app.folders.UserItemsFolder + "Go.bat", app.folders.UserItemsFolder + "Site.url",
          app.folders.UserItemsFolder + "TOOL.lnk", app.folders.AllUsersItemsFolder + "Same.lnk",
          app.folders.UserItemsFolder + "Same.lnk"})
        test::WriteFileBytes(file, "x");
    // An expandable Run value: Windows fills in its variables, and so does the run.
    SetEnvironmentVariableA("TOLVANE_RUN_TEST", folder.Path().c_str());
    const std::string e = Program("e.exe");
    CRegistry reg;
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "Exp",
                             test::WideValue(REG_EXPAND_SZ, "%TOLVANE_RUN_TEST%\\e.exe %OS%")));
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "Lit",
                                      "%TOLVANE_RUN_TEST%\\e.exe"));
    app.model.MainStartupDelay = 30;
    app.model.ProgramGroups[0].Programs = {
        {"Go.bat", "", "Execute", 5, ""},
        {"Site.url", "", "Execute", 0, ""},
        {"Gone.lnk", "", "Execute", 0, ""},    // nowhere: said in the log, no wait
        {"Tool.LNK", "", "Execute", 2.5f, ""}, // its file's name in another letter case
        {"Same.lnk", "", "ExecuteAU", 0, ""},  // its own location's folder first
        {"%TOLVANE_RUN_TEST%\\e.exe", "%OS%", "ExecuteReg", 0, "Exp"},
        {"%TOLVANE_RUN_TEST%\\e.exe", "", "ExecuteReg", 1, "Lit"}, // plain text: not there
        {"notepad.exe", "-x", "Execute", 0, ""},                   // found where Windows looks
        // A disallowed word: never started, also where an older version kept a whole command.
        {"cmd.exe /c del " + e, "", "ExecuteReg", 0, "Wipe"},
    };
    launchMs = 700;
    Run();
    char os[64] = {};
    GetEnvironmentVariableA("OS", os, sizeof os);
    const std::string& user = app.folders.UserItemsFolder;
    // Main delay 30 s, then 5, 0, 2.5, 0, 0 and 0 s, each from the actual start before: a start
    // that takes 0.7 s moves the next one on.
    EXPECT_EQ(starts, (std::vector<std::string>{
                          "36000 " + user + "Go.bat|",
                          "36700 " + user + "Site.url|",
                          "39200 " + user + "Tool.LNK|",
                          "39900 " + app.folders.AllUsersItemsFolder + "Same.lnk|",
                          "40600 " + e + "|" + os,
                          "41300 notepad.exe|-x",
                      }));
    // Each start names its item, for the measurement of what it costs.
    EXPECT_EQ(items, (std::vector<std::string>{"3 Go.bat", "3 Site.url", "3 Tool.LNK", "2 Same.lnk",
                                               "1 Exp", "3 notepad.exe"}));
    const std::string log = test::ReadFileBytes(folder / "log.txt");
    for (const std::string& said :
         {std::string("Not Found: Gone.lnk"), std::string("Not Found: %TOLVANE_RUN_TEST%\\e.exe"),
          "Not Allowed: cmd.exe /c del " + e})
        EXPECT_NE(log.find("Warning: Startup Item " + said + "\r\n"), std::string::npos) << said;
    EXPECT_EQ(unloads, 1);                         // StartupType 1, never opened: the program ends
    EXPECT_EQ(readyAfter, std::vector<size_t>{0}); // the window and tray before the main wait
}

// A run held up (a busy machine, the tray menu held open, the process suspended) starts the
// next program at once and each later one its own delay after the one before, never several
// together to catch up. The user opened the window meanwhile: the program stays after the run.
TEST_F(DelayedRunTest, AStallNeverBunchesTheStartsThatFollowAndOpeningKeepsTheProgram) {
    app.model.MainStartupDelay = 2;
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 1, ""},
                                           {Program("b.exe"), "", "Execute", 1, ""},
                                           {Program("c.exe"), "", "Execute", 1.5f, ""},
                                           {Program("d.exe"), "", "Execute", 0, ""}};
    int waits = 0;
    // The main wait comes back 10 s late, and so does b's.
    whileWaiting = [&] {
        if (++waits == 1 || waits == 3)
            now += 10000;
        visible = true;
    };
    app.ShowGui = false; // the log-on mode
    Run();
    EXPECT_EQ(Times(), (std::vector<uint64_t>{12000, 22000, 23500, 23500}));
    EXPECT_EQ(unloads, 0);
    EXPECT_TRUE(app.ShowGui);
}

// Programs started by hand from the tray while the run waits are not started again, by the run
// or by the tray, and the run's next start keeps its delay after them. Two records alike are two
// programs: each starts once.
TEST_F(DelayedRunTest, HandStartsFromTheTrayCountAndNothingStartsTwice) {
    app.model.MainStartupDelay = 10;
    const std::string d = Program("d.exe");
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 1, ""},
                                           {Program("b.exe"), "", "Execute", 2, ""},
                                           {Program("c.exe"), "", "Execute", 3, ""},
                                           {d, "", "Execute", 0.5f, ""},
                                           {d, "", "Execute", 0.5f, ""}};
    // Stopped: a Run value started from its saved copy, expanded as Windows would, and one with
    // a disallowed word, which starts from nowhere.
    ASSERT_TRUE(CRegistry().SetValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "Exp",
                                     test::WideValue(REG_EXPAND_SZ, "%OS%.exe -s")));
    app.model.StoppedPrograms = {"_REGCU_Wipe=cmd.exe /c del C:\\x", "_REGCU_Exp=%OS%.exe -s"};
    char os[64] = {};
    GetEnvironmentVariableA("OS", os, sizeof os);
    const ShownTrayMenu menu = BuildTrayMenuModel(app.model, app.text);
    auto choose = [&](int number) {
        TrayMenuCommand(RunNeedsOf(app), *this, menu, number, *this, Launcher());
    };
    int waits = 0;
    whileWaiting = [&] {
        switch (++waits) {
        case 1: // the main wait: b, after its 2 s; the run's wait stays a wait
            choose(1003);
            EXPECT_TRUE(app.wait.WaitActive);
            break;
        case 4: // c's turn: a, which the run started, then Run All
            choose(1002);
            choose(1000);
            break;
        case 5: // Run All waits for c: c by hand meanwhile, and the stopped ones
            choose(1004);
            choose(3001);
            break;
        }
    };
    app.ShowGui = false; // the log-on mode
    Run();
    // b by hand at 3 s; a after the main wait (11 s); c by hand 3 s after a, and neither Run All
    // after its wait nor the run starts it again; Run All starts both d, each after its delay.
    EXPECT_EQ(starts, (std::vector<std::string>{
                          "3000 " + folder / "b.exe" + "|", "12000 " + folder / "a.exe" + "|",
                          "15000 " + folder / "c.exe" + "|", "15000 " + std::string(os) + ".exe|-s",
                          "15500 " + d + "|", "16000 " + d + "|"}));
    // Each measured as its item, the stopped one as the stopped item it is.
    EXPECT_EQ(items, (std::vector<std::string>{"3 b.exe", "3 a.exe", "3 c.exe", "1 Exp", "3 d.exe",
                                               "3 d.exe"}));
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt")
                  .find("Warning: Startup Item Not Allowed: cmd.exe (\"del\")\r\n"),
              std::string::npos);
}

TEST_F(DelayedRunTest, WaitingForIdleStartsAfterFiveQuietSecondsOrAtTheLatest) {
    app.model.WaitForIdle = 1;
    app.model.MainStartupDelay = 30;
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 5, ""},
                                           {Program("b.exe"), "", "Execute", 0, ""},
                                           {Program("c.exe"), "", "Execute", 1, ""}};
    // Busy processors for the first 20 s; then quiet, the disks just under a fifth; then
    // the disks at a fifth, which counts as busy, for good.
    load = [](uint64_t t) {
        return t <= 21000   ? LoadSample{0.9, 0}
               : t <= 36000 ? LoadSample{0.1, 0.19}
                            : LoadSample{0.05, 0.20};
    };
    Run();
    // The main wait ends after ten quiet half seconds (21.5 to 26 s), not at 30 s; "a" waits
    // five quiet seconds, not its 5 s from the plan; "c" never sees a quiet machine and starts
    // at its delay plus two minutes.
    EXPECT_EQ(Times(), (std::vector<uint64_t>{31000, 36000, 157000}));

    // A quiet machine never starts a program sooner than its delay after the start before, and
    // a start by hand from the tray moves that on: b by hand at 2 s, so a (12 s) not before
    // 14 s, though the machine was idle at 11.5 s; c (6 s) not before 20 s.
    load = [](uint64_t) { return LoadSample{0.05, 0.05}; };
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 12, ""},
                                           {Program("b.exe"), "", "Execute", 1, ""},
                                           {Program("c.exe"), "", "Execute", 6, ""}};
    const ShownTrayMenu menu = BuildTrayMenuModel(app.model, app.text);
    int waits = 0;
    whileWaiting = [&] {
        if (++waits == 1)
            TrayMenuCommand(RunNeedsOf(app), *this, menu, 1003, *this, Launcher());
    };
    // The clock back at its start and nothing started, for another run.
    now = 1000;
    starts.clear();
    items.clear();
    app.starts = {};
    app.ShowGui = false;
    Run();
    EXPECT_EQ(starts, (std::vector<std::string>{"2000 " + folder / "b.exe" + "|",
                                                "14000 " + folder / "a.exe" + "|",
                                                "20000 " + folder / "c.exe" + "|"}));
}

} // namespace
} // namespace tolvane
