// The log-on plan without the platform: its file written and read, and what differs from a
// user's items.
#include <gtest/gtest.h>

#include "cli/logon_plan.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

ItemRecord Record(ItemState state, CliLocation at, std::string name, std::string path,
                  std::string parameters = "", std::optional<float> delay = {},
                  bool movable = true) {
    ItemRecord r;
    r.State = state;
    r.Location = at.Code;
    r.Wow32 = at.Wow32;
    r.OwnName = std::move(name);
    r.Path = std::move(path);
    r.Parameters = std::move(parameters);
    r.Delay = delay;
    r.Movable = movable;
    return r;
}

constexpr CliLocation kUserFolder{kUserStartup, false}, kCommonFolder{kCommonStartup, false},
    kUserRunKey{kUserRun, false}, kMachine{kMachineRun, false}, kMachine32{kMachineRun, true};
constexpr ItemState kActive = ItemState::Active, kDelayed = ItemState::Delayed,
                    kStopped = ItemState::Stopped;

std::string Parsed(std::string_view bytes) {
    const PlanParse p = ParsePlanJson(bytes, test::AsciiNameOrder);
    return p.Plan ? FormatPlanJson(*p.Plan)
                  : std::to_string(p.Line) + ":" + std::to_string(p.Column) + " " + p.Error;
}

TEST(LogonPlan, ExportKeepsOnlyWhatMovedAndReadsBackByteForByte) {
    ProgramModel model;
    model.MainStartupDelay = 30;
    model.WaitForIdle = 1;
    model.StartupType = 2;
    const std::vector<ItemRecord> records = {
        Record(kActive, kUserRunKey, "Active", "C:\\a.exe"),
        Record(kDelayed, kUserRunKey, "OneDrive", "c:\\users\\ann\\AppData\\Local\\My Apps\\o.exe",
               "/background /d C:\\Users\\Ann\\Doc", 5),
        Record(kStopped, kUserFolder, "Tool.lnk", "C:\\Tools\\tool.exe"),
        Record(kStopped, kUserFolder, "Gone.lnk", "C:\\Users\\ann\\Tolvane\\Items\\Gone.lnk"),
        Record(kDelayed, kMachine32, "Caf\xc3\xa9 \"q\"\t", "C:\\c.exe", "", 2.5f),
        Record(kDelayed, kMachine, "Locked", "C:\\l.exe", "", 1, false),
        Record(kStopped, kUserRunKey, "ONEDRIVE", "C:\\other.exe"),
    };
    const LogonPlan plan =
        PlanFromRecords(records, model, {{"USERPROFILE", "C:\\Users\\Ann"}}, test::AsciiNameOrder);
    EXPECT_EQ(std::tuple(*plan.MainDelay, *plan.IdleStart, *plan.StartupType),
              std::tuple(30.0f, true, 2));
    std::vector<std::string> items;
    for (const PlanItem& p : plan.Items)
        items.push_back(std::string(CliLocationWord(p.Location.Code, p.Location.Wow32)) + "|" +
                        p.Name + "|" + p.Command + "|" + StateWord(p.State) + "|" +
                        (p.Delay ? FormatSingle(*p.Delay) : "-"));
    EXPECT_EQ(items, (std::vector<std::string>{
                         "user-run|OneDrive|\"%USERPROFILE%\\AppData\\Local\\My Apps\\o.exe\" "
                         "/background /d %USERPROFILE%\\Doc|delayed|5",
                         "user-folder|Tool.lnk|C:\\Tools\\tool.exe|stopped|-",
                         "user-folder|Gone.lnk||stopped|-",
                         "machine-run-32|Caf\xc3\xa9 \"q\"\t|C:\\c.exe|delayed|2.5"}));
    const std::string json = FormatPlanJson(plan);
    EXPECT_EQ(Parsed(json), json);
    const PlanParse back = ParsePlanJson(json, nullptr);
    ASSERT_TRUE(back.Plan);
    EXPECT_EQ(back.Plan->Items[1].Line, 16u);
    EXPECT_EQ(back.Plan->Items[1].Column, 5u);

    // Written by hand: any key order, a byte-order mark, escapes, defaults.
    EXPECT_EQ(
        Parsed("\xEF\xBB\xBF{\"items\":[{\"state\":\"delayed\",\"name\":\"\\u00e9\\ud83d\\ude00"
               "\\/\\\\\",\r\n\"location\":\"machine-run\"}],\"tolvanePlan\":1.0,"
               "\"settings\":{}}"),
        "{\n  \"tolvanePlan\": 1,\n  \"settings\": {},\n  \"items\": [\n    {\n      "
        "\"location\": \"machine-run\",\n      \"name\": \"\xc3\xa9\xf0\x9f\x98\x80/\\\\\",\n"
        "      \"command\": \"\",\n      \"state\": \"delayed\",\n      \"delay\": 0\n    }\n"
        "  ]\n}\n");
}

