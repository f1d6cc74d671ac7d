// The group editor's rules, on the real file format: every change is written and read back.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

#include "config/program_group_file.h"
#include "support/test_support.h"
#include "text/text_tables.h"
#include "ui/group_editor/group_editor_model.h"

namespace tolvane {
namespace {

using Texts = std::vector<std::string>;

// The file as a string, written and read by the real writer and reader. A change is made, as
// the program's store makes it, on the file as it is now.
struct FileInMemory : GroupEditorFiles {
    explicit FileInMemory(ProgramModel& model) : model(model) {}
    void Write() {
        file = FormatProgramGroupFile(model, {{"English", "en"}});
        ++writes;
    }
    void Change(const std::function<void(ProgramModel&)>& change) override {
        LoadItems();
        change(model);
        Write();
    }
    void LoadItems() override {
        ASSERT_TRUE(ReadProgramGroupFile(file, model, ProgramGroupReadContext()).Ok);
    }
    bool FileExists(const std::string& path) override { return existing.count(path) != 0; }
    bool Holds(const std::string& text) const { return file.find(text) != std::string::npos; }

    ProgramModel& model;
    std::string file;
    int writes = 0;
    std::set<std::string> existing{"C:\\Tools\\Clock.exe", "C:\\Tools\\Other.exe"};
};

// "Startup" holds Tool.lnk; the editor shows the file as written.
class GroupEditorTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetDefaultModel(model);
        model.ProgramGroups[0].Programs = {{"Tool.lnk", "", "Execute", 2, ""}};
        files.Write();
        ASSERT_TRUE(editor.RefreshGroups());
        files.writes = 0;
    }
    // The first node of this text, in the tree's order.
    int NodeOf(const std::string& text) {
        for (size_t i = 0; i < editor.Tree.Count(); ++i)
            if (editor.Tree.Node(int(i)).Text == text)
                return int(i);
        ADD_FAILURE() << text;
        return TreeModel::kNone;
    }
    std::string Fields() {
        return editor.GroupName + "|" + editor.Path + "|" + editor.Parameters + "|" + editor.Delay;
    }
    void Type(const std::string& name) {
        editor.GroupName = name;
        editor.GroupNameChanged();
    }
    void TypePath(const std::string& path) {
        editor.Path = path;
        editor.PathChanged();
    }
    // The texts of a node's children.
    Texts Rows(int node) {
        Texts rows;
        for (int child : editor.Tree.Node(node).Children)
            rows.push_back(editor.Tree.Node(child).Text);
        return rows;
    }
    static std::string Reason(size_t entry) { return TextTables().Message(entry); }
    // The built-in texts with the explanation of a language file.
    static Texts Own() {
        Texts own = BuiltInGroupEditorTexts();
        own[kEditorExplanation] = "Groups hold programs.";
        return own;
    }

    ProgramModel model;
    FileInMemory files{model};
    test::CapturedMessages messages;
    GroupEditor editor{model, files, messages,
                       GroupEditorTexts{TextTables().Messages, "C:\\T\\Current User\\",
                                        "C:\\T\\All Users\\", Own()}};
};

