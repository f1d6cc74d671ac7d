// The log-on run: Tolvane.exe -nogui from end to end in a program folder of its own (what it
// starts, with which command line, what it logs and measures), and the run in this process on a
// clock the test moves (when each program starts, and whether the process ends or stays).
#include <gtest/gtest.h>

#include <windows.h>

#include <shellapi.h>

#include "config/delay_load.h"
#include "config/impact_file.h"
#include "config/logon_history.h"
#include "config/policies.h"
#include "config/program_group_file.h"
#include "platform/registry.h"
#include "config/app_state.h"
#include "platform/message_pump.h"
#include "startup/delayed_run.h"
#include "startup/impact_meter.h"
#include "startup/tray_commands.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

const std::string kHelper = test::WinePathOfUnixPath(TOLVANE_HELPER_PROGRAM);

// Runs a command line to its end: its exit code, or 99 when it did not end within a minute.
unsigned long Finish(const std::string& commandLine) {
    test::ChildProcess child(commandLine);
    unsigned long code = 99;
    EXPECT_TRUE(child.WaitForExit(60000, &code)) << commandLine;
    return code;
}

class LogOnRun : public ::testing::Test {
protected:
    void SetUp() override {
        places.Clear();
        test::CopyTree(test::BuiltProgramFolder(), folder.Path());
        test::WriteFileBytes(folder / "log.txt", "");
        test::MakeFolder(userItems);
        test::MakeFolder(folder / WindowsUserName());
    }
    void TearDown() override { places.Clear(); }
    void WriteProgramGroups(int startupType, float mainDelay, std::vector<GroupProgram> programs) {
        ProgramModel m;
        SetDefaultModel(m);
        m.StartupType = startupType;
        m.MainStartupDelay = mainDelay;
        m.ProgramGroups[0].Programs = std::move(programs); // in English, the language unnamed
        test::WriteFileBytes(folder / (WindowsUserName() + "\\proggroup.c"),
                             FormatProgramGroupFile(m, {}));
    }
    std::string Exe() const { return "\"" + folder / "Tolvane.exe" + "\""; }
    const test::StartupLocations places; // emptied before and after
    test::TempFolder folder{"Tolvane"};
    const std::string userItems = folder / "Tolvane Items\\Current User";
};

