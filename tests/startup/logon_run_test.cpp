// Tolvane.exe -nogui from end to end, in a program folder of its own: the log, the order and
// the times of the starts, what is reported last, and whether the process ends or stays.
#include <gtest/gtest.h>

#include <windows.h>

#include <regex>

#include <commctrl.h>
#include <shellapi.h>

#include "config/delay_load.h"
#include "config/impact_file.h"
#include "config/program_group_file.h"
#include "platform/registry.h"
#include "records.h"
#include "config/app_state.h"
#include "startup/delayed_run.h"
#include "startup/tray_commands.h"
#include "items/run_entry.h"
#include "support/win_test_support.h"
#include "text/language.h"
#include "ui/tips/tip_ids.h"

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
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue));
        EXPECT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue));
    }
    void WriteProgramGroups(int startupType, float mainDelay, std::vector<GroupProgram> programs,
                            std::vector<std::string> stopped = {""}) {
        ProgramModel m;
        SetDefaultModel(m);
        m.StartupType = startupType;
        m.MainStartupDelay = mainDelay;
        m.ProgramGroups[0].Programs = std::move(programs);
        m.StoppedPrograms = std::move(stopped);
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
    // A program in a folder whose name holds the disallowed word "del" starts; a command that
    // deletes does not, also where an older version kept it whole as the program.
    const std::string dell = folder / "Dell\\Support Assist\\agent.exe";
    test::MakeFolder(folder / "Dell\\Support Assist");
    ASSERT_TRUE(CopyFileA(recorder.c_str(), dell.c_str(), FALSE));
    WriteProgramGroups(
        1, 1,
        {
            {recorder, record + " A", "Execute", 0.5f, ""},
            {"Tool.lnk", "", "Execute", 0, ""},
            {"Gone.lnk", "", "Execute", 0, ""}, // in no items folder: said in the log
            {"cmd.exe /c del " + record, "", "ExecuteReg", 0, "Wipe"}, // kept whole
            {dell, record + " D", "ExecuteReg", 0.3f, "Dell"},
            {recorder, record + " C", "ExecuteReg", 0.5f, "Recorder"},
            {"Word.lnk", "", "ExecuteAU", 1, ""},
        });

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
                                     "Warning: Startup Item Not Found: Gone.lnk",
                                     "Info: <time> Waiting for 0.3 seconds.",
                                     "Info: <time>  " + dell + " " + record + " D",
                                     "Info: <time> Waiting for 0.5 seconds.",
                                     "Info: <time>  " + recorder + " " + record + " A",
                                     "Info: <time> Waiting for 0.5 seconds.",
                                     "Info: <time>  " + recorder + " " + record + " C",
                                     "Info: <time> Waiting for 1 seconds.",
                                     "Info: <time>  Word.lnk ",
                                     "Warning: Startup Item Not Allowed: cmd.exe /c del " + record,
                                 }));

    // The order of the starts; their times are the in-process test's and the benchmark's.
    EXPECT_EQ(test::Names(test::WaitForStarts(record, 5)),
              (std::vector<std::string>{"B", "D", "A", "C", "W"}));
    EXPECT_TRUE(test::PathExists(record)); // not deleted

    // Closing for good with StartupType 1 brought the program's own Run entry up to date: an
    // all-users item is delayed, so the machine's key starts it for every user.
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue),
              Exe() + " -nogui");
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue), "");
}

