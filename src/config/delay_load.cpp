#include "config/delay_load.h"

#include <windows.h>

#include "config/program_group_file.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "config/language_files.h"
#include "platform/dir_struct.h"
#include "platform/environment.h"
#include "platform/registry.h"
#include "text/strings.h"

namespace tolvane {

std::string WindowsUserName() {
    wchar_t buffer[257] = {}; // the longest user name and its NUL
    DWORD size = 257;
    if (!GetUserNameW(buffer, &size))
        return std::string();
    return Narrow(buffer);
}

CDelayLoad::CDelayLoad(ProgramModel& model, const AppFolders& folders, TextTables& text,
                       UserMessages& messages)
    : model_(model), folders_(folders), text_(text), messages_(messages) {
    const std::string user = WindowsUserName();
    CDirStruct().DirectoryExists(user, folders_.ProgramFolder, true);
    filePath_ = folders_.ProgramFolder + "\\" + user + "\\proggroup.c";
}

std::string CDelayLoad::ImpactFilePath() const {
    return filePath_.substr(0, filePath_.find_last_of('\\') + 1) + "impact.csv";
}

StoppedCommand::Start StoppedCommand::ToStart() const {
    if (!Expandable)
        return {Program, Arguments};
    return {ExpandEnvironment(Program), ExpandEnvironment(Arguments)};
}

bool CDelayLoad::GetStoppedInfo(std::string_view entry, StoppedCommand& command) {
    const auto& stopped = model_.StoppedPrograms;
    for (size_t i = 0; i < stopped.size(); ++i)
        if (stopped[i] == entry)
            return StoppedInfoOf(static_cast<int>(i), command);
    return false;
}

bool CDelayLoad::GetStoppedInfo(int index, StoppedCommand& command) {
    const auto& stopped = model_.StoppedPrograms;
    if (index < 0 || static_cast<size_t>(index) >= stopped.size())
        return false;
    return StoppedInfoOf(index, command);
}

bool CDelayLoad::StoppedInfoOf(int index, StoppedCommand& command) {
    const std::string& entry = model_.StoppedPrograms[static_cast<size_t>(index)];
    std::string_view prefix = std::string_view(entry).substr(0, kPrefixLength);
    std::string name = entry.size() > kPrefixLength ? entry.substr(kPrefixLength) : std::string();
    if (prefix == LocationPrefix(kUserStartup)) {
        command.Program = folders_.UserItemsFolder + name;
        return true;
    }
    if (prefix == LocationPrefix(kCommonStartup)) {
        command.Program = folders_.AllUsersItemsFolder + name;
        return true;
    }
    if (prefix == LocationPrefix(kMachineRun) || prefix == LocationPrefix(kUserRun)) {
        const int location = prefix == LocationPrefix(kMachineRun) ? kMachineRun : kUserRun;
        const SavedCopies saved = ReadSavedCopies(location);
        const int i = SavedCopyOfStopped(model_, index, saved.Copies);
        // The saved copy holds the command exactly; an entry that names its value holds it too,
        // without its quotes, should the copy be gone.
        std::string data;
        if (i >= 0) {
            data = saved.Copies[static_cast<size_t>(i)].Data;
            command.Expandable = saved.Expandable(i);
        } else if (auto named = NamedStoppedValue(name)) {
            data = named->Data;
        } else {
            return true;
        }
        const RunCommandParts parts = SplitRunData(data, command.Expandable, SystemCommandLine());
        command.Program = parts.Path;
        command.Arguments = parts.Parameters;
        return true;
    }
    return true;
}

RegistryRoot RunRoot(int location, bool wow32) {
    if (location == kUserRun)
        return RegistryRoot::CurrentUser;
    return wow32 ? RegistryRoot::LocalMachine32 : RegistryRoot::LocalMachine;
}

std::string SavedKeyOf(int location) {
    return location == kUserRun ? kSavedUserRunKey : kSavedMachineRunKey;
}

RegistryRoot SavedCopies::RootOf(int copy) const {
    return copy >= 0 ? Roots.at(static_cast<size_t>(copy)) : RunRoot(Location);
}

bool SavedCopies::Expandable(int copy) const {
    return copy >= 0 && static_cast<size_t>(copy) < ExpandableCopies.size() &&
           ExpandableCopies[static_cast<size_t>(copy)];
}

SavedCopies ReadSavedCopies(int location) {
    SavedCopies saved;
    saved.Location = location;
    auto read = [&](RegistryRoot root) {
        for (auto& [name, value] : CRegistry().EnumValues(root, SavedKeyOf(location))) {
            saved.Copies.push_back({name, ValueText(value)});
            saved.Roots.push_back(root);
            saved.ExpandableCopies.push_back(value.Type == REG_EXPAND_SZ);
        }
    };
    read(RunRoot(location));
    if (location != kUserRun)
        read(RunRoot(location, true));
    return saved;
}

bool SavedCopyIsExpandable(const GroupProgram& program) {
    if (program.RegistryKeyName.empty() ||
        (program.Command != kExecuteReg && program.Command != kExecuteRegAU))
        return false;
    const int location = program.Command == kExecuteReg ? kUserRun : kMachineRun;
    ProgramModel one;
    one.ProgramGroups = {{std::string(kStartupGroup), {program}}};
    one.StartupGroupIndex = 0;
    const SavedCopies saved = ReadSavedCopies(location);
    return saved.Expandable(MatchSavedCopies(one, location, saved.Copies).Delayed[0]);
}

void CDelayLoad::WriteItems() {
    AtomicFileWriter file(filePath_);
    WriteProgramGroupFile(model_, text_.Languages,
                          [&](std::string_view chunk) { file.Write(chunk); });
    file.Commit();
}

void CDelayLoad::LoadItems(bool writeMissing) {
    ProgramModel& model = model_;
    if (!IsFile(filePath_)) {
        SetDefaultModel(model);
        try {
            if (writeMissing)
                WriteItems();
        } catch (const FileError&) {
            // The folder cannot be written: the model of a first start holds all the same.
            messages_.ShowMessage(text_.Message(13), "Tolvane", kMbOk | kMbIconInformation);
        }
        model.SortArray();
        model.StartupGroupIndex = model.GetGroupID(kStartupGroup);
        return;
    }
    ProgramGroupReadResult result{false, "the file cannot be read"};
    if (auto bytes = ReadTextFile(filePath_)) {
        ProgramGroupReadContext context;
        context.UserItemsFolder = folders_.UserItemsFolder;
        context.AllUsersItemsFolder = folders_.AllUsersItemsFolder;
        context.Languages = &text_.Languages;
        context.LanguageChosen = [this](const std::string& code) {
            LoadLanguageFiles(folders_.ProgramFolder, code, text_);
        };
        result = ReadProgramGroupFile(*bytes, model, context);
    }
    if (result.Ok)
        return;
    CopyFileA(filePath_.c_str(), UnreadableCopyPath().c_str(), FALSE);
    messages_.ShowMessage(text_.Message(13), "Tolvane", kMbOk | kMbIconInformation);
}

} // namespace tolvane
