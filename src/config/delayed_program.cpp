#include "config/delayed_program.h"

#include "config/delay_load.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
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
    const RunCommandParts command = StartedCommand(program, expandable, system);
    if (program.Command == kExecuteReg || program.Command == kExecuteRegAU) {
        if (!ProgramFound(command.Path, expandable, system))
            return std::nullopt;
        if (!expandable)
            return ProgramStart{command.Path, command.Parameters};
        return ProgramStart{system.Expand(command.Path), system.Expand(command.Parameters)};
    }
    ProgramStart start{ItemsFolderLookup(folders, command.Path, program.Command),
                       command.Parameters};
    // A bare name counts as there when Windows finds the program by that name.
    if (start.Path.empty() || !ProgramFound(start.Path, false, system))
        return std::nullopt;
    return start;
}

// Windows fills in the variables of a command only where it names one: the saved copy, which
// tells whether the value is expandable, is looked up only then.
bool Expandable(const GroupProgram& program) {
    return (program.Path.find('%') != std::string::npos ||
            program.Parameters.find('%') != std::string::npos) &&
           SavedCopyIsExpandable(program);
}

} // namespace

std::optional<ProgramStart> ResolveDelayedProgram(const AppFolders& folders,
                                                  const GroupProgram& program) {
    return Resolve(folders, program, Expandable(program));
}

RunCommandParts StartedCommand(const GroupProgram& program) {
    return StartedCommand(program, Expandable(program), SystemCommandLine());
}

std::string StartBlockingWord(const ProgramModel& model, const GroupProgram& program) {
    return StartBlockingWord(model, program, Expandable(program), SystemCommandLine());
}

std::string WhyNotStarted(const GroupProgram& program, bool expandable, const ProgramModel& model,
                          const AppFolders& folders, const TextTables& text) {
    if (Trim(program.Path).empty())
        return std::string();
    const std::string word = StartBlockingWord(model, program, expandable, SystemCommandLine());
    if (!word.empty())
        return FillIn(text.Message(kNotStartedLine), {word});
    if (!Resolve(folders, program, expandable))
        return FillIn(text.Message(kNotFoundLine), {Trim(program.Path)});
    return std::string();
}

} // namespace tolvane