// Run values as installers write them and shortcuts in the Startup folder, names and folders
// of every script included, each delayed with tolvanec as a script would, then started by the
// log-on run: each program, at its own path, gets exactly the arguments that Windows would have
// given it, byte for byte.
TEST_F(LogOnRun, DelayedRunValuesGetTheArgumentsWindowsWouldGive) {
    const std::string recorder = test::HelperProgram("args_recorder.exe");
    const std::string record = folder / "arguments.txt";
    SetEnvironmentVariableA("TOLVANE_ARGS_RECORD", record.c_str());
    SetEnvironmentVariableA("TOLVANE_ARGS_DIR", folder.Path().c_str());
    auto at = [&](const std::string& relative) {
        const std::string path = folder / relative;
        test::MakeFolder(path.substr(0, path.rfind('\\')));
        EXPECT_TRUE(CopyFileA(recorder.c_str(), path.c_str(), FALSE)) << path;
        return path;
    };
    struct Value {
        std::string name, data;
        bool expandable;
        std::string started; // the program at its path, "|", the arguments it gets
    };
    const std::string spotify = at("Spotify\\Spotify.exe"), discord = at("Discord\\Update.exe"),
                      teams = at("Microsoft\\Teams\\Update.exe"),
                      chrome = at("Google Chrome\\Application\\chrome.exe"),
                      dell = at("Dell\\Support Assist\\agent.exe"),
                      lenovo = at("LENOVO\\HOT KEY\\TPHKLOAD.EXE"), tool = at("Exp App\\tool.exe"),
                      mounter = at("Scripts\\mounter.exe"), sync = at("Tools\\sync.exe"),
                      wechat = at("微信\\WeChat.exe"), yandex = at("Яндекс\\browser.exe"),
                      calendar = at("📅 Calendar\\cal.exe"), notebook = at("Ноутбук\\note.exe");
    test::WriteFileBytes(folder / "Scripts\\mount drives.bat", "@\"" + mounter + "\" %*\r\n");
    const std::vector<Value> values = {
        {"Spotify", "\"" + spotify + "\" --autostart --minimized", false,
         spotify + "|--autostart --minimized"},
        {"Discord", discord + " --processStart Discord.exe", false,
         discord + "|--processStart Discord.exe"},
        {"Teams",
         teams + " --processStart \"Teams.exe\" --process-start-args \"--system-initiated\"", false,
         teams + "|--processStart \"Teams.exe\" --process-start-args \"--system-initiated\""},
        {"Chrome", "\"" + chrome + "\" --no-startup-window /prefetch:5", false,
         chrome + "|--no-startup-window /prefetch:5"},
        {"SupportAssist", dell + " /startup", false, dell + "|/startup"},
        {"Hotkeys", lenovo + " /q", false, lenovo + "|/q"},
        {"Tool", "%TOLVANE_ARGS_DIR%\\Exp App\\tool.exe --dir \"%TOLVANE_ARGS_DIR%\"", true,
         tool + "|--dir \"" + folder.Path() + "\""},
        {"Mount", "\"" + folder / "Scripts\\mount drives.bat" + "\" one \"two three\"", false,
         mounter + "|one \"two three\""},
        {"Sync", "cmd.exe /c start \"\" \"" + sync + "\" --tray", false, sync + "|--tray"},
        {"微信", "\"" + wechat + "\" -autorun ☕", false, wechat + "|-autorun ☕"},
        {"Café ☕", yandex + " --silent \"Яндекс\"", false, yandex + "|--silent \"Яндекс\""},
    };
    WriteProgramGroups(1, 0, {});
    const test::StartupLocations places;
    ASSERT_TRUE(
        test::CreateShortcut(places.UserFolder + "\\📅 Calendar.lnk", calendar, "--today ☕"));
    ASSERT_TRUE(test::CreateShortcut(places.UserFolder + "\\Ноутбук.lnk", notebook, "/min"));
    std::vector<std::string> expected = {calendar + "|--today ☕", notebook + "|/min"};
    for (const char* shortcut : {"📅 Calendar.lnk", "Ноутбук.lnk"}) {
        test::ChildProcess delay("\"" + folder / "tolvanec.exe" + "\" delay \"" + shortcut + "\"");
        unsigned long code = 99;
        ASSERT_TRUE(delay.WaitForExit(30000, &code));
        EXPECT_EQ(code, 0u) << shortcut;
    }
    for (const Value& v : values) {
        ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kRunKey, v.name,
                                 test::WideValue(v.expandable ? REG_EXPAND_SZ : REG_SZ, v.data)));
        test::ChildProcess delay("\"" + folder / "tolvanec.exe" + "\" delay \"" + v.name + "\"");
        unsigned long code = 99;
        ASSERT_TRUE(delay.WaitForExit(30000, &code));
        EXPECT_EQ(code, 0u) << v.name;
        expected.push_back(v.started);
    }
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.WaitForExit(60000));
    std::vector<std::string> started;
    for (int i = 0; i < 500 && started.size() < expected.size(); ++i, Sleep(20))
        started = test::ReadLines(record);
    std::sort(started.begin(), started.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(started, expected);
    places.Clear();
}