TEST_F(GroupEditorTest, AProgramAddedToANewGroupIsWrittenAndShownByItsDelay) {
    Type("My Tools");
    editor.AddGroup();
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "My Tools"}));
    EXPECT_EQ(editor.Tree.Selected(), NodeOf("My Tools")); // a name typed next renames it

    // A program needs a path and a listed group, which the file's spelling names too.
    EXPECT_FALSE(editor.AddEnabled);
    TypePath("C:\\Tools\\Clock.exe");
    Type("Nowhere");
    EXPECT_FALSE(editor.AddEnabled);
    Type("My_Tools");
    EXPECT_TRUE(editor.AddEnabled);
    editor.Parameters = "-min";
    editor.Delay = "5";
    editor.Add();
    EXPECT_TRUE(files.Holds(
        "void My_Tools()\r\n{\r\n     Execute (\"C:\\Tools\\Clock.exe\", \"-min\", 5, \"\");"))
        << files.file;
    EXPECT_EQ(Fields(), "|||0");
    EXPECT_FALSE(editor.AddEnabled);
    EXPECT_EQ(editor.Tree.Selected(), TreeModel::kNone);

    // A group lists its programs in the order the log-on run starts them: by their delays. The
    // rows say what they are, and the group a program went into is open.
    Type("My Tools");
    TypePath("C:\\Tools\\Other.exe");
    editor.Add();
    EXPECT_EQ(test::Outline(editor.Tree),
              "Program Groups[Startup[Tool.lnk[Parameters:, Delay: 2]], My Tools["
              "C:\\Tools\\Other.exe[Parameters:, Delay: 0], "
              "C:\\Tools\\Clock.exe[Parameters: -min, Delay: 5]]]");
    EXPECT_TRUE(editor.Tree.Node(NodeOf("My Tools")).Expanded);

    // A group clicked after a program in edit mode holds nothing to edit: back to adding.
    editor.ClickTV(NodeOf("C:\\Tools\\Clock.exe"));
    editor.ChooseAddMode(false);
    editor.ClickTV(NodeOf("My Tools"));
    EXPECT_EQ(Fields(), "My Tools|||");
    EXPECT_TRUE(editor.AddMode);
    EXPECT_FALSE(editor.SelectedProgram);
}

TEST_F(GroupEditorTest, StartupKeepsItsNameAndNoOtherGroupTakesIt) {
    for (const char* name : {"Other", "My Tools"}) {
        Type(name);
        editor.AddGroup();
    }
    files.writes = 0;
    // The group clicked, the name typed, the message line's entry (0: no refusal, the
    // explanation shows), whether Add Group may be used; Edit Group never may. A group's own
    // name is no refusal; with nothing selected, a name that a new group cannot have is one.
    const std::tuple<const char*, const char*, size_t, bool> cases[] = {
        {"Startup", "Startup", 0, false}, {"Startup", "Kit", 31, true},
        {"Other", "STARTUP", 32, false},  {"Other", "My_Tools", 33, false},
        {"Other", "", 34, false},         {"Program Groups", "My_Tools", 33, false},
        {"Program Groups", "", 0, false}};
    for (auto [group, typed, reason, addGroup] : cases) {
        SCOPED_TRACE(std::string(group) + " to \"" + typed + "\"");
        editor.ClickTV(NodeOf(group));
        Type(typed);
        const std::string message = reason ? Reason(reason) : "Groups hold programs.";
        EXPECT_EQ(editor.RemoveEnabled, std::string(group) == "Other");
        EXPECT_FALSE(editor.EditGroupEnabled);
        EXPECT_EQ(editor.AddGroupEnabled, addGroup);
        EXPECT_EQ(editor.Message, message);
        // Asked all the same, the model renames nothing and writes nothing.
        editor.EditGroup();
        if (!addGroup)
            editor.AddGroup();
        EXPECT_EQ(editor.Message, message);
    }

    // Another Tolvane made a group since the editor read the file: a new group and a rename
    // are checked again on the file as it is now, refused there, and the group shows.
    editor.ClickTV(NodeOf("Other"));
    for (auto [name, rename] : {std::pair{"Kit", false}, {"Kat", true}}) {
        files.file.insert(files.file.find("void Other()"),
                          "void " + std::string(name) + "()\r\n{\r\n}\r\n");
        Type(name);
        EXPECT_TRUE(rename ? editor.EditGroupEnabled : editor.AddGroupEnabled) << name;
        rename ? editor.EditGroup() : editor.AddGroup();
        EXPECT_EQ(std::ranges::count(editor.GroupNames, std::string(name)), 1) << name;
        EXPECT_FALSE(editor.EditGroupEnabled);
        EXPECT_EQ(editor.Message, Reason(33));
    }
    EXPECT_EQ(files.writes, 0);
    EXPECT_TRUE(messages.shown.empty());

    // A name that is free renames the group; the file keeps "Startup" and its program.
    Type("Old Things");
    EXPECT_TRUE(editor.EditGroupEnabled);
    EXPECT_EQ(editor.Message, "Groups hold programs.");
    editor.EditGroup();
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "Kit", "Kat", "Old Things", "My Tools"}));
    EXPECT_TRUE(files.Holds("void Startup()\r\n{\r\n     Execute (\"Tool.lnk\", \"\", 2, \"\");"))
        << files.file;
    EXPECT_EQ(editor.SelectedGroupName, "Old Things");
    EXPECT_EQ(editor.Tree.Node(editor.Tree.Selected()).Text, "Old Things");
}

