#include <gtest/gtest.h>

#include "config/program_model.h"
#include "text/code_page.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;
using test::GroupNames;
using test::ProgramLines;

// A model as a load leaves it: one "Startup" group holding the given programs.
ProgramModel WithStartup(std::vector<GroupProgram> programs) {
    ProgramModel m;
    m.ProgramGroups.push_back({"Startup", std::move(programs)});
    m.StartupGroupIndex = 0;
    return m;
}

// What the group editor does to groups: indexes of the other groups never move, a blank and
// "_" spell one name, and the "Startup" group keeps its name.
TEST(ProgramModel, GroupsAreAddedRenamedAndRemovedInPlace) {
    ProgramModel m = WithStartup({{"C:\\a.exe", "-x"}, {"C:\\b.exe", ""}});
    EXPECT_EQ(m.AddGroup("My_Group"), 1);
    EXPECT_EQ(m.ProgramGroups[1].Name, "My Group"); // spelled as a reload of the file spells it
    EXPECT_EQ(m.AddGroup("My Group"), 1);
    EXPECT_EQ(m.GetGroupID("My_Group"), 1);
    EXPECT_EQ(m.NewGroupProblem(" My_Group "), GroupNameProblem::Taken);
    EXPECT_EQ(m.NewGroupProblem("startup"), GroupNameProblem::StartupReserved);
    EXPECT_EQ(m.NewGroupProblem("Startup"), GroupNameProblem::Taken);
    EXPECT_EQ(m.NewGroupProblem(" _ "), GroupNameProblem::Empty);
    EXPECT_EQ(m.NewGroupProblem("_startup_"), GroupNameProblem::StartupReserved);
    EXPECT_EQ(m.NewGroupProblem("Tools"), GroupNameProblem::None);
    ProgramModel withoutStartup;
    withoutStartup.ProgramGroups.push_back({"Other", {GroupProgram{}}});
    EXPECT_EQ(withoutStartup.NewGroupProblem("Startup"), GroupNameProblem::None); // it is back
    EXPECT_EQ(withoutStartup.NewGroupProblem("startup"), GroupNameProblem::StartupReserved);

    using enum GroupNameProblem;
    const struct {
        int group;
        const char* name;
        GroupNameProblem problem;
    } renames[] = {{0, "Other", StartupKeepsName},
                   {0, "", StartupKeepsName},
                   {0, "Startup", None},
                   {1, "STARTUP", StartupReserved},
                   {1, "Startup", StartupReserved},
                   {1, "_Startup_", StartupReserved},
                   {1, "Startup_", StartupReserved},
                   {1, " ", Empty},
                   {1, "My Group", None}};
    for (const auto& r : renames) {
        EXPECT_EQ(m.RenameProblem(r.group, r.name), r.problem) << r.group << r.name;
        EXPECT_EQ(m.UpdateGroupName(r.group, r.name), r.problem == None) << r.group << r.name;
    }
    EXPECT_EQ(GroupNames(m), (Lines{"Startup", "My Group"}));
    EXPECT_EQ(m.ProgramGroups[0].Programs.size(), 2u);
    EXPECT_TRUE(m.UpdateGroupNameString("My_Group", "Tools"));
    EXPECT_FALSE(m.UpdateGroupName(7, "x"));
    EXPECT_EQ(m.AddGroup("Last"), 2);
    EXPECT_EQ(m.RenameProblem(2, "Tools"), Taken);
    EXPECT_FALSE(m.UpdateGroupNameString("Last", "Tools"));
    m.RemoveProgramGroup(1); // not the last: a hole keeps the others' indexes
    EXPECT_EQ(GroupNames(m), (Lines{"Startup", "", "Last"}));
    m.RemoveProgramGroup(2); // the last: the list shrinks
    EXPECT_EQ(m.ProgramGroups.size(), 2u);
    EXPECT_THROW(m.RemoveProgramGroup(5), ModelError);

    EXPECT_EQ(m.GetProgramID(" C:\\a.exe -x ", 0), 0);
    EXPECT_EQ(m.GetProgramID("C:\\b.exe", "Startup"), 1);
    EXPECT_EQ(m.GetProgramID("C:\\a.exe -y", 0), -1);
    EXPECT_TRUE(m.UpdateProgramInGroup(0, 1, "C:\\c.exe", "-c", 2));
    EXPECT_FALSE(m.UpdateProgramInGroup(0, 2, "x", "", 0));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]).back(), "|C:\\c.exe|-c|2|");
}

