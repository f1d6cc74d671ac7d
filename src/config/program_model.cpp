#include "config/program_model.h"

#include <algorithm>
#include <utility>

#include "platform/path_rules.h"
#include "text/code_page.h"
#include "text/strings.h"

namespace tolvane {

std::string_view CommandOfLocation(int code) {
    switch (code) {
    case kMachineRun:
        return kExecuteRegAU;
    case kUserRun:
        return kExecuteReg;
    case kCommonStartup:
        return kExecuteAU;
    case kUserStartup:
        return kExecute;
    default:
        return "";
    }
}

int LocationOfCommand(std::string_view command) {
    for (int code : {kMachineRun, kUserRun, kCommonStartup, kUserStartup})
        if (command == CommandOfLocation(code))
            return code;
    return -1;
}

std::string_view LocationPrefix(int code) {
    switch (code) {
    case kMachineRun:
        return "_REGAU_";
    case kUserRun:
        return "_REGCU_";
    case kCommonStartup:
        return "_STPAU_";
    case kUserStartup:
        return "_STPCU_";
    default:
        return "";
    }
}

namespace {

constexpr LocationWord kLocationWords[] = {
    {"user-folder", kUserStartup, false},     {"user-run", kUserRun, false},
    {"common-folder", kCommonStartup, false}, {"machine-run", kMachineRun, false},
    {"machine-run-32", kMachineRun, true},
};

} // namespace

std::optional<LocationWord> ParseLocationWord(std::string_view word) {
    for (const LocationWord& w : kLocationWords)
        if (word == w.Word)
            return w;
    return std::nullopt;
}

const char* LocationWordOf(int code, bool wow32) {
    for (const LocationWord& w : kLocationWords)
        if (w.Code == code && w.Wow32 == (wow32 && code == kMachineRun))
            return w.Word;
    return "";
}

std::string NormalGroupName(std::string_view name) {
    return ReplaceAllCharacters(name, "_", " ");
}

std::string TypedGroupName(std::string_view name) {
    // Trimmed after "_" became a blank: "_Startup_" is "Startup", not another group beside it
    // that would take the log-on run's programs out of its reach.
    return Trim(NormalGroupName(name));
}

bool SameRecord(const GroupProgram& a, const GroupProgram& b) {
    return a.Command == b.Command && a.Path == b.Path && a.Parameters == b.Parameters &&
           a.Delay == b.Delay && a.RegistryKeyName == b.RegistryKeyName;
}

static bool ValidIndex(const auto& list, int index) {
    return index >= 0 && static_cast<size_t>(index) < list.size();
}

const ProgramGroup* ProgramModel::StartupGroup() const {
    return ValidIndex(ProgramGroups, StartupGroupIndex) ? &ProgramGroups[StartupGroupIndex]
                                                        : nullptr;
}

ProgramGroup* ProgramModel::StartupGroup() {
    return const_cast<ProgramGroup*>(std::as_const(*this).StartupGroup());
}

namespace {

// Blanks part the words of a command; quotes, the shell's operators and the comma of
// "rundll32 x.dll,Entry" part them too. They are looked for as whole characters: the second
// byte of a double-byte character may be a "|".
bool IsWordBreak(std::string_view text, size_t at) {
    return CharacterLength(text, at) == 1 &&
           std::string_view(" \t\"&|<>();,").find(text[at]) != std::string_view::npos;
}

std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && IsWordBreak(text, i))
            ++i;
        const size_t start = i;
        while (i < text.size() && !IsWordBreak(text, i))
            i += CharacterLength(text, i);
        if (i > start)
            words.push_back(text.substr(start, std::min(i, text.size()) - start));
    }
    return words;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && FindNoCase(a, b) == 0;
}

// A word of a command stands for `word` when it is that word, or names a program that Windows
// runs by that name: "format.com", "C:\x\rmdir.exe", and for the command's own program a file
// without an extension too. A document ("delete.txt"), a shortcut ("Format.lnk") or a folder
// ("C:\backup\del") among the words is no command.
bool Names(std::string_view commandWord, std::string_view word, bool isProgram) {
    if (EqualNoCase(commandWord, word))
        return true;
    const std::string_view name = PathLastPart(commandWord);
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos)
        return isProgram && EqualNoCase(name, word);
    const std::string extension = ToLower(name.substr(dot));
    const bool runs =
        extension == ".exe" || extension == ".com" || extension == ".bat" || extension == ".cmd";
    return runs && (EqualNoCase(name, word) || EqualNoCase(name.substr(0, dot), word));
}

} // namespace

