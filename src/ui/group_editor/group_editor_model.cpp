#include "ui/group_editor/group_editor_model.h"

#include <exception>

#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// The message table's entries that the editor shows.
enum : size_t {
    kNoGroupName = 3,
    kNoPath = 4,
    kFileNotFound = 5,
    kGroupNotMade = 6,
    kBadDelay = 7,
    kNotSaved = 8,
    kNotShown = 9,
    kConfirmRemove = 10,
    kStartupGroupStays = 11,
    kStartupProgramsStay = 12,
};

constexpr const char* kStartup = "Startup";

} // namespace

GroupEditor::GroupEditor(ProgramModel& model, GroupEditorFiles& files, UserMessages& messages,
                         GroupEditorTexts texts)
    : model_(model), files_(files), messages_(messages), texts_(std::move(texts)) {}

int GroupEditor::Show(size_t message, std::string_view title, unsigned style,
                      std::string_view extra) {
    return messages_.ShowMessage(TextTables::Entry(texts_.Messages, message) + std::string(extra),
                                 title, style);
}

bool GroupEditor::DelayKeyAllowed(char key) {
    return (key >= '0' && key <= '9') || key == '.' || key == '\b';
}

bool GroupEditor::RefreshGroups() {
    try {
        files_.LoadItems(Tree);
    } catch (const std::exception&) {
        Show(kNotShown, "Tolvane - Error", kMbOk | kMbIconCritical);
        return false;
    }
    GroupNames.clear();
    for (const ProgramGroup& group : model_.ProgramGroups)
        if (!group.Name.empty())
            GroupNames.push_back(group.Name);
    if (!Tree.Empty())
        Tree.Node(Tree.Roots()[0]).Expanded = true;
    return true;
}

bool GroupEditor::Apply(const std::function<void(ProgramModel&)>& change) {
    try {
        files_.Change(change);
        return true;
    } catch (const std::exception& e) {
        Show(kNotSaved, "Tolvane - Error", kMbOk | kMbIconCritical, e.what());
        return false;
    }
}

bool GroupEditor::SaveGroups() {
    return Apply([](ProgramModel&) {});
}

GroupEditor::NodeKind GroupEditor::KindOf(int node) const {
    if (node < 0 || static_cast<size_t>(node) >= Tree.Count())
        return NodeKind::None;
    int depth = 0;
    for (int n = node; Tree.Node(n).Parent != TreeModel::kNone; n = Tree.Node(n).Parent)
        ++depth;
    switch (depth) {
    case 0:
        return NodeKind::Root;
    case 1:
        return NodeKind::Group;
    case 2:
        return NodeKind::Program;
    case 3: {
        const std::vector<int>& siblings = Tree.Node(Tree.Node(node).Parent).Children;
        return !siblings.empty() && siblings[0] == node ? NodeKind::Parameters
                                                        : NodeKind::DelayValue;
    }
    }
    return NodeKind::None;
}

int GroupEditor::ProgramNodeOf(int node) const {
    switch (KindOf(node)) {
    case NodeKind::Program:
        return node;
    case NodeKind::Parameters:
    case NodeKind::DelayValue:
        return Tree.Node(node).Parent;
    default:
        return TreeModel::kNone;
    }
}

void GroupEditor::ClickTV(int node) {
    Tree.Select(node);
    const NodeKind kind = KindOf(node);
    if (kind == NodeKind::None || kind == NodeKind::Root) {
        RemoveEnabled = false;
        ClearSelection();
        return;
    }
    RemoveEnabled = true;
    if (const int program = ProgramNodeOf(node); program != TreeModel::kNone) {
        const TreeNode& p = Tree.Node(program);
        Path = p.Text;
        Parameters = p.Children.size() > 0 ? Tree.Node(p.Children[0]).Text : "";
        Delay = p.Children.size() > 1 ? Tree.Node(p.Children[1]).Text : "";
        GroupName = Tree.Node(p.Parent).Text;
    } else {
        Path.clear();
        Parameters.clear();
        Delay.clear();
        GroupName = Tree.Node(node).Text;
        if (GroupName == kStartup)
            RemoveEnabled = false;
    }
    // Nothing below the "Startup" group, or any group whose name holds the word, is removed
    // here: its programs belong to the main window's moves.
    if (Contains(ToLower(Tree.FullPath(node)), "startup"))
        RemoveEnabled = false;
    SelectedGroupName = GroupName;
    SelectedPath = Path;
    SelectedDelay = ParseSingle(Delay).value_or(0);
    SelectedParameters = Parameters;
    UpdateAddButton();
    UpdateGroupButtons();
}

