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
    return {.State = state,
            .Location = at.Code,
            .Wow32 = at.Wow32,
            .OwnName = std::move(name),
            .Path = std::move(path),
            .Parameters = std::move(parameters),
            .Delay = delay,
            .Movable = movable};
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

// One user's items: the plan exported from them keeps what is not active and names each profile
// folder by its variable, the longest first, where a path ends there (a drive alone names no
// folder of the profile); a plan compared with them moves what is the same program and says
// why it leaves the rest alone.
TEST(LogonPlan, ExportKeepsWhatMovedAndComparisonMovesOnlyTheSameProgram) {
    const std::vector<std::pair<std::string, std::string>> profile = {
        {"USERPROFILE", "C:\\Users\\ann"},
        {"LOCALAPPDATA", "C:\\Users\\ann\\AppData\\Local\\"},
        {"APPDATA", "C:\\Users\\ann\\AppData\\Roaming"},
        {"SYSTEMDRIVE", "C:"}};
    const std::vector<ItemRecord> records = {
        Record(kActive, kUserRunKey, "Agent", "C:\\a.exe", "/x"),
        Record(kDelayed, kUserRunKey, "OneDrive", "c:\\users\\ann\\AppData\\Local\\My Apps\\o.exe",
               "/d C:\\Users\\Ann /e C:\\Users\\Ann\\AppData\\Roaming", 5),
        Record(kStopped, kUserFolder, "Tool.lnk", "C:\\Users\\annabel\\tool.exe"),
        Record(kStopped, kUserFolder, "Gone.lnk", "C:\\Users\\ann\\Tolvane\\Items\\Gone.lnk"),
        Record(kActive, kMachine, "Caf\xc3\xa9 \"q\"\t", "C:\\c.exe"),
        Record(kDelayed, kMachine32, "Caf\xc3\xa9 \"q\"\t", "C:\\c.exe", "", 2.5f),
        Record(kDelayed, kMachine, "Locked", "C:\\l.exe", "", 1, false),
        Record(kStopped, kUserRunKey, "ONEDRIVE", "C:\\other.exe"),
    };
    const LogonPlan exported = PlanFromRecords(records, {}, profile, test::AsciiNameOrder);
    std::vector<std::string> lines;
    for (const PlanItem& p : exported.Items)
        lines.push_back(std::string(CliLocationWord(p.Location.Code, p.Location.Wow32)) + "|" +
                        p.Name + "|" + p.Command + "|" + StateWord(p.State) + "|" +
                        (p.Delay ? FormatSingle(*p.Delay) : "-"));
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "user-run|OneDrive|\"%LOCALAPPDATA%\\My Apps\\o.exe\" /d %USERPROFILE% "
                         "/e %APPDATA%|delayed|5",
                         "user-folder|Tool.lnk|C:\\Users\\annabel\\tool.exe|stopped|-",
                         "user-folder|Gone.lnk||stopped|-",
                         "machine-run-32|Caf\xc3\xa9 \"q\"\t|C:\\c.exe|delayed|2.5"}));
    EXPECT_EQ(Parsed(FormatPlanJson(exported)), FormatPlanJson(exported));

    struct Machine : CommandLineSystem {
        bool FileExists(const std::string&) const override { return false; }
        std::string Expand(const std::string& text) const override {
            return ReplaceAll(text, "%USERPROFILE%", "C:\\Users\\Ann");
        }
    } const machine;
    LogonPlan plan{45, false};
    plan.Items = {{kUserRunKey, "onedrive",
                   "\"%USERPROFILE%\\AppData\\Local\\My Apps\\O.exe\"  /d %USERPROFILE% /e "
                   "%USERPROFILE%\\AppData\\Roaming ",
                   kDelayed, 8},
                  {kUserRunKey, "Agent", "C:\\b.exe /x", kStopped},
                  {kUserFolder, "Tool.lnk", "c:\\users\\ANNABEL\\tool.exe /safe", kActive},
                  {kMachine32, "Caf\xc3\xa9 \"q\"\t", "", kStopped},
                  {kCommonFolder, "Word.lnk", "C:\\w.exe", kStopped},
                  {kMachine, "Locked", "", kStopped}};
    lines.clear();
    for (const PlanDifference& d : ComparePlan(plan, records, {}, machine, test::AsciiNameOrder))
        lines.push_back((d.Change ? "+ " : "  ") + d.Text + " #" + std::to_string(d.Record));
    EXPECT_EQ(lines,
              (std::vector<std::string>{
                  "+ settings: mainDelay 0 -> 45 #-1",
                  "+ user-run \"onedrive\": delay 5 s -> 8 s #1",
                  "  user-run \"Agent\": the command here differs (\"C:\\a.exe /x\" against "
                  "\"C:\\b.exe /x\"); left alone #0",
                  "+ user-folder \"Tool.lnk\": stopped -> active #2",
                  "+ machine-run-32 \"Caf\xc3\xa9 \"q\"\t\": delayed -> stopped #5",
                  "  common-folder \"Word.lnk\": not on this machine #-1",
                  "  machine-run \"Locked\": delayed -> stopped is not a move the list offers "
                  "for this item; left alone #6",
              }));
}

