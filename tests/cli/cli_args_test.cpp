// The console program's arguments and its record formats, without the platform.
#include <gtest/gtest.h>

#include "cli/cli_args.h"
#include "cli/item_records.h"
#include "config/run_data.h"
#include "items/startup_tree.h"
#include "support/test_support.h"
#include "text/strings.h"

namespace tolvane {
namespace {

// The arguments, split at each blank.
std::string Parsed(std::string_view line) {
    const CliParse p =
        ParseCliArguments(line.empty() ? std::vector<std::string>{} : Split(line, ' '));
    if (!p.Request)
        return "error: " + p.Error;
    const CliRequest& r = *p.Request;
    std::string text = std::to_string(static_cast<int>(r.Verb)) + " " +
                       std::to_string(static_cast<int>(r.Format)) + " [" + r.Name + "]";
    if (r.Location)
        text += std::string(" ") + CliLocationWord(r.Location->Code, r.Location->Wow32);
    if (r.Delay)
        text += " " + std::to_string(*r.Delay).substr(0, 4);
    if (!r.File.empty())
        text += " <" + r.File + ">";
    return text + (r.Check ? " check" : "");
}

TEST(CliArguments, VerbsOptionsAndUsageErrors) {
    EXPECT_EQ(Parsed("list"), "1 0 []");
    EXPECT_EQ(Parsed("list --csv"), "1 2 []");
    EXPECT_EQ(Parsed("delay Clock --delay 2.5 --location machine-run-32"),
              "2 0 [Clock] machine-run-32 2.50");
    EXPECT_EQ(Parsed("delay Clock --delay 0"), "2 0 [Clock] 0.00"); // the main delay alone
    EXPECT_EQ(Parsed("stop --location user-folder Tool.lnk"), "3 0 [Tool.lnk] user-folder");
    EXPECT_EQ(Parsed("restore Name=C:\\a.exe"), "4 0 [Name=C:\\a.exe]");
    EXPECT_EQ(Parsed("run-startup"), "5 0 []");
    EXPECT_EQ(Parsed("stop x --help"), "0 0 []");
    EXPECT_EQ(Parsed("export"), "6 0 []");
    EXPECT_EQ(Parsed("export C:\\Plans\\p.json"), "6 0 [] <C:\\Plans\\p.json>");
    EXPECT_EQ(Parsed("apply p.json"), "7 0 [] <p.json>");
    EXPECT_EQ(Parsed("apply --check p.json"), "7 0 [] <p.json> check");
    EXPECT_EQ(Parsed("history --json"), "8 1 []");
    for (const char* bad :
         {"", "start", "delay", "list --json --csv", "list Clock", "stop x --delay 3",
          "delay x --delay -1", "delay x --delay", "delay x y", "restore x --location user",
          "run-startup --location user-run", "apply --check", "export a b", "export a --check",
          "apply p --json", "history --csv", "history x"})
        EXPECT_EQ(Parsed(bad).rfind("error: ", 0), 0u) << Parsed(bad);
}

TEST(CliRecords, TheTreesItemsWithTheirCommandsInThreeFormats) {
    StartupListing listing;
    listing.UserRunValues = {{"Caf\xc3\xa9 \"q\"", "\"C:\\P F\\c.exe\" /a,b"},
                             {"Tool", "C:\\t.exe"}};
    listing.UserStartupFiles = {"Word.lnk"};
    listing.OffUserRun =
        SwitchedOffNames({{"Tool", RegistryValue{kBinaryType, {3}}}}, test::AsciiNameOrder);
    ProgramModel model;
    model.ProgramGroups = {{"Startup", {{"Later.lnk", "-x", "Execute", 7.5f, ""}}}};
    model.StartupGroupIndex = 0;
    model.StoppedPrograms = {"_REGCU_Old=C:\\old.exe"};
    // Nothing on this machine: each command is read by its quotes and first word.
    struct NoFiles : CommandLineSystem {
        bool FileExists(const std::string&) const override { return false; }
        std::string Expand(const std::string& text) const override { return text; }
    } const noFiles;
    const AppFolders folders{"", "", "C:\\Start", "", "C:\\Items\\"};
    TreeModel tree;
    BuildStartupTree(tree, listing, model, {}, {{}, {}, {}, &folders, &noFiles});
    RecordLookups lookups;
    lookups.ShortcutTarget = [](const std::string& link) { return "target of " + link; };
    lookups.ProgramThere = [](const std::string& program, bool) { return program != "C:\\t.exe"; };
    lookups.FileThere = [](const std::string&) { return false; };
    lookups.Facts = [](const std::string& program, bool) {
        return program == "C:\\P F\\c.exe"
                   ? ProgramFacts{"Hexmoor, Ltd", "", SignatureState::Trusted}
                   : ProgramFacts{};
    };
    const std::vector<ItemRecord> records =
        ItemRecords(tree, listing, model, {{"Tool", "A clock"}}, lookups);

    // Every state's command read the same way; what is not there is marked missing (a shortcut
    // whose target is gone too), and only a program that is there has a signature to tell.
    EXPECT_EQ(FormatRecordsCsv(records),
              "state,location,name,path,parameters,delay,known,description,switchedOff,missing,"
              "publisher,signature\r\n"
              "active,user-folder,Word.lnk,target of C:\\Start\\Word.lnk,,,false,,false,true,,"
              "missing\r\n"
              "active,user-run,\"Caf\xc3\xa9 \"\"q\"\"=\"\"C:\\P F\\c.exe\"\" /a,b\",C:\\P "
              "F\\c.exe,\"/a,b\",,false,,false,false,\"Hexmoor, Ltd\",trusted\r\n"
              "active,user-run,Tool=C:\\t.exe,C:\\t.exe,,,true,A clock,true,true,,missing\r\n"
              "delayed,user-folder,Later.lnk,target of C:\\Items\\Later.lnk,-x,7.5,false,,false,"
              "true,,missing\r\n"
              "stopped,user-run,Old=C:\\old.exe,C:\\old.exe,,,false,,false,false,,unsigned\r\n");
    // Known: on the safe list, with its description.
    EXPECT_EQ(FormatRecordsJson({records[2]}),
              "[\n  {\"state\": \"active\", \"location\": \"user-run\", \"name\": "
              "\"Tool=C:\\\\t.exe\", \"path\": \"C:\\\\t.exe\", \"parameters\": \"\", \"delay\": "
              "null, \"known\": true, \"description\": \"A clock\", \"switchedOff\": true, "
              "\"missing\": true, \"publisher\": \"\", \"signature\": \"missing\"}\n]\n");
    ItemRecord control = records[0];
    control.Name = "a\tb\x01";
    EXPECT_NE(FormatRecordsJson({control}).find("\"a\\u0009b\\u0001\""), std::string::npos);
    EXPECT_EQ(FormatRecordsJson({}), "[]\n");
    EXPECT_EQ(records[0].OwnName + "|" + records[1].OwnName, "Word.lnk|Caf\xc3\xa9 \"q\"");
    EXPECT_NE(FormatRecordsTable(records).find(
                  "delayed  user-folder     7.5    missing   Later.lnk  (not found)"),
              std::string::npos);
}

// The kept runs, the newest first: a run still waiting or with nothing measured says so.
TEST(CliRecords, HistoryRunsAsATableAndAsJson) {
    const std::vector<LogonRun> runs = {
        {"1", "2026-11-23 08:00:00", {}, {}},
        {"2",
         "2026-11-24 08:00:00",
         41000,
         {{{kUserRun, "Clock"}, "C:\\c.exe", 41000, 2150, 400, 3565158, 0, 30000},
          {{kCommonStartup, "W \"x\".lnk"}, "W.lnk", 43500, {}, 12, 0, 4096, 900}}}};
    EXPECT_EQ(FormatHistoryTable(runs),
              "Log-on 2026-11-24 08:00:00, main wait 41.0 s, 2 programs measured\n"
              "  START     READY     CPU       DISK      RATING  LOCATION        NAME\n"
              "  41.0 s    2.2 s     0.4 s     3.4 MB    High    user-run        Clock\n"
              "  43.5 s    -         0.0 s     0.0 MB    Low     common-folder   W \"x\".lnk\n"
              "Log-on 2026-11-23 08:00:00, main wait not over, 0 programs measured\n");
    EXPECT_EQ(FormatHistoryJson(runs),
              "[\n  {\"id\": \"2\", \"started\": \"2026-11-24 08:00:00\", \"mainDelayMs\": 41000, "
              "\"programs\": [\n    {\"location\": \"user-run\", \"name\": \"Clock\", \"path\": "
              "\"C:\\\\c.exe\", \"startMs\": 41000, \"readyMs\": 2150, \"cpuMs\": 400, "
              "\"readBytes\": 3565158, \"writeBytes\": 0, \"watchedMs\": 30000, \"rating\": "
              "\"High\"},\n    {\"location\": \"common-folder\", \"name\": \"W \\\"x\\\".lnk\", "
              "\"path\": \"W.lnk\", \"startMs\": 43500, \"readyMs\": null, \"cpuMs\": 12, "
              "\"readBytes\": 0, \"writeBytes\": 4096, \"watchedMs\": 900, \"rating\": \"Low\"}\n"
              "  ]},\n  {\"id\": \"1\", \"started\": \"2026-11-23 08:00:00\", \"mainDelayMs\": "
              "null, \"programs\": []}\n]\n");
}

} // namespace
} // namespace tolvane