// What the run starts is measured, a shortcut as the program it points to: a line per item in
// the impact file, rated by its CPU time, and the log and the program-group file as they were.
TEST_F(LogOnRun, EachProgramItStartsIsMeasuredIntoTheImpactFile) {
    const std::string loader = test::HelperProgram("load_program.exe");
    ASSERT_TRUE(test::CreateShortcut(userItems + "\\Burn.lnk", loader, record + " L 600"));
    WriteProgramGroups(1, 0,
                       {{loader, record + " R 1500", "ExecuteReg", 0, "Burner"},
                        {"Burn.lnk", "", "Execute", 0, ""}});
    const std::string user = folder / WindowsUserName();
    const std::string groups = test::ReadFileBytes(user + "\\proggroup.c");
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.Started());
    ASSERT_TRUE(tolvane.WaitForExit(60000)) << "the run ends once both are measured";
    std::vector<std::string> done = test::Names(test::WaitForStarts(record, 2));
    std::sort(done.begin(), done.end());
    EXPECT_EQ(done, (std::vector<std::string>{"L", "R"}));

    const ImpactFileContent impact = ParseImpactFile(test::ReadFileBytes(user + "\\impact.csv"));
    EXPECT_EQ(impact.SkippedLines, 0u);
    EXPECT_EQ(impact.Records.size(), 2u);
    const ImpactRecord* burner = FindImpact(impact.Records, {kUserRun, "Burner"}, nullptr);
    const ImpactRecord* shortcut = FindImpact(impact.Records, {kUserStartup, "Burn.lnk"}, nullptr);
    ASSERT_TRUE(burner && shortcut);
    // It ended, so it was watched until then.
    // Its own CPU time and the little a start costs, less what Wine forgets of its last moments.
    EXPECT_GE(burner->CpuMs, 1300u);
    EXPECT_LT(burner->CpuMs, 2500u);
    EXPECT_EQ(burner->Rating(), ImpactRating::High);
    EXPECT_TRUE(burner->ReadyMs.has_value());
    EXPECT_LT(burner->WatchedMs, kImpactWatchMs);
    EXPECT_GE(shortcut->CpuMs, 450u);
    EXPECT_EQ(shortcut->Rating(), ImpactRating::Medium);

    EXPECT_EQ(LogWithoutTimes(), (std::vector<std::string>{
                                     "Info: <time>  Waiting for 0 seconds.",
                                     "Info: <time>  Wait over.",
                                     "Info: <time> Waiting for 0 seconds.",
                                     "Info: <time>  " + loader + " " + record + " R 1500",
                                     "Info: <time> Waiting for 0 seconds.",
                                     "Info: <time>  Burn.lnk ",
                                 }));
    EXPECT_EQ(test::ReadFileBytes(user + "\\proggroup.c"), groups);
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

