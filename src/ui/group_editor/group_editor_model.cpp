#include "ui/group_editor/group_editor_model.h"

#include <algorithm>
#include <exception>
#include <set>

#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// The message table's entries that the editor shows.
enum : size_t {
    kNoGroupName = 3,
    kNoPath = 4,
    kFileNotFound = 5,
    kBadDelay = 7,
    kNotSaved = 8,
    kNotShown = 9,
    kConfirmRemove = 10,
    kStartupGroupStays = 11,
    kStartupProgramsStay = 12,
    kStartupKeepsName = 31,
    kStartupReserved = 32,
    kNameTaken = 33,
    kNameEmpty = 34,
};

size_t MessageOf(GroupNameProblem problem) {
    switch (problem) {
    case GroupNameProblem::Empty:
        return kNameEmpty;
    case GroupNameProblem::StartupKeepsName:
        return kStartupKeepsName;
    case GroupNameProblem::StartupReserved:
        return kStartupReserved;
    case GroupNameProblem::Taken:
        return kNameTaken;
    case GroupNameProblem::None:
        break;
    }
    return 0;
}

// Thrown inside a change that the file as it is now refuses: the store writes nothing.
struct RefusedChange {};

bool IsStartup(std::string_view groupName) {
    return TypedGroupName(groupName) == kStartupGroup;
}

// The program of the group that is this record; -1 when the group holds none (any more).
int ProgramIndexOf(const ProgramModel& model, int group, const GroupProgram& record) {
    if (group < 0 || static_cast<size_t>(group) >= model.ProgramGroups.size())
        return -1;
    const std::vector<GroupProgram>& programs = model.ProgramGroups[group].Programs;
    for (size_t i = 0; i < programs.size(); ++i)
        if (!programs[i].Path.empty() && SameRecord(programs[i], record))
            return static_cast<int>(i);
    return -1;
}

// Keys of the tree: a line break never occurs in a name or a program line, so it parts them.
constexpr char kKeyBreak = '\n';
constexpr const char* kRootKey = "root";

std::string GroupKey(std::string_view groupName) {
    return "group" + std::string(1, kKeyBreak) + NormalGroupName(groupName);
}

std::string ProgramKey(std::string_view groupName, const GroupProgram& p) {
    std::string key = GroupKey(groupName);
    for (const std::string* part : {&p.Command, &p.Path, &p.Parameters, &p.RegistryKeyName})
        key += kKeyBreak + *part;
    return key + kKeyBreak + FormatSingle(p.Delay);
}

} // namespace

std::vector<std::string> BuiltInGroupEditorTexts() {
    static const char kTexts[] = "Add &New\0"
                                 "&Edit\0"
                                 "&Group Name\0"
                                 "&Path to File\0"
                                 "Para&meters\0"
                                 "&Delay\0"
                                 "(in seconds, 0 = as soon as possible)\0"
                                 "\0"
                                 "Program Groups\0"
                                 "Choose a program\0"
                                 "Programs\0";
    return UnpackTexts(kTexts, sizeof kTexts);
}

GroupEditor::GroupEditor(ProgramModel& model, GroupEditorFiles& files, UserMessages& messages,
                         GroupEditorTexts texts)
    : model_(model), files_(files), messages_(messages), texts_(std::move(texts)) {
    Message = Text(kEditorExplanation);
}

const std::string& GroupEditor::Text(GroupEditorText entry) const {
    return TextTables::Entry(texts_.Own, entry);
}

int GroupEditor::Show(size_t message, unsigned style, std::string_view extra) {
    // Titled with the program's name alone: what went wrong is the text's to say.
    return messages_.ShowMessage(TextTables::Entry(texts_.Messages, message) + std::string(extra),
                                 "Tolvane", style);
}

bool GroupEditor::DelayKeyAllowed(char key) {
    return (key >= '0' && key <= '9') || key == '.' || key == '\b';
}

