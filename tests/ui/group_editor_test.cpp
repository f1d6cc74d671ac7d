// The group editor's rules, on the real file format: every change is written and read back.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "config/program_group_file.h"
#include "support/test_support.h"
#include "text/strings.h"
#include "text/text_tables.h"
#include "ui/group_editor/group_editor_model.h"

namespace tolvane {
namespace {

// The file as a string, written and read by the real writer and reader. A change is made, as
// the program's store makes it, on the file as it is now; a change that throws writes nothing.
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

    ProgramModel& model;
    std::string file;
    int writes = 0;
    std::set<std::string> existing{"C:\\Tools\\Clock.exe", "C:\\Tools\\Other.exe"};
};

class GroupEditorTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetDefaultModel(model);
        model.ProgramGroups[0].Programs = {{"Tool.lnk", "", "Execute", 2, ""}};
        files.Write();
        ASSERT_TRUE(editor.RefreshGroups());
        files.writes = 0;
    }
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
    void TypeGroupName(const std::string& name) {
        editor.GroupName = name;
        editor.GroupNameChanged();
    }
    // The texts of a node's children.
    std::vector<std::string> Rows(int node) {
        std::vector<std::string> rows;
        for (int child : editor.Tree.Node(node).Children)
            rows.push_back(editor.Tree.Node(child).Text);
        return rows;
    }
    static std::string Reason(size_t entry) { return TextTables().Message(entry); }
    // The editor's built-in texts with the explanation of a language file.
    static std::vector<std::string> Own(std::string explanation) {
        std::vector<std::string> own = BuiltInGroupEditorTexts();
        own[kEditorExplanation] = std::move(explanation);
        return own;
    }

    ProgramModel model;
    FileInMemory files{model};
    test::CapturedMessages messages;
    GroupEditor editor{model, files, messages,
                       GroupEditorTexts{TextTables().Messages, "C:\\T\\Current User\\",
                                        "C:\\T\\All Users\\", Own("Groups hold programs.")}};
};