TEST(ProgramModel, ProgramsGoIntoALiveStartupGroupAndLeaveAFreeSlot) {
    ProgramModel m;
    m.ProgramGroups.push_back({"Other", {GroupProgram{}}});
    m.AddProgramToGroup(-1, kExecute, "C:\\a.exe", "-x", 5, "");
    ASSERT_EQ(m.StartupGroupIndex, 1);
    EXPECT_EQ(ProgramLines(m.ProgramGroups[1]), (Lines{"|||0|", "Execute|C:\\a.exe|-x|5|"}));
    EXPECT_THROW(m.AddProgramToGroup(7, kExecute, "C:\\b.exe", "", 0, ""), ModelError);
    EXPECT_THROW(m.AddProgramToGroup(-2, kExecute, "C:\\b.exe", "", 0, ""), ModelError);

    // The "Startup" group was removed since the load (a hole now) and the index still points
    // there: an item delayed meanwhile must land where the file keeps it.
    m.ProgramGroups.push_back({"Last", {GroupProgram{}}});
    m.ProgramGroups[1] = {};
    m.AddProgramToGroup(m.StartupGroupIndex, kExecuteReg, "C:\\c.exe", "", 0, "C");
    EXPECT_EQ(GroupNames(m), (Lines{"Other", "", "Last", "Startup"}));
    EXPECT_EQ(m.StartupGroupIndex, 3);
    EXPECT_EQ(ProgramLines(m.ProgramGroups[3]), (Lines{"|||0|", "ExecuteReg|C:\\c.exe||0|C"}));
    EXPECT_FALSE(m.RemoveProgramFromGroup(1, 0)); // a removed group has nothing to remove
    EXPECT_TRUE(m.ProgramGroups[1].Programs.empty());

    m = WithStartup({{"a"}, {"b"}});
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, 1));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), Lines{"|a||0|"});
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, 0)); // the only one: a free slot stays
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), Lines{"|||0|"});
    EXPECT_FALSE(m.RemoveProgramFromGroup(3, 0));
}

TEST(ProgramModel, StoppedEntriesFillFreeSlotsAndAreMatchedTrimmed) {
    ProgramModel m;
    m.StoppedPrograms = {""};
    m.AddStoppedProgram("Tool.lnk", kUserStartup);
    m.AddStoppedProgram("C:\\t.exe ", kUserRun); // a Run path with parameters ends in a blank
    m.AddStoppedProgram("x", kMachineRun);
    m.AddStoppedProgram("y", kCommonStartup);
    m.AddStoppedProgram("z", 9);
    EXPECT_EQ(m.StoppedPrograms,
              (Lines{"_STPCU_Tool.lnk", "_REGCU_C:\\t.exe ", "_REGAU_x", "_STPAU_y", "z"}));

    m.RemoveStoppedProgram("C:\\t.exe", kUserRun);      // found although stored with its blank
    m.RemoveStoppedProgram("Tool.lnk", kCommonStartup); // other location: no match
    EXPECT_EQ(m.StoppedPrograms, (Lines{"_STPCU_Tool.lnk", "", "_REGAU_x", "_STPAU_y", "z"}));
    m.AddStoppedProgram("again", kUserRun); // the last slot is used: appended
    EXPECT_EQ(m.StoppedPrograms.back(), "_REGCU_again");
    m.RemoveStoppedProgram("again", kUserRun);
    m.AddStoppedProgram("fill", kUserRun); // the last slot is free: reused
    EXPECT_EQ(m.StoppedPrograms.size(), 6u);
    EXPECT_EQ(m.StoppedPrograms.back(), "_REGCU_fill");
}

// Programs of the same delay start in the order of the file: enough of them that an unstable
// sort would mix them up.
TEST(ProgramModel, SortIsByDelayAndStable) {
    ProgramModel m = WithStartup({});
    for (int i = 0; i < 40; ++i)
        m.ProgramGroups[0].Programs.push_back({std::to_string(i), "", "", float((39 - i) % 4)});
    Lines sorted;
    for (int delay = 0; delay < 4; ++delay)
        for (int i = 0; i < 40; ++i)
            if ((39 - i) % 4 == delay)
                sorted.push_back("|" + std::to_string(i) + "||" + std::to_string(delay) + "|");
    m.SortArray();
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), sorted);
}