TEST(LogonPlan, ProfileFoldersBecomeTheirVariablesLongestFirstAtPathBoundaries) {
    const std::vector<std::pair<std::string, std::string>> variables = {
        {"USERPROFILE", "C:\\Users\\ann"},
        {"LOCALAPPDATA", "C:\\Users\\ann\\AppData\\Local\\"},
        {"APPDATA", "C:\\Users\\ann\\AppData\\Roaming"},
        {"SYSTEMDRIVE", "C:"}};
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"C:\\Users\\ann\\AppData\\Local\\x.exe", "%LOCALAPPDATA%\\x.exe"},
             {"c:\\USERS\\ANN\\AppData\\Roaming", "%APPDATA%"},
             {"C:\\Users\\annabel\\z.exe C:\\Users\\ann2",
              "C:\\Users\\annabel\\z.exe C:\\Users\\ann2"},
             {"\"C:\\Users\\ann\" /d C:\\Users\\ann", "\"%USERPROFILE%\" /d %USERPROFILE%"},
             {"C:\\Windows\\x.exe", "C:\\Windows\\x.exe"}})
        EXPECT_EQ(WithProfileVariables(text, variables), expected) << text;
}

TEST(LogonPlan, FaultsArePlacedAtTheirToken) {
    const std::string item =
        R"({"tolvanePlan": 1, "items": [{"location": "user-run", "name": "A", )";
    for (
        const auto& [bytes, expected] : std::vector<std::pair<std::string, std::string>>{
            {"", "1:1 the text holds no value"},
            {"\xEF\xBB\xBF\r\n  [1", "2:5 expected \",\" or \"]\", found end"},
            {"{\"tolvanePlan\": 1,}", "1:19 expected a key in quotes"},
            {"{\"tolvanePlan\": 1} x", "1:20 unexpected \"x\" after"},
            {"{\"tolvanePlan\": 1, \"tolvanePlan\": 1}",
             "1:20 the key \"tolvanePlan\" is given twice"},
            {"{\"a\": TRUE}", "1:7 \"TRUE\" is no value"},
            {"{\"a\": 01}", "1:7 a number cannot begin with 0"},
            {"{\"a\": -}", "1:8 a number needs a digit"},
            {"{\"a\": 1e999}", "1:7 the number is too large"},
            {"{\"a\": \"C:\\Tools\"}", "1:10 \"\\\" followed by \"T\" is no escape"},
            {"{\"a\": \"\\ud800x\"}", "1:8 \\ud800 is half of a UTF-16 pair"},
            {"{\"a\": \"\\u12\"}", "1:8 \\u needs four hex digits"},
            {"{\"a\": \"a\tb\"}", "1:9 control character U+0009 must be written as an escape"},
            {"{\"a\": \"open}", "1:7 this text has no closing quote"},
            {"{\"\xc3\xa9\": \"\xe9\"}", "1:8 the byte 0xE9 begins no UTF-8 character"},
            {std::string(40, '['), "1:33 the values nest deeper than 32 levels"},
            {"[]", "1:1 a plan is an object in { }, not a list"},
            {"{\"items\": []}", "1:1 this is no Tolvane plan"},
            {"{\"tolvanePlan\": 2, \"newer\": 1}", "1:17 this plan was written by a newer Tolvane"},
            {"{\"tolvanePlan\": \"1\"}", "1:17 \"tolvanePlan\" must be a number, not a string"},
            {"{\"tolvanePlan\": 1, \"setting\": {}}", "1:20 unknown key \"setting\" in the plan"},
            {"{\"tolvanePlan\": 1, \"settings\": {\"idleStart\": 1}}",
             "1:46 \"idleStart\" must be true or false, not a number"},
            {"{\"tolvanePlan\": 1, \"settings\": {\"startupType\": 1.5}}",
             "1:48 \"startupType\" must be 0, 1, 2 or 3"},
            {"{\"tolvanePlan\": 1, \"settings\": {\"mainDelay\": 1e39}}",
             "1:46 \"mainDelay\" must be a number of seconds, 0 or more"},
            {"{\"tolvanePlan\": 1, \"items\": {}}", "1:29 \"items\" must be a list"},
            {"{\"tolvanePlan\": 1, \"items\": [1]}", "1:30 each item must be an object"},
            {item + "\"state\": \"delayed\",\n \"dealy\": 5}]}",
             "2:2 unknown key \"dealy\" in an item"},
            {item + "\"state\": \"delayed\", \"delay\": -1}]}",
             "1:97 \"delay\" must be a number of seconds"},
            {item + "\"state\": \"stopped\", \"delay\": 1}]}",
             "1:88 \"delay\" is only for a delayed item"},
            {item + "\"state\": \"paused\"}]}", "1:77 unknown state \"paused\""},
            {item + "\"command\": \"x\"}]}", "1:30 this item has no \"state\""},
            {R"({"tolvanePlan": 1, "items": [{"location": "user-runs", "name": "A", "state": "active"}]})",
             "1:43 unknown location \"user-runs\""},
            {R"({"tolvanePlan": 1, "items": [{"location": "user-run", "name": "", "state": "active"}]})",
             "1:63 an item's \"name\" cannot be empty"},
            {item + "\"state\": \"active\"},\n{\"location\": \"user-run\", \"name\": \"a\", "
                    "\"state\": "
                    "\"stopped\"}]}",
             "2:1 user-run \"a\" is in the plan twice (also on line 1)"},
        }) {
        const std::string got = Parsed(bytes);
        EXPECT_EQ(got.substr(0, expected.size()), expected) << got;
    }
    // Another view of the machine's Run key is another item.
    EXPECT_EQ(Parsed(item + "\"state\": \"active\"}, {\"location\": \"machine-run\", \"name\": "
                            "\"A\", \"state\": \"active\"}]}")
                  .substr(0, 1),
              "{");
}