// Run values as installers write them and a shortcut in the Startup folder, its name, folder and
// arguments beyond ASCII, each delayed with tolvanec as a script would, then started by a
// log-on in a real process: each program, at its own path, gets exactly the arguments that
// Windows would have given it, byte for byte, and a start is measured under its item, a
// shortcut's as the program it points to, before the process ends.
TEST_F(LogOnRun, DelayedItemsGetTheArgumentsWindowsWouldGiveAndAreMeasured) {
    const std::string record = folder / "record.txt";
    SetEnvironmentVariableA("TOLVANE_ARGS_RECORD", record.c_str());
    SetEnvironmentVariableA("TOLVANE_ARGS_DIR", folder.Path().c_str());
    auto at = [&](const std::string& relative) {
        const std::string path = folder / relative;
        test::MakeFolder(path.substr(0, path.rfind('\\')));
        EXPECT_TRUE(CopyFileA(kHelper.c_str(), path.c_str(), FALSE)) << path;
        return path;
    };
    const std::string spotify = at("Spotify\\Spotify.exe"), tool = at("Exp App\\tool.exe"),
                      calendar = at("📅 Calendar\\cal.exe");
    ASSERT_TRUE(
        test::CreateShortcut(places.UserFolder + "\\📅 Calendar.lnk", calendar, "--today ☕"));
    struct Value {
        std::string name, data;
        DWORD type;          // 0: the shortcut of that name
        std::string started; // the program at its path, "|", the arguments it gets
    };
    const std::vector<Value> values = {
        {"📅 Calendar.lnk", "", 0, calendar + "|--today ☕"},
        {"Spotify", "\"" + spotify + "\" --autostart --minimized", REG_SZ,
         spotify + "|--autostart --minimized"},
        {"Tool", "%TOLVANE_ARGS_DIR%\\Exp App\\tool.exe --dir \"%TOLVANE_ARGS_DIR%\"",
         REG_EXPAND_SZ, tool + "|--dir \"" + folder.Path() + "\""},
    };
    // Delayed already: a shortcut to a program that waits for input once, so that it counts as
    // ready, and lives long enough to be found as the program the shortcut points to.
    ASSERT_TRUE(test::CreateShortcut(userItems + "\\Heavy.lnk", kHelper,
                                     "load " + folder / "loads.txt" + " B 200"));
    WriteProgramGroups(1, 0, {{"Heavy.lnk", "", "Execute", 0.5f, ""}});
    CRegistry reg;
    std::vector<std::string> expected;
    for (const Value& v : values) {
        ASSERT_TRUE(!v.type || reg.SetValue(RegistryRoot::CurrentUser, kRunKey, v.name,
                                            test::WideValue(v.type, v.data)));
        EXPECT_EQ(Finish("\"" + folder / "tolvanec.exe" + "\" delay \"" + v.name + "\""), 0u);
        expected.push_back(v.started);
    }
    EXPECT_EQ(Finish(Exe() + " -nogui"), 0u) << "StartupType 1: the process ends after the run";
    std::vector<std::string> started;
    test::PumpUntil([&] { return (started = test::ReadLines(record)).size() >= expected.size(); },
                    10000);
    std::sort(started.begin(), started.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(started, expected);

    const ImpactFileContent impact =
        ParseImpactFile(test::ReadFileBytes(folder / (WindowsUserName() + "\\impact.csv")));
    const ImpactRecord* heavy = FindImpact(impact.Records, {kUserStartup, "Heavy.lnk"}, nullptr);
    // Measured under its item; whether it was seen ready depends on how soon the busy machine
    // let the meter look, so only the record itself is certain.
    EXPECT_TRUE(heavy) << "the shortcut's program not measured";
}

// A run that waits its main delay in the tray, used as a user would: a second start opens the
// whole window, and "&Quit Program" in the icon's menu (a right click, then the keyboard) ends
// the wait and the process. (What the menu's starts do: HandStartsFromTheTray... below.)
TEST_F(LogOnRun, ASecondStartAndTheTrayMenuWorkWhileTheRunWaits) {
    WriteProgramGroups(1, 60, {{kHelper, "", "Execute", 0.3f, ""}});
    test::ChildProcess tolvane(Exe() + " -nogui");
    HWND tray = test::WindowOf(tolvane.Id(), "TolvaneTrayIcon", false, 10000, HWND_MESSAGE);
    ASSERT_TRUE(tray);
    EXPECT_FALSE(test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 0));

    // A second start, here without -nogui: it says that one runs, and the first opens.
    test::ChildProcess second(Exe());
    HWND box = test::WindowOf(second.Id(), "#32770", true, 10000);
    char text[1024] = {};
    GetDlgItemTextA(box, 0xFFFF, text, sizeof text);
    EXPECT_EQ(std::string(text).rfind("Tolvane is already running", 0), 0u) << text;
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(second.WaitForExit(10000));
    HWND window = test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 10000);
    ASSERT_TRUE(window) << "the first copy's window did not open";
    // Brought to the front: a menu opened before that would close again as the window comes up.
    test::PumpUntil([&] { return GetForegroundWindow() == window; });

    // Explorer started again (its icons gone): the run's icon comes back, or the user could
    // no longer reach the waiting run.
    NOTIFYICONDATAA icon{sizeof icon, tray, 1, NIF_TIP};
    ASSERT_TRUE(Shell_NotifyIconA(NIM_DELETE, &icon));
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
TEST_F(LogOnRun, StartupTypeZeroEndsAtOnceAndStartsNothing) {
    WriteProgramGroups(0, 0, {{kHelper, "", "Execute", 0, ""}});
    EXPECT_EQ(Finish(Exe() + " /x-NOGUIy"), 0u); // the switch inside other text counts
    EXPECT_EQ(test::ReadFileBytes(folder / "log.txt"), "");
}