std::string GroupEditor::Label(std::string_view caption) {
    std::string label;
    for (size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == '&' && ++i == caption.size())
            break;
        label += caption[i];
    }
    return label;
}

void GroupEditor::SetCaptions(std::vector<std::string> own) {
    texts_.Own = std::move(own);
    if (!Tree.Empty())
        Rebuild();
    UpdateGroupButtons();
}

bool GroupEditor::RefreshGroups() {
    try {
        files_.LoadItems();
    } catch (const std::exception&) {
        Show(kNotShown, kMbOk | kMbIconCritical);
        return false;
    }
    Rebuild();
    UpdateButtons();
    return true;
}

void GroupEditor::Rebuild(const KeyMoves& moves) {
    auto moved = [&](const std::string& key) {
        for (const auto& [from, to] : moves)
            if (key == from || StartsWith(key, from + kKeyBreak))
                return to + key.substr(from.size());
        return key;
    };
    std::set<std::string> open;
    for (size_t i = 0; i < Tree.Count(); ++i)
        if (Tree.Node(static_cast<int>(i)).Expanded)
            open.insert(moved(Tree.Node(static_cast<int>(i)).Key));
    const int selected = Tree.Selected();
    const std::string selectedKey = selected >= 0 && static_cast<size_t>(selected) < Tree.Count()
                                        ? moved(Tree.Node(selected).Key)
                                        : std::string();

    Tree.Clear();
    records_.clear();
    GroupNames.clear();
    // A key the tree holds already (a file edited by hand may spell one group twice) gets a
    // number: keys stay unique, and the first of the same keeps the plain one.
    auto add = [&](int parent, std::string key, const std::string& text, NodeRecord record) {
        if (Tree.Find(key) != TreeModel::kNone) {
            int n = 2;
            while (Tree.Find(key + kKeyBreak + std::to_string(n)) != TreeModel::kNone)
                ++n;
            key += kKeyBreak + std::to_string(n);
        }
        const int node = Tree.AddChild(parent, key, text);
        Tree.Node(node).Expanded = open.count(key) != 0;
        records_.push_back(std::move(record));
        return node;
    };
    const int root = add(TreeModel::kNone, kRootKey, Text(kEditorTitle), {NodeKind::Root, {}, {}});
    Tree.Node(root).Expanded = true;
    const std::string parametersLabel = Label(Text(kEditorParameters));
    const std::string delayLabel = Label(Text(kEditorDelay));
    for (const ProgramGroup& group : model_.ProgramGroups) {
        if (group.Name.empty())
            continue; // a removed group's hole
        GroupNames.push_back(group.Name);
        const int groupNode =
            add(root, GroupKey(group.Name), group.Name, {NodeKind::Group, group.Name, {}});
        // In the order that the log-on run starts them, whatever order the change left.
        std::vector<const GroupProgram*> programs;
        for (const GroupProgram& p : group.Programs)
            if (!p.Path.empty())
                programs.push_back(&p);
        std::stable_sort(
            programs.begin(), programs.end(),
            [](const GroupProgram* a, const GroupProgram* b) { return a->Delay < b->Delay; });
        for (const GroupProgram* p : programs) {
            const int node = add(groupNode, ProgramKey(group.Name, *p), p->Path,
                                 {NodeKind::Program, group.Name, *p});
            const std::string key = Tree.Node(node).Key;
            add(node, key + kKeyBreak + "parameters",
                TrimRight(parametersLabel + ": " + p->Parameters),
                {NodeKind::Parameters, group.Name, *p});
            add(node, key + kKeyBreak + "delay", delayLabel + ": " + FormatSingle(p->Delay),
                {NodeKind::DelayValue, group.Name, *p});
        }
    }
    SelectKey(selectedKey);
}

void GroupEditor::SelectKey(const std::string& key) {
    Tree.Select(key.empty() ? TreeModel::kNone : Tree.Find(key));
}

const GroupEditor::NodeRecord* GroupEditor::RecordOf(int node) const {
    // A negative node (kNone), as a size, lies past every record.
    return static_cast<size_t>(node) < records_.size() ? &records_[node] : nullptr;
}