int GroupEditor::FindProgramNode(std::string_view itemText) const {
    const std::string lower = ToLower(itemText);
    int contained = TreeModel::kNone;
    for (size_t i = 0; i < Tree.Count(); ++i) {
        const int node = static_cast<int>(i);
        if (KindOf(node) != NodeKind::Program || Tree.Node(node).Text.empty())
            continue;
        if (Tree.Node(node).Text == itemText)
            return node;
        if (contained == TreeModel::kNone && Contains(lower, ToLower(Tree.Node(node).Text)))
            contained = node;
    }
    return contained;
}

bool GroupEditor::IsListedGroup(std::string_view name) const {
    for (const std::string& listed : GroupNames)
        if (listed == name)
            return true;
    return false;
}

void GroupEditor::UpdateAddButton() {
    const std::string group = Trim(GroupName);
    AddEnabled = !group.empty() && IsListedGroup(group) && !Trim(Path).empty();
    if (GroupName == kStartup) {
        AddModeEnabled = false;
        AddMode = false;
    }
}

void GroupEditor::UpdateGroupButtons() {
    AddGroupEnabled = true;
    if (!Tree.Empty())
        for (int group : Tree.Node(Tree.Roots()[0]).Children)
            if (Tree.Node(group).Text == GroupName)
                AddGroupEnabled = false;
    if (GroupName != kStartup) {
        // Renaming needs a group to rename and a name that is not taken.
        EditGroupEnabled = !SelectedGroupName.empty() && AddGroupEnabled;
        AddModeEnabled = true;
        AddMode = true;
    } else {
        AddModeEnabled = false;
        AddMode = false;
    }
}

void GroupEditor::GroupNameChanged(bool chosenFromList) {
    if (chosenFromList)
        SelectedGroupName = GroupName;
    UpdateAddButton();
    UpdateGroupButtons();
}

void GroupEditor::PathChanged() {
    UpdateAddButton();
}

void GroupEditor::ChooseAddMode(bool add) {
    if (add && !AddModeEnabled)
        return;
    AddMode = add;
}

void GroupEditor::ClearSelection() {
    SelectedGroupName.clear();
    SelectedPath.clear();
    SelectedParameters.clear();
    SelectedDelay = 0;
}

void GroupEditor::Add() {
    if (AddMode)
        AddNewProgram();
    else
        UpdateSelectedProgram();
    ClearSelection();
    if (AddModeEnabled)
        AddMode = true;
    UpdateAddButton();
}

void GroupEditor::AddNewProgram() {
    const std::string group = Trim(GroupName), path = Trim(Path), parameters = Trim(Parameters),
                      delayText = Trim(Delay);
    if (group.empty()) {
        Show(kNoGroupName, "Tolvane - Enter Groupname", kMbOk | kMbIconExclamation);
        return;
    }
    if (path.empty()) {
        Show(kNoPath, "Tolvane - Enter Filename", kMbOk | kMbIconExclamation);
        return;
    }
    // A delay that is no number is refused before anything changes.
    const std::optional<float> delay = delayText.empty() ? 0.0f : ParseSingle(delayText);
    if (!delay || *delay < 0) {
        Show(kBadDelay, "Tolvane", kMbOk | kMbIconExclamation);
        return;
    }
    // A bare name that lies in one of the items folders is as good as a full path: the log-on
    // run finds it there.
    if (!files_.FileExists(path) && !files_.FileExists(texts_.UserItemsFolder + path) &&
        !files_.FileExists(texts_.AllUsersItemsFolder + path)) {
        Show(kFileNotFound, "Tolvane - File not Found", kMbOk | kMbIconExclamation);
        return;
    }
    // The group as the list shows it, or a new one.
    bool made = true;
    Apply([&](ProgramModel& file) {
        int index = file.GetGroupID(group);
        if (index < 0)
            index = file.AddGroup(group);
        made = index >= 0;
        if (made)
            file.AddProgramToGroup(index, "Execute", path, parameters, *delay, "");
    });
    if (!made)
        Show(kGroupNotMade, "Error", kMbOk | kMbIconInformation);
    RefreshGroups();
    GroupName.clear();
    Path.clear();
    Parameters.clear();
    Delay = "0";
}