// Programs of one path, told apart by their records: a click fills the fields from the
// program's own, and edit mode changes that one only, once.
TEST_F(GroupEditorTest, EditModeChangesTheClickedProgramByItsRecord) {
    const GroupProgram a{"C:\\Tools\\Clock.exe", "-a", "ExecuteReg", 3, "ClockA"};
    const GroupProgram b{"C:\\Tools\\Clock.exe", "-b", "ExecuteReg", 3, "ClockB"};
    // The file names "Other" twice, as a hand-edited one may; the second holds b.
    files.Change([&](ProgramModel& file) {
        file.ProgramGroups[0].Programs.push_back(a);
        file.ProgramGroups[0].Programs.push_back(b);
        file.ProgramGroups.push_back({"Other", {}});
        file.ProgramGroups.push_back({"Other", {b}});
    });
    ASSERT_TRUE(editor.RefreshGroups());
    files.writes = 0;

    // The delay row fills all four fields from its program; a delay below 0 is refused.
    editor.ClickTV(editor.Tree.Node(NodeOf("Tool.lnk")).Children[1]);
    EXPECT_EQ(Fields(), "Startup|Tool.lnk||2");
    editor.Delay = "-1";
    editor.Add();
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text, Reason(7));

    // b is found by its record, in "Startup" only (after Tool.lnk and a), and changed in place:
    // open nodes stay open, and the program stays selected under its new record.
    const int nodeB = editor.FindProgramNode(b);
    EXPECT_EQ(nodeB, editor.Tree.Node(NodeOf("Startup")).Children.at(2));
    GroupProgram moved = b;
    moved.Delay = 4;
    EXPECT_EQ(editor.FindProgramNode(moved), TreeModel::kNone);
    editor.ClickTV(nodeB);
    EXPECT_EQ(Fields(), "Startup|C:\\Tools\\Clock.exe|-b|3");
    editor.Tree.Node(NodeOf("Startup")).Expanded = true;
    editor.Tree.Node(nodeB).Expanded = true;
    editor.Delay = "7";
    editor.Add();
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-a\", 3, \"ClockA\");"));
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 7, \"ClockB\");"));
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 3, \"ClockB\");"))
        << files.file; // the copy in "Other"
    EXPECT_EQ(Fields(), "Startup|C:\\Tools\\Clock.exe|-b|7");
    const int updated = editor.Tree.Selected();
    ASSERT_NE(updated, TreeModel::kNone);
    EXPECT_EQ(Rows(updated), (Texts{"Parameters: -b", "Delay: 7"}));
    EXPECT_TRUE(editor.Tree.Node(updated).Expanded);
    EXPECT_TRUE(editor.Tree.Node(NodeOf("Startup")).Expanded);
    EXPECT_FALSE(editor.Tree.Node(NodeOf("Other")).Expanded);
    // A second click adds no copy and changes nothing more.
    editor.Add();
    EXPECT_EQ(files.writes, 1);

    // a, removed by another copy meanwhile, has nothing left to update: the tree shows the file
    // as it is now, and nothing stays selected that edit mode no longer stands for.
    editor.ClickTV(editor.FindProgramNode(a));
    files.Change([&](ProgramModel& file) {
        std::erase_if(file.ProgramGroups[0].Programs, [&](auto& p) { return SameRecord(p, a); });
    });
    const std::string after = files.file;
    editor.Delay = "5";
    editor.Add();
    EXPECT_EQ(files.file, after);
    EXPECT_EQ(editor.FindProgramNode(a), TreeModel::kNone);
    EXPECT_EQ(editor.Tree.Selected(), TreeModel::kNone);
    EXPECT_FALSE(editor.SelectedProgram);
}