TEST_F(GroupEditorTest, AProgramAddedToANewGroupIsWrittenAndShown) {
    EXPECT_EQ(editor.Message, "Groups hold programs.");
    TypeGroupName("My Tools");
    EXPECT_TRUE(editor.AddGroupEnabled);
    EXPECT_FALSE(editor.AddEnabled); // an unlisted group
    editor.AddGroup();
    EXPECT_NE(files.file.find("void My_Tools()"), std::string::npos);
    EXPECT_EQ(editor.GroupNames, (std::vector<std::string>{"Startup", "My Tools"}));
    EXPECT_FALSE(editor.AddGroupEnabled);               // the name is taken now
    EXPECT_EQ(editor.Message, "Groups hold programs."); // it is the selected group's own

    // The file's spelling is the same group: no second one, and a program typed for it goes
    // into it.
    editor.Tree.Node(NodeOf("Startup")).Expanded = true;
    editor.ClickTV(NodeOf("Program Groups"));
    TypeGroupName("My_Tools");
    EXPECT_FALSE(editor.AddGroupEnabled);
    EXPECT_EQ(editor.Message, Reason(33));
    editor.AddGroup();
    EXPECT_EQ(files.writes, 1);
    EXPECT_FALSE(editor.AddEnabled); // no path yet
    editor.Path = "C:\\Tools\\Clock.exe";
    editor.PathChanged();
    EXPECT_TRUE(editor.AddEnabled);
    editor.Parameters = "-min";
    editor.Delay = "5";
    editor.Add();
    EXPECT_NE(
        files.file.find(
            "void My_Tools()\r\n{\r\n     Execute (\"C:\\Tools\\Clock.exe\", \"-min\", 5, \"\");"),
        std::string::npos)
        << files.file;
    EXPECT_EQ(Fields(), "|||0");
    EXPECT_EQ(editor.GroupNames, (std::vector<std::string>{"Startup", "My Tools"}));

    // Its rows say what they are; the group it went into is open, and so is the one that was.
    const int program = NodeOf("C:\\Tools\\Clock.exe");
    EXPECT_EQ(editor.Tree.Node(program).Parent, NodeOf("My Tools"));
    EXPECT_EQ(Rows(program), (std::vector<std::string>{"Parameters: -min", "Delay: 5"}));
    EXPECT_EQ(Rows(NodeOf("Tool.lnk")), (std::vector<std::string>{"Parameters:", "Delay: 2"}));
    EXPECT_TRUE(editor.Tree.Node(NodeOf("My Tools")).Expanded);
    EXPECT_TRUE(editor.Tree.Node(NodeOf("Startup")).Expanded);
    EXPECT_FALSE(editor.Tree.Node(program).Expanded);

    // A group lists its programs in the order the log-on run starts them: by their delays.
    TypeGroupName("My Tools");
    editor.Path = "C:\\Tools\\Other.exe";
    editor.PathChanged();
    editor.Delay = "1";
    editor.Add();
    EXPECT_EQ(Rows(NodeOf("My Tools")),
              (std::vector<std::string>{"C:\\Tools\\Other.exe", "C:\\Tools\\Clock.exe"}));

    // The labels and the tree's top are the editor's texts as its language file gives them.
    std::vector<std::string> german = Own("");
    german[kEditorParameters] = "Para&meter";
    german[kEditorDelay] = "&Verz\xF6gerung";
    german[kEditorTitle] = "Programmgruppen";
    editor.SetCaptions(german);
    EXPECT_EQ(editor.Tree.Node(0).Text, "Programmgruppen");
    EXPECT_EQ(Rows(NodeOf("C:\\Tools\\Clock.exe")),
              (std::vector<std::string>{"Parameter: -min", "Verz\xF6gerung: 5"}));

    // A group named like a row is a group all the same: fields come from records.
    TypeGroupName("Parameters: -min");
    editor.AddGroup();
    editor.ClickTV(NodeOf("Parameters: -min"));
    EXPECT_EQ(Fields(), "Parameters: -min|||");
    EXPECT_TRUE(editor.RemoveEnabled);
}

TEST_F(GroupEditorTest, StartupKeepsItsNameAndNoOtherGroupTakesIt) {
    for (const char* name : {"Other", "My Tools"}) {
        TypeGroupName(name);
        editor.AddGroup();
    }
    const std::string before = files.file;
    files.writes = 0;
    auto refused = [&](const std::string& typed, size_t reason, bool addGroup) {
        TypeGroupName(typed);
        EXPECT_FALSE(editor.EditGroupEnabled) << typed;
        EXPECT_EQ(editor.AddGroupEnabled, addGroup) << typed;
        EXPECT_EQ(editor.Message, Reason(reason)) << typed;
        // Asked all the same, the model renames nothing and writes nothing.
        editor.EditGroup();
        if (!addGroup)
            editor.AddGroup();
        EXPECT_EQ(files.file, before) << typed;
        EXPECT_EQ(editor.Message, Reason(reason)) << typed;
    };

    // "Startup" is never renamed: not to another name, not to an empty one.
    editor.ClickTV(NodeOf("Startup"));
    EXPECT_EQ(editor.Message, "Groups hold programs.");
    refused("Kit", 31, true);
    EXPECT_EQ(files.writes, 0);
    refused("", 31, false);
    refused("   ", 31, false);

    // No other group is renamed to "Startup" in any letter case, to the name of another
    // group in either spelling, or to nothing.
    editor.ClickTV(NodeOf("Other"));
    refused("Startup", 32, false);
    refused("startup", 32, false);
    refused("STARTUP", 32, false);
    refused("My_Tools", 33, false);
    refused("My Tools", 33, false);
    refused("", 34, false);
    EXPECT_EQ(files.writes, 0);

    // With nothing selected, a name that a new group cannot have says so too.
    editor.ClickTV(NodeOf("Program Groups"));
    TypeGroupName("startup");
    EXPECT_FALSE(editor.AddGroupEnabled);
    EXPECT_EQ(editor.Message, Reason(32));
    TypeGroupName("");
    EXPECT_EQ(editor.Message, "Groups hold programs.");

    // Another Tolvane made a group "Kit" since the editor read the file: the rename is checked
    // again on the file as it is now, and refused there.
    editor.ClickTV(NodeOf("Other"));
    files.file.insert(files.file.find("void Other()"), "void Kit()\r\n{\r\n}\r\n");
    const std::string withKit = files.file;
    TypeGroupName("Kit");
    EXPECT_TRUE(editor.EditGroupEnabled); // the editor did not know
    editor.EditGroup();
    EXPECT_EQ(files.file, withKit);
    EXPECT_EQ(files.writes, 0);
    EXPECT_FALSE(editor.EditGroupEnabled);
    EXPECT_EQ(editor.Message, Reason(33));
    EXPECT_EQ(editor.GroupNames, (std::vector<std::string>{"Startup", "Kit", "Other", "My Tools"}));
    EXPECT_TRUE(messages.shown.empty()); // the message line says it: no box

    // A name that is free renames the group; the file keeps "Startup" and its program.
    TypeGroupName("Old Things");
    EXPECT_TRUE(editor.EditGroupEnabled);
    EXPECT_EQ(editor.Message, "Groups hold programs.");
    editor.EditGroup();
    EXPECT_NE(files.file.find("void Old_Things()"), std::string::npos);
    EXPECT_EQ(files.file.find("void Other()"), std::string::npos);
    EXPECT_NE(files.file.find("void Startup()\r\n{\r\n     Execute (\"Tool.lnk\", \"\", 2, \"\");"),
              std::string::npos)
        << files.file;
    EXPECT_EQ(editor.SelectedGroupName, "Old Things");
    EXPECT_EQ(editor.Tree.Node(editor.Tree.Selected()).Text, "Old Things");
}

