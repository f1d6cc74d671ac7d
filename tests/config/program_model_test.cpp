#include <gtest/gtest.h>

#include "config/program_model.h"
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

TEST(ProgramModel, GroupsAreAddedOnceWithBlanksStoredAsUnderscores) {
    ProgramModel m;
    m.ProgramGroups.push_back({"", {GroupProgram{}}});
    EXPECT_EQ(m.AddGroup("My Group"), 1);
    EXPECT_EQ(m.GetGroupID("My Group"), -1); // found by its stored name only
    EXPECT_EQ(m.AddGroup("My Group"), 1);    // exists: nothing added
    EXPECT_EQ(m.AddGroup("My_Group"), 1);
    EXPECT_EQ(GroupNames(m), (Lines{"", "My_Group"}));
    EXPECT_EQ(m.StartupGroupIndex, -1);
    EXPECT_EQ(m.AddGroup("Startup"), 2);
    EXPECT_EQ(m.StartupGroupIndex, 2);
    EXPECT_EQ(ProgramLines(m.ProgramGroups[2]), Lines{"|||0|"}); // one free slot

    EXPECT_FALSE(m.UpdateGroupName(-1, "x"));
    EXPECT_FALSE(m.UpdateGroupName(9, "x"));
    EXPECT_TRUE(m.UpdateGroupName(1, "Tools Two")); // as given, no conversion
    EXPECT_TRUE(m.UpdateGroupNameString("Tools Two", "T3"));
    EXPECT_FALSE(m.UpdateGroupNameString("nope", "T4"));
    EXPECT_EQ(GroupNames(m), (Lines{"", "T3", "Startup"}));
}

TEST(ProgramModel, ProgramsAreAddedAfterTheFreeSlotAndIntoALiveStartupGroup) {
    ProgramModel m;
    m.ProgramGroups.push_back({"Other", {GroupProgram{}}});
    m.AddProgramToGroup(-1, kExecute, "C:\\a.exe", "-x", 5, "");
    ASSERT_EQ(m.StartupGroupIndex, 1);
    EXPECT_EQ(ProgramLines(m.ProgramGroups[1]), (Lines{"|||0|", "Execute|C:\\a.exe|-x|5|"}));
    EXPECT_THROW(m.AddProgramToGroup(7, kExecute, "C:\\b.exe", "", 0, ""), ModelError);
    EXPECT_THROW(m.AddProgramToGroup(-2, kExecute, "C:\\b.exe", "", 0, ""), ModelError);

    // The "Startup" group was removed in the editor (a hole now) and the index still points
    // there: an item delayed meanwhile must land where the file keeps it.
    m.ProgramGroups.push_back({"Last", {GroupProgram{}}});
    m.RemoveProgramGroup(1);
    m.AddProgramToGroup(m.StartupGroupIndex, kExecuteReg, "C:\\c.exe", "", 0, "C");
    EXPECT_EQ(GroupNames(m), (Lines{"Other", "", "Last", "Startup"}));
    EXPECT_EQ(m.StartupGroupIndex, 3);
    EXPECT_EQ(ProgramLines(m.ProgramGroups[3]).back(), "ExecuteReg|C:\\c.exe||0|C");
    EXPECT_TRUE(m.ProgramGroups[1].Programs.empty());
}