// Disallowed words block commands, never the names of folders and files.
TEST(ProgramModel, DisallowedWordsBlockCommandsNotNames) {
    // A Japanese system: a character may take two bytes, the second a "|" or a "\".
    SetActiveCodePage(932);
    ProgramModel m;
    m.DisallowedPrograms = {"", "format", "fdisk", "del", "rmdir", "mkdir", "delete", "rm -rf"};
    struct Case {
        const char* program;
        const char* arguments;
        const char* word; // "" when it starts
    };
    const Case cases[] = {
        // The program's own name, with or without its extension, in any letter case.
        {"del", "C:\\x.tmp", "del"},
        {"C:\\Windows\\System32\\format.com", "D: /q", "format"},
        {"\"C:\\Tools\\RMDIR.EXE\"", "", "rmdir"},
        {"C:\\Scripts\\Delete.bat", "", "delete"},
        // A whole word of the arguments, or a program named there.
        {"cmd.exe", "/c del C:\\x.tmp", "del"},
        {"cmd.exe", "/c \"DEL C:\\x.tmp\"", "del"},
        {"cmd.exe", "/c echo x&del y", "del"},
        {"cmd.exe", "/c C:\\Windows\\System32\\format.com d:", "format"},
        {"C:\\Tools\\sh.exe", "-c \"rm -rf /tmp/x\"", "rm -rf"},
        // Names that hold the letters: folders, files, documents, shortcuts.
        {"C:\\Program Files\\Dell\\SupportAssist\\SupportAssist.exe", "/startup", ""},
        {"C:\\Users\\Ann\\Model\\run.exe", "", ""},
        {"C:\\Program Files\\Embarcadero\\Delphi\\bds.exe", "-pDelphi", ""},
        {"C:\\Tools\\ModelViewer.exe", "C:\\Models\\del\\a.mdl", ""},
        {"C:\\Tools\\editor.exe", "C:\\Notes\\delete.txt", ""},
        {"Format Factory.lnk", "", ""},
        {"Delete.lnk", "", ""},
        {"C:\\Tools\\rm.exe", "-rf /", "rm -rf"},
        {"C:\\Tools\\farm.exe", "-rf", ""},
        {"C:\\Tools\\backup.exe", "--mode=delete", ""},
        // Double-byte text: a "|" or a "\" that is the second byte of a character parts
        // nothing (Shift-JIS 0x95 0x7C and 0x83 0x5C, then "del"); in code page 1252 both
        // would leave "del" a word of its own.
        {"C:\\Tools\\viewer.exe", "\x95|del", ""},
        {"C:\\\x83\\del.exe", "", ""},
        {"", "", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(m.BlockingWord(c.program, c.arguments), c.word)
            << c.program << " " << c.arguments;

    // The log-on run empties every blocked program of the Startup group and names it once per
    // word that blocks it; other groups are not its business. The words are looked for in what
    // each starts: a whole command that an older version kept as the program starts cmd.exe.
    struct WithCmd : CommandLineSystem {
        bool FileExists(const std::string& path) const override { return path == "cmd.exe"; }
        std::string Expand(const std::string& text) const override { return text; }
    };
    auto started = [](const GroupProgram& p) {
        static const WithCmd machine;
        return StartedCommand(p, false, machine);
    };
    ProgramModel run = WithStartup({{" C:\\Dell\\run.exe ", "/del"},
                                    {"C:\\ok.exe"},
                                    {""},
                                    {"C:\\x\\del.exe", "/c format"},
                                    {"cmd.exe /c del C:\\x.exe", "", "ExecuteReg", 0, "Wipe"}});
    run.ProgramGroups.push_back({"Other", {{"C:\\del.exe"}}});
    run.DisallowedPrograms = m.DisallowedPrograms;
    EXPECT_EQ(run.RemoveDisallowed(started),
              (Lines{"C:\\x\\del.exe", "C:\\x\\del.exe", "cmd.exe /c del C:\\x.exe"}));
    EXPECT_EQ(ProgramLines(run.ProgramGroups[0]),
              (Lines{"| C:\\Dell\\run.exe |/del|0|", "|C:\\ok.exe||0|", "|||0|", "||/c format|0|",
                     "ExecuteReg|||0|Wipe"}));
    EXPECT_EQ(run.ProgramGroups[1].Programs[0].Path, "C:\\del.exe");
    EXPECT_EQ(ProgramModel().RemoveDisallowed(started), Lines{""});
    SetActiveCodePage(kDefaultCodePage);
}

TEST(ProgramModel, DelayQuestionsLookUpTheStartupGroup) {
    ProgramModel m;
    EXPECT_FALSE(m.AreUserDelays() || m.AreAllUserDelays());
    m.ProgramGroups.push_back({"Other", {{"C:\\x.exe", "", "ExecuteAU"}}});
    m.ProgramGroups.push_back({"Startup", {{}}});
    EXPECT_FALSE(m.AreUserDelays()); // only a free slot
    m.ProgramGroups[1].Programs.push_back({"C:\\a.exe", "", "ExecuteReg"});
    EXPECT_TRUE(m.AreUserDelays()); // index unknown: found by name
    EXPECT_FALSE(m.AreAllUserDelays());
    m.ProgramGroups[1].Programs.push_back({"C:\\b.exe", "", "ExecuteRegAU"});
    EXPECT_TRUE(m.AreAllUserDelays());
    m.StartupGroupIndex = 7; // stale index: a group without programs
    EXPECT_FALSE(m.AreUserDelays());
    EXPECT_EQ(m.StartupGroup(), nullptr);
}

} // namespace
} // namespace tolvane