bool GroupEditor::Apply(const std::function<void(ProgramModel&)>& change) {
    try {
        files_.Change(change);
        return true;
    } catch (const RefusedChange&) {
        return false;
    } catch (const std::exception& e) {
        Show(kNotSaved, kMbOk | kMbIconCritical, e.what());
        return false;
    }
}

bool GroupEditor::SaveGroups() {
    return Apply([](ProgramModel&) {});
}

void GroupEditor::ClickTV(int node) {
    Tree.Select(node);
    const NodeRecord* record = RecordOf(node);
    if (!record || record->Kind == NodeKind::Root) {
        RemoveEnabled = false;
        ClearSelection();
        UpdateGroupButtons();
        return;
    }
    GroupName = record->Group;
    SelectedGroupName = record->Group;
    if (record->Kind == NodeKind::Group) {
        Path.clear();
        Parameters.clear();
        Delay.clear();
        SelectedProgram.reset();
        AddMode = true; // a group holds nothing to update; UpdateMode keeps "Startup" in edit
    } else {
        Path = record->Program.Path;
        Parameters = record->Program.Parameters;
        Delay = FormatSingle(record->Program.Delay);
        SelectedProgram = record->Program;
    }
    // Nothing of the "Startup" group, or of any group whose name holds the word, nor a program
    // whose path holds it, is removed here: such programs belong to the main window's moves.
    const bool startupWord =
        Contains(ToLower(record->Group), "startup") ||
        (record->Kind != NodeKind::Group && Contains(ToLower(record->Program.Path), "startup"));
    RemoveEnabled = !startupWord;
    UpdateButtons();
}

int GroupEditor::FindProgramNode(const GroupProgram& record) const {
    for (size_t i = 0; i < records_.size(); ++i)
        if (records_[i].Kind == NodeKind::Program && IsStartup(records_[i].Group) &&
            SameRecord(records_[i].Program, record))
            return static_cast<int>(i);
    return TreeModel::kNone;
}

bool GroupEditor::IsListedGroup(std::string_view name) const {
    const std::string normal = NormalGroupName(name);
    for (const std::string& listed : GroupNames)
        if (NormalGroupName(listed) == normal)
            return true;
    return false;
}

void GroupEditor::UpdateButtons() {
    UpdateAddButton();
    UpdateMode();
    UpdateGroupButtons();
}

void GroupEditor::UpdateAddButton() {
    const std::string group = Trim(GroupName);
    AddEnabled = !group.empty() && IsListedGroup(group) && !Trim(Path).empty();
}

void GroupEditor::UpdateMode() {
    // The "Startup" group's programs come from the main window: here they are only edited.
    if (IsStartup(GroupName)) {
        AddModeEnabled = false;
        AddMode = false;
    } else if (!AddModeEnabled) {
        AddModeEnabled = true;
        AddMode = true;
    }
}

void GroupEditor::UpdateGroupButtons() {
    const std::string typed = TypedGroupName(GroupName);
    const GroupNameProblem adding = model_.NewGroupProblem(typed);
    AddGroupEnabled = adding == GroupNameProblem::None;
    const int selected = SelectedGroupName.empty() ? -1 : model_.GetGroupID(SelectedGroupName);
    const bool renaming = selected >= 0 && NormalGroupName(SelectedGroupName) != typed;
    const GroupNameProblem renameProblem =
        renaming ? model_.RenameProblem(selected, typed) : GroupNameProblem::None;
    EditGroupEnabled = renaming && renameProblem == GroupNameProblem::None;
    // An empty box is no refusal until it would rename a group, nor is the selected group's
    // own name.
    GroupNameProblem shown = renameProblem;
    if (!renaming && selected < 0 && !typed.empty())
        shown = adding;
    Message = shown == GroupNameProblem::None
                  ? Text(kEditorExplanation)
                  : TextTables::Entry(texts_.Messages, MessageOf(shown));
}