TEST_F(LogOnRun, ASecondStartDuringTheWaitOpensTheWholeWindowAndKeepsTheProgram) {
    WriteProgramGroups(1, 3, {{recorder, record + " Only", "Execute", 0, ""}});
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.Started());
    // The first copy is waiting with its window hidden.
    ASSERT_TRUE(test::WindowOf(tolvane.Id(), "TolvaneStartupItems", false, 10000));

    // A second start, here without -nogui: it says that one runs, and the first opens.
    test::ChildProcess second(Exe());
    const std::string text = CloseMessageBoxOf(second.Id(), 10000);
    EXPECT_EQ(text.rfind("Tolvane is already running", 0), 0u) << text;
    unsigned long code = 99;
    EXPECT_TRUE(second.WaitForExit(10000, &code));
    EXPECT_EQ(code, 0u);

    HWND window = test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 10000);
    ASSERT_TRUE(window) << "the first copy's window did not open";
    HWND treeView = FindWindowExA(window, nullptr, "SysTreeView32", nullptr);
    ASSERT_TRUE(treeView);
    // The 20 containers and the one delayed program.
    EXPECT_EQ(SendMessageA(treeView, TVM_GETCOUNT, 0, 0), 21);
    EXPECT_TRUE(FindWindowExA(window, nullptr, "msctls_statusbar32", nullptr));

    // Opened by the user: the end of the run leaves it, though StartupType is 1.
    ASSERT_EQ(test::Names(test::WaitForStarts(record, 1)), std::vector<std::string>{"Only"});
    EXPECT_FALSE(tolvane.WaitForExit(1500));
}

// The tray menu of a run that waits its main delay, used as a user would: two clicks on the
// icon, a right click, then the keyboard.
TEST_F(LogOnRun, TheTrayMenuWorksWhileTheRunWaits) {
    CRegistry reg;
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "Paused",
                                      "\"" + recorder + "\" " + record + " S"));
    // A main delay long enough for what the user does here.
    WriteProgramGroups(1, 12,
                       {{recorder, record + " B", "Execute", 0.3f, ""},
                        {recorder, record + " C", "ExecuteReg", 0.3f, "Rec"}},
                       {"_REGCU_Paused=" + recorder + " " + record + " S"});
    test::ChildProcess tolvane(Exe() + " -nogui");
    ASSERT_TRUE(tolvane.Started());
    HWND tray = test::WindowOf(tolvane.Id(), "TolvaneTrayIcon", false, 10000, HWND_MESSAGE);
    ASSERT_TRUE(tray);
    // Two clicks on the icon: the window with its tree, opened as "&Open" opens it.
    PostMessageA(tray, WM_APP + 1, 1, WM_LBUTTONUP);
    PostMessageA(tray, WM_APP + 1, 1, WM_LBUTTONUP);
    HWND window = test::WindowOf(tolvane.Id(), "TolvaneStartupItems", true, 10000);
    ASSERT_TRUE(window);
    HWND treeView = FindWindowExA(window, nullptr, "SysTreeView32", nullptr);
    ASSERT_TRUE(treeView);
    EXPECT_EQ(SendMessageA(treeView, TVM_GETCOUNT, 0, 0), 23); // containers, 2 delayed, 1 stopped

    auto menu = [&](std::initializer_list<WORD> keys) {
        PostMessageA(tray, WM_APP + 1, 1, WM_RBUTTONUP);
        ASSERT_TRUE(test::WindowOf(tolvane.Id(), "#32768", true, 5000)) << "no menu";
        // The menu window is made before its loop runs and takes the keyboard: keys typed in
        // between would go to the window behind it.
        const DWORD thread = GetWindowThreadProcessId(tray, nullptr);
        GUITHREADINFO gui{sizeof gui};
        for (int i = 0;
             i < 250 && !(GetGUIThreadInfo(thread, &gui) && (gui.flags & GUI_POPUPMENUMODE) &&
                          GetWindowThreadProcessId(GetForegroundWindow(), nullptr) == thread);
             ++i)
            Sleep(20);
        test::Type(keys);
    };
    // "Startup", its "Run All": the group's programs one after another.
    menu({VK_DOWN, VK_RIGHT, VK_RETURN});
    EXPECT_EQ(test::Names(test::WaitForStarts(record, 2)), (std::vector<std::string>{"B", "C"}));
    // "Stopped", its "Run All": the stopped value from its saved copy.
    menu({VK_DOWN, VK_DOWN, VK_RIGHT, VK_RETURN});
    EXPECT_EQ(test::Names(test::WaitForStarts(record, 3)),
              (std::vector<std::string>{"B", "C", "S"}));

    // Explorer started again: the icon comes back.
    NOTIFYICONDATAA icon{};
    icon.cbSize = sizeof icon;
    icon.hWnd = tray;
    icon.uID = 1;
    ASSERT_TRUE(Shell_NotifyIconA(NIM_DELETE, &icon));
    icon.uFlags = NIF_TIP;
    EXPECT_FALSE(Shell_NotifyIconA(NIM_MODIFY, &icon));
    PostMessageA(HWND_BROADCAST, RegisterWindowMessageA("TaskbarCreated"), 0, 0);
    bool back = false;
    for (int i = 0; i < 100 && !(back = Shell_NotifyIconA(NIM_MODIFY, &icon)); ++i)
        Sleep(50);
    EXPECT_TRUE(back);

    // The run's wait ends, it has nothing left to start (both were started by hand), and the
    // program stays: its window was opened during the run, though StartupType is 1.
    auto over = [&] {
        const std::vector<std::string> log = LogWithoutTimes();
        return std::find(log.begin(), log.end(), "Info: <time>  Wait over.") != log.end();
    };
    for (int i = 0; i < 600 && !over(); ++i)
        Sleep(50);
    ASSERT_TRUE(over());
    EXPECT_FALSE(tolvane.WaitForExit(3000));
    EXPECT_EQ(test::ReadLines(record).size(), 3u); // nothing started twice

    // "&Quit Program": the process ends.
    menu({'Q'});
    EXPECT_TRUE(tolvane.WaitForExit(10000));
    EXPECT_TRUE(reg.DeleteValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "Paused"));
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