TEST(ProgramModel, ProgramsAreFoundByPathWithOrWithoutParameters) {
    ProgramModel m = WithStartup({{}, {"C:\\a.exe", "-x"}, {"C:\\b.exe", ""}});
    EXPECT_EQ(m.GetProgramID("C:\\a.exe -x", "Startup"), 1);
    EXPECT_EQ(m.GetProgramID(" C:\\a.exe ", "Startup"), 1);
    EXPECT_EQ(m.GetProgramID("C:\\a.exe", "Nope"), -1);
    const std::pair<const char*, int> byIndex[] = {
        {"C:\\b.exe", 2}, {"C:\\b.exe ", 2}, {"C:\\a.exe -y", -1}};
    for (auto [program, id] : byIndex)
        EXPECT_EQ(m.GetProgramID(program, 0), id) << program;
    EXPECT_EQ(m.GetProgramID("C:\\a.exe", 5), -1);
    EXPECT_EQ(m.GetProgramID("C:\\a.exe", -1), -1);
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

TEST(ProgramModel, RemovingProgramsAndGroupsStaysInsideTheLists) {
    ProgramModel m = WithStartup({{"a"}, {"b"}, {"c"}});
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, -1));
    EXPECT_EQ(m.ProgramGroups[0].Programs.size(), 3u);
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, 1));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), (Lines{"|a||0|", "|c||0|"}));
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, 40)); // past the end: the last goes
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), Lines{"|a||0|"});
    EXPECT_TRUE(m.RemoveProgramFromGroup(0, 0)); // the only one: a free slot stays
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), Lines{"|||0|"});
    EXPECT_FALSE(m.RemoveProgramFromGroup(3, 0));
    EXPECT_FALSE(m.UpdateProgramInGroup(0, 4, "x", "", 0));
    EXPECT_FALSE(m.UpdateProgramInGroup(-1, 0, "x", "", 0));

    m.ProgramGroups.push_back({"B", {GroupProgram{"b"}}});
    m.ProgramGroups.push_back({"C", {GroupProgram{"c"}}});
    m.RemoveProgramGroup(1); // not the last: a hole keeps the others' indexes
    EXPECT_EQ(GroupNames(m), (Lines{"Startup", "", "C"}));
    EXPECT_TRUE(m.ProgramGroups[1].Programs.empty());
    EXPECT_EQ(m.GetGroupID("C"), 2);
    EXPECT_FALSE(m.RemoveProgramFromGroup(1, 0)); // a removed group has nothing to remove
    m.RemoveProgramGroup(2);                      // the last: the list shrinks
    EXPECT_EQ(m.ProgramGroups.size(), 2u);
    EXPECT_THROW(m.RemoveProgramGroup(5), ModelError);

    ProgramModel one = WithStartup({{}});
    EXPECT_THROW(one.RemoveProgramGroup(0), ModelError);
    EXPECT_EQ(one.ProgramGroups.size(), 1u); // the only group stays
}

TEST(ProgramModel, SortIsByDelayAndStable) {
    ProgramModel m = WithStartup(
        {{"d", "", "", 4}, {"c", "", "", 3}, {"b", "", "", 2}, {"a", "", "", 1}, {"e", "", "", 5}});
    m.ProgramGroups.push_back({"G", {{"x", "", "", 5}, {"y", "", "", 5}, {"z", "", "", 2}}});
    m.SortArray();
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]),
              (Lines{"|a||1|", "|b||2|", "|c||3|", "|d||4|", "|e||5|"}));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[1]), (Lines{"|z||2|", "|x||5|", "|y||5|"}));
}

TEST(ProgramModel, DisallowedWordsEmptyStartupProgramsInAnyLetterCase) {
    ProgramModel m = WithStartup({{" C:\\Model\\run.exe "},
                                  {"C:\\ok.exe"},
                                  {""},
                                  {"C:\\FORMAT\\del.exe"},
                                  {"C:\\Delete.bat"}});
    m.ProgramGroups.push_back({"Other", {{"C:\\del.exe"}}});
    m.DisallowedPrograms = {"", "format", "fdisk", "del", "rmdir", "mkdir", "delete"};
    // One line per matching word; an empty word matches nothing.
    EXPECT_EQ(m.RemoveDisallowed(),
              (Lines{"C:\\Model\\run.exe", "C:\\FORMAT\\del.exe", "C:\\FORMAT\\del.exe",
                     "C:\\Delete.bat", "C:\\Delete.bat"}));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[0]),
              (Lines{"|||0|", "|C:\\ok.exe||0|", "|||0|", "|||0|", "|||0|"}));
    EXPECT_EQ(m.ProgramGroups[1].Programs[0].Path, "C:\\del.exe"); // other groups untouched
    EXPECT_EQ(ProgramModel().RemoveDisallowed(), Lines{""});
}

TEST(ProgramModel, DelayQuestionsLookUpTheStartupGroup) {
    ProgramModel m;
    EXPECT_FALSE(m.AreUserDelays());
    EXPECT_FALSE(m.AreAllUserDelays());
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