void GroupEditor::GroupNameChanged(bool chosenFromList) {
    if (chosenFromList) {
        // Chosen from the list is as good as the group clicked.
        SelectedGroupName = GroupName;
        SelectedProgram.reset();
        AddMode = true;
    }
    UpdateButtons();
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
    SelectedProgram.reset();
}

void GroupEditor::ClearFields() {
    GroupName.clear();
    Path.clear();
    Parameters.clear();
    Delay = "0";
}

void GroupEditor::Add() {
    if (AddMode)
        AddNewProgram();
    else
        UpdateSelectedProgram();
    UpdateButtons();
}

void GroupEditor::AddNewProgram() {
    const std::string group = Trim(GroupName), path = Trim(Path), parameters = Trim(Parameters),
                      delayText = Trim(Delay);
    if (group.empty()) {
        Show(kNoGroupName, kMbOk | kMbIconExclamation);
        return;
    }
    if (path.empty()) {
        Show(kNoPath, kMbOk | kMbIconExclamation);
        return;
    }
    // A delay that is no number is refused before anything changes.
    const std::optional<float> delay = delayText.empty() ? 0.0f : ParseSingle(delayText);
    if (!delay || *delay < 0) {
        Show(kBadDelay, kMbOk | kMbIconExclamation);
        return;
    }
    // A bare name that lies in one of the items folders is as good as a full path: the log-on
    // run finds it there.
    if (!files_.FileExists(path) && !files_.FileExists(texts_.UserItemsFolder + path) &&
        !files_.FileExists(texts_.AllUsersItemsFolder + path)) {
        Show(kFileNotFound, kMbOk | kMbIconExclamation);
        return;
    }
    // The group as the list shows it, or a new one of a name that a new group may have.
    GroupNameProblem problem = GroupNameProblem::None;
    const bool written = Apply([&](ProgramModel& file) {
        int index = file.GetGroupID(group);
        if (index < 0) {
            problem = file.NewGroupProblem(group);
            if (problem != GroupNameProblem::None)
                throw RefusedChange();
            index = file.AddGroup(group);
        }
        file.AddProgramToGroup(index, kExecute, path, parameters, *delay, "");
    });
    if (problem != GroupNameProblem::None)
        Show(MessageOf(problem), kMbOk | kMbIconExclamation);
    Rebuild();
    if (!written)
        return;
    // The new program shows in its group, opened.
    if (const int node = Tree.Find(GroupKey(group)); node != TreeModel::kNone)
        Tree.Node(node).Expanded = true;
    ClearFields();
    ClearSelection();
    Tree.Select(TreeModel::kNone);
}

void GroupEditor::UpdateSelectedProgram() {
    if (Trim(Path).empty() || !SelectedProgram) {
        if (IsStartup(GroupName)) {
            Path.clear();
            Parameters.clear();
            Delay = "0";
        }
        return;
    }
    const std::optional<float> delay = ParseSingle(Delay);
    if (!delay || *delay < 0) {
        Show(kBadDelay, kMbOk | kMbIconExclamation);
        return;
    }
    const GroupProgram before = *SelectedProgram;
    GroupProgram after = before;
    after.Path = Trim(Path);
    after.Parameters = Trim(Parameters);
    after.Delay = *delay;
    if (SameRecord(before, after))
        return;
    // The program as it was clicked, in its own group: another group name typed meanwhile
    // moves nothing.
    const std::string group = SelectedGroupName;
    bool found = false;
    const bool written = Apply([&](ProgramModel& file) {
        const int g = file.GetGroupID(group);
        const int p = ProgramIndexOf(file, g, before);
        found = p >= 0;
        if (found)
            file.UpdateProgramInGroup(g, p, after.Path, after.Parameters, after.Delay);
    });
    if (!written || !found) {
        Rebuild();
        // Not written: the fields stay for another try. Changed or removed elsewhere meanwhile:
        // the tree shows what the file holds now, and there is nothing left to update.
        if (written) {
            ClearSelection();
            Tree.Select(TreeModel::kNone);
        }
        return;
    }
    Rebuild({{ProgramKey(group, before), ProgramKey(group, after)}});
    // Edit mode stays on the program as it is now: a second click changes nothing more.
    SelectedProgram = after;
    GroupName = group;
    Path = after.Path;
    Parameters = after.Parameters;
    Delay = FormatSingle(after.Delay);
    AddMode = false;
    SelectKey(ProgramKey(group, after));
}