// A start by the user: the tip of the day, modal over the window, shows a tip of the language's
// file; closed unchanged it writes nothing, and the window stays.
TEST_F(LogOnRun, AnInteractiveStartShowsTheTipOfTheDayOverItsWindow) {
    WriteProgramGroups(0, 30, {}); // tips on, as a new file has them
    const std::string file = folder / (WindowsUserName() + "\\proggroup.c");
    const std::string before = test::ReadFileBytes(file);
    test::ChildProcess tolvane(Exe());
    HWND tip = test::WindowOf(tolvane.Id(), "#32770", true, 15000);
    ASSERT_TRUE(tip) << "no tip of the day";
    HWND window = GetWindow(tip, GW_OWNER);
    char name[64] = {};
    GetClassNameA(window, name, sizeof name);
    EXPECT_STREQ(name, "TolvaneStartupItems");
    EXPECT_FALSE(IsWindowEnabled(window));
    char text[1024] = {};
    GetDlgItemTextA(tip, IDC_TIP_TEXT, text, sizeof text);
    const auto tips = SplitTextLines(test::ReadFileBytes(folder / "lang\\en\\tipofday.en"));
    EXPECT_NE(std::find(tips.begin(), tips.end(), text), tips.end()) << text;

    PostMessageA(tip, WM_COMMAND, IDOK, 0);
    for (int i = 0; i < 500 && !IsWindowEnabled(window); ++i)
        Sleep(10);
    EXPECT_TRUE(IsWindowEnabled(window));
    EXPECT_FALSE(tolvane.WaitForExit(300));
    EXPECT_EQ(test::ReadFileBytes(file), before);
    PostMessageA(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(tolvane.WaitForExit(15000));
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
    void Open() override { ++opens; }
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
    static RegistryValue Expandable(std::string_view text) {
        return test::WideValue(REG_EXPAND_SZ, text);
    }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    uint64_t now = 1000, launchMs = 0;
    std::function<void()> whileWaiting;
    std::function<std::optional<LoadSample>(uint64_t)> load;
    bool visible = false;
    int unloads = 0, opens = 0;
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
                             Expandable("%TOLVANE_RUN_TEST%\\e.exe %OS%")));
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "Lit",
                                      "%TOLVANE_RUN_TEST%\\e.exe"));
    app.model.MainStartupDelay = 30;
    app.model.ProgramGroups[0].Programs = {
        {"Go.bat", "", "Execute", 5, ""},
        {"Site.url", "", "Execute", 0, ""},
        {"Site.url", "", "Execute", 0, ""},    // two records alike: two programs, each started
        {"Gone.lnk", "", "Execute", 0, ""},    // nowhere: said in the log, no wait
        {"Tool.LNK", "", "Execute", 2.5f, ""}, // its file's name in another letter case
        {"Same.lnk", "", "ExecuteAU", 0, ""},  // its own location's folder first
        {"%TOLVANE_RUN_TEST%\\e.exe", "%OS%", "ExecuteReg", 0, "Exp"},
        {"%TOLVANE_RUN_TEST%\\e.exe", "", "ExecuteReg", 1, "Lit"}, // plain text: not there
        {"notepad.exe", "-x", "Execute", 0, ""},                   // found where Windows looks
    };
    launchMs = 700;
    Run();
    char os[64] = {};
    GetEnvironmentVariableA("OS", os, sizeof os);
    const std::string& user = app.folders.UserItemsFolder;
    // Main delay 30 s, then 5, 0, 0, 2.5, 0, 0 and 0 s, each from the actual start before: a
    // start that takes 0.7 s moves the next one on.
    EXPECT_EQ(starts, (std::vector<std::string>{
                          "36000 " + user + "Go.bat|",
                          "36700 " + user + "Site.url|",
                          "37400 " + user + "Site.url|",
                          "39900 " + user + "Tool.LNK|",
                          "40600 " + app.folders.AllUsersItemsFolder + "Same.lnk|",
                          "41300 " + e + "|" + os,
                          "42000 notepad.exe|-x",
                      }));
    // Each start names its item, for the measurement of what it costs.
    EXPECT_EQ(items, (std::vector<std::string>{"3 Go.bat", "3 Site.url", "3 Site.url", "3 Tool.LNK",
                                               "2 Same.lnk", "1 Exp", "3 notepad.exe"}));
    const std::string log = test::ReadFileBytes(folder / "log.txt");
    EXPECT_NE(log.find("Warning: Startup Item Not Found: Gone.lnk\r\n"), std::string::npos);
    EXPECT_NE(log.find("Warning: Startup Item Not Found: %TOLVANE_RUN_TEST%\\e.exe\r\n"),
              std::string::npos);
    EXPECT_EQ(unloads, 1);                         // StartupType 1, never opened: the program ends
    EXPECT_EQ(readyAfter, std::vector<size_t>{0}); // the window and tray before the main wait
}