// The run in this process, on a clock the test moves: when each program starts, from where,
// measured as which item, and what the run leaves behind.
class DelayedRunTest : public ::testing::Test, public MainWindowControl, public RunClock {
protected:
    void SetUp() override {
        test::WriteFileBytes(folder / "log.txt", "");
        test::MakeFolder(app.folders.UserItemsFolder);
        SetDefaultModel(app.model); // StartupType 1, a main delay of 30 s
        app.model.StartupGroupIndex = 0;
    }
    void TearDown() override {
        test::DeleteRegistryTree(RegistryRoot::CurrentUser, kSavedUserRunKey);
        for (RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine64})
            test::DeleteRegistryTree(root, kPolicyKey);
    }
    bool IsVisible() const override { return visible; }
    void Unload() override { ++unloads; }
    void Open() override {}
    uint64_t NowMs() override { return now; }
    void WaitUntil(uint64_t deadline, const std::function<bool()>& stop) override {
        if (whileWaiting)
            whileWaiting(++waits);
        while (!stop() && now < deadline)
            now = std::min(deadline, now + 100);
    }
    bool CanSampleLoad() override { return load != nullptr; }
    std::optional<LoadSample> SampleLoad() override { return load ? load(now) : std::nullopt; }
    // Each start as "<time> [<location> <item>] <path>|<parameters>".
    ProgramLauncher Launcher() {
        return [&](const std::string& path, const std::string& params, const ImpactKey* item) {
            const std::string key = item ? std::to_string(item->Location) + " " + item->Name : "-";
            starts.push_back(std::to_string(now) + " [" + key + "] " + path + "|" + params);
            // With a meter, a real program is started and handed to it for each item.
            STARTUPINFOA si{sizeof si};
            PROCESS_INFORMATION pi{};
            std::string command = "\"" + kHelper + "\" load \"" + folder / "loads.txt" + "\" x 100";
            if (item && app.watcher &&
                CreateProcessA(nullptr, command.data(), nullptr, nullptr, 0, 0, nullptr, nullptr,
                               &si, &pi)) {
                CloseHandle(pi.hThread);
                app.watcher->Watch(*item, pi.hProcess, path, tolvane::NowMs());
            }
            now += launchMs; // a start takes its time
        };
    }
    void Run() { DelayedRun(RunNeedsOf(app), *this, *this, Launcher()); }
    // A program file in the test's folder, delayed so many seconds: the run starts only what is
    // there.
    GroupProgram Program(const std::string& name, float delay) {
        test::WriteFileBytes(folder / name, "x");
        return {folder / name, "", "Execute", delay, ""};
    }
    // Whether the run's log holds the warning.
    bool Warned(const std::string& what) const {
        const std::string log = test::ReadFileBytes(folder / "log.txt");
        return log.find("Warning: Startup Item " + what + "\r\n") != std::string::npos;
    }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    uint64_t now = 1000, launchMs = 0;
    std::function<void(int)> whileWaiting; // called with the number of the wait
    int waits = 0;
    std::function<std::optional<LoadSample>(uint64_t)> load;
    bool visible = false;
    int unloads = 0;
    std::vector<std::string> starts;
};

// Each program waits its delay after the actual start of the one before. A run held up (a busy
// machine, the tray menu held open, the process suspended) starts the next program at once and
// each later one its own delay after the one before, never several together to catch up.
TEST_F(DelayedRunTest, EachProgramStartsItsDelayAfterTheOneBeforeFromWhereItIsKept) {
    const std::string& user = app.folders.UserItemsFolder;
    for (const char* file : {"Go.bat", "TOOL.lnk"})
        test::WriteFileBytes(user + file, "x");
    app.model.ProgramGroups[0].Programs = {
        {"Go.bat", "", "Execute", 5, ""},
        {"Gone.lnk", "", "Execute", 0, ""},         // nowhere: said in the log, no wait
        {"Tool.LNK", "", "Execute", 2.5f, ""},      // its file's name in another letter case
        {"notepad.exe", "-x", "Execute", 1.5f, ""}, // found where Windows looks
        // A disallowed word: never started, also where an older version kept a whole command.
        {"cmd.exe /c del C:\\x", "", "ExecuteReg", 0, "Wipe"},
    };
    launchMs = 700;
    // The main wait comes back 40 s late, and so does Tool's.
    whileWaiting = [&](int wait) {
        if (wait == 1 || wait == 3)
            now += 40000;
    };
    Run();
    // Go 5 s after the main wait's late end, Tool at once when its wait comes back, notepad 1.5 s
    // after Tool's start (not after its launch of 0.7 s).
    EXPECT_EQ(starts, (std::vector<std::string>{"46000 [3 Go.bat] " + user + "Go.bat|",
                                                "86700 [3 Tool.LNK] " + user + "Tool.LNK|",
                                                "88200 [3 notepad.exe] notepad.exe|-x"}));
    EXPECT_TRUE(Warned("Not Found: Gone.lnk"));
    EXPECT_TRUE(Warned("Not Allowed: cmd.exe /c del C:\\x"));
    EXPECT_EQ(unloads, 1); // StartupType 1, never opened: the program ends
}