void GroupEditor::AddGroup() {
    const std::string name = TypedGroupName(GroupName);
    if (model_.NewGroupProblem(name) == GroupNameProblem::None && Apply([&](ProgramModel& file) {
            if (file.NewGroupProblem(name) != GroupNameProblem::None)
                throw RefusedChange();
            file.AddGroup(name);
        })) {
        Rebuild();
        // The new group is the selected one: a name typed next renames it.
        GroupName = name;
        SelectedGroupName = name;
        SelectedProgram.reset();
        SelectKey(GroupKey(name));
    } else {
        Rebuild();
    }
    UpdateButtons();
}

void GroupEditor::EditGroup() {
    const std::string oldName = SelectedGroupName, newName = TypedGroupName(GroupName);
    const int index = oldName.empty() ? -1 : model_.GetGroupID(oldName);
    if (index >= 0 && NormalGroupName(oldName) != newName &&
        model_.RenameProblem(index, newName) == GroupNameProblem::None) {
        // Checked again on the file as it is now: another Tolvane may have made a group of
        // that name meanwhile.
        const bool renamed = Apply([&](ProgramModel& file) {
            if (!file.UpdateGroupName(file.GetGroupID(oldName), newName))
                throw RefusedChange();
        });
        Rebuild(renamed ? KeyMoves{{GroupKey(oldName), GroupKey(newName)}} : KeyMoves{});
        if (renamed)
            SelectedGroupName = newName;
        else if (model_.GetGroupID(oldName) < 0)
            ClearSelection();
    }
    UpdateButtons();
}

void GroupEditor::Remove() {
    const NodeRecord* selected = RecordOf(Tree.Selected());
    if (!selected || selected->Kind == NodeKind::Root)
        return;
    const NodeRecord record = *selected;
    if (record.Kind != NodeKind::Group) {
        if (IsStartup(record.Group)) {
            Show(kStartupProgramsStay, kMbOk | kMbIconInformation);
            return;
        }
        Apply([&](ProgramModel& file) {
            const int group = file.GetGroupID(record.Group);
            const int index = ProgramIndexOf(file, group, record.Program);
            if (index >= 0) // gone meanwhile: nothing left to remove
                (void)file.RemoveProgramFromGroup(group, index);
        });
        // The group stays, and stays named in the box.
        ClearFields();
        GroupName = record.Group;
    } else {
        if (IsStartup(record.Group)) {
            Show(kStartupGroupStays, kMbOk | kMbIconInformation);
            return;
        }
        if (Show(kConfirmRemove, kMbYesNo | kMbIconQuestion | kMbDefButton2) != kIdYes)
            return;
        // The file's group of the record's name, so not "Startup" either; gone meanwhile:
        // nothing left to remove.
        Apply([&](ProgramModel& file) {
            if (const int group = file.GetGroupID(record.Group); group >= 0)
                file.RemoveProgramGroup(group);
        });
        ClearFields(); // the box no longer names the group that is gone
    }
    Rebuild();
    Tree.Select(TreeModel::kNone);
    RemoveEnabled = false;
    ClearSelection();
    UpdateButtons();
}

void GroupEditor::Browse() {
    Path = Trim(
        messages_.ChooseFile(Text(kEditorChooseProgram),
                             Text(kEditorPrograms) + "|*.exe;*.dll;*.lnk;*.com;*.bat;*.cmd|", ""));
    PathChanged();
}

} // namespace tolvane
