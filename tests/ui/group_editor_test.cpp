// The group editor's rules, on the real file format: every change is written and read back.
#include <gtest/gtest.h>

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

TEST_F(GroupEditorTest, AProgramAddedToANewGroupIsWrittenAndShown) {
    Type("My Tools");
    editor.AddGroup();
    EXPECT_TRUE(files.Holds("void My_Tools()"));
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "My Tools"}));
    EXPECT_EQ(editor.Tree.Selected(), NodeOf("My Tools")); // a name typed next renames it

    // The file's spelling is the same group: no second one, and a program typed for it goes
    // into it.
    editor.ClickTV(NodeOf("Program Groups"));
    EXPECT_EQ(editor.Message, Reason(33)); // the name in the box names a group already
    Type("My_Tools");
    EXPECT_EQ(editor.Message, Reason(33));
    editor.AddGroup();
    EXPECT_EQ(editor.Tree.Selected(), 0); // the tree built afresh keeps the root selected
    EXPECT_FALSE(editor.AddEnabled);      // no path yet
    TypePath("C:\\Tools\\Clock.exe");
    EXPECT_TRUE(editor.AddEnabled);
    Type("Nowhere");
    EXPECT_FALSE(editor.AddEnabled); // an unlisted group
    Type("My_Tools");
    editor.Parameters = "-min";
    editor.Delay = "5";
    editor.Add();
    EXPECT_TRUE(files.Holds(
        "void My_Tools()\r\n{\r\n     Execute (\"C:\\Tools\\Clock.exe\", \"-min\", 5, \"\");"))
        << files.file;
    EXPECT_EQ(Fields(), "|||0");
    EXPECT_FALSE(editor.AddEnabled);
    EXPECT_EQ(editor.Tree.Selected(), TreeModel::kNone);
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "My Tools"}));

    // Its rows say what they are; the group it went into is open.
    int program = NodeOf("C:\\Tools\\Clock.exe");
    EXPECT_EQ(editor.Tree.Node(program).Parent, NodeOf("My Tools"));
    EXPECT_EQ(Rows(program), (Texts{"Parameters: -min", "Delay: 5"}));
    EXPECT_EQ(Rows(NodeOf("Tool.lnk")), (Texts{"Parameters:", "Delay: 2"}));
    EXPECT_TRUE(editor.Tree.Node(0).Expanded);
    EXPECT_TRUE(editor.Tree.Node(NodeOf("My Tools")).Expanded);

    // A group lists its programs in the order the log-on run starts them: by their delays.
    Type("My Tools");
    TypePath("C:\\Tools\\Other.exe");
    editor.Delay = "0";
    editor.Add();
    EXPECT_EQ(Rows(NodeOf("My Tools")), (Texts{"C:\\Tools\\Other.exe", "C:\\Tools\\Clock.exe"}));

    // The rows' labels and the message line are the editor's texts as its language file gives
    // them.
    Texts german = Own();
    german[kEditorDelay] = "&Verz\xF6gerung";
    german[kEditorExplanation] = "Gruppen enthalten Programme.";
    editor.SetCaptions(german);
    EXPECT_EQ(editor.Message, "Gruppen enthalten Programme.");
    program = NodeOf("C:\\Tools\\Clock.exe");
    EXPECT_EQ(Rows(program), (Texts{"Parameters: -min", "Verz\xF6gerung: 5"}));

    // A group named like a row is a group all the same: fields come from records, and a group
    // clicked after a program in edit mode holds nothing to edit.
    Type("Parameters: -min");
    editor.AddGroup();
    editor.ClickTV(program);
    editor.ChooseAddMode(false);
    editor.ClickTV(editor.Tree.Node(0).Children.back());
    EXPECT_EQ(Fields(), "Parameters: -min|||");
    EXPECT_TRUE(editor.AddMode);
    EXPECT_FALSE(editor.SelectedProgram);
    EXPECT_TRUE(editor.RemoveEnabled);
}