// A plan as a person writes it: any key order, a byte-order mark, escapes, defaults; each fault
// at its token. Every item row's first item has the name of the second in the other view of the
// machine's Run key, which is another item.
TEST(LogonPlan, HandWrittenPlansAreReadAndFaultsArePlacedAtTheirToken) {
    const std::string plan = R"({"tolvanePlan": 1, )", settings = plan + R"("settings": {)",
                      items = plan + R"("items": [
  {"location": "machine-run-32", "name": "A", "state": "active"}, {)",
                      item = items + R"("location": "machine-run", "name": "A", )";
    for (const auto& [bytes, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "1:1 the text holds no value"},
             {"\xEF\xBB\xBF\r\n  [1", "2:5 expected \",\" or \"]\", found end"},
             {R"({"a": 1,})", "1:9 expected a key in quotes"},
             {R"({"a": 1} x)", "1:10 unexpected \"x\" after"},
             {R"({"a": 1, "a": 2})", "1:10 the key \"a\" is given twice"},
             {R"({"a": TRUE})", "1:7 \"TRUE\" is no value"},
             {R"({"a": 01})", "1:7 a number cannot begin with 0"},
             {R"({"a": -})", "1:8 a number needs a digit"},
             {R"({"a": 1e999})", "1:7 the number is too large"},
             {R"({"a": "C:\Tools"})", "1:10 \"\\\" followed by \"T\" is no escape"},
             {R"({"a": "\ud800x"})", "1:8 \\ud800 is half of a UTF-16 pair"},
             {R"({"a": "\u12"})", "1:8 \\u needs four hex digits"},
             {"{\"a\": \"a\tb\"}", "1:9 control character U+0009 must be written as an escape"},
             {R"({"a": "open})", "1:7 this text has no closing quote"},
             {"{\"\xc3\xa9\": \"\xe9\"}", "1:8 the byte 0xE9 begins no UTF-8 character"},
             {std::string(40, '['), "1:33 the values nest deeper than 32 levels"},
             {"[]", "1:1 a plan is an object in { }, not a list"},
             {R"({"items": []})", "1:1 this is no Tolvane plan"},
             {R"({"tolvanePlan": 2, "newer": 1})", "1:17 this plan was written by a newer Tolvane"},
             {plan + R"("setting": {}})", "1:20 unknown key \"setting\" in the plan"},
             {settings + R"("idleStart": 1}})", "1:46 \"idleStart\" must be true or false"},
             {settings + R"("startupType": 1.5}})", "1:48 \"startupType\" must be 0, 1, 2 or 3"},
             {settings + R"("mainDelay": 1e39}})", "1:46 \"mainDelay\" must be a number"},
             {plan + R"("items": {}})", "1:29 \"items\" must be a list"},
             {item + "\n\"dealy\": 5}]}", "3:1 unknown key \"dealy\" in an item"},
             {item + R"("state": "delayed", "delay": -1}]})", "2:137 \"delay\" must be a number"},
             {item + R"("state": "stopped", "delay": 1}]})", "2:128 \"delay\" is only for a"},
             {item + R"("state": "paused"}]})", "2:117 unknown state \"paused\""},
             {item + R"("command": "x"}]})", "2:67 this item has no \"state\""},
             {items + R"("location": "user-runs", "name": "A", "state": "active"}]})",
              "2:80 unknown location"},
             {items + R"("location": "user-run", "name": "", "state": "active"}]})",
              "2:100 an item's \"name\" cannot"},
             {item + "\"state\": \"active\"},\n{\"location\": \"machine-run\", \"name\": \"a\", "
                     "\"state\": \"stopped\"}]}",
              "3:1 machine-run \"a\" is in the plan twice (also on line 2)"},
             {"\xEF\xBB\xBF{\"items\":[{\"state\":\"delayed\",\"name\":"
              "\"\\u00C9\\u20ac\\ud83d\\ude00\\/"
              "\\\\\",\r\n"
              "\"location\":\"machine-run\"}],\"tolvanePlan\":1.0,\"settings\":{}}",
              "{\n  \"tolvanePlan\": 1,\n  \"settings\": {},\n  \"items\": [\n    {\n      "
              "\"location\": \"machine-run\",\n      \"name\": "
              "\"\xc3\x89\xe2\x82\xac\xf0\x9f\x98\x80/\\\\\",\n"
              "      \"command\": \"\",\n      \"state\": \"delayed\",\n      \"delay\": 0\n    }\n"
              "  ]\n}\n"},
         }) {
        EXPECT_EQ(Parsed(bytes).substr(0, expected.size()), expected);
    }
}
} // namespace
} // namespace tolvane