std::string ProgramModel::BlockingWord(std::string_view program, std::string_view arguments) const {
    std::string unquoted = Trim(RemoveAll(program, '"'));
    std::vector<std::string_view> command;
    if (!unquoted.empty())
        command.push_back(unquoted);
    const std::vector<std::string_view> rest = Words(arguments);
    command.insert(command.end(), rest.begin(), rest.end());
    for (const std::string& entry : DisallowedPrograms) {
        const std::vector<std::string_view> word = Words(entry);
        // An empty word would match every command and silently stop the whole log-on run.
        if (word.empty())
            continue;
        for (size_t at = 0; at + word.size() <= command.size(); ++at) {
            size_t k = 0;
            while (k < word.size() &&
                   Names(command[at + k], word[k], at + k == 0 && !unquoted.empty()))
                ++k;
            if (k == word.size())
                return Trim(entry);
        }
    }
    return std::string();
}

std::vector<std::string>
ProgramModel::RemoveDisallowed(RunCommandParts (*started)(const GroupProgram&)) {
    std::vector<std::string> removed(1);
    ProgramGroup* group = StartupGroup();
    if (!group)
        return removed;
    for (GroupProgram& program : group->Programs) {
        std::string path = Trim(program.Path);
        if (path.empty())
            continue;
        const RunCommandParts command = started(program);
        // Once per blocking word, as the log names each.
        ProgramModel one;
        for (const std::string& word : DisallowedPrograms) {
            one.DisallowedPrograms = {word};
            if (one.BlockingWord(command.Path, command.Parameters).empty())
                continue;
            if (!removed.back().empty())
                removed.emplace_back();
            removed.back() = path;
            program.Path.clear();
        }
    }
    return removed;
}

int ProgramModel::GetGroupID(std::string_view name) const {
    const std::string sought = NormalGroupName(name);
    for (size_t i = 0; i < ProgramGroups.size(); ++i)
        if (NormalGroupName(ProgramGroups[i].Name) == sought)
            return static_cast<int>(i);
    return -1;
}

int ProgramModel::GetProgramID(std::string_view program, std::string_view groupName) const {
    return GetProgramID(program, GetGroupID(groupName));
}

int ProgramModel::GetProgramID(std::string_view program, int groupIndex) const {
    if (!ValidIndex(ProgramGroups, groupIndex))
        return -1; // a missing or removed group holds no programs
    const std::string sought = Trim(program);
    const auto& programs = ProgramGroups[groupIndex].Programs;
    for (size_t i = 0; i < programs.size(); ++i) {
        const GroupProgram& p = programs[i];
        if (sought == p.Path + " " + p.Parameters || sought == p.Path)
            return static_cast<int>(i);
    }
    return -1;
}

void ProgramModel::AddStoppedProgram(std::string_view name, int code) {
    if (StoppedPrograms.empty() || !StoppedPrograms.back().empty())
        StoppedPrograms.emplace_back();
    StoppedPrograms.back() = std::string(LocationPrefix(code)) + std::string(name);
}

int ProgramModel::FindStoppedProgram(std::string_view name, int code) const {
    // Both sides trimmed: a stopped Run path ends in a blank when its command had parameters,
    // and the entry must still be found to restore or remove it.
    const std::string sought = Trim(std::string(LocationPrefix(code)) + std::string(name));
    for (size_t i = 0; i < StoppedPrograms.size(); ++i)
        if (!StoppedPrograms[i].empty() && Trim(StoppedPrograms[i]) == sought)
            return static_cast<int>(i);
    return -1;
}

void ProgramModel::RemoveStoppedProgram(std::string_view name, int code) {
    int i = FindStoppedProgram(name, code);
    if (i >= 0)
        StoppedPrograms[i].clear();
}

int ProgramModel::AddGroup(std::string_view name) {
    std::string normal = TypedGroupName(name);
    int existing = GetGroupID(normal);
    if (existing >= 0)
        return existing;
    ProgramGroups.push_back(ProgramGroup{normal, std::vector<GroupProgram>(1)});
    int index = static_cast<int>(ProgramGroups.size()) - 1;
    if (normal == kStartupGroup)
        StartupGroupIndex = index;
    return index;
}

namespace {

bool LooksLikeStartup(std::string_view normalName) {
    return ToLower(normalName) == ToLower(kStartupGroup);
}

} // namespace

GroupNameProblem ProgramModel::NewGroupProblem(std::string_view name) const {
    const std::string normal = TypedGroupName(name);
    if (normal.empty())
        return GroupNameProblem::Empty;
    if (GetGroupID(normal) >= 0)
        return GroupNameProblem::Taken;
    return LooksLikeStartup(normal) && normal != kStartupGroup ? GroupNameProblem::StartupReserved
                                                               : GroupNameProblem::None;
}

GroupNameProblem ProgramModel::RenameProblem(int groupIndex, std::string_view newName) const {
    if (!ValidIndex(ProgramGroups, groupIndex))
        return GroupNameProblem::None; // nothing to rename: UpdateGroupName says so
    const std::string own = NormalGroupName(ProgramGroups[groupIndex].Name);
    const std::string normal = TypedGroupName(newName);
    if (normal == own)
        return GroupNameProblem::None;
    if (own == kStartupGroup)
        return GroupNameProblem::StartupKeepsName;
    if (normal.empty())
        return GroupNameProblem::Empty;
    if (LooksLikeStartup(normal))
        return GroupNameProblem::StartupReserved;
    return GetGroupID(normal) >= 0 ? GroupNameProblem::Taken : GroupNameProblem::None;
}

