// The real group editor dialog, modeless in this process so that the test can type and click
// into it: what proggroup.c holds after each step is what the editor's model says.
#include <windows.h>
#include <commctrl.h>

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
    void SelectNode(const std::string& text) {
        TreeModel& tree = dialog.Model().Tree;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (tree.Node(int(i)).Text == text) {
                TreeView_SelectItem(dialog.TreeView()->Hwnd(), dialog.TreeView()->ItemOf(int(i)));
                Pump();
                return;
            }
        ADD_FAILURE() << text;
    }
    bool Enabled(int control) { return IsWindowEnabled(GetDlgItem(hwnd, control)); }

    GroupEditorDialog dialog{app};
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

    // Opened on a delayed item of the main window (its Properties), the editor shows the
    // item's program, selected inside its closed group.
    {
        GroupEditorDialog onItem(app);
        onItem.OpenOn("Clock=" + folder / "Clock.exe" + " -min");
        ASSERT_TRUE(onItem.ShowModeless(GetModuleHandleA(nullptr), nullptr));
        Pump();
        char path[MAX_PATH] = {};
        GetDlgItemTextA(onItem.Hwnd(), IDC_GE_PATH, path, sizeof path);
        EXPECT_EQ(path, folder / "Clock.exe");
        EXPECT_EQ(onItem.TreeView()->NodeOf(TreeView_GetSelection(onItem.TreeView()->Hwnd())),
                  onItem.Model().FindProgramNode(folder / "Clock.exe"));
        onItem.Close(IDCANCEL);
        Pump();
    }
    SetForegroundWindow(hwnd);

    // Renamed: the group's node is selected, a new name typed, "Edit Group" clicked.
    SelectNode("tools");
    TypeInto(IDC_GE_GROUP, {'K', 'I', 'T'});
    EXPECT_TRUE(Enabled(IDC_GE_EDIT_GROUP));
    Click(IDC_GE_EDIT_GROUP);
    EXPECT_NE(File().find("void kit()"), std::string::npos) << File();
    EXPECT_EQ(File().find("void tools()"), std::string::npos);

    // Removed, after the question.
    SelectNode("kit");
    messages.answer = kIdYes;
    Click(IDC_GE_REMOVE);
    ASSERT_FALSE(messages.shown.empty());
    EXPECT_EQ(messages.shown.back().Title, "Comfirm Group Remove");
    EXPECT_EQ(File().find("void kit()"), std::string::npos);
    EXPECT_EQ(File().find("Clock.exe"), std::string::npos);
    EXPECT_EQ(dialog.Model().GroupNames, std::vector<std::string>{"Startup"});
}

} // namespace
} // namespace tolvane