TEST_F(GroupEditorTest, ClicksFillTheFieldsAndStartupIsProtected) {
    // The delay node fills all four fields from its program.
    const int program = NodeOf("Tool.lnk");
    editor.ClickTV(editor.Tree.Node(program).Children[1]);
    EXPECT_EQ(Fields(), "Startup|Tool.lnk||2");
    EXPECT_FALSE(editor.RemoveEnabled);
    EXPECT_FALSE(editor.AddModeEnabled); // "Startup" forces edit mode
    EXPECT_FALSE(editor.AddMode);

    // Edit mode changes the selected program in place.
    editor.Delay = "1.5";
    editor.Parameters = "-min";
    editor.Add();
    EXPECT_NE(files.file.find("Execute (\"Tool.lnk\", \"-min\", 1.5, \"\");"), std::string::npos);

    // Removing below any group whose name holds "startup" is not offered; asked anyway, it is
    // refused with a message.
    TypeGroupName("My startup things");
    editor.AddGroup();
    editor.ClickTV(NodeOf("My startup things"));
    EXPECT_FALSE(editor.RemoveEnabled);
    editor.ClickTV(NodeOf("Tool.lnk"));
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Title, "Tolvane");
    EXPECT_NE(files.file.find("Tool.lnk"), std::string::npos);
}

