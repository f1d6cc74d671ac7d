// The real group editor dialog, modeless in this process so that the test can type and click
// into it: what proggroup.c holds after each step is what the editor's model says.
#include <windows.h>
#include <commctrl.h>

#include "config/program_group_store.h"
#include "items/startup_fixture.h"
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
        test::PumpUntilIdle();
    }
    std::string File() {
        return test::ReadFileBytes(folder / (WindowsUserName() + "\\proggroup.c"));
    }
    void Click(int control) {
        RECT r{};
        GetWindowRect(GetDlgItem(hwnd, control), &r);
        test::Click({(r.left + r.right) / 2, (r.top + r.bottom) / 2});
        test::PumpUntilIdle();
    }
    // Types a lower-case name into a box, replacing what it held.
    void TypeInto(int control, std::initializer_list<unsigned short> keys) {
        HWND box = GetDlgItem(hwnd, control);
        SetFocus(box);
        SendMessageA(box, control == IDC_GE_GROUP ? CB_SETEDITSEL : EM_SETSEL, 0,
                     control == IDC_GE_GROUP ? MAKELPARAM(0, -1) : -1);
        test::Type(keys);
        test::PumpUntilIdle();
    }
    void SelectNode(const std::string& text) {
        const TreeModel& tree = dialog.Model().Tree;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (tree.Node(int(i)).Text == text)
                TreeView_SelectItem(dialog.TreeView()->Hwnd(), dialog.TreeView()->ItemOf(int(i)));
        test::PumpUntilIdle();
    }
    bool Enabled(int control) { return IsWindowEnabled(GetDlgItem(hwnd, control)); }

    GroupEditorDialog dialog{app.Store(), app.text, app.messages, app.log};
    HWND hwnd = nullptr;
};

TEST_F(GroupEditorDialogTest, AddRenameAndRemoveAGroupWithItsProgram) {
    // A new group, typed and added.
    TypeInto(IDC_GE_GROUP, {'T', 'O', 'O', 'L', 'S'});
    Click(IDC_GE_ADD_GROUP);
    EXPECT_NE(File().find("void tools()"), std::string::npos) << File();
    EXPECT_FALSE(Enabled(IDC_GE_ADD_GROUP));

    // A program for it: the path from the file dialog, a delay typed ("a" is dropped).
    messages.chosenFile = folder / "Clock.exe";
    Click(IDC_GE_BROWSE);
    TypeInto(IDC_GE_DELAY, {'5', 'A'});
    Click(IDC_GE_ADD);
    EXPECT_NE(File().find("void tools()\r\n{\r\n     Execute (\"" + folder / "Clock.exe" +
                          "\", \"\", 5, \"\");"),
              std::string::npos)
        << File();

    // Renamed: the group's node is selected, a new name typed, "Edit Group" clicked.
    SelectNode("tools");
    TypeInto(IDC_GE_GROUP, {'K', 'I', 'T'});
    Click(IDC_GE_EDIT_GROUP);
    EXPECT_NE(File().find("void kit()"), std::string::npos) << File();
    EXPECT_EQ(File().find("void tools()"), std::string::npos);
    EXPECT_NE(File().find("void Startup()"), std::string::npos);

    // Removed with its program, after the question.
    SelectNode("kit");
    messages.answer = kIdYes;
    Click(IDC_GE_REMOVE);
    ASSERT_FALSE(messages.shown.empty());
    EXPECT_EQ(messages.shown.back().Text, app.text.Message(10));
    EXPECT_EQ(File().find("void kit()"), std::string::npos);
    EXPECT_EQ(File().find("Execute (\"" + folder / "Clock.exe"), std::string::npos);
    EXPECT_EQ(GetWindowTextLengthA(GetDlgItem(hwnd, IDC_GE_GROUP)), 0); // not named any more
}

} // namespace
} // namespace tolvane
