// The program group editor's rules, without a window: the groups and programs as a tree, the
// fields the user types into, which buttons can be used, and what each button does to the
// program-group model. Every change is written to the file at once and the tree is read back
// from it. The dialog renders this model and hands the user's input back.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "config/program_model.h"
#include "models/tree_model.h"
#include "models/user_messages.h"

namespace tolvane {

// What the editor needs from outside: the program-group file and the file system.
class GroupEditorFiles {
public:
    virtual ~GroupEditorFiles() = default;
    // Makes the change on the file as it is now and writes it; the model then holds what was
    // written. Throws when it cannot, leaving the model as the file holds it.
    virtual void Change(const std::function<void(ProgramModel&)>& change) = 0;
    // Reads the model back from the file, filling the tree with its groups and programs.
    virtual void LoadItems(TreeModel& tree) = 0;
    virtual bool FileExists(const std::string& path) = 0;
};

struct GroupEditorTexts {
    std::vector<std::string> Messages; // the shared message table
    std::string UserItemsFolder;       // both end with a backslash
    std::string AllUsersItemsFolder;
};

class GroupEditor {
public:
    GroupEditor(ProgramModel& model, GroupEditorFiles& files, UserMessages& messages,
                GroupEditorTexts texts);

    // The groups and programs: root, groups below it, each program's path with its parameters
    // and its delay below that.
    TreeModel Tree;
    std::vector<std::string> GroupNames; // the combo box's list

    // The fields as the user sees them.
    std::string GroupName, Path, Parameters, Delay = "0";
    // Add mode: "Add" adds a new program; edit mode: it changes the selected one.
    bool AddMode = true;
    bool AddModeEnabled = true;
    bool AddEnabled = false;
    bool AddGroupEnabled = true;
    bool EditGroupEnabled = false;
    bool RemoveEnabled = false;

    // What the last click on the tree selected.
    std::string SelectedGroupName, SelectedPath, SelectedParameters;
    float SelectedDelay = 0;

    // Reloads the tree and the group list from the file. False (and a message) when it fails.
    bool RefreshGroups();

    // A node of the tree was clicked (or selected by the main window's Properties): its
    // program's or group's fields are shown. Nodes are told apart by their depth, never by
    // their names, so a group may be called "Path Tools" or "Delay".
    void ClickTV(int node);
    // The program node that a delayed item of the main window stands for: its path as the
    // item's text, or contained in it (letter case ignored); TreeModel::kNone when none.
    int FindProgramNode(std::string_view itemText) const;

    // The group name was typed into (or, clicked, chosen from the list).
    void GroupNameChanged(bool chosenFromList = false);
    void PathChanged();
    void ChooseAddMode(bool add);

    // "Add" in add mode adds the program, in edit mode it changes the selected one.
    void Add();
    void AddGroup();
    void EditGroup();
    void Remove();
    // The file dialog's choice; a cancelled dialog empties the path.
    void Browse();
    // OK: the file is written once more, as it is now.
    bool SaveGroups();

    // The delay box takes digits, a full stop and Backspace; every other key is dropped.
    static bool DelayKeyAllowed(char key);

private:
    enum class NodeKind { None, Root, Group, Program, Parameters, DelayValue };
    NodeKind KindOf(int node) const;
    // The program node of a program, parameters or delay node; kNone otherwise.
    int ProgramNodeOf(int node) const;
    void UpdateAddButton();
    void UpdateGroupButtons();
    void AddNewProgram();
    void UpdateSelectedProgram();
    void ClearSelection();
    bool IsListedGroup(std::string_view name) const;
    int Show(size_t message, std::string_view title, unsigned style, std::string_view extra = "");
    // One change of the editor, made on the file as it is now; told when it fails.
    bool Apply(const std::function<void(ProgramModel&)>& change);

    ProgramModel& model_;
    GroupEditorFiles& files_;
    UserMessages& messages_;
    GroupEditorTexts texts_;
};

} // namespace tolvane
