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
// the program's store makes it, on the file as it is now.
struct FileInMemory : GroupEditorFiles {
    explicit FileInMemory(ProgramModel& model) : model(model) {}
    void Write() {
        file = FormatProgramGroupFile(model, {{"English", "en"}});
        ++writes;
    }
    void Change(const std::function<void(ProgramModel&)>& change) override {
        Read(nullptr);
        change(model);
        Write();
    }
    void LoadItems(TreeModel& tree) override { Read(&tree); }
    void Read(TreeModel* tree) {
        ProgramGroupReadContext context;
        context.Tree = tree;
        ASSERT_TRUE(ReadProgramGroupFile(file, model, context).Ok);
        model.SortArray();
        model.StartupGroupIndex = model.GetGroupID("Startup");
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

    ProgramModel model;
    FileInMemory files{model};
    test::CapturedMessages messages;
    GroupEditor editor{
        model, files, messages,
        GroupEditorTexts{TextTables().Messages, "C:\\T\\Current User\\", "C:\\T\\All Users\\"}};
};

TEST_F(GroupEditorTest, AProgramAddedToANewGroupIsWrittenAndShown) {
    editor.GroupName = "My Tools";
    editor.GroupNameChanged();
    EXPECT_TRUE(editor.AddGroupEnabled);
    EXPECT_FALSE(editor.AddEnabled); // an unlisted group
    editor.AddGroup();
    EXPECT_NE(files.file.find("void My_Tools()"), std::string::npos);
    EXPECT_EQ(editor.GroupNames, (std::vector<std::string>{"Startup", "My Tools"}));
    EXPECT_FALSE(editor.AddGroupEnabled); // the name is taken now

    // Add stays off until a path is typed.
    editor.GroupNameChanged();
    EXPECT_FALSE(editor.AddEnabled);
    editor.Path = "C:\\Tools\\Clock.exe";
    editor.PathChanged();
    EXPECT_TRUE(editor.AddEnabled);
    editor.Delay = "5";
    editor.Add();
    EXPECT_NE(
        files.file.find(
            "void My_Tools()\r\n{\r\n     Execute (\"C:\\Tools\\Clock.exe\", \"\", 5, \"\");"),
        std::string::npos)
        << files.file;
    EXPECT_EQ(Fields(), "|||0");
    EXPECT_EQ(editor.Tree.Node(NodeOf("C:\\Tools\\Clock.exe")).Parent, NodeOf("My Tools"));

    // A group named like a kind of node is a group all the same.
    editor.GroupName = "Path Delay";
    editor.AddGroup();
    editor.ClickTV(NodeOf("Path Delay"));
    EXPECT_EQ(Fields(), "Path Delay|||");
    EXPECT_TRUE(editor.RemoveEnabled);
}

TEST_F(GroupEditorTest, ClicksFillTheFieldsAndStartupIsProtected) {
    // The delay node fills all four fields from its program.
    const int program = NodeOf("Tool.lnk");
    editor.ClickTV(editor.Tree.Node(program).Children[1]);
    EXPECT_EQ(Fields(), "Startup|Tool.lnk||2");
    EXPECT_FALSE(editor.RemoveEnabled);
    EXPECT_FALSE(editor.AddModeEnabled); // "Startup" forces edit mode
    EXPECT_FALSE(editor.AddMode);
    EXPECT_EQ(editor.FindProgramNode("TOOL.LNK and more"), program);
    EXPECT_EQ(editor.FindProgramNode("Other.lnk"), TreeModel::kNone);

    // Edit mode changes the selected program in place.
    editor.Delay = "1.5";
    editor.Parameters = "-min";
    editor.Add();
    EXPECT_NE(files.file.find("Execute (\"Tool.lnk\", \"-min\", 1.5, \"\");"), std::string::npos);

    // Removing below any group whose name holds "startup" is not offered; asked anyway, it is
    // refused with a message.
    editor.GroupName = "My startup things";
    editor.AddGroup();
    editor.ClickTV(NodeOf("My startup things"));
    EXPECT_FALSE(editor.RemoveEnabled);
    editor.ClickTV(NodeOf("Tool.lnk"));
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Title, "Tolvane");
    EXPECT_NE(files.file.find("Tool.lnk"), std::string::npos);
}

TEST_F(GroupEditorTest, BadInputIsRefusedWithAMessageAndNothingChanges) {
    editor.GroupName = "Startup";
    editor.GroupNameChanged();
    editor.ChooseAddMode(true);
    EXPECT_FALSE(editor.AddMode); // "Startup" typed: edit mode only

    editor.GroupName = "Other";
    editor.AddGroup();
    files.writes = 0;
    auto add = [&](const std::string& path, const std::string& delay) {
        editor.GroupName = "Other";
        editor.GroupNameChanged();
        editor.Path = path;
        editor.Delay = delay;
        editor.Add();
        return messages.shown.empty() ? std::string() : messages.shown.back().Title;
    };
    for (const char* delay : {".", "1.2.3", "a"})
        EXPECT_EQ(add("C:\\Tools\\Other.exe", delay), "Tolvane") << delay;
    EXPECT_EQ(add("C:\\Tools\\Missing.exe", "1"), "Tolvane - File not Found");
    EXPECT_EQ(files.writes, 0);

    // A cancelled file dialog empties the path.
    editor.Path = "C:\\x.exe";
    editor.Browse();
    EXPECT_EQ(editor.Path, "");
    EXPECT_EQ(messages.fileDialogs.back(), "Executables|*.exe;*.dll;*.lnk;*.com;*.bat;*.cmd|");

    // The delay box's keys: "a" is dropped; "1", "." and "5" make "1.5".
    std::string box;
    for (char key : std::string("1a.5"))
        if (GroupEditor::DelayKeyAllowed(key))
            box += key;
    EXPECT_EQ(box, "1.5");
    EXPECT_TRUE(GroupEditor::DelayKeyAllowed('\b'));

    // Removing a group asks first; "No" keeps it.
    editor.ClickTV(NodeOf("Other"));
    messages.answer = kIdNo;
    editor.Remove();
    EXPECT_EQ(messages.shown.back().Style, unsigned(kMbYesNo | kMbIconQuestion | kMbDefButton2));
    EXPECT_NE(files.file.find("void Other()"), std::string::npos);
    messages.answer = kIdYes;
    editor.Remove();
    EXPECT_EQ(files.file.find("void Other()"), std::string::npos);
}

} // namespace
} // namespace tolvane