// A run held up (a busy machine, the tray menu held open, the process suspended) starts the
// next program at once and each later one its own delay after the one before, never several
// together to catch up.
TEST_F(DelayedRunTest, AStallNeverBunchesTheStartsThatFollow) {
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
    };
    Run();
    EXPECT_EQ(Times(), (std::vector<uint64_t>{12000, 22000, 23500, 23500}));
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
    const ShownTrayMenu menu = BuildTrayMenuModel(app.model, app.text);
    auto choose = [&](int number) {
        TrayMenuCommand(RunNeedsOf(app), *this, menu, number, *this, Launcher());
    };
    int waits = 0;
    whileWaiting = [&] {
        switch (++waits) {
        case 1: // the main wait: b, after its 2 s
            choose(1003);
            break;
        case 4: // c's turn: a, which the run started, then Run All
            choose(1002);
            choose(1000);
            break;
        case 5: // Run All waits for c: c by hand meanwhile
            choose(1004);
            break;
        }
    };
    app.ShowGui = false; // the log-on mode
    Run();
    // b by hand at 3 s; a after the main wait (11 s); c by hand 3 s after a, and neither Run All
    // after its wait nor the run starts it again; Run All starts both d, each after its delay.
    EXPECT_EQ(starts, (std::vector<std::string>{"3000 " + folder / "b.exe" + "|",
                                                "12000 " + folder / "a.exe" + "|",
                                                "15000 " + folder / "c.exe" + "|",
                                                "15500 " + d + "|", "16000 " + d + "|"}));
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

    // Where the load cannot be read, each waits its own delay from the start before.
    load = nullptr;
    now = 1000;
    starts.clear();
    app.starts = {};
    Run();
    EXPECT_EQ(Times(), (std::vector<uint64_t>{36000, 36000, 37000}));

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
    now = 1000;
    starts.clear();
    app.starts = {};
    app.ShowGui = false;
    Run();
    EXPECT_EQ(starts, (std::vector<std::string>{"2000 " + folder / "b.exe" + "|",
                                                "14000 " + folder / "a.exe" + "|",
                                                "20000 " + folder / "c.exe" + "|"}));
}

