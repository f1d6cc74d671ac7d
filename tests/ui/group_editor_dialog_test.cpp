// The real group editor dialog, modeless in this process so that the test can type and click
// into it: what proggroup.c holds after each step is what the editor's model says.
#include <windows.h>
#include <commctrl.h>

#include "config/program_group_store.h"
#include "items/startup_fixture.h"
#include "platform/message_pump.h"
#include "ui/group_editor/group_editor_dialog.h"
#include "ui/group_editor/group_editor_ids.h"

namespace tolvane {
namespace {

class GroupEditorDialogTest : public test::StartupFixture {
protected:
    void SetUp() override {
        StartupFixture::SetUp();
        test::WriteFileBytes(folder / "Clock.exe", "MZ");
        ASSERT_TRUE(dialog.ShowModeless(GetModuleHandleA(nullptr), nullptr));
        hwnd = dialog.Hwnd();
        SetForegroundWindow(hwnd);
        Pump();
    }
    static void Pump(int rounds = 20) {
        for (int i = 0; i < rounds; ++i, Sleep(10))
            YieldToMessageLoop();
    }
    std::string File() {
        return test::ReadFileBytes(folder / (WindowsUserName() + "\\proggroup.c"));
    }
    void Click(int control) {
        RECT r{};
        GetWindowRect(GetDlgItem(hwnd, control), &r);
        test::Click({(r.left + r.right) / 2, (r.top + r.bottom) / 2});
        Pump();
    }
    // Types a lower-case name into a box, replacing what it held.
    void TypeInto(int control, std::initializer_list<unsigned short> keys) {
        HWND box = GetDlgItem(hwnd, control);
        SetFocus(box);
        SendMessageA(box, control == IDC_GE_GROUP ? CB_SETEDITSEL : EM_SETSEL, 0,
                     control == IDC_GE_GROUP ? MAKELPARAM(0, -1) : -1);
        Pump(2);
        test::Type(keys);
        Pump();
    }
    int NodeOf(const std::string& text) {
        const TreeModel& tree = dialog.Model().Tree;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (tree.Node(int(i)).Text == text)
                return int(i);
        ADD_FAILURE() << text;
        return TreeModel::kNone;
    }
    void SelectNode(const std::string& text) {
        TreeView_SelectItem(dialog.TreeView()->Hwnd(), dialog.TreeView()->ItemOf(NodeOf(text)));
        Pump();
    }
    // A node as the control shows it: its text, and whether it is open.
    std::string ItemText(int node) {
        char text[MAX_PATH] = {};
        TVITEMA item{};
        item.mask = TVIF_TEXT;
        item.hItem = dialog.TreeView()->ItemOf(node);
        item.pszText = text;
        item.cchTextMax = sizeof text;
        return item.hItem && TreeView_GetItem(dialog.TreeView()->Hwnd(), &item) ? text : "(none)";
    }
    bool ItemOpen(int node) {
        HTREEITEM item = dialog.TreeView()->ItemOf(node);
        return item && (TreeView_GetItemState(dialog.TreeView()->Hwnd(), item, TVIS_EXPANDED) &
                        TVIS_EXPANDED) != 0;
    }
    std::string ControlText(HWND window, int control) {
        char text[1024] = {};
        GetDlgItemTextA(window, control, text, sizeof text);
        return text;
    }
    bool Enabled(int control) { return IsWindowEnabled(GetDlgItem(hwnd, control)); }