// Programs started by hand from the tray while the run waits are not started again, by the run
// or by the tray, and the run's next start keeps its delay after them. Two records alike are two
// programs: each starts once. The user opened the window meanwhile: the program stays after the
// run.
TEST_F(DelayedRunTest, HandStartsFromTheTrayCountAndNothingStartsTwice) {
    app.model.MainStartupDelay = 10;
    app.model.ProgramGroups[0].Programs = {Program("a.exe", 1), Program("b.exe", 2),
                                           Program("c.exe", 3), Program("d.exe", 0.5f),
                                           Program("d.exe", 0.5f)};
    // Stopped: a Run value started from its saved copy, expanded as Windows would (%OS% is
    // Windows_NT), and one with a disallowed word, which starts from nowhere.
    ASSERT_TRUE(CRegistry().SetValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "Exp",
                                     test::WideValue(REG_EXPAND_SZ, "%OS%.exe -s")));
    app.model.StoppedPrograms = {"_REGCU_Wipe=cmd.exe /c del C:\\x", "_REGCU_Exp=%OS%.exe -s"};
    const ShownTrayMenu menu = BuildTrayMenuModel(app.model, app.text);
    auto choose = [&](int number) {
        TrayMenuCommand(RunNeedsOf(app), *this, menu, number, *this, Launcher());
    };
    whileWaiting = [&](int wait) {
        switch (wait) {
        case 1: // the main wait: b, after its 2 s; the run's wait stays a wait
            choose(1003);
            EXPECT_TRUE(app.wait.WaitActive);
            visible = true;
            break;
        case 4: // c's turn: Run All, which passes over a and b, started already
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
    // Each measured as its item, the stopped one as the stopped item it is.
    EXPECT_EQ(starts, (std::vector<std::string>{
                          "3000 [3 b.exe] " + folder / "b.exe" + "|",
                          "12000 [3 a.exe] " + folder / "a.exe" + "|",
                          "15000 [3 c.exe] " + folder / "c.exe" + "|",
                          "15000 [1 Exp] Windows_NT.exe|-s",
                          "15500 [3 d.exe] " + folder / "d.exe" + "|",
                          "16000 [3 d.exe] " + folder / "d.exe" + "|",
                      }));
    EXPECT_TRUE(Warned("Not Allowed: cmd.exe (\"del\")"));
    EXPECT_EQ(unloads, 0);
    EXPECT_TRUE(app.ShowGui);
}

// Waiting for idle: the main wait and each program wait for ten quiet half seconds, at the
// latest their delay and two minutes; a quiet machine still starts a program no sooner than its
// delay after the start before.
TEST_F(DelayedRunTest, WaitingForIdleStartsAfterFiveQuietSecondsOrAtTheLatest) {
    app.model.WaitForIdle = 1;
    app.model.ProgramGroups[0].Programs = {Program("a.exe", 2), Program("b.exe", 8),
                                           Program("c.exe", 1)};
    // Busy processors for the first 20 s; then quiet, the disks just under a fifth; then
    // the disks at a fifth, which counts as busy, for good.
    load = [](uint64_t t) {
        return t <= 21000   ? LoadSample{0.9, 0}
               : t <= 41000 ? LoadSample{0.1, 0.19}
                            : LoadSample{0.05, 0.20};
    };
    Run();
    // The main wait ends after ten quiet half seconds (21.5 to 26 s), not at 31 s; "a" after five
    // quiet seconds more, not its 2 s; "b", idle at 36 s, at its 8 s after a; "c" never sees a
    // quiet machine and starts at its delay plus two minutes.
    EXPECT_EQ(starts, (std::vector<std::string>{"31000 [3 a.exe] " + folder / "a.exe" + "|",
                                                "39000 [3 b.exe] " + folder / "b.exe" + "|",
                                                "160000 [3 c.exe] " + folder / "c.exe" + "|"}));
}

// The administrator's main delay and idle start decide the run over the user's own main delay
// of 20 s, the machine's over the user's; a value out of range is ignored, and logged.
TEST_F(DelayedRunTest, PoliciesFixTheMainDelayAndTheIdleStart) {
    app.model.MainStartupDelay = 20;
    app.model.ProgramGroups[0].Programs = {Program("a.exe", 0)};
    load = [](uint64_t) { return LoadSample{0.05, 0.05}; };
    using enum RegistryRoot;
    const struct {
        RegistryRoot root;
        const char* name;
        uint32_t value, started; // the policies of the rows before still set
    } runs[] = {
        {LocalMachine64, "MainDelay", 3601, 21000},
        {CurrentUser, "MainDelay", 5, 6000},
        {LocalMachine64, "MainDelay", 45, 46000},
        {CurrentUser, "IdleStart", 1, 11000}, // five quiet seconds, then five for the program
    };
    for (const auto& run : runs) {
        SCOPED_TRACE(run.name + std::to_string(run.value));
        ASSERT_TRUE(
            CRegistry().SetValue(run.root, kPolicyKey, run.name,
                                 {REG_DWORD, {uint8_t(run.value), uint8_t(run.value >> 8), 0, 0}}));
        now = 1000;
        starts.clear();
        app.starts = {};
        Run();
        ASSERT_FALSE(starts.empty());
        EXPECT_EQ(starts[0].substr(0, starts[0].find(' ')), std::to_string(run.started));
    }
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt")
                  .find("Policy in HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\Hexmoor\\Tolvane: "
                        "MainDelay is ignored: 3601 is not 0 to 3600"),
              std::string::npos);
}