// The measurements of what the run started are kept before the program ends, with the tray
// still there; opening the window meanwhile keeps the program.
TEST_F(DelayedRunTest, TheRunEndsOnlyOnceTheMeasurementsAreKept) {
    struct Watcher : StartWatcher {
        const uint64_t& now;
        uint64_t busyUntil = 0;
        explicit Watcher(const uint64_t& clock) : now(clock) {}
        void Watch(const ImpactKey&, void*, const std::string&, uint64_t) override {}
        bool Busy() const override { return now < busyUntil; }
    } watcher(now);
    app.watcher = &watcher;
    app.model.MainStartupDelay = 0;
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 0, ""}};
    watcher.busyUntil = 13450;
    whileWaiting = [&] { EXPECT_FALSE(unloads); };
    Run();
    EXPECT_EQ(now, 13500);
    EXPECT_EQ(unloads, 1);
    // Due at once, the program started before the window, which followed it 0.1 s later.
    EXPECT_EQ(starts, std::vector<std::string>{"1000 " + folder / "a.exe" + "|"});
    EXPECT_EQ(readyAfter, std::vector<size_t>{1});

    watcher.busyUntil = now + 30000;
    app.starts = {};
    int waits = 0;
    // The main wait, the program's head start, then the measurements'.
    whileWaiting = [&] { visible = ++waits == 3; };
    Run();
    EXPECT_EQ(waits, 3);
    EXPECT_EQ(unloads, 1);
    EXPECT_TRUE(app.ShowGui);
    app.watcher = nullptr;
}

TEST_F(DelayedRunTest, QuittingEndsTheWaitAndOpeningKeepsTheProgram) {
    app.model.ProgramGroups[0].Programs = {{Program("a.exe"), "", "Execute", 5, ""},
                                           {Program("b.exe"), "", "Execute", 5, ""}};
    // The user opens the window during the main wait: the program stays after the run.
    whileWaiting = [&] { visible = true; };
    Run();
    EXPECT_EQ(starts.size(), 2u);
    EXPECT_EQ(unloads, 0);
    EXPECT_TRUE(app.ShowGui);

    // Quit during the first program's wait: nothing more starts, nothing is unloaded here.
    starts.clear();
    app.starts = {};
    int waits = 0;
    whileWaiting = [&] { app.wait.QuitRequested = ++waits == 2; };
    Run();
    EXPECT_TRUE(starts.empty());
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(unloads, 0);
}

