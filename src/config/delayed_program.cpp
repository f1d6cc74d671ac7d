#include "config/delayed_program.h"

#include "config/delay_load.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/environment.h"
#include "text/placeholders.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// The Messages entries of the tip lines.
constexpr size_t kNotStartedLine = 27, kNotFoundLine = 29;

bool IsBareName(std::string_view path) {
    return !path.empty() && path.find_first_of("\\/:\"") == std::string_view::npos;
}

} // namespace

std::string ItemsFolderLookup(const AppFolders& folders, const std::string& path,
                              std::string_view command) {
    // A file taken out of a Startup folder is kept by its bare name: whatever its kind, it
    // must be found again, or a delayed item would never start and nobody would be told.
    if (!IsBareName(path))
        return path;
    const std::string* own = &folders.UserItemsFolder;
    const std::string* other = &folders.AllUsersItemsFolder;
    if (command == kExecuteAU || command == kExecuteRegAU)
        std::swap(own, other);
    for (const std::string* folder : {own, other}) {
        const std::string joined = *folder + path;
        if (CDirStruct::NamedFileExists(joined))
            return joined;
    }
    if (CDirStruct::NamedFileExists(path))
        return path;
    return EndsWith(ToLower(path), ".lnk") ? std::string() : path;
}

namespace {

std::optional<ProgramStart> Resolve(const AppFolders& folders, const GroupProgram& program,
                                    bool expandable) {
    const CommandLineSystem& system = SystemCommandLine();
    if (program.Command == kExecuteReg || program.Command == kExecuteRegAU) {
        const RunCommandParts command = DelayedCommand(program, expandable, system);
        if (!ProgramFound(command.Path, expandable, system))
            return std::nullopt;
        if (!expandable)
            return ProgramStart{command.Path, command.Parameters};
        return ProgramStart{ExpandEnvironment(command.Path), ExpandEnvironment(command.Parameters)};
    }
    // Quotes around a path are no part of the file's name.
    ProgramStart start{
        ItemsFolderLookup(folders, Trim(RemoveAll(program.Path, '"')), program.Command),
        program.Parameters};
    // A bare name counts as there when Windows finds the program by that name.
    if (start.Path.empty() || !ProgramFound(start.Path, false, system))
        return std::nullopt;
    return start;
}

} // namespace

std::optional<ProgramStart> ResolveDelayedProgram(const AppFolders& folders,
                                                  const GroupProgram& program) {
    return Resolve(folders, program, SavedCopyIsExpandable(program));
}

std::string WhyNotStarted(const GroupProgram& program, bool expandable, const ProgramModel& model,
                          const AppFolders& folders, const TextTables& text) {
    if (Trim(program.Path).empty())
        return std::string();
    const std::string word = model.BlockingWord(program.Path, program.Parameters);
    if (!word.empty())
        return FillIn(text.Message(kNotStartedLine), {word});
    if (!Resolve(folders, program, expandable))
        return FillIn(text.Message(kNotFoundLine), {Trim(program.Path)});
    return std::string();
}

} // namespace tolvane