    GroupEditorDialog dialog{app.Store(), app.text, app.messages, app.log};
    HWND hwnd = nullptr;
};

TEST_F(GroupEditorDialogTest, AddRenameAndRemoveAGroupWithItsProgram) {
    char caption[64] = {};
    GetWindowTextA(GetDlgItem(hwnd, IDC_GE_ADD), caption, sizeof caption);
    EXPECT_STREQ(caption, "&Add");
    EXPECT_TRUE(Enabled(IDC_GE_ADD_NEW));

    // A new group, typed and added.
    TypeInto(IDC_GE_GROUP, {'T', 'O', 'O', 'L', 'S'});
    EXPECT_TRUE(Enabled(IDC_GE_ADD_GROUP));
    Click(IDC_GE_ADD_GROUP);
    EXPECT_NE(File().find("void tools()"), std::string::npos) << File();
    EXPECT_FALSE(Enabled(IDC_GE_ADD_GROUP));

    // A program for it: the path from the file dialog, a delay typed ("a" is dropped).
    messages.chosenFile = folder / "Clock.exe";
    Click(IDC_GE_BROWSE);
    EXPECT_TRUE(Enabled(IDC_GE_ADD));
    TypeInto(IDC_GE_DELAY, {'5', 'A'});
    Click(IDC_GE_ADD);
    EXPECT_NE(File().find("void tools()\r\n{\r\n     Execute (\"" + folder / "Clock.exe" +
                          "\", \"\", 5, \"\");"),
              std::string::npos)
        << File();
    EXPECT_EQ(dialog.Model().Tree.Count(), 6u); // root, two groups, the program's three nodes

    // It shows in its group, which opened; opened too, its rows say what they are.
    const int program = NodeOf(folder / "Clock.exe");
    EXPECT_TRUE(ItemOpen(NodeOf("tools")));
    TreeView_Expand(dialog.TreeView()->Hwnd(), dialog.TreeView()->ItemOf(program), TVE_EXPAND);
    Pump(2);
    const std::vector<int> rows = dialog.Model().Tree.Node(program).Children;
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(ItemText(rows[0]), "Parameters:");
    EXPECT_EQ(ItemText(rows[1]), "Delay: 5");

    // Opened on a delayed item of the main window (its Properties), the editor shows that
    // item's program, selected inside its closed group: not another of the same path.
    {
        const GroupProgram first{folder / "Clock.exe", "-a", "ExecuteReg", 1, "ClockA"};
        const GroupProgram second{folder / "Clock.exe", "-b", "ExecuteReg", 1, "ClockB"};
        app.Store().Change([&](ProgramModel& file) {
            for (const GroupProgram& p : {first, second})
                file.AddProgramToGroup(-1, p.Command, p.Path, p.Parameters, p.Delay,
                                       p.RegistryKeyName);
        });
        GroupEditorDialog onItem(app.Store(), app.text, app.messages, app.log);
        onItem.OpenOn(second);
        ASSERT_TRUE(onItem.ShowModeless(GetModuleHandleA(nullptr), nullptr));
        Pump();
        EXPECT_EQ(ControlText(onItem.Hwnd(), IDC_GE_PATH), folder / "Clock.exe");
        EXPECT_EQ(ControlText(onItem.Hwnd(), IDC_GE_PARAMETERS), "-b");
        const int shown = onItem.Model().FindProgramNode(second);
        EXPECT_NE(shown, onItem.Model().FindProgramNode(first));
        EXPECT_EQ(onItem.TreeView()->NodeOf(TreeView_GetSelection(onItem.TreeView()->Hwnd())),
                  shown);
        onItem.Close(IDCANCEL);
        Pump();
    }
    SetForegroundWindow(hwnd);

    // "Startup" keeps its name: Edit Group stays off, and the message line says why.
    const std::string explanation = ControlText(hwnd, IDC_GE_MESSAGE);
    SelectNode("Startup");
    TypeInto(IDC_GE_GROUP, {'K', 'I', 'T'});
    EXPECT_FALSE(Enabled(IDC_GE_EDIT_GROUP));
    EXPECT_TRUE(Enabled(IDC_GE_ADD_GROUP));
    EXPECT_EQ(ControlText(hwnd, IDC_GE_MESSAGE), app.text.Message(31));
    EXPECT_NE(app.text.Message(31), explanation);

    // Renamed: the group's node is selected, a new name typed, "Edit Group" clicked.
    SelectNode("tools");
    TypeInto(IDC_GE_GROUP, {'K', 'I', 'T'});
    EXPECT_TRUE(Enabled(IDC_GE_EDIT_GROUP));
    EXPECT_EQ(ControlText(hwnd, IDC_GE_MESSAGE), explanation);
    Click(IDC_GE_EDIT_GROUP);
    EXPECT_NE(File().find("void kit()"), std::string::npos) << File();
    EXPECT_EQ(File().find("void tools()"), std::string::npos);
    EXPECT_NE(File().find("void Startup()"), std::string::npos);
    // The tree is shown again with the group and its program open, the group selected.
    EXPECT_EQ(ItemText(NodeOf("kit")), "kit");
    EXPECT_TRUE(ItemOpen(NodeOf("kit")));
    EXPECT_TRUE(ItemOpen(dialog.Model().Tree.Node(NodeOf("kit")).Children.at(0)));
    EXPECT_EQ(dialog.TreeView()->NodeOf(TreeView_GetSelection(dialog.TreeView()->Hwnd())),
              NodeOf("kit"));

    // Removed, after the question.
    SelectNode("kit");
    messages.answer = kIdYes;
    Click(IDC_GE_REMOVE);
    ASSERT_FALSE(messages.shown.empty());
    EXPECT_EQ(messages.shown.back().Text, app.text.Message(10));
    EXPECT_EQ(File().find("void kit()"), std::string::npos);
    EXPECT_EQ(File().find("Execute (\"" + folder / "Clock.exe"), std::string::npos);
    EXPECT_NE(File().find("ExecuteReg (\"" + folder / "Clock.exe"), std::string::npos);
    EXPECT_EQ(dialog.Model().GroupNames, std::vector<std::string>{"Startup"});
    EXPECT_EQ(ControlText(hwnd, IDC_GE_GROUP), ""); // the box does not name it any more
}

} // namespace
} // namespace tolvane