bool ProgramModel::UpdateGroupName(int groupIndex, std::string_view newName) {
    if (!ValidIndex(ProgramGroups, groupIndex) || ProgramGroups[groupIndex].Name.empty() ||
        RenameProblem(groupIndex, newName) != GroupNameProblem::None)
        return false;
    ProgramGroups[groupIndex].Name = TypedGroupName(newName);
    return true;
}

bool ProgramModel::UpdateGroupNameString(std::string_view oldName, std::string_view newName) {
    return UpdateGroupName(GetGroupID(oldName), newName);
}

void ProgramModel::AddProgramToGroup(int groupIndex, std::string_view command,
                                     std::string_view path, std::string_view parameters,
                                     float delay, std::string_view registryKeyName) {
    // A "Startup" index that no longer names the "Startup" group (removed in the editor since
    // the last load) would put the item into a hole that is never written: the item would be
    // gone from Windows' start and from the file. Such an item goes into a live "Startup" group.
    bool startupWanted = groupIndex == -1;
    if (!startupWanted && groupIndex == StartupGroupIndex) {
        const ProgramGroup* g = StartupGroup();
        startupWanted = !g || g->Name.empty();
    }
    if (startupWanted) {
        groupIndex = GetGroupID(kStartupGroup);
        if (groupIndex < 0)
            groupIndex = AddGroup(kStartupGroup);
        StartupGroupIndex = groupIndex;
    }
    if (!ValidIndex(ProgramGroups, groupIndex))
        throw ModelError("AddProgramToGroup: no group at index " + std::to_string(groupIndex));
    GroupProgram program;
    program.Command = std::string(command);
    program.Path = std::string(path);
    program.Parameters = std::string(parameters);
    program.Delay = delay;
    program.RegistryKeyName = std::string(registryKeyName);
    ProgramGroups[groupIndex].Programs.push_back(std::move(program));
}

bool ProgramModel::UpdateProgramInGroup(int groupIndex, int programIndex, std::string_view path,
                                        std::string_view parameters, float delay) {
    if (!ValidIndex(ProgramGroups, groupIndex))
        return false;
    auto& programs = ProgramGroups[groupIndex].Programs;
    if (!ValidIndex(programs, programIndex))
        return false;
    GroupProgram& p = programs[programIndex];
    p.Delay = delay;
    p.Parameters = std::string(parameters);
    p.Path = std::string(path);
    return true;
}

bool ProgramModel::RemoveProgramFromGroup(int groupIndex, int programIndex) {
    if (programIndex < 0)
        return true;
    if (!ValidIndex(ProgramGroups, groupIndex))
        return false;
    auto& programs = ProgramGroups[groupIndex].Programs;
    if (programs.empty())
        return false; // a removed group has no program to remove
    if (programs.size() == 1) {
        programs.assign(1, GroupProgram{});
        return true;
    }
    // An index past the end removes the last program.
    size_t index = std::min(static_cast<size_t>(programIndex), programs.size() - 1);
    programs.erase(programs.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

void ProgramModel::RemoveProgramGroup(int groupIndex) {
    if (!ValidIndex(ProgramGroups, groupIndex))
        throw ModelError("RemoveProgramGroup: no group at index " + std::to_string(groupIndex));
    if (static_cast<size_t>(groupIndex) + 1 < ProgramGroups.size()) {
        // Other groups keep their indexes: the slot stays as a hole.
        ProgramGroups[groupIndex].Name.clear();
        ProgramGroups[groupIndex].Programs.clear();
        return;
    }
    if (ProgramGroups.size() == 1)
        throw ModelError("RemoveProgramGroup: the only group cannot be removed");
    ProgramGroups.pop_back();
}

void ProgramModel::SortArray() {
    for (ProgramGroup& group : ProgramGroups)
        std::stable_sort(
            group.Programs.begin(), group.Programs.end(),
            [](const GroupProgram& a, const GroupProgram& b) { return a.Delay < b.Delay; });
}

const ProgramGroup* ProgramModel::GroupForDelays() const {
    int index = StartupGroupIndex == -1 ? GetGroupID(kStartupGroup) : StartupGroupIndex;
    return ValidIndex(ProgramGroups, index) ? &ProgramGroups[index] : nullptr;
}

bool ProgramModel::AreAllUserDelays() const {
    const ProgramGroup* group = GroupForDelays();
    if (!group)
        return false;
    return std::any_of(group->Programs.begin(), group->Programs.end(), [](const GroupProgram& p) {
        return p.Command == kExecuteRegAU || p.Command == kExecuteAU;
    });
}

bool ProgramModel::AreUserDelays() const {
    const ProgramGroup* group = GroupForDelays();
    if (!group)
        return false;
    return std::any_of(group->Programs.begin(), group->Programs.end(),
                       [](const GroupProgram& p) { return !p.Path.empty(); });
}

} // namespace tolvane