void GroupEditor::UpdateSelectedProgram() {
    if (Path.empty() || SelectedPath.empty()) {
        if (GroupName == kStartup) {
            Path.clear();
            Parameters.clear();
            Delay = "0";
            AddModeEnabled = false;
            AddMode = false;
        }
        return;
    }
    const std::optional<float> delay = ParseSingle(Delay);
    if (!delay || *delay < 0) {
        Show(kBadDelay, "Tolvane", kMbOk | kMbIconExclamation);
        return;
    }
    const bool changed =
        *delay != SelectedDelay || Parameters != SelectedParameters || Path != SelectedPath;
    if (!changed && GroupName == SelectedGroupName)
        return;
    // Another group name alone moves nothing: the program stays in its group.
    Apply([&](ProgramModel& file) {
        const int group = file.GetGroupID(SelectedGroupName);
        const int program = file.GetProgramID(SelectedPath, group);
        if (changed && program >= 0)
            file.UpdateProgramInGroup(group, program, Path, Parameters, *delay);
    });
    RefreshGroups();
}

void GroupEditor::AddGroup() {
    if (!Trim(GroupName).empty() && model_.GetGroupID(GroupName) < 0) {
        Apply([&](ProgramModel& file) {
            if (file.GetGroupID(GroupName) < 0)
                file.AddGroup(GroupName);
        });
        RefreshGroups();
    }
    UpdateGroupButtons();
}

void GroupEditor::EditGroup() {
    if (SelectedGroupName != GroupName && !SelectedGroupName.empty()) {
        const std::string oldName = SelectedGroupName;
        Apply([&](ProgramModel& file) {
            (void)file.UpdateGroupName(file.GetGroupID(oldName), GroupName);
        });
        // The tree keeps its nodes: only the group's caption and the list change.
        for (size_t i = 0; i < Tree.Count(); ++i)
            if (KindOf(static_cast<int>(i)) == NodeKind::Group &&
                Tree.Node(static_cast<int>(i)).Text == oldName)
                Tree.Node(static_cast<int>(i)).Text = GroupName;
        for (std::string& listed : GroupNames)
            if (listed == oldName)
                listed = GroupName;
        SelectedGroupName = GroupName;
    }
    UpdateGroupButtons();
}

void GroupEditor::Remove() {
    const int node = Tree.Selected();
    const NodeKind kind = KindOf(node);
    if (kind == NodeKind::None || kind == NodeKind::Root)
        return;
    if (const int program = ProgramNodeOf(node); program != TreeModel::kNone) {
        const std::string groupName = Tree.Node(Tree.Node(program).Parent).Text;
        const std::string programText = Tree.Node(program).Text;
        if (groupName == kStartup) {
            Show(kStartupProgramsStay, "Tolvane", kMbOk | kMbIconInformation);
            return;
        }
        Apply([&](ProgramModel& file) {
            const int group = file.GetGroupID(groupName);
            const int index = file.GetProgramID(programText, group);
            if (index >= 0) // gone meanwhile: nothing left to remove
                (void)file.RemoveProgramFromGroup(group, index);
        });
    } else {
        const std::string& groupName = Tree.Node(node).Text;
        if (groupName == kStartup) {
            Show(kStartupGroupStays, "Tolvane", kMbOk | kMbIconInformation);
            return;
        }
        if (Show(kConfirmRemove, "Comfirm Group Remove",
                 kMbYesNo | kMbIconQuestion | kMbDefButton2) != kIdYes)
            return;
        const std::string name = groupName;
        Apply([&](ProgramModel& file) {
            const int group = file.GetGroupID(name);
            if (group >= 0)
                file.RemoveProgramGroup(group);
        });
    }
    RefreshGroups();
    RemoveEnabled = false;
    ClearSelection();
}

void GroupEditor::Browse() {
    Path = Trim(messages_.ChooseFile("Select an executable to run...",
                                     "Executables|*.exe;*.dll;*.lnk;*.com;*.bat;*.cmd|", ""));
    PathChanged();
}

} // namespace tolvane
