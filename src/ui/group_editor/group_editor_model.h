// The program group editor's rules, without a window: the groups and programs as a tree, the
// fields the user types into, which buttons can be used, and what each button does to the
// program-group model. Every change is made on the file as it is now and written at once; the
// tree is built from the model as written. The dialog renders this model and hands the user's
// input back.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
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
    // Reads the model back from the file.
    virtual void LoadItems() = 0;
    virtual bool FileExists(const std::string& path) = 0;
};

// The editor's own texts, by the lines of its language file ("properties"); the built-in
// English ones stand for whatever the file does not supply.
enum GroupEditorText : size_t {
    kEditorAddNew = 0,
    kEditorEdit = 1,
    kEditorGroupName = 2,
    kEditorPath = 3,
    kEditorParameters = 4,
    kEditorDelay = 5,
    kEditorSeconds = 6,
    kEditorExplanation = 7, // the message line's text when no name is refused
    kEditorTitle = 8,       // the window's title and the top of its tree
    kEditorChooseProgram = 9,
    kEditorPrograms = 10, // the file dialog's name for the kinds of file it offers
};
std::vector<std::string> BuiltInGroupEditorTexts();

struct GroupEditorTexts {
    std::vector<std::string> Messages; // the shared message table
    std::string UserItemsFolder;       // both end with a backslash
    std::string AllUsersItemsFolder;
    // The editor's own texts; the captions that label a program's rows in the tree show
    // without the "&" that marks their access key.
    std::vector<std::string> Own = BuiltInGroupEditorTexts();
};

class GroupEditor {
public:
    GroupEditor(ProgramModel& model, GroupEditorFiles& files, UserMessages& messages,
                GroupEditorTexts texts);

    // The groups and programs: root, groups below it, each program's path with its labelled
    // parameters and delay below that. Every node's key leads back to its record.
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
    // The message line: why the typed group name cannot be added or given to the selected
    // group, or the explanation when nothing is refused.
    std::string Message;

    // The group that Edit Group renames (clicked, or chosen from the list), and the program
    // that Update changes, as the file held it when it was clicked.
    std::string SelectedGroupName;
    std::optional<GroupProgram> SelectedProgram;

    // The editor's own texts as the language file gives them.
    void SetCaptions(std::vector<std::string> own);
    const std::string& Text(GroupEditorText entry) const;

    // Reads the file again and rebuilds the tree and the group list; open nodes stay open.
    // False (and a message) when it fails.
    [[nodiscard]] bool RefreshGroups();

    // A node of the tree was clicked (or selected by the main window's Properties): its
    // program's or group's fields are shown, from its record, never from its caption.
    void ClickTV(int node);
    // The node of this program of the "Startup" group: the same command, path, parameters,
    // value name and delay, so that a program that shares another's path is never taken for
    // it. TreeModel::kNone when the group holds no such program.
    int FindProgramNode(const GroupProgram& record) const;

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
    [[nodiscard]] bool SaveGroups();

    // The delay box takes digits, a full stop and Backspace; every other key is dropped.
    static bool DelayKeyAllowed(char key);
    // A caption as a label: without the "&" that marks its access key ("&&" is one "&").
    static std::string Label(std::string_view caption);

private:
    enum class NodeKind { None, Root, Group, Program, Parameters, DelayValue };
    // What a node of the tree stands for, as the model held it when the tree was built.
    struct NodeRecord {
        NodeKind Kind = NodeKind::None;
        std::string Group;
        GroupProgram Program;
    };
    // Old keys and the keys they have now (a renamed group, a changed program): what was open
    // or selected under the old key is so under the new one.
    using KeyMoves = std::vector<std::pair<std::string, std::string>>;

    const NodeRecord* RecordOf(int node) const;
    void Rebuild(const KeyMoves& moves = {});
    void SelectKey(const std::string& key);
    void UpdateButtons();
    void UpdateAddButton();
    void UpdateMode();
    void UpdateGroupButtons();
    void AddNewProgram();
    void UpdateSelectedProgram();
    void ClearSelection();
    void ClearFields();
    bool IsListedGroup(std::string_view name) const;
    int Show(size_t message, unsigned style, std::string_view extra = "");
    // One change of the editor, made on the file as it is now; told when it fails. A change
    // that the file as it is now refuses writes nothing and returns false quietly: the tree
    // and the message line show why.
    bool Apply(const std::function<void(ProgramModel&)>& change);

    ProgramModel& model_;
    GroupEditorFiles& files_;
    UserMessages& messages_;
    GroupEditorTexts texts_;
    std::vector<NodeRecord> records_; // by node of Tree
};

} // namespace tolvane