TEST(LogonPlan, ComparisonMovesWhatMatchesAndReportsWhatIsNotTheSameProgram) {
    struct Machine : CommandLineSystem {
        bool FileExists(const std::string&) const override { return false; }
        std::string Expand(const std::string& text) const override {
            return ReplaceAll(text, "%LOCALAPPDATA%", "C:\\Users\\Ann\\AppData\\Local");
        }
    } const machine;
    ProgramModel model;
    model.MainStartupDelay = 30;
    const std::vector<ItemRecord> records = {
        Record(kActive, kUserRunKey, "onedrive", "C:\\users\\ann\\appdata\\local\\o.exe", "/b"),
        Record(kActive, kUserRunKey, "Agent", "C:\\a.exe", "/x"),
        Record(kActive, kMachine, "Clock", "C:\\c.exe"),
        Record(kDelayed, kMachine32, "Clock", "C:\\c.exe", "", 0),
        Record(kDelayed, kUserRunKey, "Late", "%LOCALAPPDATA%\\l.exe", "", 5),
        Record(kStopped, kUserRunKey, "Same", "C:\\P F\\p.exe", "-a"),
        Record(kStopped, kCommonFolder, "Word.lnk", "C:\\OFFICE\\Word.exe"),
        Record(kActive, kMachine, "Locked", "C:\\k.exe", "", {}, false),
        Record(kActive, kUserRunKey, "Twin", "C:\\t1.exe"),
        Record(kStopped, kUserRunKey, "Twin", "C:\\t2.exe"),
    };
    LogonPlan plan;
    plan.MainDelay = 45;
    plan.IdleStart = false;
    plan.Items = {
        {kUserRunKey, "OneDrive", "%LOCALAPPDATA%\\O.exe /b", kDelayed, 5},
        {kUserRunKey, "Agent", "C:\\b.exe /x", kStopped},
        {kMachine32, "Clock", "", kStopped},
        {kUserFolder, "Tool.lnk", "C:\\t.exe", kStopped},
        {kUserRunKey, "Late", "C:\\Users\\ann\\AppData\\Local\\l.exe", kDelayed, 8},
        {kUserRunKey, "Same", "\"C:\\P F\\p.exe\"  -a ", kStopped},
        {kCommonFolder, "Word.lnk", "c:\\office\\word.exe /safe", kActive},
        {kMachine, "Locked", "", kStopped},
        {kUserRunKey, "Twin", "", kStopped},
    };
    std::vector<std::string> lines;
    for (const PlanDifference& d : ComparePlan(plan, records, model, machine, test::AsciiNameOrder))
        lines.push_back((d.Change ? "+ " : "  ") + d.Text + " #" + std::to_string(d.Record));
    EXPECT_EQ(lines,
              (std::vector<std::string>{
                  "+ settings: mainDelay 30 -> 45 #-1",
                  "+ user-run \"OneDrive\": active -> delayed (5 s) #0",
                  "  user-run \"Agent\": the command here differs (\"C:\\a.exe /x\" against "
                  "\"C:\\b.exe /x\"); left alone #1",
                  "+ machine-run-32 \"Clock\": delayed -> stopped #3",
                  "  user-folder \"Tool.lnk\": not on this machine #-1",
                  "+ user-run \"Late\": delay 5 s -> 8 s #4",
                  "+ common-folder \"Word.lnk\": stopped -> active #6",
                  "  machine-run \"Locked\": active -> stopped is not a move the list offers "
                  "for this item; left alone #7",
              }));
}

} // namespace
} // namespace tolvane