// Programs of one path, told apart by their records: Properties opens on the item's own, and
// Update changes that one only, once.
TEST_F(GroupEditorTest, ProgramsOfOnePathAreFoundAndUpdatedByTheirRecords) {
    const GroupProgram a{"C:\\Tools\\Clock.exe", "-a", "ExecuteReg", 3, "ClockA"};
    const GroupProgram b{"C:\\Tools\\Clock.exe", "-b", "ExecuteReg", 3, "ClockB"};
    files.Change([&](ProgramModel& file) {
        file.ProgramGroups[0].Programs.push_back(a);
        file.ProgramGroups[0].Programs.push_back(b);
        file.ProgramGroups.push_back({"Other", {b}});
    });
    ASSERT_TRUE(editor.RefreshGroups());
    files.writes = 0;

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
    const std::string lineA = "ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-a\", 3, \"ClockA\");";
    EXPECT_NE(files.file.find(lineA), std::string::npos) << files.file;
    EXPECT_NE(files.file.find("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 7, \"ClockB\");"),
              std::string::npos);
    EXPECT_NE(files.file.find("ExecuteReg (\"C:\\Tools\\Clock.exe\", \"-b\", 3, \"ClockB\");"),
              std::string::npos); // the copy in "Other"
    EXPECT_EQ(files.writes, 1);
    EXPECT_EQ(Fields(), "Startup|C:\\Tools\\Clock.exe|-b|7");
    EXPECT_FALSE(editor.AddMode);
    const int updated = editor.Tree.Selected();
    ASSERT_NE(updated, TreeModel::kNone);
    EXPECT_EQ(Rows(updated), (std::vector<std::string>{"Parameters: -b", "Delay: 7"}));
    EXPECT_TRUE(editor.Tree.Node(updated).Expanded);
    EXPECT_TRUE(editor.Tree.Node(NodeOf("Startup")).Expanded);
    EXPECT_FALSE(editor.Tree.Node(NodeOf("Other")).Expanded);

    // A second click adds no copy and changes nothing more.
    const std::string after = files.file;
    editor.Add();
    EXPECT_EQ(files.file, after);
    EXPECT_EQ(files.writes, 1);
    EXPECT_EQ(editor.Tree.Node(NodeOf("Startup")).Children.size(), 3u);
}

TEST_F(GroupEditorTest, BadInputIsRefusedWithAMessageAndNothingChanges) {
    TypeGroupName("Startup");
    editor.ChooseAddMode(true);
    EXPECT_FALSE(editor.AddMode); // "Startup" typed: edit mode only

    TypeGroupName("Other");
    editor.AddGroup();
    files.writes = 0;
    auto add = [&](const std::string& path, const std::string& delay) {
        TypeGroupName("Other");
        editor.Path = path;
        editor.Delay = delay;
        editor.Add();
        return messages.shown.empty() ? std::string() : messages.shown.back().Text;
    };
    for (const char* delay : {".", "1.2.3", "a"})
        EXPECT_EQ(add("C:\\Tools\\Other.exe", delay), Reason(7)) << delay;
    EXPECT_EQ(add("C:\\Tools\\Missing.exe", "1"), Reason(5));
    EXPECT_EQ(files.writes, 0);

    // A cancelled file dialog empties the path.
    editor.Path = "C:\\x.exe";
    editor.Browse();
    EXPECT_EQ(editor.Path, "");
    EXPECT_EQ(messages.fileDialogs.back(), "Programs|*.exe;*.dll;*.lnk;*.com;*.bat;*.cmd|");

    // The delay box's keys: "a" is dropped; "1", "." and "5" make "1.5".
    std::string box;
    for (char key : std::string("1a.5"))
        if (GroupEditor::DelayKeyAllowed(key))
            box += key;
    EXPECT_EQ(box, "1.5");
    EXPECT_TRUE(GroupEditor::DelayKeyAllowed('\b'));

    // Removing a group asks first; "No" keeps it. Removed, it is gone from the name box and
    // the list, and the open "Startup" group stays open.
    editor.Tree.Node(NodeOf("Startup")).Expanded = true;
    editor.ClickTV(NodeOf("Other"));
    messages.answer = kIdNo;
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Style, unsigned(kMbYesNo | kMbIconQuestion | kMbDefButton2));
    EXPECT_NE(files.file.find("void Other()"), std::string::npos);
    messages.answer = kIdYes;
    editor.Remove();
    EXPECT_EQ(files.file.find("void Other()"), std::string::npos);
    EXPECT_EQ(editor.GroupName, "");
    EXPECT_EQ(editor.GroupNames, std::vector<std::string>{"Startup"});
    EXPECT_TRUE(editor.Tree.Node(NodeOf("Startup")).Expanded);
    EXPECT_EQ(editor.Tree.Selected(), TreeModel::kNone);
}

} // namespace
} // namespace tolvane