TEST_F(GroupEditorTest, StartupKeepsItsNameAndNoOtherGroupTakesIt) {
    for (const char* name : {"Other", "My Tools"}) {
        Type(name);
        editor.AddGroup();
    }
    files.writes = 0;
    // The group clicked, the name typed, the message line's entry (0: no refusal, the
    // explanation shows), whether Add Group may be used. Edit Group never may. "Startup" is
    // never renamed, not even to nothing; no other group is renamed to "Startup" in any letter
    // case, to another group's name in either spelling, or to nothing; with nothing selected, a
    // name that a new group cannot have says so too.
    const std::tuple<const char*, const char*, size_t, bool> cases[] = {
        {"Startup", "Startup", 0, false}, {"Startup", "Kit", 31, true},
        {"Startup", "", 31, false},       {"Startup", "   ", 31, false},
        {"Other", "Startup", 32, false},  {"Other", "STARTUP", 32, false},
        {"Other", "My_Tools", 33, false}, {"Other", "My Tools", 33, false},
        {"Other", "", 34, false},         {"Program Groups", "startup", 32, false},
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
    EXPECT_EQ(files.writes, 0);

    // Another Tolvane made a group "Kit" since the editor read the file: the rename is checked
    // again on the file as it is now, and refused there, on the message line.
    editor.ClickTV(NodeOf("Other"));
    files.file.insert(files.file.find("void Other()"), "void Kit()\r\n{\r\n}\r\n");
    Type("Kit");
    EXPECT_TRUE(editor.EditGroupEnabled); // the editor did not know
    editor.EditGroup();
    EXPECT_EQ(files.writes, 0);
    EXPECT_FALSE(editor.EditGroupEnabled);
    EXPECT_EQ(editor.Message, Reason(33));
    EXPECT_EQ(editor.GroupNames, (Texts{"Startup", "Kit", "Other", "My Tools"}));
    EXPECT_TRUE(messages.shown.empty());

    // A name that is free renames the group; the file keeps "Startup" and its program.
    Type("Old Things");
    EXPECT_TRUE(editor.EditGroupEnabled);
    EXPECT_EQ(editor.Message, "Groups hold programs.");
    editor.EditGroup();
    EXPECT_TRUE(files.Holds("void Old_Things()"));
    EXPECT_FALSE(files.Holds("void Other()"));
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

    // The delay row fills all four fields from its program, which is changed in place, though
    // not to a delay below 0.
    editor.ClickTV(editor.Tree.Node(NodeOf("Tool.lnk")).Children[1]);
    EXPECT_EQ(Fields(), "Startup|Tool.lnk||2");
    EXPECT_FALSE(editor.RemoveEnabled);
    editor.Delay = "-1";
    editor.Add();
    EXPECT_EQ(messages.shown.back().Text, Reason(7));
    EXPECT_EQ(files.writes, 0);
    editor.Delay = "0";
    editor.Parameters = "-min";
    editor.Add();
    EXPECT_TRUE(files.Holds("Execute (\"Tool.lnk\", \"-min\", 0, \"\");"));

    const int nodeB = editor.FindProgramNode(b);
    ASSERT_NE(nodeB, TreeModel::kNone);
    EXPECT_NE(nodeB, editor.FindProgramNode(a));
    EXPECT_EQ(editor.Tree.Node(editor.Tree.Node(nodeB).Parent).Text, "Startup");
    GroupProgram moved = b;
    moved.Delay = 4;
    EXPECT_EQ(editor.FindProgramNode(moved), TreeModel::kNone);
    editor.ClickTV(nodeB);
    EXPECT_EQ(Fields(), "Startup|C:\\Tools\\Clock.exe|-b|3");

    // Open nodes stay open, and the changed program stays selected under its new record.
    editor.Tree.Node(NodeOf("Startup")).Expanded = true;
    editor.Tree.Node(nodeB).Expanded = true;
    editor.Delay = "7";
    editor.Add();
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-a\", 3, \"ClockA\");"));
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 7, \"ClockB\");"));
    EXPECT_TRUE(files.Holds("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 3, \"ClockB\");"))
        << files.file; // the copy in "Other"
    EXPECT_EQ(files.writes, 2);
    EXPECT_EQ(Fields(), "Startup|C:\\Tools\\Clock.exe|-b|7");
    const int updated = editor.Tree.Selected();
    ASSERT_NE(updated, TreeModel::kNone);
    EXPECT_EQ(Rows(updated), (Texts{"Parameters: -b", "Delay: 7"}));
    EXPECT_TRUE(editor.Tree.Node(updated).Expanded);
    EXPECT_TRUE(editor.Tree.Node(NodeOf("Startup")).Expanded);
    EXPECT_FALSE(editor.Tree.Node(NodeOf("Other")).Expanded);

    // A second click adds no copy and changes nothing more.
    std::string after = files.file;
    editor.Add();
    EXPECT_EQ(files.file, after);
    EXPECT_EQ(files.writes, 2);

    // a, removed by another copy meanwhile, has nothing left to update: the tree shows the file
    // as it is now.
    editor.ClickTV(editor.FindProgramNode(a));
    files.Change([&](ProgramModel& file) {
        std::erase_if(file.ProgramGroups[0].Programs, [&](auto& p) { return SameRecord(p, a); });
    });
    after = files.file;
    editor.Delay = "5";
    editor.Add();
    EXPECT_EQ(files.file, after);
    EXPECT_EQ(editor.FindProgramNode(a), TreeModel::kNone);

    // b of the second "Other" is not found by its group's name: nothing changes, and nothing
    // stays selected that edit mode no longer stands for.
    editor.ClickTV(editor.Tree.Node(editor.Tree.Node(0).Children[2]).Children[0]);
    editor.ChooseAddMode(false);
    editor.Delay = "9";
    editor.Add();
    EXPECT_EQ(files.file, after);
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

    // "Other" comes first in the file and holds Other.exe and a program in a "Startup" folder.
    files.Change([](ProgramModel& file) {
        file.ProgramGroups.insert(file.ProgramGroups.begin(),
                                  {"Other",
                                   {{"C:\\Tools\\Other.exe", "", "Execute", 1, ""},
                                    {"C:\\Startup\\Late.exe", "", "Execute", 2, ""}}});
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

    // A cancelled file dialog empties the path.
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
    editor.ClickTV(NodeOf("Tool.lnk"));
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Text, Reason(12));
    EXPECT_TRUE(files.Holds("Tool.lnk"));

    // A program of another group is removed; its group stays, named in the box.
    editor.ClickTV(NodeOf("C:\\Tools\\Other.exe"));
    EXPECT_TRUE(editor.RemoveEnabled);
    editor.Remove();
    EXPECT_FALSE(files.Holds("Other.exe"));
    EXPECT_EQ(Fields(), "Other|||0");
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