// The tray menu's entries, chosen while nothing else runs: what each starts, and when.
TEST_F(DelayedRunTest, TrayMenuEntriesStartWhatTheyShow) {
    CRegistry reg;
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kSavedUserRunKey, "Exp",
                             Expandable("%OS%.exe -s")));
    test::WriteFileBytes(app.folders.UserItemsFolder + "Tool.lnk", "x");
    const std::string b = Program("b.exe");
    app.model.ProgramGroups[0].Programs = {{"Tool.lnk", "", "Execute", 2, ""},
                                           {b, "-b", "ExecuteReg", 0.5f, "B"},
                                           {Program("format.exe"), "", "Execute", 0, ""},
                                           {"cmd.exe /c del " + b, "", "ExecuteReg", 0, "Wipe"}};
    app.model.StoppedPrograms = {"_REGCU_Exp=%OS%.exe -s", "", "_STPAU_Word.lnk",
                                 "_REGCU_Wipe=cmd.exe /c del C:\\x"};
    const ShownTrayMenu menu = BuildTrayMenuModel(app.model, app.text);
    EXPECT_EQ(menu.ProgramNumber(1), 1003);
    // Each caption names the program that starts: a whole command's own program.
    std::string captions;
    for (const MenuItem& entry : menu.Entries()[0].Entries)
        captions += entry.Caption + "|";
    EXPECT_EQ(captions, "Run All||Tool.lnk|b.exe|format.exe|cmd.exe|");
    // A reload while the menu is open moves every program and stopped entry one place on: each
    // entry still starts what its caption showed.
    auto& programs = app.model.ProgramGroups[0].Programs;
    programs.insert(programs.begin(), {Program("new.exe"), "", "Execute", 0, ""});
    app.model.StoppedPrograms.insert(app.model.StoppedPrograms.begin(), "_STPCU_New.lnk");
    char os[64] = {};
    GetEnvironmentVariableA("OS", os, sizeof os);
    auto choose = [&](int number) {
        starts.clear();
        items.clear();
        TrayMenuCommand(RunNeedsOf(app), *this, menu, number, *this, Launcher());
        return starts;
    };
    // "Run All": one after another, each after its own delay; a disallowed word never starts,
    // also where an older version kept a whole command as the program.
    EXPECT_EQ(choose(1000),
              (std::vector<std::string>{"3000 " + app.folders.UserItemsFolder + "Tool.lnk|",
                                        "3500 " + b + "|-b"}));
    EXPECT_EQ(choose(1003), std::vector<std::string>{"4000 " + b + "|-b"}); // its own delay
    // The stopped ones at once, a Run value from its saved copy, expanded as Windows would;
    // a disallowed command not even from here.
    EXPECT_EQ(choose(3001),
              (std::vector<std::string>{"4000 " + std::string(os) + ".exe|-s",
                                        "4000 " + app.folders.AllUsersItemsFolder + "Word.lnk|"}));
    EXPECT_EQ(items,
              (std::vector<std::string>{"1 Exp", "2 Word.lnk"})); // stopped items keep theirs
    EXPECT_EQ(choose(3005),
              std::vector<std::string>{"4000 " + app.folders.AllUsersItemsFolder + "Word.lnk|"});
    const std::string log = test::ReadFileBytes(folder / "log.txt");
    EXPECT_NE(log.find("Warning: Startup Item Not Allowed: " + folder / "format.exe" +
                       " (\"format\")\r\n"),
              std::string::npos);
    EXPECT_NE(log.find("Warning: Startup Item Not Allowed: cmd.exe (\"del\")\r\n"),
              std::string::npos);
    EXPECT_NE(log.find("Warning: Startup Item Not Allowed: cmd.exe /c del " + b + " (\"del\")\r\n"),
              std::string::npos);
    choose(5000);
    choose(6000);
    choose(0);
    EXPECT_EQ(opens, 1);
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(app.wait.WaitActive);

    // Chosen while the log-on run waits: the run's wait stays a wait, and quitting ends both.
    app.model.MainStartupDelay = 60;
    int waits = 0;
    whileWaiting = [&] {
        if (++waits == 1) {
            TrayMenuCommand(RunNeedsOf(app), *this, menu, 1003, *this, [&](auto&, auto&, auto*) {});
            EXPECT_TRUE(app.wait.WaitActive);
            app.wait.QuitRequested = true;
        }
    };
    starts.clear();
    Run();
    EXPECT_TRUE(starts.empty());
}

} // namespace
} // namespace tolvane