TEST_F(GroupEditorTest, BadInputIsRefusedAndRemovingAsksAndSparesStartup) {
    // "Startup" typed: edit mode only, and with no program of it clicked, nothing to edit.
    Type("Startup");
    editor.ChooseAddMode(true);
    EXPECT_FALSE(editor.AddMode);
    TypePath("C:\\Tools\\Clock.exe");
    editor.Parameters = "-x";
    editor.Add();
    EXPECT_EQ(Fields(), "Startup|||0");
    EXPECT_EQ(files.writes, 0);

    // "Other" comes first in the file and holds a program in a "Startup" folder.
    files.Change([](ProgramModel& file) {
        file.ProgramGroups.insert(file.ProgramGroups.begin(),
                                  {"Other", {{"C:\\Startup\\Late.exe", "", "Execute", 2, ""}}});
    });
    ASSERT_TRUE(editor.RefreshGroups());
    const std::string before = files.file;
    // A delay that is no number, then a file that is not there.
    const std::pair<const char*, size_t> refused[] = {{".", 7}, {"1.2.3", 7}, {"a", 7}, {"1", 5}};
    for (auto [delay, reason] : refused) {
        Type("Other");
        TypePath("C:\\Tools\\Missing.exe");
        editor.Delay = delay;
        editor.Add();
        ASSERT_FALSE(messages.shown.empty());
        EXPECT_EQ(messages.shown.back().Text, Reason(reason)) << delay;
    }
    EXPECT_TRUE(editor.AddModeEnabled); // "Startup" no longer typed
    EXPECT_EQ(files.file, before);
    TypePath("C:\\Tools\\Other.exe");
    editor.Add();
    EXPECT_TRUE(files.Holds("Execute (\"C:\\Tools\\Other.exe\", \"\", 1, \"\");")) << files.file;

    // The file dialog offers programs; cancelled, it empties the path.
    editor.Browse();
    EXPECT_EQ(editor.Path, "");
    EXPECT_EQ(messages.fileDialogs.back(), "Programs|*.exe;*.dll;*.lnk;*.com;*.bat;*.cmd|");
    // The delay box's keys: digits, a full stop and Backspace.
    std::string taken;
    for (int key = 1; key < 128; ++key)
        if (GroupEditor::DelayKeyAllowed(static_cast<char>(key)))
            taken += static_cast<char>(key);
    EXPECT_EQ(taken, "\b.0123456789");

    // Nothing of a group whose name holds "startup", nor a program whose path does, is removed:
    // not offered, and refused if asked.
    Type("My startup things");
    editor.AddGroup();
    editor.ClickTV(NodeOf("My startup things"));
    EXPECT_FALSE(editor.RemoveEnabled);
    editor.ClickTV(NodeOf("C:\\Startup\\Late.exe"));
    EXPECT_FALSE(editor.RemoveEnabled);
    for (auto [node, reason] : {std::pair{"Tool.lnk", 12}, {"Startup", 11}}) {
        editor.ClickTV(NodeOf(node));
        editor.Remove();
        EXPECT_EQ(messages.shown.back().Text, Reason(reason)) << node;
    }
    EXPECT_TRUE(files.Holds("Tool.lnk"));

    // A program of another group is removed; its group stays, named in the box.
    editor.ClickTV(NodeOf("C:\\Tools\\Other.exe"));
    EXPECT_TRUE(editor.RemoveEnabled);
    editor.Remove();
    EXPECT_FALSE(files.Holds("Other.exe"));
    EXPECT_EQ(Fields(), "Other|||0");
    EXPECT_FALSE(editor.RemoveEnabled);
    EXPECT_EQ(Rows(NodeOf("Other")), Texts{"C:\\Startup\\Late.exe"});

    // Removing a group asks first; "No" keeps it. Removed, it is gone from the name box and
    // the list.
    editor.ClickTV(NodeOf("Other"));
    messages.answer = kIdNo;
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Text, Reason(10));
    EXPECT_EQ(messages.shown.back().Style, unsigned(kMbYesNo | kMbIconQuestion | kMbDefButton2));
    EXPECT_TRUE(files.Holds("void Other()"));
    messages.answer = kIdYes;
    editor.Remove();
    EXPECT_FALSE(files.Holds("void Other()"));
    EXPECT_EQ(editor.GroupName, "");
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "My startup things"}));
    EXPECT_EQ(editor.Tree.Selected(), TreeModel::kNone);
}

} // namespace
} // namespace tolvane