// The run keeps its history as it went: the main wait as long as it lasted (here it woke up
// late), each program it started and the meter measured at its start in the run, and a run that
// quit during its wait as one with no main wait and nothing measured.
TEST_F(DelayedRunTest, TheRunKeepsItsMainWaitAndItsMeasuredStartsInTheHistory) {
    ImpactMeter meter(folder / "impact.csv", &app.log, 1000);
    app.watcher = &meter;
    app.model.MainStartupDelay = 10;
    app.model.ProgramGroups[0].Programs = {Program("a.exe", 1), Program("b.exe", 2)};
    whileWaiting = [&](int wait) { now += wait == 1 ? 15000 : 0; };
    Run();
    whileWaiting = [&](int) { app.wait.QuitRequested = true; };
    Run();
    EXPECT_TRUE(test::PumpUntil([&] { return !meter.Busy(); }, 20000));
    app.watcher = nullptr;
    const HistoryFileContent history =
        ParseHistoryFile(test::ReadFileBytes(folder / "history.csv"));
    ASSERT_EQ(history.Runs.size(), 2u);
    EXPECT_EQ(history.Runs[0].MainDelayMs, 15000u);
    std::vector<std::string> programs;
    for (const RunProgram& p : history.Runs[0].Programs)
        programs.push_back(std::to_string(p.Item.Location) + " " + p.Item.Name + " " + p.Path +
                           " " + std::to_string(p.StartMs) + (p.WatchedMs ? "" : " unwatched"));
    std::sort(programs.begin(), programs.end());
    EXPECT_EQ(programs, (std::vector<std::string>{"3 a.exe " + folder / "a.exe" + " 16000",
                                                  "3 b.exe " + folder / "b.exe" + " 18000"}));
    EXPECT_FALSE(history.Runs[1].MainDelayMs);
    EXPECT_TRUE(history.Runs[1].Programs.empty());
}

} // namespace
} // namespace tolvane
